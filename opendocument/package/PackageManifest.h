// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/package/Package.h>

namespace zt {

/// Whether the manifest of a package says that styles.xml, content.xml or the whole of it is
/// encrypted. Throws `ReadError` if it is no XML.
bool manifestTellsOfEncryption(const XmlPart& manifest);

}  // namespace zt
