// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Elements of WordprocessingML as small trees: one style, one w:pPr, one level at a time, never a whole part.

#include <document/Finding.h>
#include <document/xml/SafeXml.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// An element with what stands in it. Text is left out: elements that tell of styles have none.
struct WordElement {
  struct Attribute {
    std::string prefix;
    std::string name;
    std::string value;
  };

  std::string prefix;
  std::string name;
  std::vector<Attribute> attributes;
  std::vector<WordElement> children;
  int line = 0;

  /// Whether it is an element of WordprocessingML with that name.
  [[nodiscard]] bool is(std::string_view wanted) const { return name == wanted && prefix == "w"; }
  /// The value of an attribute of WordprocessingML, or none.
  [[nodiscard]] const std::string* attribute(std::string_view wanted) const;
  /// The value of w:val, or none.
  [[nodiscard]] const std::string* val() const { return attribute("val"); }
  /// The w:val of the first child with that name, or none.
  [[nodiscard]] const std::string* valOf(std::string_view child) const;
  /// The first child of WordprocessingML with that name, or none.
  [[nodiscard]] const WordElement* child(std::string_view wanted) const;
};

/// The element in the one form of `OpaqueText`: equal content gives equal text.
std::string canonicalText(const WordElement& element);

/// Makes a tree of the events of one element.
class ElementBuilder {
 public:
  [[nodiscard]] bool isOpen() const noexcept { return !mOpen.empty(); }
  void startElement(const XmlElement& element);
  /// Whether this ended the outermost element; `take` then answers it.
  bool endElement();
  WordElement take() { return std::move(mRoot); }

 private:
  WordElement mRoot;
  std::vector<WordElement*> mOpen;
};

/// Reads a part as `readXml`, with the choices of ECMA-376 part 3 made: of an mc:AlternateContent the fallback is seen
/// as if it stood in its place. Nesting beyond a thousand elements is refused, since trees are made of it.
void readWordXml(const XmlPart& part, XmlHandler& handler, std::vector<Finding>& findings);

}  // namespace zt
