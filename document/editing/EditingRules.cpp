// SPDX-License-Identifier: MIT
#include <document/editing/EditingRules.h>

namespace zt {

std::string EditingRules::fileName(const OdfStyle& style, std::string_view shown) const {
  return newFileName(style.family(), shown);
}

std::string EditingRules::newFileName(StyleFamily, std::string_view shown) const { return encodedStyleName(shown); }

Ref<NSObject> EditingRules::withoutLatentStyles(const ZTSStylesheet&, PropertyKey, const Ref<NSObject>& value) const {
  return value;
}

bool EditingRules::isLatent(const OdfStyle&) const { return false; }

bool EditingRules::isUsedUnnamed(const OdfStyle& style) const {
  if (!style.isIdentified()) return false;
  const std::string_view name = fileNameOf(style);
  return style.identifier().view().starts_with("outline:") || name == "Standard" || name == "standard" ||
         name == "Default" || name == "default";
}

std::vector<NamedStyle> EditingRules::stylesNamedBy(const OdfStyle& style, PropertyKey key,
                                                    const NSObject& value) const {
  return zt::stylesNamedBy(style, key, value);
}

Ref<NSObject> EditingRules::valueWithNames(const OdfStyle& style, PropertyKey key, const NSObject& value,
                                           const std::function<std::string(const NamedStyle&)>& renamed) const {
  return zt::valueWithNames(style, key, value, renamed);
}

const EditingRules& modelEditingRules() {
  static const EditingRules rules;
  return rules;
}

}  // namespace zt
