// SPDX-License-Identifier: MIT

// One walk over a part. It counts the elements of styles as the reader does, so that each is found by its number; names
// in the text are found by the same table of references.

#include <opendocument/writing/PartWriter.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/ElementEdits.h>
#include <document/xml/XmlBytes.h>
#include <opendocument/reading/ContentUses.h>
#include <opendocument/writing/StyleWriter.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

class PartWriter {
 public:
  PartWriter(const XmlBytes& bytes, std::size_t index, const StyleDifference& difference)
      : mScanner(bytes.text()),

        mPart(difference.parts()[index]),
        mEdits(mSplices, bytes.isAscii()),
        mStyles(mEdits, difference, index) {}

  XmlSplices run() {
    while (mScanner.next()) {
      mScanner.isStart() ? startElement() : endElement();
    }
    if (!mWroteNamed && !mPart.newNamed.empty()) throw EditError("the document has no place for named styles");
    if (!mWroteAutomatic && !mPart.newAutomatic.empty())
      throw EditError("the document has no place for automatic styles");
    return std::move(mSplices);
  }

 private:
  enum class Section : std::uint8_t { other, fonts, named, automatic, text };

  void startElement() {
    if (mScanner.depth() == 2) startSection();
    if (mScanner.depth() < 3) return;
    const bool isInStyles = mSection == Section::named || mSection == Section::automatic;
    if (mSection == Section::fonts) {
      if (mScanner.depth() == 3) startFont();
    } else if (isInStyles && mScanner.depth() == 3) {
      if (!startInStyles()) followNames();
    } else if (mSection != Section::other && !mIsInStyle) {
      followNames();
    }
  }

  void startSection() {
    mSection = Section::other;
    if (mScanner.prefix() != "office") return;
    const std::string_view name = mScanner.name();
    if (name == "font-face-decls") mSection = Section::fonts;
    if (name == "styles") mSection = Section::named;
    if (name == "automatic-styles") mSection = Section::automatic;
    if (name == "body" || name == "master-styles") mSection = Section::text;
    mSectionTag = {mScanner.start(), mScanner.end(), mScanner.isEmpty(), std::string(mScanner.written())};
    mDeclared = mScanner.declared();
    // Declarations of fonts stand before all of these, where the part has had none so far.
    if (mSection != Section::other && mSection != Section::fonts && !mWroteFonts && !mPart.newFonts.empty()) {
      mWroteFonts = true;
      const std::string section = "<office:font-face-decls>" + newFonts() + "</office:font-face-decls>";
      mEdits.put(mScanner.start(), mScanner.start(), mEdits.fitted(mDeclared, section));
    }
    // Automatic styles stand before these, where the part has had none so far.
    if (mSection == Section::text && !mWroteAutomatic && !mPart.newAutomatic.empty()) {
      mWroteAutomatic = true;
      const std::string section =
          "<office:automatic-styles>" + mStyles.newStyles(mPart.newAutomatic) + "</office:automatic-styles>";
      mEdits.put(mScanner.start(), mScanner.start(), mEdits.fitted(mDeclared, section));
    }
  }

  void endElement() {
    if (mScanner.depth() == 3) mIsInStyle = false;
    if (mScanner.depth() != 2) return;
    if (mSection == Section::fonts && !mWroteFonts) append(newFonts(), mWroteFonts);
    if (mSection == Section::named && !mWroteNamed) append(mStyles.newStyles(mPart.newNamed), mWroteNamed);
    if (mSection == Section::automatic && !mWroteAutomatic)
      append(mStyles.newStyles(mPart.newAutomatic), mWroteAutomatic);
    mSection = Section::other;
  }

