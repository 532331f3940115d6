// SPDX-License-Identifier: MIT
#include <wordprocessing/properties/PropertyReader.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <wordprocessing/properties/WordValues.h>

#include <platform/NSNumber.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zt {

namespace {

// Keys live for ever, so that a document must not make any number of them.
constexpr std::size_t kLongestKey = 200;

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// What is a reference, is read elsewhere, or tells of a change that was tracked and not of the look.
bool isLeftOut(const WordElement& element) {
  return element.prefix == "w" &&
         isOneOf(element.name,
                 {"pStyle", "rStyle", "tblStyle", "numPr", "rPr", "pPr", "sectPr", "cnfStyle", "pPrChange", "rPrChange",
                  "tblPrChange", "trPrChange", "tcPrChange", "ins", "del", "moveFrom", "moveTo"});
}

bool isContainer(std::string_view name) {
  return isOneOf(name, {"pBdr", "tblBorders", "tcBorders", "tblCellMar", "tcMar"});
}

Ref<NSObject> lengthOrNone(const std::optional<Length>& length) {
  return length ? Ref<NSObject>(make<LengthValue>(*length)) : Ref<NSObject>();
}

Ref<NSObject> percentageOrNone(const std::optional<Percentage>& percentage) {
  return percentage ? Ref<NSObject>(make<PercentageValue>(*percentage)) : Ref<NSObject>();
}

Ref<NSObject> booleanOrNone(const std::string& text) {
  const auto value = parseOnOff(text);
  return value ? Ref<NSObject>(NSNumber::withBool(*value)) : Ref<NSObject>();
}

}  // namespace

/// One element on its way into a map.
struct PropertyReader::Entry {
  std::string keyText;
  int line;
  const Owner& owner;
  PropertyMap& map;
};

const std::string* eitherAttribute(const WordElement& element, std::string_view name, std::string_view otherName) {
  const std::string* value = element.attribute(name);
  return value != nullptr ? value : element.attribute(otherName);
}

void PropertyReader::takeAll(const WordElement& parent, const std::string& group, const Owner& owner,
                             PropertyMap& map) {
  for (const WordElement& child : parent.children) take(child, group, owner, map);
}

void PropertyReader::take(const WordElement& element, const std::string& group, const Owner& owner, PropertyMap& map) {
  if (isLeftOut(element)) return;
  Entry entry{propertyKeyText(group, element.prefix, element.name), element.line, owner, map};
  const bool isText = group == "text";
  const bool isParagraph = group == "paragraph";
  if (element.prefix == "w" && isContainer(element.name)) {
    for (const WordElement& child : element.children) {
      set(entry, '.' + child.name, canonicalText(child), {});
    }
  } else if (isText && element.is("rFonts")) {
    takeFonts(entry, element);
  } else if (isText && element.is("lang")) {
    for (const char* name : {"val", "eastAsia", "bidi"}) {
      const std::string* language = element.attribute(name);
      if (language != nullptr && !language->empty()) {
        set(entry, std::string(".") + name, *language,
            [&](const PropertyRule* rule) { return readValue(rule, *language); });
      }
    }
  } else if (isText && element.is("color")) {
    takeColour(entry, element, "val");
  } else if (isText && element.is("u")) {
    if (element.val() != nullptr) takeValue(entry, element);
    entry.keyText += ".color";
    takeColour(entry, element, "color");
  } else if (isParagraph && element.is("spacing")) {
    takeSpacing(entry, element);
  } else if (isParagraph && element.is("ind")) {
    takeIndents(entry, element);
  } else {
    takeValue(entry, element);
  }
}

void PropertyReader::takeText(const std::string& keyText, const std::string& text, int line, const Owner& owner,
                              PropertyMap& map) {
  const Entry entry{keyText, line, owner, map};
  set(entry, {}, text, [&](const PropertyRule* rule) {
    return rule != nullptr && (rule->kinds & kBoolean) != 0 ? booleanOrNone(text) : readValue(rule, text);
  });
}

// What the property may be says how its w:val is read.
void PropertyReader::takeValue(const Entry& entry, const WordElement& element) {
  const PropertyRule* rule = propertyRule(PropertyKey(entry.keyText));
  const std::uint16_t kinds = rule != nullptr ? rule->kinds : static_cast<std::uint16_t>(kElement);
  if ((kinds & kElement) != 0 || element.prefix != "w") return set(entry, {}, canonicalText(element), {});
  const std::string text = element.val() != nullptr ? *element.val() : (kinds & kBoolean) != 0 ? "true" : "";
  set(entry, {}, text, [&](const PropertyRule* known) {
    if ((kinds & kBoolean) != 0) return booleanOrNone(text);
    if ((kinds & kLength) != 0) {
      return lengthOrNone(parseMeasure(text, element.name == "spacing" ? WordUnit::twip : WordUnit::halfPoint));
    }
    if ((kinds & kPercentage) != 0) return percentageOrNone(parseWordPercentage(text));
    return readValue(known, text);
  });
}

