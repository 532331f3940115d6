// SPDX-License-Identifier: MIT
#pragma once

#include <document/styles/OdfStyle.h>
#include <wordprocessing/reading/WordDocument.h>

#include <vector>

namespace zt {

/// The parts of its table that a paragraph stands in, as far as the table wants them formatted (w:tblLook): keys of
/// `keys::tableConditions`, the weakest first (17.7.6). Bands have the width that the style gives them. Empty for a
/// paragraph in no table, and for a table without style.
std::vector<PropertyKey> tablePartsOf(const WordDocument& document, const WordParagraph& paragraph,
                                      const OdfStyle* tableStyle);

}  // namespace zt
