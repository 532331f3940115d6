#include <app/styles/PropertyTable.h>

#include <array>

namespace zt {

namespace {

using Row = PropertyRow;

constexpr std::string_view kLineStyles = "none solid dotted dash long-dash dot-dash dot-dot-dash wave";
constexpr std::string_view kLineTypes = "none single double";
constexpr std::string_view kLineWidths = "auto normal bold thin medium thick";
constexpr std::string_view kLineModes = "continuous skip-white-space";
constexpr std::string_view kWeights = "normal bold 100 200 300 400 500 600 700 800 900";
constexpr std::string_view kPostures = "normal italic oblique";
constexpr std::string_view kGenericFamilies = "roman swiss modern decorative script system";
constexpr std::string_view kPitches = "fixed variable";
constexpr std::string_view kWritingModes = "lr-tb rl-tb tb-rl tb-lr lr rl tb page bt-lr";
constexpr std::string_view kBreaks = "auto column page even-page odd-page";

constexpr std::array kText = {
    Row{"fo.font-size", "L^."}, Row{"style.font-size-asian", "L^."}, Row{"style.font-size-complex", "L^."},
    Row{"style.font-size-rel", "L."}, Row{"style.font-size-rel-asian", "L."}, Row{"style.font-size-rel-complex", "L."},
    Row{"fo.color", "C"}, Row{"fo.background-color", "C"}, Row{"style.use-window-font-color", "B"},
    Row{"style.font-name", "T"}, Row{"style.font-name-asian", "T"}, Row{"style.font-name-complex", "T"},
    Row{"fo.font-family", "T"}, Row{"style.font-family-asian", "T"}, Row{"style.font-family-complex", "T"},
    Row{"style.font-family-generic", "", kGenericFamilies}, Row{"style.font-family-generic-asian", "", kGenericFamilies},
    Row{"style.font-family-generic-complex", "", kGenericFamilies}, Row{"style.font-style-name", "T"},
    Row{"style.font-style-name-asian", "T"}, Row{"style.font-style-name-complex", "T"},
    Row{"style.font-pitch", "", kPitches}, Row{"style.font-pitch-asian", "", kPitches},
    Row{"style.font-pitch-complex", "", kPitches}, Row{"style.font-charset", "T"}, Row{"style.font-charset-asian", "T"},
    Row{"style.font-charset-complex", "T"}, Row{"fo.font-weight", "", kWeights},
    Row{"style.font-weight-asian", "", kWeights}, Row{"style.font-weight-complex", "", kWeights},
    Row{"fo.font-style", "", kPostures}, Row{"style.font-style-asian", "", kPostures},
    Row{"style.font-style-complex", "", kPostures}, Row{"fo.font-variant", "", "normal small-caps"},
    Row{"fo.language", "T"}, Row{"style.language-asian", "T"}, Row{"style.language-complex", "T"}, Row{"fo.country", "T"},
    Row{"style.country-asian", "T"}, Row{"style.country-complex", "T"}, Row{"fo.script", "T"}, Row{"style.script-asian", "T"},
    Row{"style.script-complex", "T"}, Row{"style.rfc-language-tag", "T"}, Row{"style.rfc-language-tag-asian", "T"},
    Row{"style.rfc-language-tag-complex", "T"}, Row{"style.script-type", "", "latin asian complex ignore"},
    Row{"fo.letter-spacing", "LP", "normal"}, Row{"style.letter-kerning", "B"},
    Row{"fo.text-transform", "", "none lowercase uppercase capitalize"}, Row{"fo.text-shadow", "T"},
    Row{"style.text-position", "T"}, Row{"style.text-scale", "P"}, Row{"style.text-rotation-angle", "N", "0deg 90deg 270deg"},
    Row{"style.text-rotation-scale", "", "fixed line-height"}, Row{"style.text-outline", "B"}, Row{"style.text-blinking", "B"},
    Row{"style.text-combine", "", "none letters lines"}, Row{"style.text-combine-start-char", "T"},
    Row{"style.text-combine-end-char", "T"}, Row{"style.text-emphasize", "T"},
    Row{"style.font-relief", "", "none embossed engraved"}, Row{"style.text-underline-style", "", kLineStyles},
    Row{"style.text-underline-type", "", kLineTypes}, Row{"style.text-underline-width", "LPI", kLineWidths},
    Row{"style.text-underline-mode", "", kLineModes}, Row{"style.text-underline-color", "C", "font-color"},
    Row{"style.text-overline-style", "", kLineStyles}, Row{"style.text-overline-type", "", kLineTypes},
    Row{"style.text-overline-width", "LPI", kLineWidths}, Row{"style.text-overline-mode", "", kLineModes},
    Row{"style.text-overline-color", "C", "font-color"}, Row{"style.text-line-through-style", "", kLineStyles},
    Row{"style.text-line-through-type", "", kLineTypes}, Row{"style.text-line-through-width", "LPI", kLineWidths},
    Row{"style.text-line-through-mode", "", kLineModes}, Row{"style.text-line-through-color", "C", "font-color"},
    Row{"style.text-line-through-text", "T"}, Row{"style.text-line-through-text-style", "T"}, Row{"fo.hyphenate", "B"},
    Row{"fo.hyphenation-remain-char-count", "I"}, Row{"fo.hyphenation-push-char-count", "I"},
    Row{"text.display", "", "true none condition"}, Row{"text.condition", "T"}, Row{"loext.opacity", "P"},
    Row{"loext.color-lum-mod", "P"}, Row{"loext.color-lum-off", "P"}, Row{"loext.theme-color", "T"},
    Row{"loext.hyphenation-no-caps", "B"}, Row{"loext.hyphenation-no-last-word", "B"},
    Row{"loext.hyphenation-word-char-count", "I", "no-limit"}, Row{"loext.hyphenation-zone", "LI", "no-limit"},
    Row{"officeooo.rsid", "T"}, Row{"officeooo.paragraph-rsid", "T"}};

constexpr std::array kParagraph = {
    Row{"fo.margin-left", "L^"}, Row{"fo.margin-right", "L^"}, Row{"fo.margin-top", "L^"}, Row{"fo.margin-bottom", "L^"},
    Row{"fo.text-indent", "L^"}, Row{"style.auto-text-indent", "B"}, Row{"fo.line-height", "LP", "normal"},
    Row{"style.line-height-at-least", "L"}, Row{"style.line-spacing", "L"}, Row{"style.font-independent-line-spacing", "B"},
    Row{"fo.text-align", "", "start end left right center justify inside outside"},
    Row{"fo.text-align-last", "", "start end left right center justify"}, Row{"style.justify-single-word", "B"},
    Row{"fo.keep-together", "", "auto always"}, Row{"fo.keep-with-next", "", "auto always"}, Row{"fo.widows", "I"},
    Row{"fo.orphans", "I"}, Row{"fo.break-before", "", kBreaks}, Row{"fo.break-after", "", kBreaks},
    Row{"style.page-number", "I", "auto"}, Row{"fo.background-color", "C"}, Row{"fo.padding", "L"},
    Row{"fo.padding-left", "L"}, Row{"fo.padding-right", "L"}, Row{"fo.padding-top", "L"}, Row{"fo.padding-bottom", "L"},
    Row{"fo.border", "T"}, Row{"fo.border-left", "T"}, Row{"fo.border-right", "T"}, Row{"fo.border-top", "T"},
    Row{"fo.border-bottom", "T"}, Row{"style.border-line-width", "T"}, Row{"style.border-line-width-left", "T"},
    Row{"style.border-line-width-right", "T"}, Row{"style.border-line-width-top", "T"},
    Row{"style.border-line-width-bottom", "T"}, Row{"style.join-border", "B"}, Row{"style.shadow", "T"},
    Row{"style.tab-stop-distance", "L"}, Row{"style.tab-stops", "X"}, Row{"style.drop-cap", "X"},
    Row{"style.background-image", "X"}, Row{"fo.hyphenation-keep", "", "auto page column spread"},
    Row{"fo.hyphenation-ladder-count", "I", "no-limit"}, Row{"style.register-true", "B"},
    Row{"style.text-autospace", "", "none ideograph-alpha"}, Row{"style.punctuation-wrap", "", "simple hanging"},
    Row{"style.line-break", "", "normal strict"}, Row{"style.vertical-align", "", "top middle bottom auto baseline"},
    Row{"style.writing-mode", "", kWritingModes}, Row{"style.writing-mode-automatic", "B"},
    Row{"style.snap-to-layout-grid", "B"}, Row{"style.background-transparency", "P"}, Row{"style.contextual-spacing", "B"},
    Row{"loext.contextual-spacing", "B"}, Row{"text.number-lines", "B"}, Row{"text.line-number", "I"}};

constexpr std::array kTable = {
    Row{"style.width", "L"}, Row{"style.rel-width", "P"}, Row{"fo.margin-left", "LP"}, Row{"fo.margin-right", "LP"},
    Row{"fo.margin-top", "LP"}, Row{"fo.margin-bottom", "LP"}, Row{"table.align", "", "center left margins right"},
    Row{"table.border-model", "", "collapsing separating"}, Row{"table.display", "B"},
    Row{"style.may-break-between-rows", "B"}, Row{"fo.keep-with-next", "", "auto always"}, Row{"fo.break-before", "", kBreaks},
    Row{"fo.break-after", "", kBreaks}, Row{"style.page-number", "I", "auto"}, Row{"fo.background-color", "C"},
    Row{"style.background-image", "X"}, Row{"style.shadow", "T"}, Row{"style.writing-mode", "", kWritingModes}};

constexpr std::array kTableColumn = {
    Row{"style.column-width", "L"}, Row{"style.rel-column-width", "T"}, Row{"style.use-optimal-column-width", "B"},
    Row{"fo.break-before", "", kBreaks}, Row{"fo.break-after", "", kBreaks}};

constexpr std::array kTableRow = {
    Row{"style.row-height", "L"}, Row{"style.min-row-height", "L"}, Row{"style.use-optimal-row-height", "B"},
    Row{"fo.keep-together", "", "auto always"}, Row{"fo.background-color", "C"}, Row{"style.background-image", "X"},
    Row{"fo.break-before", "", kBreaks}, Row{"fo.break-after", "", kBreaks}};

constexpr std::array kTableCell = {
    Row{"fo.background-color", "C"}, Row{"style.background-image", "X"}, Row{"fo.padding", "L"}, Row{"fo.padding-left", "L"},
    Row{"fo.padding-right", "L"}, Row{"fo.padding-top", "L"}, Row{"fo.padding-bottom", "L"}, Row{"fo.border", "T"},
    Row{"fo.border-left", "T"}, Row{"fo.border-right", "T"}, Row{"fo.border-top", "T"}, Row{"fo.border-bottom", "T"},
    Row{"style.border-line-width", "T"}, Row{"style.border-line-width-left", "T"}, Row{"style.border-line-width-right", "T"},
    Row{"style.border-line-width-top", "T"}, Row{"style.border-line-width-bottom", "T"}, Row{"style.diagonal-tl-br", "T"},
    Row{"style.diagonal-bl-tr", "T"}, Row{"style.shadow", "T"},
    Row{"style.vertical-align", "", "top middle bottom automatic baseline auto"},
    Row{"style.text-align-source", "", "fix value-type"}, Row{"style.direction", "", "ltr ttb"},
    Row{"style.glyph-orientation-vertical", "T"}, Row{"style.writing-mode", "", kWritingModes},
    Row{"fo.wrap-option", "", "wrap no-wrap"}, Row{"style.shrink-to-fit", "B"}, Row{"style.rotation-angle", "N"},
    Row{"style.rotation-align", "", "none bottom top center"}, Row{"style.cell-protect", "T"}, Row{"style.print-content", "B"},
    Row{"style.decimal-places", "I"}, Row{"style.repeat-content", "B"}};

constexpr std::array kSection = {
    Row{"fo.margin-left", "LP"}, Row{"fo.margin-right", "LP"}, Row{"fo.margin-top", "LP"}, Row{"fo.margin-bottom", "LP"},
    Row{"fo.background-color", "C"}, Row{"style.background-image", "X"}, Row{"style.columns", "X"},
    Row{"style.editable", "B"}, Row{"style.protect", "B"}, Row{"style.writing-mode", "", kWritingModes},
    Row{"text.dont-balance-text-columns", "B"}};

constexpr std::array kGraphic = {
    Row{"svg.width", "L"}, Row{"svg.height", "L"}, Row{"svg.x", "L"}, Row{"svg.y", "L"}, Row{"fo.min-width", "LP"},
    Row{"fo.min-height", "LP"}, Row{"fo.max-width", "LP"}, Row{"fo.max-height", "LP"},
    Row{"style.rel-width", "P", "scale scale-min"}, Row{"style.rel-height", "P", "scale scale-min"},
    Row{"fo.margin-left", "LP"}, Row{"fo.margin-right", "LP"}, Row{"fo.margin-top", "LP"}, Row{"fo.margin-bottom", "LP"},
    Row{"fo.padding", "L"}, Row{"fo.padding-left", "L"}, Row{"fo.padding-right", "L"}, Row{"fo.padding-top", "L"},
    Row{"fo.padding-bottom", "L"}, Row{"fo.border", "T"}, Row{"fo.border-left", "T"}, Row{"fo.border-right", "T"},
    Row{"fo.border-top", "T"}, Row{"fo.border-bottom", "T"}, Row{"fo.background-color", "C"},
    Row{"style.background-image", "X"}, Row{"style.background-transparency", "P"}, Row{"style.columns", "X"},
    Row{"style.shadow", "T"}, Row{"fo.clip", "T"}, Row{"fo.wrap-option", "", "wrap no-wrap"},
    Row{"text.anchor-type", "", "page frame paragraph char as-char"}, Row{"text.anchor-page-number", "I"},
    Row{"style.horizontal-pos", "", "left center right from-left inside outside from-inside"}, Row{"style.horizontal-rel", "T"},
    Row{"style.vertical-pos", "", "top middle bottom from-top below"}, Row{"style.vertical-rel", "T"},
    Row{"style.wrap", "", "none left right parallel dynamic run-through biggest"}, Row{"style.wrap-contour", "B"},
    Row{"style.wrap-contour-mode", "", "full outside"}, Row{"style.wrap-dynamic-threshold", "L"},
    Row{"style.number-wrapped-paragraphs", "I", "no-limit"}, Row{"style.run-through", "", "foreground background"},
    Row{"style.flow-with-text", "B"}, Row{"style.print-content", "B"}, Row{"style.protect", "T"}, Row{"style.mirror", "T"},
    Row{"style.overflow-behavior", "", "clip auto-create-new-frame"}, Row{"style.editable", "B"},
    Row{"style.writing-mode", "", kWritingModes}, Row{"draw.fill", "", "none solid bitmap gradient hatch"},
    Row{"draw.fill-color", "C"}, Row{"draw.secondary-fill-color", "C"}, Row{"draw.opacity", "P"},
    Row{"draw.stroke", "", "none dash solid"}, Row{"svg.stroke-color", "C"}, Row{"svg.stroke-width", "LP"},
    Row{"svg.stroke-opacity", "PN"}, Row{"draw.shadow", "", "visible hidden"}, Row{"draw.shadow-color", "C"},
    Row{"draw.shadow-offset-x", "L"}, Row{"draw.shadow-offset-y", "L"}, Row{"draw.shadow-opacity", "P"},
    Row{"draw.luminance", "P"}, Row{"draw.contrast", "P"}, Row{"draw.gamma", "P"}, Row{"draw.red", "P"}, Row{"draw.green", "P"},
    Row{"draw.blue", "P"}, Row{"draw.image-opacity", "P"}, Row{"draw.color-inversion", "B"},
    Row{"draw.color-mode", "", "greyscale mono watermark standard"},
    Row{"draw.textarea-horizontal-align", "", "left center right justify"},
    Row{"draw.textarea-vertical-align", "", "top middle bottom justify"}, Row{"draw.auto-grow-width", "B"},
    Row{"draw.auto-grow-height", "B"}, Row{"draw.fit-to-size", "B", "shrink-to-fit"}, Row{"draw.fit-to-contour", "B"},
    Row{"draw.start-line-spacing-horizontal", "L"}, Row{"draw.start-line-spacing-vertical", "L"},
    Row{"draw.end-line-spacing-horizontal", "L"}, Row{"draw.end-line-spacing-vertical", "L"}};

constexpr std::array kListLevel = {
    Row{"text.space-before", "L"}, Row{"text.min-label-width", "L"}, Row{"text.min-label-distance", "L"},
    Row{"text.list-level-position-and-space-mode", "", "label-width-and-position label-alignment"},
    Row{"fo.text-align", "", "start end left right center justify"}, Row{"fo.width", "L"}, Row{"fo.height", "L"},
    Row{"style.font-name", "T"}, Row{"style.vertical-pos", "T"}, Row{"style.vertical-rel", "T"}, Row{"svg.x", "L"},
    Row{"svg.y", "L"}, Row{"style.list-level-label-alignment", "X"}};

// The attributes of a level itself.
constexpr std::array kLevel = {
    Row{"text.level", "I!"}, Row{"style.element", "T!"}, Row{"text.style-name", "S"}, Row{"style.num-format", "T"},
    Row{"style.num-prefix", "T"}, Row{"style.num-suffix", "T"}, Row{"style.num-letter-sync", "B"},
    Row{"text.display-levels", "I"}, Row{"text.start-value", "I"}, Row{"text.bullet-char", "T"},
    Row{"text.bullet-relative-size", "P"}, Row{"loext.num-list-format", "T"}};

constexpr std::array kList = {
    Row{"text.consecutive-numbering", "B"}, Row{"text.level-1", "S"}, Row{"text.level-2", "S"}, Row{"text.level-3", "S"},
    Row{"text.level-4", "S"}, Row{"text.level-5", "S"}, Row{"text.level-6", "S"}, Row{"text.level-7", "S"},
    Row{"text.level-8", "S"}, Row{"text.level-9", "S"}, Row{"text.level-10", "S"}};

// What a style element says beside its property elements.
constexpr std::array kStyleItself = {
    Row{"style.list-style-name", "S"}, Row{"style.master-page-name", "T"}, Row{"style.data-style-name", "T"},
    Row{"style.percentage-data-style-name", "T"}, Row{"style.default-outline-level", "I"}, Row{"style.list-level", "I"},
    Row{"style.next-style-name", "T!"}, Row{"style.linked-style-name", "T!"}, Row{"style.class", "T!"},
    Row{"style.auto-update", "B!"}, Row{"loext.hidden", "B!"}, Row{"style.hidden", "B!"}, Row{"style.map", "X!"},
    Row{"style.family", "T"}};

constexpr std::array kGroups = {PropertyGroup{"text", kText},
                                PropertyGroup{"paragraph", kParagraph},
                                PropertyGroup{"table", kTable},
                                PropertyGroup{"table-column", kTableColumn},
                                PropertyGroup{"table-row", kTableRow},
                                PropertyGroup{"table-cell", kTableCell},
                                PropertyGroup{"section", kSection},
                                PropertyGroup{"graphic", kGraphic},
                                PropertyGroup{"list-level", kListLevel},
                                PropertyGroup{"level", kLevel},
                                PropertyGroup{"list", kList},
                                PropertyGroup{"style", kStyleItself}};

}  // namespace

std::span<const PropertyGroup> propertyGroups() { return kGroups; }

}  // namespace zt
