// SPDX-License-Identifier: MIT
#include <opendocument/reading/ContentUses.h>

#include <document/xml/Namespaces.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

bool isOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// text:style-name means another family on nearly every element.
std::string_view familyOfTextStyleName(std::string_view element) {
  if (isOneOf(element, {"p", "h", "index-source-style", "index-title-template"}) ||
      element.ends_with("-entry-template")) {
    return "paragraph";
  }
  if (isOneOf(element, {"section", "index-title", "table-of-content", "illustration-index", "table-index",
                        "object-index", "user-index", "alphabetical-index", "bibliography"})) {
    return "section";
  }
  if (isOneOf(element, {"list", "numbered-paragraph", "list-item", "list-header"})) return "list";
  if (element == "ruby") return "ruby";
  return "text";
}

std::string_view familyOfTableStyleName(std::string_view element) {
  if (element == "table-row") return "table-row";
  if (element == "table-column") return "table-column";
  if (isOneOf(element, {"table", "table-template"})) return "table";
  return "table-cell";  // cells, covered cells and the parts of table templates
}

std::string_view familyOfDrawStyleName(const XmlName& element) {
  const bool isPage = element == XmlName{"draw", "page"} || element == XmlName{"style", "master-page"} ||
                      element == XmlName{"style", "handout-master"} || element == XmlName{"presentation", "notes"};
  return isPage ? "drawing-page" : "graphic";
}

// The attributes that refer to a style and mean the same family wherever they stand.
struct Reference {
  XmlName attribute;
  std::string_view family;
};
constexpr std::array kReferences = {Reference{{"text", "visited-style-name"}, "text"},
                                    Reference{{"text", "main-entry-style-name"}, "text"},
                                    Reference{{"text", "citation-style-name"}, "text"},
                                    Reference{{"text", "citation-body-style-name"}, "text"},
                                    Reference{{"text", "cond-style-name"}, "paragraph"},
                                    Reference{{"text", "default-style-name"}, "paragraph"},
                                    Reference{{"text", "style-override"}, "list"},
                                    Reference{{"table", "default-cell-style-name"}, "table-cell"},
                                    Reference{{"table", "paragraph-style-name"}, "paragraph"},
                                    Reference{{"draw", "text-style-name"}, "paragraph"},
                                    Reference{{"form", "text-style-name"}, "paragraph"},
                                    Reference{{"style", "register-truth-ref-style-name"}, "paragraph"},
                                    Reference{{"presentation", "style-name"}, "presentation"},
                                    Reference{{"chart", "style-name"}, "chart"}};

}  // namespace

std::string_view referredFamily(const XmlName& element, const XmlName& attribute) {
  if (attribute == XmlName{"text", "style-name"}) return familyOfTextStyleName(element.name);
  if (attribute == XmlName{"table", "style-name"}) return familyOfTableStyleName(element.name);
  if (attribute == XmlName{"draw", "style-name"}) return familyOfDrawStyleName(element);
  if (!attribute.name.ends_with("style-name") && attribute.name != "style-override") return {};
  for (const Reference& reference : kReferences) {
    if (attribute == reference.attribute) return reference.family;
  }
  return {};
}

void ContentUses::addElement(std::size_t part, const XmlElement& element) {
  if (element.is("text", "list") || element.is("text", "numbered-paragraph")) noteContinued(part, element);
  for (const XmlAttribute& attribute : element.attributes) {
    if (attribute.value.empty()) continue;
    if (attribute.name.starts_with("font-name")) mFonts.emplace(part, std::string(attribute.value));
    const XmlName name{attribute.prefix, attribute.name};
    const bool isReference = attribute.name.ends_with("style-name") || attribute.name == "style-override";
    const auto family = isReference ? referredFamily({element.prefix, element.name}, name) : std::string_view();
    if (!family.empty()) {
      add(part, family, attribute.value, element.line);
    } else if (mayReferToStyle(name)) {
      addUnknown(part, element, attribute);
    }
  }
}

// A list that numbers on, as it says itself or by the name that it gives; one without a style may have any.
void ContentUses::noteContinued(std::size_t part, const XmlElement& element) {
  const bool isContinued = element.attribute("text", "continue-numbering").value_or("") == "true" ||
                           element.attribute("text", "continue-list") || element.attribute("text", "list-id");
  if (isContinued) mContinued.emplace(part, std::string(element.attribute("text", "style-name").value_or("")));
}

bool mayReferToStyle(const XmlName& attribute) {
  const auto [prefix, name] = attribute;
  if (prefix == "xml" || prefix == "none") return false;
  if (addressForPrefix(prefix).empty()) return true;
  if (!name.ends_with("style-name") && name != "class-names") return false;
  // References to other things than styles.
  return !name.ends_with("data-style-name") && name != "font-style-name" &&
         !(prefix == "style" && name == "next-style-name");
}

void ContentUses::addUnknown(std::size_t part, const XmlElement& element, const XmlAttribute& attribute) {
  constexpr std::size_t kLongestName = 200;
  for (std::size_t at = 0; at < attribute.value.size() && attribute.value.size() <= kLongestName;) {
    const std::size_t end = std::min(attribute.value.find(' ', at), attribute.value.size());
    const std::string_view name = attribute.value.substr(at, end - at);
    at = end + 1;
    std::string key = std::string(1, static_cast<char>('0' + part)) + '?';
    if (name.empty() || !mPlaces.try_emplace(key.append(name), mUnknown.size()).second) continue;
    const std::string shown = std::string(attribute.prefix) + ':' + std::string(attribute.name);
    mUnknown.push_back({part, shown, std::string(name), 1, element.line});
  }
}

void ContentUses::add(std::size_t part, std::string_view family, std::string_view name, int line) {
  std::string key;
  key.reserve(family.size() + name.size() + 4);
  key.append(1, static_cast<char>('0' + part)).append(family).append(1, ':').append(name);
  const auto [found, isNew] = mPlaces.try_emplace(std::move(key), mUses.size());
  if (isNew) mUses.push_back({part, std::string(family), std::string(name), 0, line});
  ++mUses[found->second].count;
}

}  // namespace zt
