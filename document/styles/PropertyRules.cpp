// SPDX-License-Identifier: MIT
#include <document/styles/PropertyRules.h>

#include <document/styles/PropertyTable.h>
#include <document/styles/StyleValues.h>
#include <document/values/Colour.h>
#include <document/values/Scalar.h>

#include <platform/NSColor.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <ztstyles/ZTSStyle.h>

#include <array>
#include <deque>

namespace zt {

namespace {

PropertyRule makeRule(std::string_view group, const PropertyRow& row) {
  PropertyRule rule;
  rule.key = PropertyKey(std::string(group) + '.' + std::string(row.name));
  rule.keywords = row.keywords;
  for (const char letter : row.kinds) {
    switch (letter) {
      case 'L': rule.kinds |= kLength; break;
      case '^': rule.isShareOfParent = true; [[fallthrough]];
      case 'P': rule.kinds |= kPercentage; break;
      case 'C': rule.kinds |= kColour; break;
      case 'B': rule.kinds |= kBoolean; break;
      case 'I': rule.kinds |= kInteger; break;
      case 'N': rule.kinds |= kNumber; break;
      case 'T': rule.kinds |= kText; break;
      case 'X': rule.kinds |= kElement; break;
      case 'S': rule.kinds |= kStyle; break;
      case '.': rule.prefersPoints = true; break;
      case '!': rule.isInherited = false; break;
      case '~': rule.isToggle = true; break;
      default: break;
    }
  }
  return rule;
}

// Rules by the ordinal of their key. Made once, never changed.
struct RuleBook {
  std::deque<PropertyRule> rules;
  std::vector<const PropertyRule*> byOrdinal;

