// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

namespace zt {

/// A value with its reference to the theme followed: "theme:accent1 tint:99" is a colour, "theme:minorHAnsi" the name
/// of a font. Every other value as it is; so is a reference that the document's theme does not know.
Ref<NSObject> valueInTheme(const ZTDocument& document, Ref<NSObject> value);

}  // namespace zt
