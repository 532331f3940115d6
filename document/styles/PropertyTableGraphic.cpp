// SPDX-License-Identifier: MIT
#include <document/styles/PropertyTable.h>

#include <array>

namespace zt {

namespace {

using Row = PropertyRow;

constexpr std::string_view kWritingModes = "lr-tb rl-tb tb-rl tb-lr lr rl tb page bt-lr";

constexpr std::array kGraphic = {
    Row{"svg.width", "L"},
    Row{"svg.height", "L"},
    Row{"svg.x", "L"},
    Row{"svg.y", "L"},
    Row{"fo.min-width", "LP"},
    Row{"fo.min-height", "LP"},
    Row{"fo.max-width", "LP"},
    Row{"fo.max-height", "LP"},
    Row{"style.rel-width", "P", "scale scale-min"},
    Row{"style.rel-height", "P", "scale scale-min"},
    Row{"fo.margin-left", "LP"},
    Row{"fo.margin-right", "LP"},
    Row{"fo.margin-top", "LP"},
    Row{"fo.margin-bottom", "LP"},
    Row{"fo.padding", "L"},
    Row{"fo.padding-left", "L"},
    Row{"fo.padding-right", "L"},
    Row{"fo.padding-top", "L"},
    Row{"fo.padding-bottom", "L"},
    Row{"fo.border", "T"},
    Row{"fo.border-left", "T"},
    Row{"fo.border-right", "T"},
    Row{"fo.border-top", "T"},
    Row{"fo.border-bottom", "T"},
    Row{"fo.background-color", "C"},
    Row{"style.background-image", "X"},
    Row{"style.background-transparency", "P"},
    Row{"style.columns", "X"},
    Row{"style.shadow", "T"},
    Row{"fo.clip", "T"},
    Row{"fo.wrap-option", "", "wrap no-wrap"},
    Row{"text.anchor-type", "", "page frame paragraph char as-char"},
    Row{"text.anchor-page-number", "I"},
    Row{"style.horizontal-pos", "", "left center right from-left inside outside from-inside"},
    Row{"style.horizontal-rel", "T"},
    Row{"style.vertical-pos", "", "top middle bottom from-top below"},
    Row{"style.vertical-rel", "T"},
    Row{"style.wrap", "", "none left right parallel dynamic run-through biggest"},
    Row{"style.wrap-contour", "B"},
    Row{"style.wrap-contour-mode", "", "full outside"},
    Row{"style.wrap-dynamic-threshold", "L"},
    Row{"style.number-wrapped-paragraphs", "I", "no-limit"},
    Row{"style.run-through", "", "foreground background"},
    Row{"style.flow-with-text", "B"},
    Row{"style.print-content", "B"},
    Row{"style.protect", "T"},
    Row{"style.mirror", "T"},
    Row{"style.overflow-behavior", "", "clip auto-create-new-frame"},
    Row{"style.editable", "B"},
    Row{"style.writing-mode", "", kWritingModes},
    Row{"draw.fill", "", "none solid bitmap gradient hatch"},
    Row{"draw.fill-color", "C"},
    Row{"draw.secondary-fill-color", "C"},
    Row{"draw.opacity", "P"},
    Row{"zt.transparency", "P"},  // never stored: the rest of the opacity
    Row{"draw.stroke", "", "none dash solid"},
    Row{"svg.stroke-color", "C"},
    Row{"svg.stroke-width", "LP"},
    Row{"svg.stroke-opacity", "PN"},
    Row{"draw.shadow", "", "visible hidden"},
    Row{"draw.shadow-color", "C"},
    Row{"draw.shadow-offset-x", "L"},
    Row{"draw.shadow-offset-y", "L"},
    Row{"draw.shadow-opacity", "P"},
    Row{"draw.luminance", "P"},
    Row{"draw.contrast", "P"},
    Row{"draw.gamma", "P"},
    Row{"draw.red", "P"},
    Row{"draw.green", "P"},
    Row{"draw.blue", "P"},
    Row{"draw.image-opacity", "P"},
    Row{"draw.color-inversion", "B"},
    Row{"draw.color-mode", "", "greyscale mono watermark standard"},
    Row{"draw.textarea-horizontal-align", "", "left center right justify"},
    Row{"draw.textarea-vertical-align", "", "top middle bottom justify"},
    Row{"draw.auto-grow-width", "B"},
    Row{"draw.auto-grow-height", "B"},
    Row{"draw.fit-to-size", "B", "shrink-to-fit"},
    Row{"draw.fit-to-contour", "B"},
    Row{"draw.start-line-spacing-horizontal", "L"},
    Row{"draw.start-line-spacing-vertical", "L"},
    Row{"draw.end-line-spacing-horizontal", "L"},
    Row{"draw.end-line-spacing-vertical", "L"}};

}  // namespace

std::span<const PropertyRow> graphicPropertyRows() { return kGraphic; }

}  // namespace zt
