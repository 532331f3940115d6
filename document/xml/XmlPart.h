// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace zt {

/// One XML part of a document in memory.
struct XmlPart {
  std::string name;   ///< "styles.xml", "content.xml", or "flat" for a flat file
  std::string shown;  ///< how messages name it
  std::string bytes;
};

}  // namespace zt
