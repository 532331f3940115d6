// SPDX-License-Identifier: MIT
#include <document/xml/OpaqueText.h>

#include <utility>

namespace zt {

void OpaqueText::startElement(const XmlElement& element) {
  closeTag();
  std::string name;
  name.append(element.prefix).append(1, ':').append(element.name);
  mText.append(1, '<').append(name);
  for (const XmlAttribute& attribute : element.attributes) {
    mText.append(1, ' ').append(attribute.prefix).append(1, ':').append(attribute.name).append("=\"");
    append(attribute.value, true);
    mText += '"';
  }
  mOpen.push_back(std::move(name));
  mIsTagOpen = true;
}

bool OpaqueText::endElement() {
  if (mIsTagOpen) {
    mText += "/>";
  } else {
    mText.append("</").append(mOpen.back()).append(1, '>');
  }
  mIsTagOpen = false;
  mOpen.pop_back();
  return mOpen.empty();
}

void OpaqueText::addText(std::string_view text) {
  if (text.find_first_not_of(" \t\r\n") == std::string_view::npos) return;
  closeTag();
  append(text, false);
}

std::string OpaqueText::take() { return std::exchange(mText, {}); }

void OpaqueText::closeTag() {
  if (mIsTagOpen) mText += '>';
  mIsTagOpen = false;
}

void OpaqueText::append(std::string_view text, bool isAttribute) {
  for (const char byte : text) {
    if (byte == '&') {
      mText += "&amp;";
    } else if (byte == '<') {
      mText += "&lt;";
    } else if (byte == '>') {
      mText += "&gt;";
    } else if (byte == '"' && isAttribute) {
      mText += "&quot;";
    } else if (byte == '\r') {
      mText += "&#13;";
    } else if ((byte == '\n' || byte == '\t') && isAttribute) {
      mText += byte == '\n' ? "&#10;" : "&#9;";
    } else {
      mText += byte;
    }
  }
}

}  // namespace zt
