// SPDX-License-Identifier: MIT
#pragma once

#include <document/ZTDocument.h>

#include <vector>

namespace zt {

/// Validates the stylesheets of the document, parents first, and answers what that told, with the style and where it
/// stands in the file, in the order of validation. The document is not changed.
std::vector<Finding> checkModel(const ZTDocument& document);

}  // namespace zt
