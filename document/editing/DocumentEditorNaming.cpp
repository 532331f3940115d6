// SPDX-License-Identifier: MIT

// Edits that give a look a name, or take it away.

#include <document/editing/DocumentEditor.h>
#include <document/editing/LookImage.h>
#include <document/editing/StylesAsRead.h>

#include <fmt/format.h>

namespace zt {

namespace {

/// Own values that say how text looks.
Ref<PropertyMap> ownLook(const OdfStyle& style) {
  const Ref<PropertyMap> look = PropertyMap::make();
  if (const Ref<const PropertyMap> own = style.overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      if (isLook(entry.key)) look->set(entry.key, entry.value);
    }
  }
  return look;
}

}  // namespace

void DocumentEditor::refuseTakenName(const OdfStyle& target, const std::string& fileName) const {
  if (OdfStyle* named = mDocument.namedStyle(prefixOf(target), fileName); named != nullptr)
    throw EditError(fmt::format("there is a style '{}' already", named->identifier().view()));
  for (const Ref<OdfStyle>& read : mDocument.readStyles()) {
    if (read.get() == &target || !read->isAnonymous() || read->stylesheet() == nullptr) continue;
    if (mDocument.originOf(*read)->name == fileName && read->familyName() == target.familyName())
      throw EditError(fmt::format("there is an automatic style '{}' already", mDocument.labelOf(*read)));
  }
}

std::string DocumentEditor::prefixOf(const OdfStyle& style) {
  if (!style.isIdentified()) return style.familyName();
  const std::string_view identifier = style.identifier().view();
  return std::string(identifier.substr(0, identifier.find(':')));
}

std::vector<Ref<OdfStyle>> DocumentEditor::promote(OdfStyle& target, const std::string& name) {
  const StyleFamily family = target.family();
  if (target.isIdentified() || family == StyleFamily::list || family == StyleFamily::listLevel)
    throw EditError(fmt::format("{} is no automatic style that could get a name", mDocument.labelOf(target)));
  if (name.empty()) throw EditError("a style cannot have an empty name");
  refuseUnknownUses(target, "promoted");
  const std::set<const ZTSStyle*> named = namedByValues();
  const std::string fileName = mRules.newFileName(family, name);
  refuseTakenName(target, fileName);
  const Ref<OdfStyle> held(&target);
  const Ref<PropertyMap> look = ownLook(target);
  std::vector<Ref<OdfStyle>> same;
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().anonymousStyles().retainedSnapshot()) {
    OdfStyle* style = asOdfStyle(static_cast<NSObject*>(each.get()));
    if (style == nullptr || style == &target || style->familyName() != target.familyName() || named.contains(style))
      continue;
    if (style->parentIdentifier() == target.parentIdentifier() && areSameValues(*ownLook(*style), *look))
      same.emplace_back(style);
  }
  needFonts(target, mDocument, partOf(target), partOfNamedStyles());
  mDocument.stylesheet().identifyStyle(held, styleIdentifier(target.familyName(), fileName));
  target.setName(name);
  for (const Ref<OdfStyle>& style : same) {
    moveUses(*style, target);
    takeOut(*style);
  }
  return same;
}

void DocumentEditor::demote(OdfStyle& target) {
  const bool isRoot = target.isIdentified() && target.identifier().view().find(':') == std::string_view::npos;
  if (!target.isIdentified() || isRoot || target.family() == StyleFamily::list ||
      target.family() == StyleFamily::listLevel)
    throw EditError(fmt::format("{} is no named style that could become automatic", mDocument.labelOf(target)));
  remove(target, KeepLook::yes);
}

}  // namespace zt
