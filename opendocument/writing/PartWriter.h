// SPDX-License-Identifier: MIT
#pragma once

#include <document/editing/EditableDocument.h>
#include <document/xml/XmlPart.h>
#include <opendocument/writing/StyleDifference.h>

#include <string>
#include <vector>

namespace zt {

/// The bytes of a part with its differences written into them; nothing else changes. What was edited is added to
/// `shown`. Throws `EditError` for what cannot be written.
std::string writtenPart(const XmlPart& part, std::size_t index, const StyleDifference& difference,
                        std::vector<ShownEdit>& shown);

}  // namespace zt
