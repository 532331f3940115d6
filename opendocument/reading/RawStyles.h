// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The styles of a document as the file has them: text only, nothing resolved, nothing judged.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// An attribute under the standard prefix of its namespace.
struct RawAttribute {
  std::string prefix;
  std::string name;
  std::string value;
};

/// One entry of a style: an attribute of a property element, or a child element of one (tab stops,
/// columns, a background image) as text.
struct RawProperty {
  std::string group;  ///< "paragraph" for style:paragraph-properties
  std::string prefix;
  std::string name;
  std::string value;
  bool isElement = false;  ///< `value` is the element with all it holds, in one canonical form
  int line = 0;

  /// "fo:margin-left".
  [[nodiscard]] std::string qualifiedName() const { return prefix + ':' + name; }
};

/// A conditional style (style:map), or another child of a style that is no property element.
struct RawStyleChild {
  std::string prefix;
  std::string name;
  std::string text;  ///< the whole element in one canonical form
  int line = 0;

  [[nodiscard]] bool isMap() const { return prefix == "style" && name == "map"; }
};

/// A style:style or style:default-style.
struct RawStyle {
  enum class Kind : std::uint8_t { defaultStyle, named, automatic };

  Kind kind = Kind::named;
  std::size_t part = 0;  ///< index into the document's parts
  int line = 0;
  std::size_t element = 0;  ///< which of the style elements of its part, from 0
  std::string family;       ///< may be empty in a bad file
  std::string name;         ///< empty for a default style, and in a bad file
  std::optional<std::string> parent;
  std::vector<RawAttribute> attributes;  ///< all the others of the element
  std::vector<RawProperty> properties;   ///< in the order of the file
  std::vector<RawStyleChild> children;

  /// The value of another attribute of the element, such as style:list-style-name.
  [[nodiscard]] const std::string* attribute(std::string_view prefix, std::string_view attributeName) const;
};

/// A level of a list style or outline style.
struct RawListLevel {
  std::string element;                   ///< "list-level-style-number", "outline-level-style", ...
  std::vector<RawAttribute> attributes;  ///< text:level among them
  std::vector<RawProperty> properties;
  int line = 0;

  [[nodiscard]] const std::string* attribute(std::string_view prefix, std::string_view attributeName) const;
};

/// A text:list-style or text:outline-style.
struct RawListStyle {
  bool isOutline = false;
  bool isAutomatic = false;
  std::size_t part = 0;
  int line = 0;
  std::size_t element = 0;  ///< which of the style elements of its part, from 0
  std::string name;
  std::vector<RawAttribute> attributes;
  std::vector<RawListLevel> levels;  ///< one for each child element

  [[nodiscard]] const std::string* attribute(std::string_view prefix, std::string_view attributeName) const;
};

/// A declared font: styles name it, the family is what it is called.
struct RawFontFace {
  std::size_t part = 0;
  std::string name;
  std::string family;
};

}  // namespace zt
