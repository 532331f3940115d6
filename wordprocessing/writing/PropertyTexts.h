// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The way back from entries of styles to what files say, see `PropertyReader`.

#include <platform/NSObject.h>
#include <platform/PropertyKey.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zt {

/// Where a property stands in files.
struct WordPlace {
  enum class Kind : std::uint8_t {
    element,     ///< the value is the text of the whole element
    attributes,  ///< the value stands in attributes of the element
    side,        ///< the value is the text of a child of the element: a border, a margin
    number,      ///< the value is the w:val of a child of w:numPr
    flag         ///< the value is an attribute of the style itself
  };

  Kind kind = Kind::attributes;
  std::string group;    ///< "paragraph", "text", "table", "table-row", "table-cell", "style", "level", "list"
  std::string prefix;   ///< standard
  std::string element;  ///< local
  std::string part;     ///< of several values of one element: "ascii", "left"; a child of it; or empty
};

/// Throws `EditError` for a property that has no place in a file of this format.
WordPlace placeInWord(PropertyKey key);

/// Attributes of WordprocessingML by their local names, none for one that goes.
using WordAttributes = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// What attributes say the value, all that could contradict it taken away; for none, those that go with it. Of kinds
/// `attributes` only. Throws `EditError` for what a file cannot say.
WordAttributes attributesFor(const WordPlace& place, PropertyKey key, const NSObject* value);

/// The value as the text of an element, a w:val or a flag: of the other kinds.
std::string wordText(const WordPlace& place, PropertyKey key, const NSObject& value);

}  // namespace zt
