// SPDX-License-Identifier: MIT
#include <document/styles/FamilyStyles.h>

#include <document/styles/PropertyRules.h>

#include <algorithm>

namespace zt {

namespace {

constexpr const char* className(StyleFamily family) {
  switch (family) {
    case StyleFamily::paragraph: return "ParagraphStyle";
    case StyleFamily::text: return "TextStyle";
    case StyleFamily::table: return "TableStyle";
    case StyleFamily::tableColumn: return "TableColumnStyle";
    case StyleFamily::tableRow: return "TableRowStyle";
    case StyleFamily::tableCell: return "TableCellStyle";
    case StyleFamily::section: return "SectionStyle";
    case StyleFamily::graphic: return "GraphicStyle";
    case StyleFamily::presentation: return "PresentationStyle";
    case StyleFamily::drawingPage: return "DrawingPageStyle";
    case StyleFamily::chart: return "ChartStyle";
    case StyleFamily::ruby: return "RubyStyle";
    case StyleFamily::list: return "ListStyle";
    case StyleFamily::listLevel: return "ListLevelStyle";
    case StyleFamily::other: return "OtherStyle";
  }
  return "OtherStyle";
}

/// What the library's class template knows about the C++ class, with the registry of the family.
template <StyleFamily kFamily>
class FamilyStyleClass : public ZTSStyleClassOf<FamilyStyle<kFamily>> {
 public:
  using ZTSStyleClassOf<FamilyStyle<kFamily>>::ZTSStyleClassOf;
  const PropertySet& properties() const override { return FamilyRegistry::of(kFamily).properties(); }
};

std::vector<PropertyKey> references(StyleFamily family) {
  std::vector<PropertyKey> found;
  if (family == StyleFamily::paragraph) found.push_back(keys::listStyle());
  if (family == StyleFamily::listLevel) found = {keys::levelTextStyle(), keys::levelParagraphStyle()};
  if (family == StyleFamily::table) found = keys::tableConditions();
  if (family == StyleFamily::list) {
    for (std::size_t level = 1; level <= keys::kListLevels; ++level) found.push_back(keys::listLevel(level));
  }
  return found;
}

}  // namespace

template <StyleFamily kFamily>
const ZTSStyleClass& FamilyStyle<kFamily>::styleClass() {
  static const auto* object = new FamilyStyleClass<kFamily>(className(kFamily), OdfStyle::styleClass());
  return *object;
}

template <StyleFamily kFamily>
const std::vector<PropertyKey>& FamilyStyle<kFamily>::referencedStyleProperties() const {
  static const auto* list = new std::vector<PropertyKey>(references(kFamily));
  return *list;
}

template <StyleFamily kFamily>
bool FamilyStyle<kFamily>::isReferencedStyleProperty(PropertyKey key) const {
  const auto& list = referencedStyleProperties();
  return std::find(list.begin(), list.end(), key) != list.end();
}

template class FamilyStyle<StyleFamily::paragraph>;
template class FamilyStyle<StyleFamily::text>;
template class FamilyStyle<StyleFamily::table>;
template class FamilyStyle<StyleFamily::tableColumn>;
template class FamilyStyle<StyleFamily::tableRow>;
template class FamilyStyle<StyleFamily::tableCell>;
template class FamilyStyle<StyleFamily::section>;
template class FamilyStyle<StyleFamily::graphic>;
template class FamilyStyle<StyleFamily::presentation>;
template class FamilyStyle<StyleFamily::drawingPage>;
template class FamilyStyle<StyleFamily::chart>;
template class FamilyStyle<StyleFamily::ruby>;
template class FamilyStyle<StyleFamily::list>;
template class FamilyStyle<StyleFamily::listLevel>;
template class FamilyStyle<StyleFamily::other>;

const ZTSStyleClass& familyStyleClass(StyleFamily family) {
  switch (family) {
    case StyleFamily::paragraph: return ParagraphStyle::styleClass();
    case StyleFamily::text: return TextStyle::styleClass();
    case StyleFamily::table: return TableStyle::styleClass();
    case StyleFamily::tableColumn: return TableColumnStyle::styleClass();
    case StyleFamily::tableRow: return TableRowStyle::styleClass();
    case StyleFamily::tableCell: return TableCellStyle::styleClass();
    case StyleFamily::section: return SectionStyle::styleClass();
    case StyleFamily::graphic: return GraphicStyle::styleClass();
    case StyleFamily::presentation: return PresentationStyle::styleClass();
    case StyleFamily::drawingPage: return DrawingPageStyle::styleClass();
    case StyleFamily::chart: return ChartStyle::styleClass();
    case StyleFamily::ruby: return RubyStyle::styleClass();
    case StyleFamily::list: return ListStyle::styleClass();
    case StyleFamily::listLevel: return ListLevelStyle::styleClass();
    case StyleFamily::other: break;
  }
  return OtherStyle::styleClass();
}

}  // namespace zt
