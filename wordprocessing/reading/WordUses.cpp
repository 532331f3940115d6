// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/WordUses.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

struct Formatted {
  std::string_view element;
  std::string_view properties;
  StyleFamily family;
};

constexpr std::array kFormatted = {
    Formatted{"p", "pPr", StyleFamily::paragraph},  Formatted{"r", "rPr", StyleFamily::text},
    Formatted{"pPr", "rPr", StyleFamily::text},     Formatted{"tbl", "tblPr", StyleFamily::table},
    Formatted{"tr", "trPr", StyleFamily::tableRow}, Formatted{"tc", "tcPr", StyleFamily::tableCell}};

struct Reference {
  std::string_view element;
  StyleFamily family;
};

constexpr std::array kReferences = {Reference{"pStyle", StyleFamily::paragraph}, Reference{"rStyle", StyleFamily::text},
                                    Reference{"tblStyle", StyleFamily::table},
                                    Reference{"clickAndTypeStyle", StyleFamily::paragraph},
                                    Reference{"defaultTableStyle", StyleFamily::table}};

}  // namespace

const StyleFamily* formattedFamily(std::string_view element, std::string_view properties) {
  for (const Formatted& each : kFormatted) {
    if (each.element == element && each.properties == properties) return &each.family;
  }
  return nullptr;
}

std::string_view styleElementOf(StyleFamily family) {
  if (family == StyleFamily::paragraph) return "pStyle";
  if (family == StyleFamily::text) return "rStyle";
  return family == StyleFamily::table ? "tblStyle" : std::string_view();
}

const StyleFamily* referredFamilyOf(std::string_view element) {
  if (!element.ends_with("Style")) return nullptr;
  for (const Reference& each : kReferences) {
    if (each.element == element) return &each.family;
  }
  return nullptr;
}

bool isNoFormatting(const WordElement& child) {
  constexpr std::array<std::string_view, 26> kNames = {
      "pStyle",     "rStyle",      "tblStyle",      "rPr",        "sectPr",   "cnfStyle", "pPrChange",
      "rPrChange",  "tblPrChange", "trPrChange",    "tcPrChange", "tblLook",  "ins",      "del",
      "moveFrom",   "moveTo",      "cellIns",       "cellDel",    "gridSpan", "vMerge",   "hMerge",
      "gridBefore", "gridAfter",   "tblGridChange", "cellMerge",  "divId"};
  return child.prefix == "w" && std::find(kNames.begin(), kNames.end(), child.name) != kNames.end();
}

std::string useKey(StyleFamily family, std::string_view styleId, const WordElement& properties) {
  std::string key(1, static_cast<char>('a' + static_cast<int>(family)));
  key.append(styleId);
  for (const WordElement& child : properties.children) key.append("\n").append(canonicalText(child));
  return key;
}

std::string referenceKey(StyleFamily family, std::string_view styleId) {
  return std::string(1, static_cast<char>('A' + static_cast<int>(family))).append(styleId);
}

}  // namespace zt
