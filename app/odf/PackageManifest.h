#pragma once

#include <app/odf/Package.h>

namespace zt {

/// Whether the manifest of a package says that styles.xml, content.xml or the whole of it is
/// encrypted. Throws `ReadError` if it is no XML.
bool manifestTellsOfEncryption(const PackagePart& manifest);

}  // namespace zt
