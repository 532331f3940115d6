// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// One element of a part with the places of its tags and attributes, and edits of it.

#include <document/xml/XmlScanner.h>
#include <document/xml/XmlSplices.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// An element with all that it holds.
struct PlacedElement {
  struct Attribute {
    std::string prefix;  ///< standard
    std::string name;
    std::string value;
    std::size_t start = 0;
    std::size_t valueStart = 0;
    std::size_t end = 0;
  };

  std::string prefix;  ///< standard
  std::string name;
  std::string written;  ///< as the text has it
  std::vector<Attribute> attributes;
  std::vector<std::unique_ptr<PlacedElement>> children;
  std::shared_ptr<const std::vector<XmlDeclaredPrefix>> declared;
  std::size_t start = 0;
  std::size_t tagEnd = 0;      ///< behind the start tag
  std::size_t contentEnd = 0;  ///< where the end tag starts
  std::size_t end = 0;
  bool isEmpty = false;  ///< its tag closes itself

  [[nodiscard]] const Attribute* attribute(std::string_view wantedPrefix, std::string_view wantedName) const;
  [[nodiscard]] std::vector<const PlacedElement*> childrenNamed(std::string_view wantedPrefix,
                                                                std::string_view wantedName) const;
};

/// Reads the element whose start tag the scanner has just told, up to its end. Throws `EditError` for one that is
/// nested without sense.
std::unique_ptr<PlacedElement> readElement(XmlScanner& scanner);

/// Edits of elements, collected as splices.
class ElementEdits {
 public:
  ElementEdits(XmlSplices& splices, bool isAscii) : mSplices(splices), mIsAscii(isAscii) {}

  /// Sets an attribute, in its place or behind the others; without a value it goes.
  void setAttribute(const PlacedElement& element, std::string_view prefix, std::string_view name,
                    const std::optional<std::string>& value);
  /// Puts an element, given as text with standard prefixes, behind the children, or behind one of them.
  void addChild(const PlacedElement& parent, const PlacedElement* after, const std::string& text);
  /// Makes the elements (neighbours or not) what the text says, which has standard prefixes. Where only values of
  /// attributes differ, only these change.
  void replace(const PlacedElement& parent, const std::vector<const PlacedElement*>& elements, const std::string& text);
  void remove(const PlacedElement& element) { mSplices.remove(element.start, element.end); }

  /// A text with standard prefixes as it has to stand at a place with these declarations.
  [[nodiscard]] std::string fitted(const std::vector<XmlDeclaredPrefix>& declared, const std::string& text) const;
  void put(std::size_t start, std::size_t end, const std::string& text);

 private:
  bool replaceValues(const std::vector<const PlacedElement*>& elements, const std::string& text);

  XmlSplices& mSplices;
  bool mIsAscii;
  std::set<std::size_t> mOpened;  // where elements start that closed themselves and have got children
};

}  // namespace zt
