// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// A WordprocessingML document as it lies on the disk: a package whose parts are found through relationships.

#include <document/Finding.h>
#include <document/package/ZipReader.h>
#include <document/xml/XmlPart.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// What a part is for, told by the type of the relationship that leads to it.
enum class WordPartKind : std::uint8_t { styles, numbering, theme, settings, document, text };

/// The parts of a document that tell of styles or use them. Nothing else of a package is opened; targets outside the
/// package are never followed.
class WordPackage {
 public:
  struct Part {
    WordPartKind kind = WordPartKind::text;  ///< `text`: headers, footers, notes, comments, glossary
    XmlPart xml;
  };

  /// Whether the file is a package with a main part of this format, or an encrypted one, which `read` then refuses by
  /// name. Does not throw.
  static bool recognises(const std::filesystem::path& path);

  /// Throws `ReadError` if there is no main part to read, and for encrypted documents. Other parts that cannot be read
  /// or are said to be something else, and relationships that lead nowhere, give a finding each. A glossary document
  /// with styles of its own is a document of its own, and left out.
  static WordPackage read(const std::filesystem::path& path, const PackageLimits& limits = {});

  std::string shown;
  std::vector<Part> parts;  ///< in the order of `WordPartKind`, those of one kind as the relationships name them
  std::vector<Finding> findings;
};

/// The entry that a target means, seen from another entry: "styles.xml" from "word/document.xml" is "word/styles.xml".
/// Empty where it leads out of the package.
std::string resolvedTarget(std::string_view from, std::string_view target);

}  // namespace zt
