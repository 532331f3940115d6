// SPDX-License-Identifier: MIT
#include <document/editing/DocumentEditor.h>

#include <document/editing/LookImage.h>
#include <document/editing/StyleNames.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

OdfStyle& DocumentEditor::style(std::string_view text) const {
  std::vector<OdfStyle*> styles = mDocument.stylesCalled(text);
  std::erase_if(styles, [](const OdfStyle* style) { return style->stylesheet() == nullptr; });
  if (styles.empty()) {
    // One that an earlier edit made.
    for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
      OdfStyle* style = asOdfStyle(static_cast<NSObject*>(each.get()));
      const bool isMeant = style != nullptr && style->isIdentified() &&
                           (style->identifier().view() == text || style->name().view() == text);
      if (isMeant) styles.push_back(style);
    }
  }
  if (styles.empty()) throw EditError(fmt::format("there is no style '{}'", text));
  if (styles.size() == 1) return *styles.front();
  std::string names;
  for (std::size_t index = 0; index < styles.size() && index < 5; ++index)
    names += (index > 0 ? ", " : "") + mDocument.labelOf(*styles[index]);
  throw EditError(
      fmt::format("'{}' names {} styles: {}{}", text, styles.size(), names, styles.size() > 5 ? ", ..." : ""));
}

DocumentEditor::Assignment DocumentEditor::assignment(const OdfStyle& target, const std::string& text) const {
  const std::size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  // Only keys that the family has already are made into keys, which stay for ever.
  Assignment result;
  target.inspectableProperties().forEach([&](PropertyKey each) {
    if (each.view() == name) result.key = each;
  });
  if (!result.key) throw EditError(fmt::format("{} has no property '{}'", mDocument.labelOf(target), name));
  if (equals == std::string::npos) return result;
  const std::string value = text.substr(equals + 1);
  const PropertyRule* rule = propertyRule(result.key);
  if (value.empty()) {
    result.value = Ref<NSObject>(NSNull::null());
  } else if (target.isReferencedStyleProperty(result.key)) {
    result.value = Ref<NSObject>(&style(value));
  } else if (rule != nullptr && rule->kinds == kStyle) {
    result.value = NSString::make(value);
  } else {
    result.value = readValue(rule, value);
  }
  const bool isNone = isNull(result.value.get());
  if (!result.value || !target.validateValueForProperty(isNone ? nullptr : result.value.get(), result.key))
    throw EditError(fmt::format("{} does not take '{}'", name, value));
  return result;
}

void DocumentEditor::set(OdfStyle& target, const std::vector<Assignment>& assignments, KeepLook keepLook) {
  std::set<std::string_view> keys;
  for (const Assignment& each : assignments) keys.insert(each.key.view());
  mean(target, &keys, keepLook);
  if (keepLook == KeepLook::no) return store(target, assignments);
  // A locked style keeps what it inherits; a share of it would be one of the new value.
  std::vector<Ref<ZTSStyle>> locked;
  for (const Ref<ZTSStyle>& child : target.children().retainedSnapshot()) {
    for (const Assignment& each : assignments) {
      const NSObject* own = child->p_overrideValueForProperty(each.key);
      const PropertyRule* rule = propertyRule(each.key);
      if (own != nullptr && rule != nullptr && rule->isShareOfParent && asPercentage(own) != nullptr)
        child->setValueForProperty(child->valueForProperty(each.key), each.key);
    }
    if (child->isLocked()) continue;
    child->setIsLocked(true);
    locked.push_back(child);
  }
  store(target, assignments);
  for (const Ref<ZTSStyle>& child : locked) child->setIsLocked(false);
}

void DocumentEditor::store(OdfStyle& target, const std::vector<Assignment>& assignments) {
  if (assignments.size() == 1) {
    const Assignment& only = assignments.front();
    if (!only.value) return target.removeValueForProperty(only.key);
    return target.setValueForProperty(isNull(only.value.get()) ? Ref<NSObject>() : only.value, only.key);
  }
  const Ref<PropertyMap> values = PropertyMap::make(assignments.size());
  const Ref<PropertySet> removed = PropertySet::make();
  for (const Assignment& each : assignments) {
    if (each.value) {
      values->set(each.key, each.value);
    } else {
      removed->add(each.key);
    }
  }
  if (!values->isEmpty()) target.setValuesForProperties(*values);
  target.removeValuesForProperties(*removed);
}

