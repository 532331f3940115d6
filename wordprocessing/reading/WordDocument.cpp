// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/WordDocument.h>

#include <wordprocessing/reading/TextReader.h>
#include <wordprocessing/reading/WordUses.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace zt {

namespace {

/// Hands over the children of the root, and of other elements that only hold more of them, one tree at a time.
class ElementsReader : public WordXmlHandler {
 public:
  explicit ElementsReader(std::vector<std::string_view> wrappers) : mWrappers(std::move(wrappers)) {}

  std::vector<WordElement> found;

  void startElement(const XmlElement& element) override {
    if (!mBuilder.isOpen()) {
      const bool isWrapper =
          mDepth == 0 || std::find(mWrappers.begin(), mWrappers.end(), element.name) != mWrappers.end();
      if (isWrapper) {
        ++mDepth;
        return;
      }
    }
    mBuilder.startElement(element);
  }

  void endElement() override {
    if (!mBuilder.isOpen()) {
      --mDepth;
    } else if (mBuilder.endElement()) {
      found.push_back(mBuilder.take());
    }
  }

 private:
  std::vector<std::string_view> mWrappers;
  ElementBuilder mBuilder;
  std::size_t mDepth = 0;  // of the open wrappers
};

class Reading {
 public:
  explicit Reading(WordDocument& document) : mDocument(document), mText(document) {}

  void read(WordPackage::Part& part) {
    const std::size_t index = mDocument.parts.size();
    mDocument.parts.push_back({part.xml.name, part.xml.shown});
    try {
      switch (part.kind) {
        case WordPartKind::styles: readStyles(part.xml, index); break;
        case WordPartKind::numbering: readNumbering(part.xml, index); break;
        case WordPartKind::theme: readTheme(part.xml, index); break;
        case WordPartKind::settings: readSettings(part.xml, index); break;
        case WordPartKind::document:
        case WordPartKind::text: mText.read(part.xml, index); break;
      }
    } catch (const ReadError& error) {
      if (part.kind == WordPartKind::document && !mText.sawRoot()) throw;
      mDocument.findings.push_back({Finding::Severity::error,
                                    "unreadable-part",
                                    error.place(),
                                    {},
                                    error.message() + "; kept what stands before"});
    }
    std::string().swap(part.xml.bytes);
  }

 private:
  // Calls with each element that was complete, also where the part ends too early.
  template <class Take>
  void elementsOf(const XmlPart& xml, std::vector<std::string_view> wrappers, Take take) {
    ElementsReader reader(std::move(wrappers));
    const auto takeAll = [&] {
      for (WordElement& element : reader.found) take(std::move(element));
    };
    try {
      readWordXml(xml, reader, mDocument.findings);
    } catch (const ReadError&) {
      takeAll();
      throw;
    }
    takeAll();
  }

  void readStyles(const XmlPart& xml, std::size_t part) {
    mDocument.stylesPart = part;
    elementsOf(xml, {"docDefaults", "rPrDefault", "pPrDefault"}, [&](WordElement&& element) {
      if (element.is("style"))
        mDocument.styles.push_back({part, std::move(element)});
      else if (element.is("rPr"))
        mDocument.runDefaults = {std::move(element)};
      else if (element.is("pPr"))
        mDocument.paragraphDefaults = {std::move(element)};
      else if (element.is("latentStyles"))
        mDocument.latentStyles = {std::move(element)};
    });
  }

  void readNumbering(const XmlPart& xml, std::size_t part) {
    elementsOf(xml, {}, [&](WordElement&& element) {
      if (element.is("abstractNum"))
        mDocument.abstractLists.push_back({part, std::move(element)});
      else if (element.is("num"))
        mDocument.lists.push_back({part, std::move(element)});
    });
  }

  void readTheme(const XmlPart& xml, std::size_t part) {
    mDocument.themePart = part;
    elementsOf(xml, {"themeElements", "clrScheme", "fontScheme"}, [&](WordElement&& element) {
      if (element.prefix != "a") return;
      for (const WordElement& child : element.children) {
        const auto value = [&child](std::string_view name) {
          const auto found = std::find_if(child.attributes.begin(), child.attributes.end(),
                                          [&](const auto& attribute) { return attribute.name == name; });
          return found == child.attributes.end() ? std::string() : found->value;
        };
        const bool isFont = element.name == "majorFont" || element.name == "minorFont";
        if (isFont && (child.name == "latin" || child.name == "ea" || child.name == "cs")) {
          mDocument.theme[element.name + '.' + child.name] = value("typeface");
        } else if (child.name == "srgbClr") {
          mDocument.theme[element.name] = value("val");
        } else if (child.name == "sysClr") {
          mDocument.theme[element.name] = value("lastClr");
        }
      }
    });
  }

  void readSettings(const XmlPart& xml, std::size_t part) {
    elementsOf(xml, {}, [&](WordElement&& element) {
      if (element.prefix != "w") return;
      if (element.name == "clrSchemeMapping") {
        for (const auto& [prefix, name, value] : element.attributes) {
          if (prefix == "w") mDocument.colourMapping[name] = value;
        }
      } else if (const StyleFamily* family = referredFamilyOf(element.name); family != nullptr && element.val()) {
        mDocument.useByKey.try_emplace(referenceKey(*family, *element.val()), mDocument.uses.size());
        mDocument.uses.push_back({*family, *element.val(), {}, part, element.line, 1, true});
      }
    });
  }

  WordDocument& mDocument;
  TextReader mText;
};

}  // namespace

WordDocument WordDocument::read(WordPackage package) {
  WordDocument document;
  document.shown = package.shown;
  document.findings = std::move(package.findings);
  Reading reading(document);
  for (WordPackage::Part& part : package.parts) reading.read(part);
  return document;
}

}  // namespace zt
