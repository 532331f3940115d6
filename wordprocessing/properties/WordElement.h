// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Elements of WordprocessingML as small trees: one style, one w:pPr, one level at a time, never a whole part.

#include <document/Finding.h>
#include <document/xml/SafeXml.h>

#include <cstdint>
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

/// Receives the events of a part.
class WordXmlHandler : public XmlHandler {
 public:
  /// The start of an element inside of a choice that was not taken.
  virtual void passOver(const XmlElement&) {}
};

/// Makes the choices of ECMA-376 part 3 while a part is walked over: which elements apply. No extension is understood
/// here, so that of an mc:AlternateContent the fallback applies.
class Alternatives {
 public:
  enum class Way : std::uint8_t { shown, wrapper, transparent, hidden };

  /// The way of an element that starts: one that is shown is part of the text.
  Way start(std::string_view prefix, std::string_view name);
  Way end();
  /// Whether text stands in what applies.
  [[nodiscard]] bool showsText() const {
    return mWays.empty() || mWays.back() == Way::shown || mWays.back() == Way::transparent;
  }

 private:
  std::vector<Way> mWays;  // of the open elements
};

/// Reads a part as `readXml`, with these choices made: what applies is seen as if it stood in place of the
/// mc:AlternateContent. Nesting beyond a thousand elements is refused, since trees are made of it.
void readWordXml(const XmlPart& part, WordXmlHandler& handler, std::vector<Finding>& findings);

}  // namespace zt