// The colour of the theme, where one is named, stands above the one that was computed from it when the file was saved.
void PropertyReader::takeColour(const Entry& entry, const WordElement& element, const char* attribute) {
  const std::string* theme = element.attribute("themeColor");
  std::string text;
  if (theme != nullptr && *theme != "none") {
    const auto part = [&](const char* name) {
      const std::string* value = element.attribute(name);
      return value != nullptr ? std::string_view(*value) : std::string_view();
    };
    text = themeReference(*theme, part("themeTint"), part("themeShade"));
  } else if (const std::string* value = element.attribute(attribute)) {
    const auto colour = parseHexColour(*value);
    if (!colour) return set(entry, {}, *value, [](const PropertyRule*) { return Ref<NSObject>(); });
    text = *colour;
  } else {
    return;
  }
  set(entry, {}, text, [&](const PropertyRule* rule) { return readValue(rule, text); });
}

void PropertyReader::takeFonts(const Entry& entry, const WordElement& element) {
  constexpr std::array<std::pair<const char*, const char*>, 4> kSlots = {
      {{"ascii", "asciiTheme"}, {"hAnsi", "hAnsiTheme"}, {"eastAsia", "eastAsiaTheme"}, {"cs", "cstheme"}}};
  for (const auto& [slot, themeSlot] : kSlots) {
    const std::string* theme = element.attribute(themeSlot);
    const std::string* font = element.attribute(slot);
    if (theme == nullptr && font == nullptr) continue;
    const std::string text = theme != nullptr ? themeReference(*theme) : *font;
    set(entry, std::string(".") + slot, text, [&](const PropertyRule* rule) { return readValue(rule, text); });
  }
  if (const std::string* hint = element.attribute("hint")) {
    set(entry, ".hint", *hint, [&](const PropertyRule* rule) { return readValue(rule, *hint); });
  }
}

void PropertyReader::takeSpacing(const Entry& entry, const WordElement& element) {
  for (const WordElement::Attribute& attribute : element.attributes) {
    const std::string& text = attribute.value;
    if (attribute.prefix != "w" || attribute.name == "line" || attribute.name == "lineRule") continue;
    set(entry, '.' + attribute.name, text, [&](const PropertyRule* rule) {
      if (rule == nullptr) return readValue(rule, text);
      if ((rule->kinds & kBoolean) != 0) return booleanOrNone(text);
      return (rule->kinds & kLength) != 0 ? lengthOrNone(parseMeasure(text, WordUnit::twip)) : readValue(rule, text);
    });
  }
  const std::string* line = element.attribute("line");
  const std::string* given = element.attribute("lineRule");
  // A line without its rule is "auto", whatever rule an ancestor has (17.3.1.33).
  const std::string rule = given != nullptr ? *given : "auto";
  if (line != nullptr || given != nullptr) {
    set(entry, ".lineRule", rule, [&](const PropertyRule* known) { return readValue(known, rule); });
  }
  if (line == nullptr) return;
  set(entry, ".line", rule == "auto" ? *line + "/240" : *line, [&](const PropertyRule*) {
    return rule == "auto" ? percentageOrNone(parseLines(*line)) : lengthOrNone(parseMeasure(*line, WordUnit::twip));
  });
}

// One entry says both of w:firstLine and w:hanging, so that the one of a style hides the other of its ancestor.
void PropertyReader::takeIndents(const Entry& entry, const WordElement& element) {
  const auto take = [&](const char* suffix, const std::string* text, bool isNegative) {
    if (text == nullptr) return;
    set(entry, suffix, (isNegative ? "hanging " : "") + *text, [&](const PropertyRule* rule) -> Ref<NSObject> {
      if (rule != nullptr && (rule->kinds & kInteger) != 0) {
        const Ref<NSObject> value = readValue(rule, *text);
        const NSNumber* number = NSNumber::from(value.get());
        return number != nullptr && isNegative ? NSNumber::withInteger(-number->integerValue()) : value;
      }
      auto length = parseMeasure(*text, WordUnit::twip);
      if (length && isNegative) length->units = -length->units;
      return lengthOrNone(length);
    });
  };
  take(".left", eitherAttribute(element, "left", "start"), false);
  take(".right", eitherAttribute(element, "right", "end"), false);
  take(".leftChars", eitherAttribute(element, "leftChars", "startChars"), false);
  take(".rightChars", eitherAttribute(element, "rightChars", "endChars"), false);
  take(".firstLine", element.attribute("firstLine"), false);
  take(".firstLine", element.attribute("hanging"), true);  // counts where both are given
  take(".firstLineChars", element.attribute("firstLineChars"), false);
  take(".firstLineChars", element.attribute("hangingChars"), true);
}

void PropertyReader::set(const Entry& entry, const std::string& suffix, const std::string& text,
                         const std::function<Ref<NSObject>(const PropertyRule*)>& read) {
  std::string name = entry.keyText + suffix;
  if (name.size() > kLongestKey) {
    return tell(entry.owner, entry.line, fmt::format("a property with a name of {} bytes; not set", name.size()));
  }
  std::replace(name.begin(), name.end(), ':', '.');
  const PropertyKey key(name);
  const auto [found, isNew] = mValues.try_emplace(std::to_string(key.ordinal()) + '=' + text);
  if (isNew) found->second = read ? read(propertyRule(key)) : Ref<NSObject>(make<OpaqueValue>(text));
  if (found->second == nullptr) {
    return tell(entry.owner, entry.line, fmt::format("the value '{:.60}' of {} cannot be used; not set", text, name));
  }
  entry.map.set(key, found->second);
}

void PropertyReader::tell(const Owner& owner, int line, const std::string& message) {
  mFindings.push_back({Finding::Severity::warning, "unusable-value", {owner.file, line}, owner.style, message});
}

}  // namespace zt
