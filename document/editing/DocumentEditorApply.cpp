// SPDX-License-Identifier: MIT

// The styles of one document take the place of those of another.

#include <document/editing/DocumentEditor.h>
#include <document/editing/LookImage.h>
#include <document/editing/StylesAsRead.h>
#include <document/styles/FamilyStyles.h>
#include <document/styles/PropertyRules.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

OdfStyle* named(const ZTDocument& document, const OdfStyle& like) {
  return asOdfStyle(static_cast<NSObject*>(document.stylesheet().styleWithIdentifier(like.identifier())));
}

bool isNamedStyle(const OdfStyle& style) {
  return style.isIdentified() && style.family() != StyleFamily::listLevel && style.family() != StyleFamily::other &&
         style.identifier().view().find(':') != std::string_view::npos;
}

/// One application: which styles of the template are taken, and how they become styles of the document.
class Application {
 public:
  Application(const ZTDocument& source, ZTDocument& document, const EditingRules& rules)
      : mSource(source), mDocument(document), mRules(rules) {}

  /// Takes a style, and what it needs that the document lacks.
  void want(const OdfStyle& style) {
    if (!mWanted.insert(&style).second) return;
    if (const OdfStyle* parent = asOdfStyle(static_cast<const NSObject*>(style.parent()));
        parent != nullptr && isNamedStyle(*parent))
      need(*parent);
    if (const Ref<const PropertyMap> own = style.overridePropertyMap()) needWhatIsNamedBy(style, *own);
    mOrder.push_back(&style);
  }
  [[nodiscard]] const std::vector<const OdfStyle*>& inOrder() const { return mOrder; }

  /// The document's style of that name, made where there is none yet; parents stand before their children.
  OdfStyle& styleFor(const OdfStyle& style) {
    if (OdfStyle* there = named(mDocument, style)) return *there;
    const Ref<ZTSStyle> made = mDocument.stylesheet().createStyleOfClass(
        familyStyleClass(style.family()),
        {.name = style.name(), .identifier = style.identifier(), .parentIdentifier = style.parentIdentifier()});
    return *asOdfStyle(static_cast<NSObject*>(made.get()));
  }

  void copyInto(OdfStyle& target, const OdfStyle& style) {
    const Ref<PropertyMap> values = PropertyMap::make();
    if (const Ref<const PropertyMap> own = style.overridePropertyMap()) {
      for (const PropertyMap::Entry& entry : *own) {
        Ref<NSObject> value = valueFor(entry.value);
        if (value) values->set(entry.key, std::move(value));
      }
    }
    const Ref<PropertyMap> before = ownValuesOf(target);
    const Ref<PropertySet> gone = PropertySet::make();
    for (const PropertyMap::Entry& entry : *before) {
      if (!values->contains(entry.key)) gone->add(entry.key);
    }
    // Equal values stay the objects that they are, so that nothing is told and written of them.
    const Ref<PropertyMap> changed = PropertyMap::make();
    for (const PropertyMap::Entry& entry : *values) {
      if (!sameOrEqual(before->find(entry.key), entry.value.get())) changed->set(entry.key, entry.value);
    }
    if (!changed->isEmpty()) target.setValuesForProperties(*changed);
    target.removeValuesForProperties(*gone);
    for (const PropertyMap::Entry& entry : *before) {
      const OdfStyle* level = asOdfStyle(static_cast<const NSObject*>(entry.value.get()));
      if (level != nullptr && level->family() == StyleFamily::listLevel && level->usageCount() == 0)
        mDocument.stylesheet().removeStyle(Ref<ZTSStyle>(const_cast<OdfStyle*>(level)));
    }
    if (target.parentIdentifier() != style.parentIdentifier()) target.setParentIdentifier(style.parentIdentifier());
    if (target.name() != style.name()) target.setName(style.name());
  }

 private:
  void need(const OdfStyle& style) {
    if (isNamedStyle(style) && named(mDocument, style) == nullptr) want(style);
  }

  void needWhatIsNamedBy(const OdfStyle& style, const PropertyMap& own) {
    for (const PropertyMap::Entry& entry : own) {
      if (const OdfStyle* referred = asOdfStyle(static_cast<const NSObject*>(entry.value.get()))) {
        if (isNamedStyle(*referred)) {
          need(*referred);
        } else if (const Ref<const PropertyMap> inner = referred->overridePropertyMap()) {
          needWhatIsNamedBy(*referred, *inner);  // a level
        }
        continue;
      }
      for (const NamedStyle& each : mRules.stylesNamedBy(style, entry.key, *entry.value)) {
        const OdfStyle* other = mSource.namedStyle(each.family, each.name);
        if (other != nullptr) need(*other);
      }
    }
  }

