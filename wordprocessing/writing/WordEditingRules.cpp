// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/WordEditingRules.h>

#include <document/ZTDocument.h>
#include <document/editing/DocumentEditor.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <document/xml/XmlScanner.h>
#include <document/xml/XmlSplices.h>

#include <platform/NSNumber.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <array>
#include <optional>
#include <unordered_set>

namespace zt {

namespace {

bool isNumbering(const OdfStyle& style) {
  const std::string_view name = fileNameOf(style);
  return style.family() == StyleFamily::list && (name.starts_with("abstractNum-") || name.starts_with("num-"));
}

bool isTrue(const OdfStyle& style, const char* key) {
  const NSNumber* number = NSNumber::from(style.p_overrideValueForProperty(PropertyKey(key)));
  return number != nullptr && number->isBool() && number->boolValue();
}

/// Whether the list of latent styles has an exception for the style.
bool isInLatentStyles(const OdfStyle& style) {
  if (style.stylesheet() == nullptr) return false;
  const ZTSStyle* root = style.stylesheet()->styleWithIdentifier(rootIdentifier("paragraph"));
  const OpaqueValue* latent =
      root != nullptr ? asOpaque(root->p_overrideValueForProperty(PropertyKey("style.w.latentStyles"))) : nullptr;
  return latent != nullptr &&
         latent->text().find(fmt::format("w:name=\"{}\"", escapedAttribute(style.name().view()))) != std::string::npos;
}

class WordRules final : public EditingRules {
 public:
  // Ids are one set for all kinds (17.7.4.17).
  [[nodiscard]] std::string fileName(const OdfStyle& style, std::string_view shown) const override {
    if (isNumbering(style)) throw EditError(fmt::format("{} has a number for a name", style.identifier().view()));
    const std::string wanted = newFileName(style.family(), shown);
    std::string name = wanted;
    for (int number = 1; isTakenByOtherKind(style, name); ++number) name = wanted + std::to_string(number);
    return name;
  }

  [[nodiscard]] std::string newFileName(StyleFamily, std::string_view shown) const override {
    std::string name;
    for (const char byte : shown) {
      if (byte != ' ' && byte != ',' && byte != ';') name += byte;
    }
    return name.empty() ? "Style" : name;
  }

  [[nodiscard]] bool isLatent(const OdfStyle& style) const override {
    return style.isIdentified() && isInLatentStyles(style);
  }

  [[nodiscard]] bool isUsedUnnamed(const OdfStyle& style) const override {
    if (!style.isIdentified()) return false;
    return isNumbering(style) || style.family() == StyleFamily::other || isTrue(style, "style.w.default");
  }

  [[nodiscard]] Ref<NSObject> withoutLatentStyles(const ZTSStylesheet& stylesheet, PropertyKey key,
                                                  const Ref<NSObject>& value) const override {
    const OpaqueValue* latent = key.view() == "style.w.latentStyles" ? asOpaque(value.get()) : nullptr;
    if (latent == nullptr) return value;
    std::unordered_set<std::string> names;
    for (const Ref<ZTSStyle>& each : stylesheet.retainedStyles()) names.insert(each->name().text());
    XmlSplices splices;
    XmlScanner scanner(latent->text(), XmlScanner::Prefixes::standard);
    std::optional<std::size_t> goesFrom;
    while (scanner.next()) {
      if (!scanner.is("w", "lsdException")) continue;
      if (!scanner.isStart()) {
        if (goesFrom) splices.remove(*goesFrom, scanner.end());
        goesFrom.reset();
        continue;
      }
      for (const XmlPlacedAttribute& attribute : scanner.attributes()) {
        if (attribute.is("w", "name") && !names.contains(attribute.value())) goesFrom = scanner.start();
      }
    }
    return splices.isEmpty() ? value : Ref<NSObject>(make<OpaqueValue>(splices.applyTo(latent->text())));
  }

  [[nodiscard]] std::vector<NamedStyle> stylesNamedBy(const OdfStyle& style, PropertyKey key,
                                                      const NSObject& value) const override {
    if (!isListLink(key)) return EditingRules::stylesNamedBy(style, key, value);
    const NSString* text = NSString::from(&value);
    return text != nullptr ? std::vector<NamedStyle>{{"list", std::string(text->view())}} : std::vector<NamedStyle>();
  }

  [[nodiscard]] Ref<NSObject> valueWithNames(
      const OdfStyle& style, PropertyKey key, const NSObject& value,
      const std::function<std::string(const NamedStyle&)>& renamed) const override {
    const NSString* text = isListLink(key) ? NSString::from(&value) : nullptr;
    if (text == nullptr) return EditingRules::valueWithNames(style, key, value, renamed);
    const std::string name = renamed({"list", std::string(text->view())});
    return name.empty() ? Ref<NSObject>(const_cast<NSObject*>(&value)) : Ref<NSObject>(NSString::make(name));
  }

 private:
  static bool isListLink(PropertyKey key) {
    return key.view() == "list.w.styleLink" || key.view() == "list.w.numStyleLink";
  }

  static bool isTakenByOtherKind(const OdfStyle& style, const std::string& name) {
    constexpr std::array<std::string_view, 4> kKinds = {"paragraph", "text", "table", "list"};
    for (const std::string_view kind : kKinds) {
      if (kind == style.familyName() || style.stylesheet() == nullptr) continue;
      if (style.stylesheet()->styleWithIdentifier(styleIdentifier(kind, name)) != nullptr) return true;
    }
    return false;
  }
};

}  // namespace

const EditingRules& wordEditingRules() {
  static const WordRules rules;
  return rules;
}

}  // namespace zt
