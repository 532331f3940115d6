// SPDX-License-Identifier: MIT
#pragma once

#include <document/DocumentFormat.h>

namespace zt {

/// OpenDocument texts: flat files, packages, and folders that hold styles.xml or content.xml.
const DocumentFormat& openDocumentFormat();

}  // namespace zt
