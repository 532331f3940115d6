// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// A formatting request as this application makes it.

#include <document/ZTDocument.h>
#include <document/styles/PropertyRules.h>

namespace zt {

/// New values for a style, in the two maps that the library takes. Values that a reader of the file would understand
/// in another way on another style are kept in any case: shares of the parent's value, and properties that are not
/// inherited. The rest is kept only where it differs from what the base gives.
struct FormattingRequest {
  explicit FormattingRequest(const PropertyMap& values);

  Ref<PropertyMap> values = PropertyMap::make();
  Ref<PropertyMap> overrides = PropertyMap::make();
};

}  // namespace zt
