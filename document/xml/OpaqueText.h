// SPDX-License-Identifier: MIT
#pragma once

#include <document/xml/SafeXml.h>

#include <string>
#include <vector>

namespace zt {

/// Writes an element with all it holds as text, in one form for all files: standard prefixes, no
/// declarations, no white space between elements. Equal content gives equal text.
class OpaqueText {
 public:
  [[nodiscard]] bool isOpen() const noexcept { return !mOpen.empty(); }
  [[nodiscard]] const std::string& text() const noexcept { return mText; }

  void startElement(const XmlElement& element);
  /// Whether this ended the outermost element; `take` then answers the text.
  bool endElement();
  void addText(std::string_view text);
  std::string take();

 private:
  void closeTag();
  void append(std::string_view text, bool isAttribute);

  std::string mText;
  std::vector<std::string> mOpen;
  bool mIsTagOpen = false;
};

}  // namespace zt
