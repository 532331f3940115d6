#include <opendocument/reading/ContentUses.h>

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

}  // namespace

std::string_view referredFamily(const XmlElement& element, const XmlAttribute& attribute) {
  const auto [prefix, name, value] = attribute;
  if (prefix == "text") {
    if (name == "style-name") return familyOfTextStyleName(element.name);
    if (isOneOf(name,
                {"visited-style-name", "main-entry-style-name", "citation-style-name", "citation-body-style-name"})) {
      return "text";
    }
    if (isOneOf(name, {"cond-style-name", "default-style-name"})) return "paragraph";
    if (name == "style-override") return "list";
  } else if (prefix == "table") {
    if (name == "style-name") return familyOfTableStyleName(element.name);
    if (name == "default-cell-style-name") return "table-cell";
    if (name == "paragraph-style-name") return "paragraph";
  } else if (prefix == "draw") {
    if (name == "text-style-name") return "paragraph";
    if (name == "style-name") {
      const bool isPage = element.is("draw", "page") || element.is("style", "master-page") ||
                          element.is("style", "handout-master") || element.is("presentation", "notes");
      return isPage ? "drawing-page" : "graphic";
    }
  } else if (name == "style-name") {
    if (prefix == "presentation") return "presentation";
    if (prefix == "chart") return "chart";
  }
  return {};
}

void ContentUses::addElement(std::size_t part, const XmlElement& element) {
  for (const XmlAttribute& attribute : element.attributes) {
    if (!attribute.name.ends_with("style-name") && attribute.name != "style-override") continue;
    if (attribute.value.empty()) continue;
    if (const auto family = referredFamily(element, attribute); !family.empty()) {
      add(part, family, attribute.value, element.line);
    }
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