  /// The value as the document has it: a style of the template is the one of its name, a level one like it.
  Ref<NSObject> valueFor(const Ref<NSObject>& value) {
    const OdfStyle* referred = asOdfStyle(static_cast<const NSObject*>(value.get()));
    if (referred == nullptr) return value;
    if (isNamedStyle(*referred)) return Ref<NSObject>(&styleFor(*referred));
    const bool isPart = referred->family() == StyleFamily::listLevel || referred->family() == StyleFamily::tableCell;
    if (!isPart) {
      throw EditError(
          fmt::format("{} of the template refers to {}, which has no name", mSource.shown, mSource.labelOf(*referred)));
    }
    const Ref<PropertyMap> values = PropertyMap::make();
    const Ref<PropertyMap> own = ownValuesOf(*referred);
    for (const PropertyMap::Entry& entry : *own) values->set(entry.key, valueFor(entry.value));
    return Ref<NSObject>(
        mDocument.stylesheet()
            .createStyleOfClass(familyStyleClass(referred->family()),
                                {.parentIdentifier = referred->parentIdentifier(), .overridePropertyMap = values.get()})
            .get());
  }

  const ZTDocument& mSource;
  ZTDocument& mDocument;
  const EditingRules& mRules;
  std::set<const OdfStyle*> mWanted;
  std::vector<const OdfStyle*> mOrder;
};

/// Whether a list says the same in both documents: its own values, and those of its levels.
bool sayTheSame(const OdfStyle& first, const OdfStyle& second) {
  const Ref<PropertyMap> left = ownValuesOf(first);
  const Ref<PropertyMap> right = ownValuesOf(second);
  return left->count() == right->count() &&
         std::all_of(left->begin(), left->end(), [&](const PropertyMap::Entry& entry) {
           const NSObject* other = right->find(entry.key);
           const OdfStyle* referred = asOdfStyle(static_cast<const NSObject*>(entry.value.get()));
           const OdfStyle* otherReferred = asOdfStyle(other);
           if (referred == nullptr || otherReferred == nullptr) return sameOrEqual(entry.value.get(), other);
           return isNamedStyle(*referred) ? referred->identifier() == otherReferred->identifier()
                                          : sayTheSame(*referred, *otherReferred);
         });
}

}  // namespace

DocumentEditor::Applied DocumentEditor::apply(const ZTDocument& source, const ApplyOptions& options) {
  std::set<std::string> unseen = options.only;
  const auto isChosen = [&](const OdfStyle& style) {
    const std::array<std::string, 3> names = {source.labelOf(style), style.name().text(),
                                              std::string(fileNameOf(style))};
    return options.only.empty() || std::count_if(names.begin(), names.end(), [&](const std::string& name) {
                                     unseen.erase(name);
                                     return options.only.contains(name);
                                   }) != 0;
  };
  Application application(source, mDocument, mRules);
  for (const Ref<OdfStyle>& style : source.readStyles()) {
    if (style->stylesheet() == nullptr || !isNamedStyle(*style) || !isChosen(*style)) continue;
    if (options.adds || named(mDocument, *style) != nullptr) application.want(*style);
  }
  if (!unseen.empty()) throw EditError(fmt::format("{} has no style '{}'", source.shown, *unseen.begin()));
  Applied applied;
  std::vector<std::pair<OdfStyle*, const OdfStyle*>> copies;
  for (const OdfStyle* style : application.inOrder()) {
    OdfStyle* there = named(mDocument, *style);
    if (there == nullptr) {
      copies.emplace_back(&application.styleFor(*style), style);
      applied.added.push_back(style->identifier().text());
    } else if (!sayTheSame(*there, *style) || there->parentIdentifier() != style->parentIdentifier() ||
               there->name() != style->name()) {
      mean(*there, nullptr);
      copies.emplace_back(there, style);
      applied.replaced.push_back(style->identifier().text());
    }
  }
  for (const auto& [target, style] : copies) {
    application.copyInto(*target, *style);
    const StyleOrigin* origin = source.originOf(*style);
    needFonts(*target, source, origin != nullptr ? origin->part : 0, partOfNamedStyles());
  }
  if (!options.removesOthers) return applied;
  for (const Ref<OdfStyle>& style : mDocument.readStyles()) {
    const bool isOther = style->stylesheet() != nullptr && isNamedStyle(*style) &&
                         style->family() != StyleFamily::list && named(source, *style) == nullptr &&
                         !mRules.isUsedUnnamed(*style);
    if (!isOther) continue;
    applied.removed.push_back(style->identifier().text());
    remove(*style, KeepLook::no);
  }
  return applied;
}

}  // namespace zt
