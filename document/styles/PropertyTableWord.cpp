// SPDX-License-Identifier: MIT
#include <document/styles/PropertyTable.h>

#include <array>

namespace zt {

namespace {

using Row = PropertyRow;

constexpr std::string_view kJustifications =
    "left right center both start end distribute mediumKashida highKashida lowKashida thaiDistribute numTab";

// w:rPr, ECMA-376 part 1, 17.3.2. Which are toggles is said in 17.7.3.
constexpr std::array kRun = {Row{"w.b", "B~"},
                             Row{"w.bCs", "B~"},
                             Row{"w.i", "B~"},
                             Row{"w.iCs", "B~"},
                             Row{"w.caps", "B~"},
                             Row{"w.smallCaps", "B~"},
                             Row{"w.strike", "B~"},
                             Row{"w.outline", "B~"},
                             Row{"w.shadow", "B~"},
                             Row{"w.emboss", "B~"},
                             Row{"w.imprint", "B~"},
                             Row{"w.vanish", "B~"},
                             Row{"w.dstrike", "B"},
                             Row{"w.noProof", "B"},
                             Row{"w.snapToGrid", "B"},
                             Row{"w.webHidden", "B"},
                             Row{"w.specVanish", "B"},
                             Row{"w.rtl", "B"},
                             Row{"w.cs", "B"},
                             Row{"w.oMath", "B"},
                             Row{"w.sz", "L."},
                             Row{"w.szCs", "L."},
                             Row{"w.kern", "L."},
                             Row{"w.position", "L."},
                             Row{"w.spacing", "L."},
                             Row{"w.w", "P"},
                             Row{"w.color", "CT"},
                             Row{"w.u", "T"},
                             Row{"w.u.color", "CT"},
                             Row{"w.highlight", "T"},
                             Row{"w.vertAlign", "", "baseline superscript subscript"},
                             Row{"w.effect", "T"},
                             Row{"w.em", "T"},
                             Row{"w.rFonts.ascii", "T"},
                             Row{"w.rFonts.hAnsi", "T"},
                             Row{"w.rFonts.eastAsia", "T"},
                             Row{"w.rFonts.cs", "T"},
                             Row{"w.rFonts.hint", "T"},
                             Row{"w.lang.val", "T"},
                             Row{"w.lang.eastAsia", "T"},
                             Row{"w.lang.bidi", "T"},
                             Row{"w.shd", "X"},
                             Row{"w.bdr", "X"},
                             Row{"w.fitText", "X"},
                             Row{"w.eastAsianLayout", "X"}};

// w:pPr, 17.3.1.
constexpr std::array kParagraph = {Row{"w.keepNext", "B"},
                                   Row{"w.keepLines", "B"},
                                   Row{"w.pageBreakBefore", "B"},
                                   Row{"w.widowControl", "B"},
                                   Row{"w.suppressLineNumbers", "B"},
                                   Row{"w.suppressAutoHyphens", "B"},
                                   Row{"w.suppressOverlap", "B"},
                                   Row{"w.kinsoku", "B"},
                                   Row{"w.wordWrap", "B"},
                                   Row{"w.overflowPunct", "B"},
                                   Row{"w.topLinePunct", "B"},
                                   Row{"w.autoSpaceDE", "B"},
                                   Row{"w.autoSpaceDN", "B"},
                                   Row{"w.bidi", "B"},
                                   Row{"w.adjustRightInd", "B"},
                                   Row{"w.snapToGrid", "B"},
                                   Row{"w.contextualSpacing", "B"},
                                   Row{"w.mirrorIndents", "B"},
                                   Row{"w.jc", "", kJustifications},
                                   Row{"w.spacing.before", "L."},
                                   Row{"w.spacing.after", "L."},
                                   Row{"w.spacing.beforeLines", "I"},
                                   Row{"w.spacing.afterLines", "I"},
                                   Row{"w.spacing.beforeAutospacing", "B"},
                                   Row{"w.spacing.afterAutospacing", "B"},
                                   Row{"w.spacing.line", "LP."},
                                   Row{"w.spacing.lineRule", "", "auto exact atLeast"},
                                   Row{"w.ind.left", "L."},
                                   Row{"w.ind.right", "L."},
                                   Row{"w.ind.firstLine", "L."},  // below 0: hanging
                                   Row{"w.ind.leftChars", "I"},
                                   Row{"w.ind.rightChars", "I"},
                                   Row{"w.ind.firstLineChars", "I"},  // likewise
                                   Row{"w.outlineLvl", "I"},
                                   Row{"w.textAlignment", "", "top center baseline bottom auto"},
                                   Row{"w.textDirection", "T"},
                                   Row{"w.textboxTightWrap", "T"},
                                   Row{"w.divId", "T!"},
                                   Row{"w.tabs", "X"},
                                   Row{"w.pBdr.top", "X"},
                                   Row{"w.pBdr.left", "X"},
                                   Row{"w.pBdr.bottom", "X"},
                                   Row{"w.pBdr.right", "X"},
                                   Row{"w.pBdr.between", "X"},
                                   Row{"w.pBdr.bar", "X"},
                                   Row{"w.shd", "X"},
                                   Row{"w.framePr", "X"}};

// w:tblPr, 17.4.59 and 17.4.60; the styles of the parts of a table (w:tblStylePr), 17.7.6.6.
constexpr std::array kTable = {Row{"w.jc", "", kJustifications},
                               Row{"w.bidiVisual", "B"},
                               Row{"w.tblStyleRowBandSize", "I"},
                               Row{"w.tblStyleColBandSize", "I"},
                               Row{"w.tblLayout", "X"},
                               Row{"w.tblInd", "X"},
                               Row{"w.tblW", "X"},
                               Row{"w.tblCellSpacing", "X"},
                               Row{"w.shd", "X"},
                               Row{"w.tblStylePr.wholeTable", "S"},
                               Row{"w.tblStylePr.band1Vert", "S"},
                               Row{"w.tblStylePr.band2Vert", "S"},
                               Row{"w.tblStylePr.band1Horz", "S"},
                               Row{"w.tblStylePr.band2Horz", "S"},
                               Row{"w.tblStylePr.firstCol", "S"},
                               Row{"w.tblStylePr.lastCol", "S"},
                               Row{"w.tblStylePr.firstRow", "S"},
                               Row{"w.tblStylePr.lastRow", "S"},
                               Row{"w.tblStylePr.nwCell", "S"},
                               Row{"w.tblStylePr.neCell", "S"},
                               Row{"w.tblStylePr.swCell", "S"},
                               Row{"w.tblStylePr.seCell", "S"}};

constexpr std::array kTableRow = {Row{"w.cantSplit", "B"}, Row{"w.tblHeader", "B"}, Row{"w.hidden", "B"},
                                  Row{"w.jc", "", kJustifications}, Row{"w.trHeight", "X"}};

constexpr std::array kTableCell = {Row{"w.noWrap", "B"},   Row{"w.tcFitText", "B"},
                                   Row{"w.hideMark", "B"}, Row{"w.vAlign", "", "top center both bottom"},
                                   Row{"w.shd", "X"},      Row{"w.textDirection", "T"}};

// w:lvl, 17.9.6. The paragraph style is a reference.
constexpr std::array kLevel = {Row{"w.start", "I"},      Row{"w.numFmt", "T"}, Row{"w.lvlText", "T"},
                               Row{"w.lvlJc", "T"},      Row{"w.suff", "T"},   Row{"w.isLgl", "B"},
                               Row{"w.lvlRestart", "I"}, Row{"w.pStyle", "S"}, Row{"w.legacy", "X"}};

// w:abstractNum, 17.9.1.
constexpr std::array kList = {Row{"w.multiLevelType", "T"}, Row{"w.nsid", "T!"},      Row{"w.tmpl", "T!"},
                              Row{"w.name", "T!"},          Row{"w.styleLink", "T!"}, Row{"w.numStyleLink", "T!"}};

// What a w:style says beside its looks, 17.7.4.
constexpr std::array kStyleItself = {
    Row{"w.aliases", "T!"},         Row{"w.uiPriority", "I!"},     Row{"w.qFormat", "B!"},
    Row{"w.semiHidden", "B!"},      Row{"w.unhideWhenUsed", "B!"}, Row{"w.hidden", "B!"},
    Row{"w.locked", "B!"},          Row{"w.autoRedefine", "B!"},   Row{"w.personal", "B!"},
    Row{"w.personalCompose", "B!"}, Row{"w.personalReply", "B!"},  Row{"w.rsid", "T!"},
    Row{"w.default", "B!"},         Row{"w.customStyle", "B!"},    Row{"w.latentStyles", "X!"}};

// a:clrScheme and a:fontScheme, 20.1.6.2 and 20.1.4.1.18; w:clrSchemeMapping, 17.15.1.20.
constexpr std::array kTheme = {Row{"a.dk1", "C"},
                               Row{"a.lt1", "C"},
                               Row{"a.dk2", "C"},
                               Row{"a.lt2", "C"},
                               Row{"a.accent1", "C"},
                               Row{"a.accent2", "C"},
                               Row{"a.accent3", "C"},
                               Row{"a.accent4", "C"},
                               Row{"a.accent5", "C"},
                               Row{"a.accent6", "C"},
                               Row{"a.hlink", "C"},
                               Row{"a.folHlink", "C"},
                               Row{"a.majorFont.latin", "T"},
                               Row{"a.majorFont.ea", "T"},
                               Row{"a.majorFont.cs", "T"},
                               Row{"a.minorFont.latin", "T"},
                               Row{"a.minorFont.ea", "T"},
                               Row{"a.minorFont.cs", "T"},
                               Row{"w.clrSchemeMapping.bg1", "T"},
                               Row{"w.clrSchemeMapping.t1", "T"},
                               Row{"w.clrSchemeMapping.bg2", "T"},
                               Row{"w.clrSchemeMapping.t2", "T"},
                               Row{"w.clrSchemeMapping.accent1", "T"},
                               Row{"w.clrSchemeMapping.accent2", "T"},
                               Row{"w.clrSchemeMapping.accent3", "T"},
                               Row{"w.clrSchemeMapping.accent4", "T"},
                               Row{"w.clrSchemeMapping.accent5", "T"},
                               Row{"w.clrSchemeMapping.accent6", "T"},
                               Row{"w.clrSchemeMapping.hyperlink", "T"},
                               Row{"w.clrSchemeMapping.followedHyperlink", "T"}};

constexpr std::array kGroups = {
    PropertyGroup{"text", kRun},           PropertyGroup{"paragraph", kParagraph},  PropertyGroup{"table", kTable},
    PropertyGroup{"table-row", kTableRow}, PropertyGroup{"table-cell", kTableCell}, PropertyGroup{"level", kLevel},
    PropertyGroup{"list", kList},          PropertyGroup{"style", kStyleItself},    PropertyGroup{"theme", kTheme}};

}  // namespace

std::span<const PropertyGroup> wordPropertyGroups() { return kGroups; }

}  // namespace zt
