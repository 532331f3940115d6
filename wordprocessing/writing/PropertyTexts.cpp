// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/PropertyTexts.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/StyleNames.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSNumber.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace zt {

namespace {

constexpr std::int64_t kTwip = Length::kPerPoint / 20;
constexpr std::int64_t kHalfPoint = Length::kPerPoint / 2;
constexpr std::string_view kTheme = "theme:";

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

bool hasSides(std::string_view element) {
  return isOneOf(element, {"pBdr", "tblBorders", "tcBorders", "tblCellMar", "tcMar"});
}

std::string measure(Length length, std::int64_t unit) {
  return length.units % unit == 0 ? std::to_string(length.units / unit) : lengthText(length, true);
}

std::string hexColour(std::string_view text) {
  if (text.starts_with('#')) text.remove_prefix(1);
  std::string colour(text);
  if (colour == "auto") return colour;
  for (char& byte : colour) byte = static_cast<char>(byte >= 'a' && byte <= 'f' ? byte - 'a' + 'A' : byte);
  return colour;
}

/// The word after "tint:" or "shade:", none where there is none.
std::optional<std::string> wordAfter(std::string_view text, std::string_view mark) {
  const std::size_t at = text.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  text.remove_prefix(at + mark.size());
  return std::string(text.substr(0, text.find(' ')));
}

std::string textOf(PropertyKey key, const NSObject& value) {
  if (const OdfStyle* style = asOdfStyle(&value)) {
    if (style->isIdentified()) return std::string(fileNameOf(*style));
    throw EditError(fmt::format("{} cannot refer to a style without a name", key.view()));
  }
  if (isNull(&value)) throw EditError(fmt::format("a file cannot say that {} has explicitly no value", key.view()));
  const NSNumber* number = NSNumber::from(&value);
  if (number != nullptr && number->isBool()) return number->boolValue() ? "1" : "0";
  return valueText(&value, true);
}

std::string valText(const WordPlace& place, PropertyKey key, const NSObject& value) {
  if (const LengthValue* length = asLength(&value)) {
    return measure(length->length(), place.element == "spacing" ? kTwip : kHalfPoint);
  }
  if (const PercentageValue* percentage = asPercentage(&value)) {
    const std::string text = percentageText(percentage->percentage());
    return text.find('.') == std::string::npos ? text.substr(0, text.size() - 1) : text;
  }
  return textOf(key, value);
}

WordAttributes coloured(const char* attribute, const std::optional<std::string>& text) {
  if (!text || !text->starts_with(kTheme)) {
    return {{attribute, text ? std::optional(hexColour(*text)) : std::nullopt},
            {"themeColor", std::nullopt},
            {"themeTint", std::nullopt},
            {"themeShade", std::nullopt}};
  }
  const std::string name = text->substr(kTheme.size(), text->find(' ') - kTheme.size());
  return {{attribute, "auto"},
          {"themeColor", name},
          {"themeTint", wordAfter(*text, "tint:")},
          {"themeShade", wordAfter(*text, "shade:")}};
}

WordAttributes fonts(const std::string& slot, const std::optional<std::string>& text) {
  if (slot == "hint") return {{slot, text}};
  const std::string theme = slot == "cs" ? "cstheme" : slot + "Theme";
  if (!text || !text->starts_with(kTheme)) return {{slot, text}, {theme, std::nullopt}};
  return {{slot, std::nullopt}, {theme, text->substr(kTheme.size())}};
}

WordAttributes spaced(const std::string& part, PropertyKey key, const NSObject* value) {
  if (value == nullptr) return {{part, std::nullopt}};
  if (const PercentageValue* lines = asPercentage(value)) {
    const double share = static_cast<double>(lines->percentage().units) / static_cast<double>(Percentage::kWhole);
    return {{part, std::to_string(std::llround(share * 240))}};
  }
  const LengthValue* length = asLength(value);
  return {{part, length != nullptr ? measure(length->length(), kTwip) : textOf(key, *value)}};
}

// One entry says both of w:firstLine and w:hanging.
WordAttributes indented(const std::string& part, PropertyKey key, const NSObject* value) {
  const bool isChars = part == "firstLineChars";
  if (part != "firstLine" && !isChars) return spaced(part, key, value);
  const std::string hanging = isChars ? "hangingChars" : "hanging";
  if (value == nullptr) return {{part, std::nullopt}, {hanging, std::nullopt}};
  const LengthValue* length = asLength(value);
  std::string text = length != nullptr ? measure(length->length(), kTwip) : textOf(key, *value);
  if (!text.starts_with('-')) return {{part, text}, {hanging, std::nullopt}};
  return {{part, std::nullopt}, {hanging, text.substr(1)}};
}

/// Of the properties that have the names of OpenDocument.
std::optional<WordPlace> placeOfShared(PropertyKey key) {
  using Kind = WordPlace::Kind;
  if (key == keys::listStyle()) return WordPlace{Kind::number, "paragraph", "w", "numPr", "numId"};
  if (key == keys::listLevelNumber()) return WordPlace{Kind::number, "paragraph", "w", "numPr", "ilvl"};
  if (key == keys::nextStyle()) return WordPlace{Kind::attributes, "style", "w", "next", {}};
  if (key == keys::linkedStyle()) return WordPlace{Kind::attributes, "style", "w", "link", {}};
  return std::nullopt;
}

bool isForeign(const WordPlace& place) {
  return place.group == "theme" || place.element.starts_with("tblStylePr") ||
         isOneOf(place.prefix, {"fo", "style", "svg", "draw"});
}

/// The element and the part that a name such as "rFonts.ascii" puts together, where it does.
bool takeApart(WordPlace& place) {
  const std::size_t dot = place.element.find('.');
  const std::string element = place.element.substr(0, dot);
  const bool isShared = isOneOf(element, {"rFonts", "lang", "color", "u", "spacing", "ind"});
  if (dot == std::string::npos || place.prefix != "w" || (!isShared && !hasSides(element))) return false;
  place.part = place.element.substr(dot + 1);
  place.element = element;
  place.kind = hasSides(element) ? WordPlace::Kind::side : WordPlace::Kind::attributes;
  return true;
}

}  // namespace

