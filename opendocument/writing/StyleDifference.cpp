// SPDX-License-Identifier: MIT
#include <opendocument/writing/StyleDifference.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/StyleNames.h>

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace zt {

namespace {

bool isRoot(const StringRef& identifier) {
  return identifier.isPresent() && identifier.view().find(':') == std::string_view::npos;
}

/// Whether the styles among two sets of values are the same.
bool haveSameStyles(const PropertyMap& first, const PropertyMap& second) {
  for (const auto& [one, other] : {std::pair(&first, &second), std::pair(&second, &first)}) {
    for (const PropertyMap::Entry& entry : *one) {
      if (asStyle(entry.value.get()) != nullptr && other->find(entry.key) != entry.value.get()) return false;
    }
  }
  return true;
}

}  // namespace

StyleDifference::StyleDifference(const ZTDocument& document, const std::vector<StyleAsRead>& before,
                                 const ZTDocument::Fonts& fontsBefore)
    : mDocument(document), mParts(document.parts.size()) {
  for (const StyleAsRead& each : before) compare(each);
  findNewStyles(before);
  findUses();
  for (const auto& [place, family] : document.declaredFonts()) {
    if (!fontsBefore.contains(place)) mParts[place.first].newFonts.emplace(place.second, family);
  }
  for (const auto& [place, family] : fontsBefore) {
    if (!document.declaredFonts().contains(place)) mParts[place.first].goneFonts.insert(place.second);
  }
}

bool StyleDifference::isEmpty() const {
  return std::all_of(mParts.begin(), mParts.end(), [](const Part& part) { return part.isEmpty(); });
}

void StyleDifference::compare(const StyleAsRead& before) {
  const OdfStyle& style = *before.style;
  const StyleOrigin* origin = mDocument.originOf(style);
  if (origin == nullptr || origin->element == StyleOrigin::kNoElement) return;
  const bool isGone = style.stylesheet() == nullptr;
  // A style that was named or is now moves to another section.
  const bool hasMoved = before.identifier.isPresent() != style.isIdentified();
  const bool isSame = before.identifier == style.identifier() && before.name == style.name() &&
                      before.parentIdentifier == style.parentIdentifier() &&
                      areSameValues(*before.own, *ownValuesOf(style));
  if (!isGone && !hasMoved && isSame) return;
  if (origin->kind == StyleOrigin::Kind::listLevel) {
    if (!isGone) mParts[origin->part].elements[origin->element].levels.emplace_back(origin->level, &before);
    return;  // it goes with its list
  }
  if (hasMoved && style.family() == StyleFamily::list)
    throw EditError(fmt::format("{} cannot move between named and automatic styles", mDocument.labelOf(style)));
  Element& element = mParts[origin->part].elements[origin->element];
  element.style = &before;
  element.isRemoved = isGone || hasMoved;
  element.isRewritten =
      style.family() == StyleFamily::list && !isGone && !haveSameStyles(*before.own, *ownValuesOf(style));
}

void StyleDifference::findNewStyles(const std::vector<StyleAsRead>& before) {
  std::unordered_map<const ZTSStyle*, const StyleAsRead*> read;
  for (const StyleAsRead& each : before) read.emplace(each.style.get(), &each);
  std::size_t named = 0;
  for (std::size_t part = 0; part < mDocument.parts.size(); ++part) {
    if (mDocument.parts[part].name != "content.xml") named = part;
  }
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    const OdfStyle* style = asOdfStyle(static_cast<const NSObject*>(each.get()));
    if (style == nullptr || !style->isIdentified()) continue;
    const auto found = read.find(style);
    const StyleOrigin* origin = mDocument.originOf(*style);
    const bool isMadeRoot =
        isRoot(style->identifier()) && (origin == nullptr || origin->element == StyleOrigin::kNoElement);
    const bool isNew = isMadeRoot
                           ? style->overridesAnyProperty() &&
                                 (found == read.end() || !areSameValues(*found->second->own, *ownValuesOf(*style)))
                           : found == read.end() || !found->second->identifier.isPresent();
    if (!isNew) continue;
    if (style->family() == StyleFamily::listLevel || (isMadeRoot && style->family() == StyleFamily::list) ||
        (isMadeRoot && style->family() == StyleFamily::other))
      throw EditError(fmt::format("{} cannot be written as a new style", mDocument.labelOf(*style)));
    mParts[named].newNamed.push_back(style);
  }
}

void StyleDifference::findUses() {
  for (const StyleUse& use : mDocument.styleUses()) {
    if (!use.style) continue;
    const OdfStyle& style = *use.style;
    const StyleOrigin* origin = mDocument.originOf(style);
    const bool isThere =
        style.isIdentified() ||
        (origin != nullptr && origin->part == use.part &&
         (origin->kind == StyleOrigin::Kind::automatic || origin->kind == StyleOrigin::Kind::listStyle));
    if (style.stylesheet() == nullptr)
      throw EditError(fmt::format("the text still uses {}", styleIdentifier(use.family, use.name)));
    if (!isThere && mGivenNames.find({use.part, &style}) == mGivenNames.end()) {
      mGivenNames[{use.part, &style}] = freeName(style);
      mParts[use.part].newAutomatic.push_back(&style);
    }
    std::string name = nameIn(use.part, style);
    if (name != use.name) mParts[use.part].usedNames.emplace(styleIdentifier(use.family, use.name), std::move(name));
  }
}

std::string StyleDifference::freeName(const OdfStyle& style) {
  if (mTaken.empty()) {
    for (const Ref<OdfStyle>& read : mDocument.readStyles()) mTaken.emplace(mDocument.originOf(*read)->name, true);
    for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
      if (each->isIdentified()) mTaken.emplace(std::string(fileNameOf(*each)), true);
    }
  }
  const std::string letter = style.family() == StyleFamily::paragraph ? "P"
                             : style.family() == StyleFamily::text    ? "T"
                                                                      : "A";
  std::string name;
  do {
    name = letter + std::to_string(mNextNumber++);
  } while (!mTaken.emplace(name, true).second);
  return name;
}

std::string StyleDifference::nameIn(std::size_t part, const OdfStyle& style) const {
  if (style.isIdentified()) return std::string(fileNameOf(style));
  const auto given = mGivenNames.find({part, &style});
  if (given != mGivenNames.end()) return given->second;
  const StyleOrigin* origin = mDocument.originOf(style);
  if (origin == nullptr || origin->part != part)
    throw EditError(fmt::format("{} is an automatic style that {} does not have", mDocument.labelOf(style),
                                mDocument.parts[part].name));
  return origin->name;
}

std::string StyleDifference::nameOfUse(std::size_t use) const {
  const StyleUse& each = mDocument.styleUses()[use];
  return each.style ? nameIn(each.part, *each.style) : each.name;
}

}  // namespace zt
