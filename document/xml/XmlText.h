// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What happens to the bytes of an XML part before the parser sees them.

#include <document/xml/SafeXml.h>

#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The text of a part and whether the encoding that it names is to be ignored.
struct XmlText {
  std::string converted;  ///< the text, if it had to be rewritten
  std::string_view text;  ///< what the parser gets: `converted`, or the part's own bytes
  bool isUtf8 = false;    ///< the parser must not believe what the XML declaration says
};

/// UTF-16 becomes UTF-8; in UTF-8 what is no text becomes U+FFFD, with one finding for the part.
/// Other encodings are left to the parser if each of their bytes below 128 is ASCII; the rest is
/// refused with `ReadError`. `part` must outlive the answer.
XmlText prepareXmlText(const XmlPart& part, std::vector<Finding>& findings);

/// The encoding that the XML declaration at the start of a text names, in lower case; empty if it names none.
std::string declaredXmlEncoding(std::string_view text);

/// Throws `ReadError` for what the parser must not get to see. A tag with more attributes than the
/// limit: the parser compares each one with all others, so that a tag of millions would take hours.
/// A document type with declarations: entities that grow or that point outside. Linear.
void checkTags(std::string_view text, const std::string& shown, const XmlLimits& limits);

}  // namespace zt
