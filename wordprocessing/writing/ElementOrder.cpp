// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/ElementOrder.h>

#include <algorithm>
#include <array>
#include <span>

namespace zt {

namespace {

using Name = std::string_view;

constexpr std::array kParagraph = {Name{"pStyle"},
                                   Name{"keepNext"},
                                   Name{"keepLines"},
                                   Name{"pageBreakBefore"},
                                   Name{"framePr"},
                                   Name{"widowControl"},
                                   Name{"numPr"},
                                   Name{"suppressLineNumbers"},
                                   Name{"pBdr"},
                                   Name{"shd"},
                                   Name{"tabs"},
                                   Name{"suppressAutoHyphens"},
                                   Name{"kinsoku"},
                                   Name{"wordWrap"},
                                   Name{"overflowPunct"},
                                   Name{"topLinePunct"},
                                   Name{"autoSpaceDE"},
                                   Name{"autoSpaceDN"},
                                   Name{"bidi"},
                                   Name{"adjustRightInd"},
                                   Name{"snapToGrid"},
                                   Name{"spacing"},
                                   Name{"ind"},
                                   Name{"contextualSpacing"},
                                   Name{"mirrorIndents"},
                                   Name{"suppressOverlap"},
                                   Name{"jc"},
                                   Name{"textDirection"},
                                   Name{"textAlignment"},
                                   Name{"textboxTightWrap"},
                                   Name{"outlineLvl"},
                                   Name{"divId"},
                                   Name{"cnfStyle"},
                                   Name{"rPr"},
                                   Name{"sectPr"}};

constexpr std::array kRun = {Name{"ins"},
                             Name{"del"},
                             Name{"moveFrom"},
                             Name{"moveTo"},
                             Name{"rStyle"},
                             Name{"rFonts"},
                             Name{"b"},
                             Name{"bCs"},
                             Name{"i"},
                             Name{"iCs"},
                             Name{"caps"},
                             Name{"smallCaps"},
                             Name{"strike"},
                             Name{"dstrike"},
                             Name{"outline"},
                             Name{"shadow"},
                             Name{"emboss"},
                             Name{"imprint"},
                             Name{"noProof"},
                             Name{"snapToGrid"},
                             Name{"vanish"},
                             Name{"webHidden"},
                             Name{"color"},
                             Name{"spacing"},
                             Name{"w"},
                             Name{"kern"},
                             Name{"position"},
                             Name{"sz"},
                             Name{"szCs"},
                             Name{"highlight"},
                             Name{"u"},
                             Name{"effect"},
                             Name{"bdr"},
                             Name{"shd"},
                             Name{"fitText"},
                             Name{"vertAlign"},
                             Name{"rtl"},
                             Name{"cs"},
                             Name{"em"},
                             Name{"lang"},
                             Name{"eastAsianLayout"},
                             Name{"specVanish"},
                             Name{"oMath"}};

constexpr std::array kTable = {Name{"tblStyle"},
                               Name{"tblpPr"},
                               Name{"tblOverlap"},
                               Name{"bidiVisual"},
                               Name{"tblStyleRowBandSize"},
                               Name{"tblStyleColBandSize"},
                               Name{"tblW"},
                               Name{"jc"},
                               Name{"tblCellSpacing"},
                               Name{"tblInd"},
                               Name{"tblBorders"},
                               Name{"shd"},
                               Name{"tblLayout"},
                               Name{"tblCellMar"},
                               Name{"tblLook"}};

constexpr std::array kCell = {Name{"cnfStyle"}, Name{"tcW"},           Name{"gridSpan"},  Name{"hMerge"},
                              Name{"vMerge"},   Name{"tcBorders"},     Name{"shd"},       Name{"noWrap"},
                              Name{"tcMar"},    Name{"textDirection"}, Name{"tcFitText"}, Name{"vAlign"},
                              Name{"hideMark"}};

constexpr std::array kStyle = {Name{"name"},          Name{"aliases"},
                               Name{"basedOn"},       Name{"next"},
                               Name{"link"},          Name{"autoRedefine"},
                               Name{"hidden"},        Name{"uiPriority"},
                               Name{"semiHidden"},    Name{"unhideWhenUsed"},
                               Name{"qFormat"},       Name{"locked"},
                               Name{"personal"},      Name{"personalCompose"},
                               Name{"personalReply"}, Name{"rsid"},
                               Name{"pPr"},           Name{"rPr"},
                               Name{"tblPr"},         Name{"trPr"},
                               Name{"tcPr"},          Name{"tblStylePr"}};

constexpr std::array kLevel = {Name{"start"},  Name{"numFmt"}, Name{"lvlRestart"}, Name{"pStyle"},
                               Name{"isLgl"},  Name{"suff"},   Name{"lvlText"},    Name{"lvlPicBulletId"},
                               Name{"legacy"}, Name{"lvlJc"},  Name{"pPr"},        Name{"rPr"}};

constexpr std::array kList = {Name{"nsid"},      Name{"multiLevelType"}, Name{"tmpl"}, Name{"name"},
                              Name{"styleLink"}, Name{"numStyleLink"},   Name{"lvl"}};

constexpr std::array kNumber = {Name{"ilvl"}, Name{"numId"}};
constexpr std::array kSides = {Name{"top"},     Name{"left"},    Name{"start"},   Name{"bottom"},
                               Name{"right"},   Name{"end"},     Name{"between"}, Name{"bar"},
                               Name{"insideH"}, Name{"insideV"}, Name{"tl2br"},   Name{"tr2bl"}};
constexpr std::array kDefaults = {Name{"rPrDefault"}, Name{"pPrDefault"}};

std::span<const Name> childrenOf(std::string_view parent) {
  if (parent == "pPr") return kParagraph;
  if (parent == "rPr") return kRun;
  if (parent == "tblPr") return kTable;
  if (parent == "tcPr") return kCell;
  if (parent == "style" || parent == "tblStylePr") return kStyle;
  if (parent == "lvl") return kLevel;
  if (parent == "abstractNum") return kList;
  if (parent == "numPr") return kNumber;
  if (parent == "docDefaults") return kDefaults;
  return parent == "pBdr" || parent.ends_with("Borders") || parent.ends_with("Mar") ? std::span<const Name>(kSides)
                                                                                    : std::span<const Name>();
}

}  // namespace

int placeAmongChildren(std::string_view parent, std::string_view child) {
  constexpr int kUnknown = 900;
  constexpr int kChange = 1'000;
  if (child.ends_with("Change")) return kChange;
  const std::span<const Name> known = childrenOf(parent);
  const auto found = std::find(known.begin(), known.end(), child);
  return found == known.end() ? kUnknown : static_cast<int>(found - known.begin());
}

}  // namespace zt
