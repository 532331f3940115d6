// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/package/Package.h>
#include <opendocument/reading/ContentUses.h>
#include <opendocument/reading/RawStyles.h>

#include <string>
#include <vector>

namespace zt {

/// Everything that a document says about styles, part by part, and what its text does with them.
struct RawDocument {
  struct Part {
    std::string name;   ///< "flat", "styles.xml", "content.xml"
    std::string shown;  ///< how messages name it
  };

  std::string shown;
  std::vector<Part> parts;
  std::vector<RawStyle> styles;  ///< in the order of the parts and of each file
  std::vector<RawListStyle> listStyles;
  std::vector<RawFontFace> fontFaces;
  ContentUses uses;
  ContentUses settingUses;        ///< of settings, page layouts and templates beside the styles
  std::vector<Finding> findings;  ///< of the package and of its text

  /// Reads all parts. Where a part stops being readable, what stood before is kept and a finding
  /// tells the place. Throws `ReadError` only if nothing could be read of any part.
  /// Linear in the size of the parts, whose bytes are given back on the way.
  static RawDocument read(Package package);

  /// The place of a line of a part.
  [[nodiscard]] SourcePlace place(std::size_t part, int line) const { return {parts[part].shown, line}; }
};

}  // namespace zt