  RuleBook() {
    for (const PropertyGroup& group : propertyGroups()) {
      for (const PropertyRow& row : group.rows) {
        const PropertyRule& rule = rules.emplace_back(makeRule(group.name, row));
        const std::size_t ordinal = rule.key.ordinal();
        if (ordinal >= byOrdinal.size()) byOrdinal.resize(ordinal + 1);
        byOrdinal[ordinal] = &rule;
      }
    }
  }
};

const RuleBook& ruleBook() {
  static const RuleBook& book = *new RuleBook;
  return book;
}

bool isKeyword(std::string_view keywords, std::string_view word) {
  if (word.empty() || word.find(' ') != std::string_view::npos) return false;
  for (std::size_t at = keywords.find(word); at != std::string_view::npos; at = keywords.find(word, at + 1)) {
    const std::size_t end = at + word.size();
    if ((at == 0 || keywords[at - 1] == ' ') && (end == keywords.size() || keywords[end] == ' ')) return true;
  }
  return false;
}

std::vector<std::string_view> groupsOf(StyleFamily family) {
  switch (family) {
    case StyleFamily::paragraph: return {"style", "paragraph", "text"};
    case StyleFamily::text: return {"style", "text"};
    case StyleFamily::table: return {"style", "table"};
    case StyleFamily::tableColumn: return {"style", "table-column"};
    case StyleFamily::tableRow: return {"style", "table-row"};
    case StyleFamily::tableCell: return {"style", "table-cell", "paragraph", "text"};
    case StyleFamily::section: return {"style", "section"};
    case StyleFamily::graphic:
    case StyleFamily::presentation:
    case StyleFamily::chart: return {"style", "graphic", "paragraph", "text"};
    case StyleFamily::list: return {"list"};
    case StyleFamily::listLevel: return {"level", "list-level", "text"};
    case StyleFamily::drawingPage:
    case StyleFamily::ruby:
    case StyleFamily::other: return {"style"};
  }
  return {};
}

}  // namespace

std::string propertyKeyText(std::string_view group, std::string_view prefix, std::string_view name) {
  std::string text;
  text.reserve(group.size() + prefix.size() + name.size() + 2);
  return text.append(group).append(1, '.').append(prefix).append(1, '.').append(name);
}

const PropertyRule* propertyRule(PropertyKey key) {
  const auto& rules = ruleBook().byOrdinal;
  return key && key.ordinal() < rules.size() ? rules[key.ordinal()] : nullptr;
}

std::vector<PropertyKey> knownProperties(StyleFamily family) {
  ruleBook();  // first, so that the keys of the tables get adjacent ordinals
  std::vector<PropertyKey> known;
  for (const std::string_view name : groupsOf(family)) {
    for (const PropertyGroup& group : propertyGroups()) {
      if (group.name != name) continue;
      for (const PropertyRow& row : group.rows) known.emplace_back(std::string(name) + '.' + std::string(row.name));
    }
  }
  return known;
}

Ref<NSObject> readValue(const PropertyRule* rule, std::string_view text) {
  if (rule == nullptr) return make<OpaqueValue>(std::string(text));
  const std::uint16_t kinds = rule->kinds;
  if (isKeyword(rule->keywords, text)) return NSString::make(text);
  if ((kinds & kBoolean) != 0) {
    if (const auto value = parseBoolean(text)) return NSNumber::withBool(*value);
  }
  if ((kinds & kInteger) != 0) {
    if (const auto value = parseInteger(text)) return NSNumber::withInteger(*value);
  }
  if ((kinds & kLength) != 0) {
    if (const auto value = parseLength(text)) return make<LengthValue>(*value);
  }
  if ((kinds & kPercentage) != 0) {
    if (const auto value = parsePercentage(text)) return make<PercentageValue>(*value);
  }
  if ((kinds & kNumber) != 0) {
    if (const auto value = parseNumber(text)) return NSNumber::withReal(*value);
  }
  if ((kinds & kColour) != 0) {
    if (const auto value = parseColour(text)) {
      const std::uint8_t opacity = value->isTransparent ? 0 : 255;
      return NSColor::withComponents(value->red, value->green, value->blue, opacity);
    }
  }
  if ((kinds & kElement) != 0) return make<OpaqueValue>(std::string(text));
  if ((kinds & kText) != 0) return NSString::make(text);
  return {};
}

bool takesValue(const PropertyRule* rule, const NSObject& value) {
  const bool isText = NSString::from(&value) != nullptr;
  if (rule == nullptr) return isText || asOpaque(&value) != nullptr;
  const auto takes = [rule](std::uint16_t kind) { return (rule->kinds & kind) != 0; };
  if (isText) return takes(kText) || isKeyword(rule->keywords, NSString::from(&value)->view());
  if (asLength(&value) != nullptr) return takes(kLength);
  if (asPercentage(&value) != nullptr) return takes(kPercentage);
  if (asOpaque(&value) != nullptr) return takes(kElement);
  if (NSColor::from(&value) != nullptr) return takes(kColour);
  if (const NSNumber* number = NSNumber::from(&value)) {
    if (number->isBool()) return takes(kBoolean);
    return takes(kNumber) || (number->isInteger() && takes(kInteger));
  }
  return takes(kStyle) && asStyle(&value) != nullptr;
}

namespace keys {

PropertyKey listStyle() {
  static const PropertyKey key("style.style.list-style-name");
  return key;
}

PropertyKey masterPage() {
  static const PropertyKey key("style.style.master-page-name");
  return key;
}

PropertyKey nextStyle() {
  static const PropertyKey key("style.style.next-style-name");
  return key;
}

PropertyKey linkedStyle() {
  static const PropertyKey key("style.style.linked-style-name");
  return key;
}

PropertyKey otherFamily() {
  static const PropertyKey key("style.style.family");
  return key;
}

PropertyKey listLevel(std::size_t level) {
  static const auto levels = [] {
    std::array<PropertyKey, kListLevels> all;
    for (std::size_t index = 0; index < all.size(); ++index)
      all[index] = PropertyKey("list.text.level-" + std::to_string(index + 1));
    return all;
  }();
  return levels.at(level - 1);
}

PropertyKey opacity() {
  static const PropertyKey key("graphic.draw.opacity");
  return key;
}

PropertyKey transparency() {
  static const PropertyKey key("graphic.zt.transparency");
  return key;
}

PropertyKey levelTextStyle() {
  static const PropertyKey key("level.text.style-name");
  return key;
}

PropertyKey levelParagraphStyle() {
  static const PropertyKey key("level.w.pStyle");
  return key;
}

PropertyKey listLevelNumber() {
  static const PropertyKey key("style.style.list-level");
  return key;
}

const std::vector<PropertyKey>& tableConditions() {
  static const auto& conditions = *new std::vector<PropertyKey>([] {
    std::vector<PropertyKey> found;
    for (const PropertyKey key : knownProperties(StyleFamily::table)) {
      if (propertyRule(key)->kinds == kStyle && key.view().starts_with("table.")) found.push_back(key);
    }
    return found;
  }());
  return conditions;
}

}  // namespace keys

}  // namespace zt
