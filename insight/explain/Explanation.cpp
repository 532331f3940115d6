// SPDX-License-Identifier: MIT
#include <insight/explain/Explanation.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <insight/explain/PropertyGroups.h>

#include <platform/NSNull.h>

#include <algorithm>

namespace zt {

std::string_view roleName(ExplainedEntry::Role role) {
  switch (role) {
    case ExplainedEntry::Role::wins: return "wins";
    case ExplainedEntry::Role::base: return "base";
    case ExplainedEntry::Role::hidden: return "hidden";
    case ExplainedEntry::Role::ignored: return "ignored";
  }
  return "hidden";
}

const OdfStyle* ExplainedProperty::decisiveStyle() const {
  const auto found = std::find_if(entries.begin(), entries.end(),
                                  [](const ExplainedEntry& entry) { return entry.role == ExplainedEntry::Role::wins; });
  return (found != entries.end() ? *found : entries.front()).style;
}

StyleExplanation Explainer::explain(const OdfStyle& style) {
  std::vector<const OdfStyle*> chain;
  for (const ZTSStyle* at = &style; at != nullptr; at = at->parent()) {
    const OdfStyle* level = asOdfStyle(at);
    const bool isAbove = level != nullptr && level->stylesheet() != style.stylesheet();
    if (level != nullptr && (!isAbove || level->overridesAnyProperty())) chain.push_back(level);
  }
  mChain.clear();
  mEntries.clear();
  for (auto level = chain.rbegin(); level != chain.rend(); ++level) enter(**level);
  return current();
}

void Explainer::explainAll(const std::function<void(const StyleExplanation&)>& visit) {
  const ChildrenInOrder children(mDocument);
  std::vector<std::size_t> nextChildren;  // of the styles on the way from a top style down
  for (const OdfStyle* top : topStyles(mDocument)) {
    mChain.clear();
    mEntries.clear();
    const OdfStyle* above = asOdfStyle(top->parent());
    if (above != nullptr && above->overridesAnyProperty()) enter(*above);
    const auto begin = [&](const OdfStyle& style) {
      enter(style);
      visit(current());
      nextChildren.push_back(0);
    };
    begin(*top);
    while (!nextChildren.empty()) {
      const auto& below = children.of(*mChain.back());
      if (nextChildren.back() < below.size()) {
        begin(*below[nextChildren.back()++]);
      } else {
        leave();
        nextChildren.pop_back();
      }
    }
  }
}

void Explainer::enter(const OdfStyle& style) {
  mChain.push_back(&style);
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (own == nullptr) return;
  for (const PropertyMap::Entry& entry : *own) {
    Entries& entries = mEntries[entry.key.view()];
    entries.key = entry.key;
    entries.fromRoot.push_back({&style, entry.value.get()});
  }
}

void Explainer::leave() {
  const Ref<const PropertyMap> own = mChain.back()->overridePropertyMap();
  mChain.pop_back();
  if (own == nullptr) return;
  for (const PropertyMap::Entry& entry : *own) {
    const auto found = mEntries.find(entry.key.view());
    found->second.fromRoot.pop_back();
    if (found->second.fromRoot.empty()) mEntries.erase(found);
  }
}

StyleExplanation Explainer::current() const {
  const OdfStyle& style = *mChain.back();
  StyleExplanation explanation;
  explanation.style = &style;
  explanation.chainLength = mChain.size();
  const auto listed = static_cast<std::ptrdiff_t>(std::min(mChain.size(), kLongestChain));
  explanation.chain.assign(mChain.rbegin(), mChain.rbegin() + listed);
  explanation.properties.reserve(mEntries.size());
  for (const auto& [text, entries] : mEntries) {
    const PropertyRule* rule = propertyRule(entries.key);
    const bool isShare = rule != nullptr && rule->isShareOfParent;
    // What is not inherited is no affair of this style unless it says so itself.
    const bool isOwn = entries.fromRoot.back().style == &style;
    if (rule != nullptr && !rule->isInherited && !isOwn) continue;

    ExplainedProperty property;
    property.key = entries.key;
    property.effective = style.valueForProperty(entries.key);
    const bool isFont = entries.key.view().starts_with("text.style.font-name");
    auto role = ExplainedEntry::Role::wins;
    for (auto entry = entries.fromRoot.rbegin(); entry != entries.fromRoot.rend(); ++entry) {
      if (property.entries.size() == kMostEntries) {
        property.moreHidden = static_cast<std::size_t>(entries.fromRoot.rend() - entry);
        break;
      }
      if (isFont && role == ExplainedEntry::Role::wins && !mDocument.isDeclaredFont(*entry->style, entry->value)) {
        property.entries.push_back({entry->style, entry->value, ExplainedEntry::Role::ignored});
        property.effective = {};
        continue;
      }
      if (isFont && role == ExplainedEntry::Role::wins && !isNull(entry->value))
        property.effective = Ref<NSObject>(entry->value);
      property.entries.push_back({entry->style, entry->value, role});
      const bool needsBase = role != ExplainedEntry::Role::hidden && isShare && asPercentage(entry->value) != nullptr;
      role = needsBase ? ExplainedEntry::Role::base : ExplainedEntry::Role::hidden;
      if (rule != nullptr && !rule->isInherited) break;
    }
    explanation.properties.push_back(std::move(property));
  }
  decideGroups(explanation);
  return explanation;
}

std::vector<const OdfStyle*> topStyles(const ZTDocument& document) {
  std::vector<const OdfStyle*> tops;
  for (const Ref<OdfStyle>& style : document.readStyles()) {
    if (style->stylesheet() != &document.stylesheet()) continue;
    if (style->parent() == nullptr || style->parent()->stylesheet() != &document.stylesheet())
      tops.push_back(style.get());
  }
  return tops;
}

ChildrenInOrder::ChildrenInOrder(const ZTDocument& document) {
  for (const Ref<OdfStyle>& style : document.readStyles()) {
    if (style->stylesheet() == &document.stylesheet() && style->parent() != nullptr) {
      mChildren[style->parent()].push_back(style.get());
    }
  }
}

const std::vector<const OdfStyle*>& ChildrenInOrder::of(const ZTSStyle& style) const {
  static const std::vector<const OdfStyle*> none;
  const auto found = mChildren.find(&style);
  return found == mChildren.end() ? none : found->second;
}

std::string shownValue(const ZTDocument& document, PropertyKey key, const NSObject* value) {
  if (const ZTSStyle* style = asStyle(value)) return document.labelOf(*style);
  const PropertyRule* rule = propertyRule(key);
  return valueText(value, rule != nullptr && rule->prefersPoints);
}

}  // namespace zt
