// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// How places of the text are formatted, told apart: a style and direct formatting together are one use.

#include <document/styles/StyleFamily.h>
#include <wordprocessing/properties/WordElement.h>

#include <string>
#include <string_view>

namespace zt {

/// The family whose styles an element of the text has direct formatting of, by the element's name and that of its
/// properties: "p" and "pPr", "r" and "rPr", "tbl", "tr", "tc"; "pPr" and "rPr" for the mark of a paragraph. None for
/// any other pair.
const StyleFamily* formattedFamily(std::string_view element, std::string_view properties);

/// The name of the element that names a style of the family in such properties: "pStyle"; empty where none does.
std::string_view styleElementOf(StyleFamily family);

/// The family of styles that an element of that name refers to by its w:val, or none: "pStyle", "rStyle", "tblStyle" in
/// text, "clickAndTypeStyle" and "defaultTableStyle" in settings.
const StyleFamily* referredFamilyOf(std::string_view element);

/// Whether a child of such properties is no formatting: a reference, tracked changes, structure.
bool isNoFormatting(const WordElement& child);

/// One text for equal uses. `properties` is without what is no formatting.
std::string useKey(StyleFamily family, std::string_view styleId, const WordElement& properties);
/// The same for a place that names a style and has no formatting of its own.
std::string referenceKey(StyleFamily family, std::string_view styleId);

}  // namespace zt
