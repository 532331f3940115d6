// SPDX-License-Identifier: MIT
#include <document/styles/PropertyRules.h>

#include <document/styles/PropertyTable.h>

#include <platform/NSString.h>

#include <algorithm>
#include <array>
#include <deque>

namespace zt {

namespace {

PropertyRule makeRule(std::string_view group, const PropertyRow& row) {
  return {.key = PropertyKey(std::string(group) + '.' + std::string(row.name)),
          .kinds = row.kinds,
          .keywords = row.keywords,
          .isShareOfParent = row.isShareOfParent,
          .isInherited = row.isInherited,
          .prefersPoints = row.prefersPoints,
          .isToggle = row.isToggle};
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
  if (isKeyword(rule->keywords, text)) return NSString::make(text);
  for (const ValueKind& kind : valueKinds()) {
    if ((rule->kinds & kind.bit) == 0) continue;
    if (Ref<NSObject> value = kind.read(text)) return value;
  }
  return {};
}

bool takesValue(const PropertyRule* rule, const NSObject& value) {
  const NSString* text = NSString::from(&value);
  if (rule == nullptr) return text != nullptr || asOpaque(&value) != nullptr;
  if (text != nullptr && isKeyword(rule->keywords, text->view())) return true;
  const auto kinds = valueKinds();
  return std::any_of(kinds.begin(), kinds.end(),
                     [&](const ValueKind& kind) { return (rule->kinds & kind.bit) != 0 && kind.isOf(value); });
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
