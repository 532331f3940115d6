#pragma once
/// @file
/// Which styles the text of a document refers to: its body, its master pages, headers and footers.

#include <document/xml/SafeXml.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
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

 private:
  void add(std::size_t part, std::string_view family, std::string_view name, int line);

  std::vector<ContentUse> mUses;
  std::unordered_map<std::string, std::size_t> mPlaces;
};

/// The family that an attribute of an element refers to; empty if it is no reference to a style.
std::string_view referredFamily(const XmlElement& element, const XmlAttribute& attribute);

}  // namespace zt
