// SPDX-License-Identifier: MIT
#include <document/editing/StylesAsRead.h>

#include <algorithm>

namespace zt {

std::vector<StyleAsRead> stylesAsRead(const ZTDocument& document) {
  std::vector<StyleAsRead> all;
  all.reserve(document.readStyles().size());
  for (const Ref<OdfStyle>& style : document.readStyles())
    all.push_back({style, ownValuesOf(*style), style->identifier(), style->parentIdentifier(), style->name()});
  return all;
}

Ref<PropertyMap> ownValuesOf(const OdfStyle& style) {
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  return own ? own->copy() : PropertyMap::make();
}

bool areSameValues(const PropertyMap& first, const PropertyMap& second) {
  return first.count() == second.count() &&
         std::all_of(first.begin(), first.end(), [&](const PropertyMap::Entry& entry) {
           const NSObject* other = second.find(entry.key);
           return asStyle(entry.value.get()) != nullptr ? entry.value.get() == other
                                                        : sameOrEqual(entry.value.get(), other);
         });
}

}  // namespace zt