void DocumentEditor::rename(OdfStyle& target, const std::string& name) {
  if (!target.isIdentified() || target.identifier().view().find(':') == std::string_view::npos)
    throw EditError(fmt::format("{} is no named style and cannot be renamed", mDocument.labelOf(target)));
  refuseUnknownUses(target, "renamed");
  if (name.empty()) throw EditError("a style cannot have an empty name");
  const std::string encoded = mRules.fileName(target, name);
  const std::string oldName(fileNameOf(target));
  if (encoded != oldName) {
    const std::string_view old = target.identifier().view();
    const StringRef identifier(std::string(old.substr(0, old.find(':') + 1)) + encoded);
    refuseTakenName(target, encoded);
    const std::vector<Ref<ZTSStyle>> children = target.children().retainedSnapshot();
    const Ref<OdfStyle> held(&target);
    mDocument.stylesheet().anonymizeStyle(held);
    mDocument.stylesheet().identifyStyle(held, identifier);
    for (const Ref<ZTSStyle>& child : children) child->setParentIdentifier(identifier);
    followNames(target, oldName, encoded);
  }
  target.setName(name);
}

void DocumentEditor::reparent(OdfStyle& target, OdfStyle* parent, KeepLook keepLook) {
  const StyleFamily family = target.family();
  const bool isRoot = target.isIdentified() && target.identifier().view().find(':') == std::string_view::npos;
  if (family == StyleFamily::list || family == StyleFamily::listLevel || isRoot)
    throw EditError(fmt::format("{} does not inherit from other styles", mDocument.labelOf(target)));
  if (parent != nullptr && (!parent->isIdentified() || parent->familyName() != target.familyName()))
    throw EditError(
        fmt::format("{} is no named style of the family of {}", mDocument.labelOf(*parent), mDocument.labelOf(target)));
  for (const ZTSStyle* up = parent; up != nullptr; up = up->parent()) {
    if (up == &target)
      throw EditError(fmt::format("{} inherits from {}", mDocument.labelOf(*parent), mDocument.labelOf(target)));
  }
  const StringRef identifier =
      parent != nullptr ? parent->identifier() : StringRef(rootIdentifier(target.familyName()));
  if (keepLook == KeepLook::no) {
    mean(target, nullptr);
    return target.setParentIdentifier(identifier);
  }
  const bool wasLocked = target.isLocked();  // a locked style keeps what it looks like
  target.setIsLocked(true);
  target.setParentIdentifier(identifier);
  target.setIsLocked(wasLocked);
}

// What the child would inherit of the parent becomes its own. A share of the parent's value is a share of a share.
void DocumentEditor::foldInto(OdfStyle& child, const OdfStyle& parent) {
  const Ref<const PropertyMap> own = parent.overridePropertyMap();
  if (!own) return;
  const Ref<PropertyMap> values = PropertyMap::make();
  for (const PropertyMap::Entry& entry : *own) {
    const PropertyRule* rule = propertyRule(entry.key);
    if (rule != nullptr && !rule->isInherited) continue;
    if (entry.key.view().starts_with("style.") && !isLook(entry.key)) continue;
    const NSObject* childs = child.p_overrideValueForProperty(entry.key);
    const PercentageValue* share = rule != nullptr && rule->isShareOfParent ? asPercentage(childs) : nullptr;
    if (childs == nullptr) {
      values->set(entry.key, entry.value);
    } else if (share != nullptr) {
      if (const LengthValue* length = asLength(entry.value.get()))
        values->set(entry.key, make<LengthValue>(shareOf(length->length(), share->percentage())));
      if (const PercentageValue* both = asPercentage(entry.value.get()))
        values->set(entry.key, make<PercentageValue>(shareOf(share->percentage(), both->percentage())));
    }
  }
  if (!values->isEmpty()) child.setValuesForProperties(*values);
}

