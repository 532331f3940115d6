// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/WordDifference.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/StyleNames.h>
#include <document/styles/PropertyRules.h>
#include <wordprocessing/reading/WordUses.h>

#include <fmt/format.h>

#include <algorithm>
#include <unordered_set>

namespace zt {

namespace {

bool isRoot(const ZTSStyle& style) {
  return style.isIdentified() && style.identifier().view().find(':') == std::string_view::npos;
}

/// The named style that a style stands on, itself if it is one; none for a root. What stands between is direct
/// formatting, the nearest counts.
const OdfStyle* baseOf(const OdfStyle& style, PropertyMap* direct) {
  const OdfStyle* at = &style;
  for (; at != nullptr && at->isAnonymous(); at = asOdfStyle(static_cast<const NSObject*>(at->parent()))) {
    const Ref<const PropertyMap> own = at->overridePropertyMap();
    if (!own || direct == nullptr) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (!direct->contains(entry.key)) direct->set(entry.key, entry.value);
    }
  }
  return at == nullptr || isRoot(*at) ? nullptr : at;
}

bool isChanged(const StyleAsRead& before) {
  const OdfStyle& style = *before.style;
  return style.stylesheet() == nullptr || before.identifier != style.identifier() || before.name != style.name() ||
         before.parentIdentifier != style.parentIdentifier() || !areSameValues(*before.own, *ownValuesOf(style));
}

bool isDirectIn(StyleFamily family, PropertyKey key) {
  if (key == keys::listStyle() || key == keys::listLevelNumber()) return family == StyleFamily::paragraph;
  const std::string_view name = familyName(family);
  return key.view().starts_with(name) && key.view().substr(name.size()).starts_with('.');
}

}  // namespace

std::vector<WordUseAsRead> usesAsRead(const ImportedWord& word) {
  std::vector<WordUseAsRead> uses;
  uses.reserve(word.styleOfUse.size());
  for (const Ref<OdfStyle>& style : word.styleOfUse) {
    const Ref<PropertyMap> own = PropertyMap::make();
    const OdfStyle* base = style ? baseOf(*style, own.get()) : nullptr;
    uses.push_back({Ref<OdfStyle>(const_cast<OdfStyle*>(base)), own});
  }
  return uses;
}

WordDifference::WordDifference(const WordDocument& raw, const ZTDocument& document,
                               const std::vector<StyleAsRead>& before, const std::vector<WordUseAsRead>& read) {
  for (const StyleAsRead& each : before) compare(document, each);
  findNewStyles(document, before);
  for (std::size_t use = 0; use < raw.uses.size(); ++use) {
    const OdfStyle* now = document.styleUses()[use].style.get();
    if (now == nullptr) continue;
    if (now->stylesheet() == nullptr) throw EditError(fmt::format("the text still uses {}", document.labelOf(*now)));
    compareUse(raw.uses[use], *now, read[use]);
  }
}

void WordDifference::compare(const ZTDocument& document, const StyleAsRead& before) {
  const OdfStyle& style = *before.style;
  const StyleOrigin* origin = document.originOf(style);
  if (origin == nullptr || !isChanged(before)) return;
  if (before.identifier.isPresent() && isRoot(style)) {
    if (style.family() != StyleFamily::paragraph && style.family() != StyleFamily::text)
      throw EditError(fmt::format("{} cannot be changed in a file of this format", document.labelOf(style)));
    roots.push_back(&before);
  } else if (origin->element == StyleOrigin::kNoElement) {
    return;  // direct formatting: told by the uses
  } else if (origin->kind == StyleOrigin::Kind::listStyle || origin->kind == StyleOrigin::Kind::listLevel) {
    addList(before, *origin);
  } else {
    if (before.identifier.isPresent() != style.isIdentified() && style.stylesheet() != nullptr)
      throw EditError(fmt::format("{} cannot lose or get a name of its own", document.labelOf(style)));
    addStyle(before, *origin);
  }
}

void WordDifference::addList(const StyleAsRead& before, const StyleOrigin& origin) {
  const bool isLevel = origin.kind == StyleOrigin::Kind::listLevel;
  if (isLevel && before.style->stylesheet() == nullptr) return;  // it goes with its list
  const std::string_view name = isLevel ? std::string_view(origin.name) : before.identifier.view();
  auto& all = name.starts_with("list:abstractNum-") ? abstractLists : lists;
  all[origin.element].push_back({&before, isLevel ? std::to_string(origin.level) : std::string()});
}

void WordDifference::addStyle(const StyleAsRead& before, const StyleOrigin& origin) {
  const OdfStyle& style = *before.style;
  const bool isGone = style.stylesheet() == nullptr;
  if (!before.identifier.isPresent()) {
    // A part of a table style goes with it. Named styles without an id have no part.
    const bool isPart = style.family() == StyleFamily::tableCell;
    if (!isGone)
      styles[origin.element].push_back(
          {&before, isPart ? origin.name.substr(origin.name.rfind('/') + 1) : std::string()});
    return;
  }
  if (!isGone && before.identifier != style.identifier()) names[before.identifier.text()] = fileNameOf(style);
  styles[origin.element].push_back({&before, {}});
}

void WordDifference::findNewStyles(const ZTDocument& document, const std::vector<StyleAsRead>& before) {
  std::unordered_set<const ZTSStyle*> known;
  for (const StyleAsRead& each : before) {
    if (each.identifier.isPresent()) known.insert(each.style.get());
  }
  for (const Ref<ZTSStyle>& each : document.stylesheet().retainedStyles()) {
    const OdfStyle* style = asOdfStyle(static_cast<const NSObject*>(each.get()));
    if (style == nullptr || !style->isIdentified() || known.contains(style)) continue;
    const StyleFamily family = style->family();
    if (family != StyleFamily::paragraph && family != StyleFamily::text && family != StyleFamily::table)
      throw EditError(fmt::format("{} cannot be written as a new style", document.labelOf(*style)));
    newStyles.push_back(style);
  }
}

void WordDifference::compareUse(const WordUse& raw, const OdfStyle& now, const WordUseAsRead& before) {
  const Ref<PropertyMap> own = PropertyMap::make();
  const OdfStyle* base = baseOf(now, own.get());
  const std::optional<std::string> name =
      base != nullptr ? std::optional(std::string(fileNameOf(*base))) : std::nullopt;
  // Text that names no style, or one that does not exist, has the default one, and goes on naming what it names.
  const bool hasMoved = base != before.base.get();
  if (raw.isNameOnly) {
    if (hasMoved && name) names[styleIdentifier(familyName(raw.family), raw.styleId)] = *name;
    return;
  }
  const bool isRenamed = names.contains(styleIdentifier(familyName(raw.family), raw.styleId));
  const bool hasSameValues = areSameValues(*before.own, *own);
  if (!hasMoved && !isRenamed && hasSameValues) return;
  for (const PropertyMap::Entry& entry : *own) {
    if (isDirectIn(raw.family, entry.key)) continue;
    throw EditError(fmt::format("direct formatting of a {} cannot say {}", familyName(raw.family), entry.key.view()));
  }
  if (hasMoved && styleElementOf(raw.family).empty())
    throw EditError(fmt::format("a {} cannot name a style", familyName(raw.family)));
  uses[useKey(raw.family, raw.styleId, raw.properties)] = {raw.family, hasMoved || isRenamed, name, before.own, own};
}

}  // namespace zt
