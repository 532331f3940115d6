// SPDX-License-Identifier: MIT
#include <document/xml/Namespaces.h>

#include <array>
#include <unordered_map>
#include <utility>

namespace zt {

namespace {

using Row = std::pair<std::string_view, std::string_view>;

// The first address of a prefix is the one it is written with.
constexpr std::array kNamespaces = {
    Row{"office", "urn:oasis:names:tc:opendocument:xmlns:office:1.0"},
    Row{"style", "urn:oasis:names:tc:opendocument:xmlns:style:1.0"},
    Row{"text", "urn:oasis:names:tc:opendocument:xmlns:text:1.0"},
    Row{"table", "urn:oasis:names:tc:opendocument:xmlns:table:1.0"},
    Row{"draw", "urn:oasis:names:tc:opendocument:xmlns:drawing:1.0"},
    Row{"fo", "urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0"},
    Row{"fo", "http://www.w3.org/1999/XSL/Format"},
    Row{"svg", "urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0"},
    Row{"svg", "http://www.w3.org/2000/svg"},
    Row{"number", "urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0"},
    Row{"chart", "urn:oasis:names:tc:opendocument:xmlns:chart:1.0"},
    Row{"dr3d", "urn:oasis:names:tc:opendocument:xmlns:dr3d:1.0"},
    Row{"presentation", "urn:oasis:names:tc:opendocument:xmlns:presentation:1.0"},
    Row{"form", "urn:oasis:names:tc:opendocument:xmlns:form:1.0"},
    Row{"script", "urn:oasis:names:tc:opendocument:xmlns:script:1.0"},
    Row{"meta", "urn:oasis:names:tc:opendocument:xmlns:meta:1.0"},
    Row{"config", "urn:oasis:names:tc:opendocument:xmlns:config:1.0"},
    Row{"db", "urn:oasis:names:tc:opendocument:xmlns:database:1.0"},
    Row{"anim", "urn:oasis:names:tc:opendocument:xmlns:animation:1.0"},
    Row{"smil", "urn:oasis:names:tc:opendocument:xmlns:smil-compatible:1.0"},
    Row{"manifest", "urn:oasis:names:tc:opendocument:xmlns:manifest:1.0"},
    Row{"of", "urn:oasis:names:tc:opendocument:xmlns:of:1.2"},
    Row{"loext", "urn:org:documentfoundation:names:experimental:office:xmlns:loext:1.0"},
    Row{"calcext", "urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0"},
    Row{"field", "urn:openoffice:names:experimental:ooo-ms-interop:xmlns:field:1.0"},
    Row{"formx", "urn:openoffice:names:experimental:ooxml-odf-interop:xmlns:form:1.0"},
    Row{"ooo", "http://openoffice.org/2004/office"},
    Row{"ooow", "http://openoffice.org/2004/writer"},
    Row{"oooc", "http://openoffice.org/2004/calc"},
    Row{"officeooo", "http://openoffice.org/2009/office"},
    Row{"tableooo", "http://openoffice.org/2009/table"},
    Row{"drawooo", "http://openoffice.org/2010/draw"},
    Row{"rpt", "http://openoffice.org/2005/report"},
    Row{"koffice", "http://www.koffice.org/2005/"},
    Row{"calligra", "http://www.calligra.org/2005/"},
    Row{"css3t", "http://www.w3.org/TR/css3-text/"},
    Row{"xlink", "http://www.w3.org/1999/xlink"},
    Row{"xhtml", "http://www.w3.org/1999/xhtml"},
    Row{"math", "http://www.w3.org/1998/Math/MathML"},
    Row{"dc", "http://purl.org/dc/elements/1.1/"},
    Row{"dom", "http://www.w3.org/2001/xml-events"},
    Row{"xforms", "http://www.w3.org/2002/xforms"},
    Row{"xsd", "http://www.w3.org/2001/XMLSchema"},
    Row{"xsi", "http://www.w3.org/2001/XMLSchema-instance"},
    Row{"grddl", "http://www.w3.org/2003/g/data-view#"},
    Row{"xml", "http://www.w3.org/XML/1998/namespace"},
    // ECMA-376: the transitional address of a namespace first, the strict one after it.
    Row{"w", "http://schemas.openxmlformats.org/wordprocessingml/2006/main"},
    Row{"w", "http://purl.oclc.org/ooxml/wordprocessingml/main"},
    Row{"a", "http://schemas.openxmlformats.org/drawingml/2006/main"},
    Row{"a", "http://purl.oclc.org/ooxml/drawingml/main"},
    Row{"r", "http://schemas.openxmlformats.org/officeDocument/2006/relationships"},
    Row{"r", "http://purl.oclc.org/ooxml/officeDocument/relationships"},
    Row{"mc", "http://schemas.openxmlformats.org/markup-compatibility/2006"},
    Row{"rel", "http://schemas.openxmlformats.org/package/2006/relationships"},
    Row{"types", "http://schemas.openxmlformats.org/package/2006/content-types"},
    Row{"w14", "http://schemas.microsoft.com/office/word/2010/wordml"},
};

bool isNameByte(char byte) {
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9');
}

}  // namespace

std::string_view standardPrefix(std::string_view address) {
  static const auto table = [] {
    std::unordered_map<std::string_view, std::string_view> prefixes;
    for (const auto& [prefix, known] : kNamespaces) prefixes.emplace(known, prefix);
    return prefixes;
  }();
  const auto found = table.find(address);
  return found == table.end() ? std::string_view() : found->second;
}

std::string prefixForAddress(std::string_view address) {
  if (address.empty()) return "none";
  if (const auto known = standardPrefix(address); !known.empty()) return std::string(known);
  std::string made = "x";
  bool pending = true;
  for (const char byte : address) {
    if (!isNameByte(byte)) {
      pending = true;
      continue;
    }
    if (pending) made += '-';
    pending = false;
    made += byte;
  }
  return made;
}

std::string_view addressForPrefix(std::string_view prefix) {
  for (const auto& [known, address] : kNamespaces) {
    if (known == prefix) return address;
  }
  return {};
}

}  // namespace zt
