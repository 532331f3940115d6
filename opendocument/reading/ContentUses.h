// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Which styles the text of a document refers to: its body, its master pages, headers and footers.

#include <document/xml/SafeXml.h>

#include <cstddef>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zt {

/// All references from one part to one name.
struct ContentUse {
  std::size_t part = 0;
  std::string family;  ///< "paragraph", ...; "list" for list styles
  std::string name;
  std::size_t count = 0;
  int line = 0;  ///< of the first
};

/// The uses in the order of their first occurrence.
class ContentUses {
 public:
  /// Notes what the attributes of one element of the text refer to. An empty name is no reference.
  void addElement(std::size_t part, const XmlElement& element);

  [[nodiscard]] const std::vector<ContentUse>& all() const noexcept { return mUses; }

  /// Names in attributes that may refer to styles in a way that is not known here; `family` is the attribute's name.
  [[nodiscard]] const std::vector<ContentUse>& unknown() const noexcept { return mUnknown; }

  /// The part and the style of each list that numbers on where another ended; an empty name may be any style.
  [[nodiscard]] const std::set<std::pair<std::size_t, std::string>>& continuedLists() const noexcept {
    return mContinued;
  }

  /// The part and the name of each font that something besides a style names.
  [[nodiscard]] const std::set<std::pair<std::size_t, std::string>>& fonts() const noexcept { return mFonts; }

 private:
  void noteContinued(std::size_t part, const XmlElement& element);
  void addUnknown(std::size_t part, const XmlElement& element, const XmlAttribute& attribute);
  void add(std::size_t part, std::string_view family, std::string_view name, int line);

  std::vector<ContentUse> mUses;
  std::vector<ContentUse> mUnknown;
  std::set<std::pair<std::size_t, std::string>> mContinued;
  std::set<std::pair<std::size_t, std::string>> mFonts;
  std::unordered_map<std::string, std::size_t> mPlaces;
};

/// A name with the standard prefix of its namespace.
struct XmlName {
  std::string_view prefix;
  std::string_view name;

  bool operator==(const XmlName&) const = default;
};

/// The family that an attribute of an element outside of styles refers to; empty if it is no reference to a style.
std::string_view referredFamily(const XmlName& element, const XmlName& attribute);

/// Whether an attribute may refer to a style all the same, as those of extensions do.
bool mayReferToStyle(const XmlName& attribute);

}  // namespace zt
