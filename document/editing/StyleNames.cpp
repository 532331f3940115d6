// SPDX-License-Identifier: MIT
#include <document/editing/StyleNames.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <document/xml/XmlScanner.h>
#include <document/xml/XmlSplices.h>

#include <platform/NSString.h>

#include <fmt/format.h>

namespace zt {

namespace {

/// The family that a value names a style of as plain text; empty where it names none.
std::string familyNamedBy(const OdfStyle& style, PropertyKey key) {
  if (key == keys::nextStyle()) return style.familyName();
  if (key == keys::linkedStyle()) return style.family() == StyleFamily::text ? "paragraph" : "text";
  return key == keys::listStyle() && style.family() != StyleFamily::paragraph ? "list" : "";
}

/// The same for an attribute inside of an element that is kept as text.
std::string familyNamedBy(const OdfStyle& style, const XmlPlacedAttribute& attribute) {
  if (attribute.is("style", "apply-style-name")) return style.familyName();
  if (attribute.is("style", "style-name") || attribute.is("style", "leader-text-style") ||
      attribute.is("style", "text-line-through-text-style"))
    return "text";
  return {};
}

/// Calls back with each place of an element's text that names a style.
void walk(const OdfStyle& style, const std::string& text,
          const std::function<void(const XmlPlacedAttribute&, NamedStyle)>& found) {
  if (text.find("apply-style-name") == std::string::npos && text.find("style:style-name") == std::string::npos &&
      text.find("text-style") == std::string::npos)
    return;
  XmlScanner scanner(text, XmlScanner::Prefixes::standard);
  while (scanner.next()) {
    for (const XmlPlacedAttribute& attribute : scanner.attributes()) {
      std::string family = familyNamedBy(style, attribute);
      if (!family.empty() && !attribute.raw.empty()) found(attribute, {std::move(family), attribute.value()});
    }
  }
}

}  // namespace

std::string encodedStyleName(std::string_view name) {
  std::string encoded;
  for (std::size_t at = 0; at < name.size(); ++at) {
    const auto byte = static_cast<unsigned char>(name[at]);
    const bool isLetter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || byte >= 0x80;
    const bool mayFollow = (byte >= '0' && byte <= '9') || byte == '-' || byte == '.';
    if (isLetter || byte == '_' || (mayFollow && at != 0)) {
      encoded += static_cast<char>(byte);
    } else {
      encoded += fmt::format("_{:02x}_", byte);
    }
  }
  return encoded;
}

std::string_view fileNameOf(const ZTSStyle& identified) {
  const std::string_view identifier = identified.identifier().view();
  return identifier.substr(identifier.find(':') + 1);
}

std::vector<NamedStyle> stylesNamedBy(const OdfStyle& style, PropertyKey key, const NSObject& value) {
  std::vector<NamedStyle> named;
  if (const NSString* text = NSString::from(&value)) {
    const std::string family = familyNamedBy(style, key);
    if (!family.empty() && !text->view().empty()) named.push_back({family, std::string(text->view())});
  } else if (const OpaqueValue* opaque = asOpaque(&value); opaque != nullptr && opaque->text().starts_with('<')) {
    walk(style, opaque->text(),
         [&](const XmlPlacedAttribute&, NamedStyle found) { named.push_back(std::move(found)); });
  }
  return named;
}

Ref<NSObject> valueWithNames(const OdfStyle& style, PropertyKey key, const NSObject& value,
                             const std::function<std::string(const NamedStyle&)>& renamed) {
  if (const NSString* text = NSString::from(&value)) {
    const std::string name = renamed({familyNamedBy(style, key), std::string(text->view())});
    return name.empty() ? Ref<NSObject>(const_cast<NSObject*>(&value)) : Ref<NSObject>(NSString::make(name));
  }
  const std::string& text = asOpaque(&value)->text();
  XmlSplices splices;
  walk(style, text, [&](const XmlPlacedAttribute& attribute, const NamedStyle& found) {
    const std::string name = renamed(found);
    if (!name.empty()) splices.replace(attribute.valueStart, attribute.end - 1, escapedAttribute(name));
  });
  return make<OpaqueValue>(splices.applyTo(text));
}

}  // namespace zt
