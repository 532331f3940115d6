// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Reading one XML part that may be hostile, as a stream of events: nothing outside the part is
/// opened, no entity is expanded, no tree is built, nesting costs no call depth.

#include <document/Finding.h>
#include <document/xml/XmlPart.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// Where to stop. Each bound keeps the time linear in the size of the part.
struct XmlLimits {
  std::size_t depth = 1'000'000;         ///< elements open at a time
  std::size_t attributesPerTag = 1'000;  ///< namespace declarations included
  std::size_t openNamespaces = 10'000;   ///< declarations in force at a time
};

/// One attribute; the views live as long as the call they are handed to.
struct XmlAttribute {
  std::string_view prefix;  ///< the standard prefix of its namespace, see `prefixForAddress`
  std::string_view name;    ///< local
  std::string_view value;

  [[nodiscard]] bool is(std::string_view wantedPrefix, std::string_view wantedName) const {
    return name == wantedName && prefix == wantedPrefix;
  }
};

/// The start of an element.
struct XmlElement {
  std::string_view prefix;
  std::string_view name;
  const std::vector<XmlAttribute>& attributes;  ///< in the order of the file
  int line = 0;

  [[nodiscard]] bool is(std::string_view wantedPrefix, std::string_view wantedName) const {
    return name == wantedName && prefix == wantedPrefix;
  }
  /// The value of an attribute; none if it is not there (an empty one is there).
  [[nodiscard]] std::optional<std::string_view> attribute(std::string_view wantedPrefix,
                                                          std::string_view wantedName) const;
};

/// Receives the events. May throw: reading stops and the exception leaves `readXml`.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void startElement(const XmlElement& element) = 0;
  virtual void endElement() = 0;
  virtual void text(std::string_view) {}
};

/// Reads a part from start to end. Text is UTF-8, whatever the part was written in (UTF-8, UTF-16,
/// or a named one-byte encoding); bytes that are no text are replaced by U+FFFD, with a finding.
/// Throws `ReadError` with the line where the part stops being well-formed or passes a limit; the
/// handler has then seen everything before.
void readXml(const XmlPart& part, XmlHandler& handler, std::vector<Finding>& findings, const XmlLimits& limits = {});

}  // namespace zt
