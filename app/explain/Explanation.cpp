#include <app/explain/Explanation.h>

#include <app/styles/PropertyRules.h>
#include <app/styles/StyleValues.h>

#include <platform/NSNull.h>

#include <algorithm>

namespace zt {

std::string_view roleName(ExplainedEntry::Role role) {
  switch (role) {
    case ExplainedEntry::Role::wins: return "wins";
    case ExplainedEntry::Role::base: return "base";
    case ExplainedEntry::Role::hidden: return "hidden";
  }
  return "hidden";
}

std::vector<const OdfStyle*> Explainer::chainOf(const OdfStyle& style) {
  std::vector<const OdfStyle*> chain;
  for (const ZTSStyle* at = &style; at != nullptr; at = at->parent()) {
    if (const OdfStyle* level = asOdfStyle(at)) chain.push_back(level);
  }
  const OdfStyle* last = chain.back();
  if (chain.size() > 1 && last->stylesheet() != style.stylesheet() && !last->overridesAnyProperty()) chain.pop_back();
  return chain;
}

StyleExplanation Explainer::explain(const OdfStyle& style) {
  mEntries.clear();
  const auto chain = chainOf(style);
  for (auto level = chain.rbegin(); level != chain.rend(); ++level) enter(**level);
  return current(style);
}

void Explainer::explainAll(const std::function<void(const StyleExplanation&)>& visit) {
  struct Step {
    const OdfStyle* style;
    std::size_t nextChild;
  };
  const ChildrenInOrder children(mDocument);
  for (const OdfStyle* top : topStyles(mDocument)) {
    mEntries.clear();
    const OdfStyle* above = asOdfStyle(top->parent());
    if (above != nullptr) enter(*above);
    std::vector<Step> way;
    const auto begin = [&](const OdfStyle& style) {
      enter(style);
      visit(current(style));
      way.push_back({&style, 0});
    };
    begin(*top);
    while (!way.empty()) {
      Step& step = way.back();
      const auto& below = children.of(*step.style);
      if (step.nextChild < below.size()) {
        begin(*below[step.nextChild++]);
      } else {
        leave(*step.style);
        way.pop_back();
      }
    }
  }
}

void Explainer::enter(const OdfStyle& style) {
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (own == nullptr) return;
  for (const PropertyMap::Entry& entry : *own) {
    Entries& entries = mEntries[entry.key.view()];
    entries.key = entry.key;
    entries.fromRoot.push_back({&style, entry.value.get()});
  }
}

void Explainer::leave(const OdfStyle& style) {
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (own == nullptr) return;
  for (const PropertyMap::Entry& entry : *own) {
    const auto found = mEntries.find(entry.key.view());
    found->second.fromRoot.pop_back();
    if (found->second.fromRoot.empty()) mEntries.erase(found);
  }
}

StyleExplanation Explainer::current(const OdfStyle& style) const {
  StyleExplanation explanation;
  explanation.style = &style;
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
    auto role = ExplainedEntry::Role::wins;
    for (auto entry = entries.fromRoot.rbegin(); entry != entries.fromRoot.rend(); ++entry) {
      if (property.entries.size() == kMostEntries) {
        property.moreHidden = static_cast<std::size_t>(entries.fromRoot.rend() - entry);
        break;
      }
      property.entries.push_back({entry->style, entry->value, role});
      const bool needsBase = role != ExplainedEntry::Role::hidden && isShare && asPercentage(entry->value) != nullptr;
      role = needsBase ? ExplainedEntry::Role::base : ExplainedEntry::Role::hidden;
      if (rule != nullptr && !rule->isInherited) break;
    }
    explanation.properties.push_back(std::move(property));
  }
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
