// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The concrete style classes, one for each family.

#include <document/styles/ShapeStyle.h>

#include <type_traits>

namespace zt {

/// A style of one family.
template <StyleFamily kFamily>
class FamilyStyle : public std::conditional_t<isShapeFamily(kFamily), ShapeStyle, OdfStyle> {
 public:
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  [[nodiscard]] StyleFamily family() const override { return kFamily; }
  /// Paragraph styles refer to list styles, list styles to their levels, levels to text styles and to the paragraph
  /// styles that they number, table styles to the styles of their parts.
  const std::vector<PropertyKey>& referencedStyleProperties() const override;
  bool isReferencedStyleProperty(PropertyKey key) const override;

 protected:
  FamilyStyle() = default;
  ~FamilyStyle() override = default;
};

using ParagraphStyle = FamilyStyle<StyleFamily::paragraph>;
using TextStyle = FamilyStyle<StyleFamily::text>;
using TableStyle = FamilyStyle<StyleFamily::table>;
using TableColumnStyle = FamilyStyle<StyleFamily::tableColumn>;
using TableRowStyle = FamilyStyle<StyleFamily::tableRow>;
using TableCellStyle = FamilyStyle<StyleFamily::tableCell>;
using SectionStyle = FamilyStyle<StyleFamily::section>;
using GraphicStyle = FamilyStyle<StyleFamily::graphic>;
using PresentationStyle = FamilyStyle<StyleFamily::presentation>;
using DrawingPageStyle = FamilyStyle<StyleFamily::drawingPage>;
using ChartStyle = FamilyStyle<StyleFamily::chart>;
using RubyStyle = FamilyStyle<StyleFamily::ruby>;
using ListStyle = FamilyStyle<StyleFamily::list>;
using ListLevelStyle = FamilyStyle<StyleFamily::listLevel>;
using OtherStyle = FamilyStyle<StyleFamily::other>;

}  // namespace zt