WordPlace placeInWord(PropertyKey key) {
  using Kind = WordPlace::Kind;
  if (auto place = placeOfShared(key)) return *place;
  const std::string_view text = key.view();
  const std::size_t first = text.find('.');
  const std::size_t second = first == std::string_view::npos ? first : text.find('.', first + 1);
  if (second == std::string_view::npos) throw EditError(fmt::format("{} has no place in a file", text));
  WordPlace place;
  place.group = text.substr(0, first);
  place.prefix = text.substr(first + 1, second - first - 1);
  place.element = text.substr(second + 1);
  if (isForeign(place)) throw EditError(fmt::format("{} cannot be changed in a file of this format", text));
  if (place.group == "style" && (place.element == "default" || place.element == "customStyle")) {
    place.kind = Kind::flag;
    return place;
  }
  if (takeApart(place)) return place;
  const PropertyRule* rule = propertyRule(key);
  if (rule == nullptr || (rule->kinds & kElement) != 0 || place.prefix != "w") place.kind = Kind::element;
  return place;
}

WordAttributes attributesFor(const WordPlace& place, PropertyKey key, const NSObject* value) {
  const std::optional<std::string> text = value != nullptr ? std::optional(valText(place, key, *value)) : std::nullopt;
  if (place.element == "rFonts") return fonts(place.part, text);
  if (place.element == "color" && place.group == "text") return coloured("val", text);
  if (place.element == "u" && place.part == "color") return coloured("color", text);
  if (place.group == "paragraph" && place.element == "spacing") return spaced(place.part, key, value);
  if (place.group == "paragraph" && place.element == "ind") return indented(place.part, key, value);
  if (!place.part.empty()) return {{place.part, text}};
  const NSNumber* number = NSNumber::from(value);
  // An element without w:val says true.
  if (number != nullptr && number->isBool() && number->boolValue()) return {{"val", std::nullopt}};
  return {{"val", text}};
}

std::string wordText(const WordPlace& place, PropertyKey key, const NSObject& value) {
  if (place.kind != WordPlace::Kind::number || place.part != "numId") return textOf(key, value);
  if (isNull(&value)) return "0";
  constexpr std::string_view kMark = "num-";
  const std::string name = textOf(key, value);
  if (!name.starts_with(kMark)) throw EditError(fmt::format("{} is no list that text can have", name));
  return name.substr(kMark.size());
}

}  // namespace zt