  // At the end of a section.
  void append(const std::string& elements, bool& wrote) {
    wrote = true;
    if (elements.empty()) return;
    const std::string text = mEdits.fitted(mDeclared, "<office:x>" + elements + "</office:x>");
    const std::size_t from = text.find('>') + 1;
    const std::string inner = text.substr(from, text.rfind("</") - from);
    if (text.substr(0, from).find("xmlns") != std::string::npos)
      throw EditError("a namespace that a new style needs is not declared in the document");
    if (!mSectionTag.isEmpty) return mEdits.put(mScanner.start(), mScanner.start(), inner);
    mEdits.put(mSectionTag.end - 2, mSectionTag.end, '>' + inner + "</" + mSectionTag.written + '>');
  }

  // A declaration that holds more, such as where the font is embedded, stays.
  void startFont() {
    if (mPart.goneFonts.empty() || !mScanner.is("style", "font-face")) return;
    const std::unique_ptr<PlacedElement> element = readElement(mScanner);
    const PlacedElement::Attribute* name = element->attribute("style", "name");
    if (name != nullptr && mPart.goneFonts.contains(name->value) && element->children.empty()) mEdits.remove(*element);
  }

  [[nodiscard]] std::string newFonts() const {
    std::string text;
    for (const auto& [name, family] : mPart.newFonts) {
      const bool needsQuotes = family.find(' ') != std::string::npos;
      text += fmt::format("<style:font-face style:name=\"{}\" svg:font-family=\"{}\"/>", escapedAttribute(name),
                          escapedAttribute(needsQuotes ? '\'' + family + '\'' : family));
    }
    return text;
  }

  /// Whether the element is one of styles, whose inside is the styles' own affair.
  bool startInStyles() {
    const std::size_t number = mElement++;
    mIsInStyle = mScanner.is("style", "style") || mScanner.is("style", "default-style") ||
                 mScanner.is("text", "list-style") || mScanner.is("text", "outline-style");
    const auto found = mPart.elements.find(number);
    if (found == mPart.elements.end()) return mIsInStyle;
    const std::unique_ptr<PlacedElement> element = readElement(mScanner);
    mIsInStyle = false;
    if (found->second.isRemoved) {
      mEdits.remove(*element);
    } else if (found->second.isRewritten) {
      mEdits.put(element->start, element->end,
                 mEdits.fitted(*element->declared, mStyles.newList(*found->second.style->style)));
    } else {
      mStyles.edit(*element, found->second);
    }
    return true;
  }

  void followNames() {
    if (mPart.usedNames.empty()) return;
    const XmlName element{mScanner.prefix(), mScanner.name()};
    for (const XmlPlacedAttribute& attribute : mScanner.attributes()) {
      if (!attribute.name.ends_with("style-name") && attribute.name != "style-override") continue;
      const std::string_view family = referredFamily(element, {attribute.prefix, attribute.name});
      if (family.empty()) continue;
      const auto found = mPart.usedNames.find(styleIdentifier(family, attribute.value()));
      if (found != mPart.usedNames.end())
        mEdits.put(attribute.valueStart, attribute.end - 1, escapedAttribute(found->second));
    }
  }

  struct Tag {
    std::size_t start = 0;
    std::size_t end = 0;
    bool isEmpty = false;
    std::string written;
  };

  XmlScanner mScanner;
  const StyleDifference::Part& mPart;
  XmlSplices mSplices;
  ElementEdits mEdits;
  StyleWriter mStyles;
  Section mSection = Section::other;
  Tag mSectionTag;
  std::vector<XmlDeclaredPrefix> mDeclared;
  std::size_t mElement = 0;
  bool mIsInStyle = false;
  bool mWroteFonts = false;
  bool mWroteNamed = false;
  bool mWroteAutomatic = false;
};

}  // namespace

std::string writtenPart(const XmlPart& part, std::size_t index, const StyleDifference& difference,
                        std::vector<ShownEdit>& shown) {
  const XmlBytes bytes(part);
  const XmlSplices splices = PartWriter(bytes, index, difference).run();
  return editedBytes(part, bytes, splices, shown);
}

}  // namespace zt