void DocumentEditor::remove(OdfStyle& target, KeepLook keepLook) {
  const Ref<OdfStyle> held(&target);
  OdfStyle* parent = asOdfStyle(static_cast<NSObject*>(target.parent()));
  if (target.family() == StyleFamily::list || target.family() == StyleFamily::listLevel) {
    if (target.usageCount() != 0)
      throw EditError(fmt::format("{} is used, and no other list style takes its place", mDocument.labelOf(target)));
  }
  if (target.isIdentified() && target.identifier().view().find(':') == std::string_view::npos)
    throw EditError(fmt::format("{} is a default style and cannot be removed", mDocument.labelOf(target)));
  refuseUnknownUses(target, "removed");
  const bool isUsed = std::any_of(mDocument.styleUses().begin(), mDocument.styleUses().end(),
                                  [&](const StyleUse& use) { return use.style == &target; });
  const bool parentIsNamed = parent != nullptr && parent->identifier().view().find(':') != std::string_view::npos;
  if (isUsed && (!parentIsNamed || keepLook == KeepLook::yes)) {
    // The text has to name some style: a variation of the parent that may set nothing.
    if (keepLook == KeepLook::no)
      throw EditError(
          fmt::format("{} is used by the text and has no parent that could take its place", mDocument.labelOf(target)));
    const Ref<const PropertyMap> own = target.overridePropertyMap();
    const Ref<PropertyMap> values = PropertyMap::make();
    if (own) {
      for (const PropertyMap::Entry& entry : *own) {
        if (!entry.key.view().starts_with("style.") || isLook(entry.key)) values->set(entry.key, entry.value);
      }
    }
    const Ref<ZTSStyle> variation = mDocument.stylesheet().createStyleOfClass(
        familyStyleClass(target.family()),
        {.parentIdentifier = target.parentIdentifier(), .overridePropertyMap = values.get()});
    moveUses(target, *asOdfStyle(static_cast<NSObject*>(variation.get())));
  } else if (isUsed) {
    mean(target, nullptr);
    moveUses(target, *parent);
  }
  if (keepLook == KeepLook::no) mean(target, nullptr);
  for (const Ref<ZTSStyle>& child : target.children().retainedSnapshot()) {
    if (keepLook == KeepLook::yes) foldInto(*asOdfStyle(static_cast<NSObject*>(child.get())), target);
    child->setParentIdentifier(target.parentIdentifier());
  }
  moveReferences(target, parentIsNamed ? parent : nullptr);
  if (target.isIdentified())
    followNames(target, std::string(fileNameOf(target)),
                parentIsNamed ? std::string(fileNameOf(*parent)) : std::string());
  takeOut(target);
}

void DocumentEditor::merge(OdfStyle& from, OdfStyle& into) {
  if (&from == &into) throw EditError(fmt::format("{} cannot be merged into itself", mDocument.labelOf(from)));
  if (from.familyName() != into.familyName() || from.family() == StyleFamily::listLevel)
    throw EditError(fmt::format("{} and {} are of different kinds", mDocument.labelOf(from), mDocument.labelOf(into)));
  if (from.isIdentified() && into.isAnonymous())
    throw EditError(fmt::format("{} is an automatic style; others cannot inherit from it", mDocument.labelOf(into)));
  if (from.isAnonymous() && into.isAnonymous() && partOf(from) != partOf(into))
    throw EditError(
        fmt::format("{} and {} stand in different parts", mDocument.labelOf(from), mDocument.labelOf(into)));
  for (const ZTSStyle* style : {static_cast<const ZTSStyle*>(&from), static_cast<const ZTSStyle*>(&into)}) {
    if (style->isIdentified() && style->identifier().view().find(':') == std::string_view::npos)
      throw EditError(fmt::format("{} is a default style and cannot be merged", mDocument.labelOf(*style)));
  }
  refuseUnknownUses(from, "merged");
  const Ref<OdfStyle> held(&from);
  mean(from, nullptr);
  for (ZTSStyle* up = into.parent(); up != nullptr; up = up->parent()) {
    if (up == &from) {
      mean(into, nullptr);
      break;
    }
  }
  for (const Ref<ZTSStyle>& child : from.children().retainedSnapshot())
    child->setParentIdentifier(child == &into ? from.parentIdentifier() : into.identifier());
  moveUses(from, into);
  moveReferences(from, &into);
  if (from.isIdentified()) followNames(from, std::string(fileNameOf(from)), std::string(fileNameOf(into)));
  takeOut(from);
}

}  // namespace zt
