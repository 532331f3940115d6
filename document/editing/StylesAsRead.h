// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <vector>

namespace zt {

/// A style as it was read.
struct StyleAsRead {
  Ref<OdfStyle> style;
  Ref<PropertyMap> own;  ///< a copy
  StringRef identifier;
  StringRef parentIdentifier;
  StringRef name;
};

/// All styles that were read, as they are now.
std::vector<StyleAsRead> stylesAsRead(const ZTDocument& document);

/// A copy of the own values; empty where there are none.
Ref<PropertyMap> ownValuesOf(const OdfStyle& style);

/// Whether two sets of own values are the same; styles among them are compared by identity.
bool areSameValues(const PropertyMap& first, const PropertyMap& second);

}  // namespace zt
