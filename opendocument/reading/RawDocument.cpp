// SPDX-License-Identifier: MIT
#include <opendocument/reading/RawDocument.h>

#include <document/xml/OpaqueText.h>

#include <fmt/core.h>

#include <utility>

namespace zt {

namespace {

const std::string* find(const std::vector<RawAttribute>& attributes, std::string_view prefix, std::string_view name) {
  for (const RawAttribute& candidate : attributes) {
    if (candidate.name == name && candidate.prefix == prefix) return &candidate.value;
  }
  return nullptr;
}

// 'Liberation Serif' or "Liberation Serif" without the quotes.
std::string unquoted(std::string_view family) {
  if (family.size() >= 2 && family.front() == family.back() && (family.front() == '\'' || family.front() == '"')) {
    family = family.substr(1, family.size() - 2);
  }
  return std::string(family);
}

std::string_view expectedRoot(std::string_view part) {
  if (part == "styles.xml") return "document-styles";
  if (part == "content.xml") return "document-content";
  return "document";
}

// Knows where in a part it is and puts what it sees into the document. Only complete styles get there.
class PartReader : public XmlHandler {
 public:
  PartReader(RawDocument& document, std::size_t part) : mDocument(document), mPart(part) {}

  [[nodiscard]] bool sawRoot() const noexcept { return mSawRoot; }

  void startElement(const XmlElement& element) override {
    ++mDepth;
    if (mOpaque.isOpen()) return mOpaque.startElement(element);
    if (mDepth == 1) return startRoot(element);
    if (mDepth == 2) return startSection(element);
    switch (mSection) {
      case Section::text: return mDocument.uses.addElement(mPart, element);
      case Section::fonts:
        if (mDepth == 3 && element.is("style", "font-face")) addFont(element);
        return;
      case Section::named:
      case Section::automatic: return startInStyles(element);
      case Section::other: return;
    }
  }

  void endElement() override {
    const std::size_t depth = mDepth--;
    if (mOpaque.isOpen()) {
      if (mOpaque.endElement()) endOpaque();
      return;
    }
    if (mSection != Section::named && mSection != Section::automatic) return;
    if (depth == 3) endStyle();
    // A level ends at depth 4 as a property element of a style does, and holds property elements itself.
    if (depth == 4 && mScene == Scene::listStyle) mProperties = nullptr;
    if (depth == mGroupDepth) mGroupDepth = 0;
  }

  void text(std::string_view text) override {
    if (mOpaque.isOpen()) mOpaque.addText(text);
  }

 private:
  enum class Section : std::uint8_t { other, fonts, named, automatic, text };
  enum class Scene : std::uint8_t { none, style, listStyle };

  void startRoot(const XmlElement& element) {
    const std::string_view wanted = expectedRoot(mDocument.parts[mPart].name);
    if (!element.is("office", wanted)) {
      throw ReadError(mDocument.place(mPart, element.line), fmt::format("the root element is {}:{}, expected office:{}",
                                                                        element.prefix, element.name, wanted));
    }
    mSawRoot = true;
  }

  void startSection(const XmlElement& element) {
    mSection = Section::other;
    if (element.prefix != "office") return;
    if (element.name == "styles") mSection = Section::named;
    if (element.name == "automatic-styles") mSection = Section::automatic;
    if (element.name == "font-face-decls") mSection = Section::fonts;
    if (element.name == "body" || element.name == "master-styles") mSection = Section::text;
  }

  void startInStyles(const XmlElement& element) {
    if (mDepth == 3) {
      ++mElement;
      return startStyle(element);
    }
    if (mScene == Scene::style) {
      if (mDepth == 4) return startStyleChild(element);
    } else if (mScene == Scene::listStyle) {
      if (mDepth == 4) return startLevel(element);
      if (mDepth == 5 && startGroup(element, mListStyle.levels.back().properties)) return;
    } else {
      return mDocument.settingUses.addElement(mPart, element);
    }
    // Below a property element, and below what is neither known nor to be lost.
    mOpaqueLine = element.line;
    mOpaquePrefix = element.prefix;
    mOpaqueName = element.name;
    mOpaque.startElement(element);
  }

  void startStyle(const XmlElement& element) {
    mScene = Scene::none;
    const bool isDefault = element.is("style", "default-style");
    if (isDefault || element.is("style", "style")) {
      mScene = Scene::style;
      mStyle = {};
      mStyle.kind = isDefault                        ? RawStyle::Kind::defaultStyle
                    : mSection == Section::automatic ? RawStyle::Kind::automatic
                                                     : RawStyle::Kind::named;
      mStyle.part = mPart;
      mStyle.line = element.line;
      mStyle.element = mElement;
      for (const XmlAttribute& attribute : element.attributes) {
        if (attribute.is("style", "family")) {
          mStyle.family = attribute.value;
        } else if (attribute.is("style", "name")) {
          mStyle.name = attribute.value;
        } else if (attribute.is("style", "parent-style-name")) {
          mStyle.parent = std::string(attribute.value);
        } else {
          mStyle.attributes.push_back(raw(attribute));
        }
      }
    } else if (element.is("text", "list-style") || element.is("text", "outline-style")) {
      mScene = Scene::listStyle;
      mListStyle = {};
      mListStyle.isOutline = element.name == "outline-style";
      mListStyle.isAutomatic = mSection == Section::automatic;
      mListStyle.part = mPart;
      mListStyle.line = element.line;
      mListStyle.element = mElement;
      for (const XmlAttribute& attribute : element.attributes) {
        if (attribute.is("style", "name")) {
          mListStyle.name = attribute.value;
        } else {
          mListStyle.attributes.push_back(raw(attribute));
        }
      }
    } else {
      mDocument.settingUses.addElement(mPart,
                                       element);  // settings of notes and line numbers, page layouts, table templates
    }
  }

  void startStyleChild(const XmlElement& element) {
    if (startGroup(element, mStyle.properties)) return;
    mOpaqueLine = element.line;
    mOpaquePrefix = element.prefix;
    mOpaqueName = element.name;
    mOpaque.startElement(element);
  }

  void startLevel(const XmlElement& element) {
    RawListLevel level;
    level.element = element.name;
    level.line = element.line;
    for (const XmlAttribute& attribute : element.attributes) level.attributes.push_back(raw(attribute));
    mListStyle.levels.push_back(std::move(level));
  }

  // Whether the element is a property element, such as style:text-properties; takes its attributes.
  bool startGroup(const XmlElement& element, std::vector<RawProperty>& properties) {
    constexpr std::string_view kEnding = "-properties";
    if (element.prefix != "style" || !element.name.ends_with(kEnding)) return false;
    mGroup = element.name.substr(0, element.name.size() - kEnding.size());
    mGroupDepth = mDepth;
    mProperties = &properties;
    for (const XmlAttribute& attribute : element.attributes) {
      properties.push_back({mGroup, std::string(attribute.prefix), std::string(attribute.name),
                            std::string(attribute.value), false, element.line});
    }
    return true;
  }

  void endOpaque() {
    std::string text = mOpaque.take();
    if (mGroupDepth != 0 && mProperties != nullptr) {
      mProperties->push_back({mGroup, mOpaquePrefix, mOpaqueName, std::move(text), true, mOpaqueLine});
    } else if (mScene == Scene::style) {
      mStyle.children.push_back({mOpaquePrefix, mOpaqueName, std::move(text), mOpaqueLine});
    } else if (mScene == Scene::listStyle && !mListStyle.levels.empty()) {
      mListStyle.levels.back().properties.push_back(
          {{}, mOpaquePrefix, mOpaqueName, std::move(text), true, mOpaqueLine});
    }
  }

  void endStyle() {
    if (mScene == Scene::style) mDocument.styles.push_back(std::move(mStyle));
    if (mScene == Scene::listStyle) mDocument.listStyles.push_back(std::move(mListStyle));
    mScene = Scene::none;
    mProperties = nullptr;
  }

  void addFont(const XmlElement& element) {
    mDocument.fontFaces.push_back({mPart, std::string(element.attribute("style", "name").value_or("")),
                                   unquoted(element.attribute("svg", "font-family").value_or(""))});
  }

  static RawAttribute raw(const XmlAttribute& attribute) {
    return {std::string(attribute.prefix), std::string(attribute.name), std::string(attribute.value)};
  }

  RawDocument& mDocument;
  std::size_t mPart;
  std::size_t mDepth = 0;
  std::size_t mElement = static_cast<std::size_t>(-1);  // of the styles of the part; the first becomes 0
  bool mSawRoot = false;
  Section mSection = Section::other;
  Scene mScene = Scene::none;
  RawStyle mStyle;
  RawListStyle mListStyle;
  std::string mGroup;
  std::size_t mGroupDepth = 0;                      // depth of the open property element, 0 outside
  std::vector<RawProperty>* mProperties = nullptr;  // where its entries go
  OpaqueText mOpaque;
  std::string mOpaquePrefix;
  std::string mOpaqueName;
  int mOpaqueLine = 0;
};

}  // namespace

const std::string* RawStyle::attribute(std::string_view prefix, std::string_view attributeName) const {
  return find(attributes, prefix, attributeName);
}

const std::string* RawListLevel::attribute(std::string_view prefix, std::string_view attributeName) const {
  return find(attributes, prefix, attributeName);
}

const std::string* RawListStyle::attribute(std::string_view prefix, std::string_view attributeName) const {
  return find(attributes, prefix, attributeName);
}

RawDocument RawDocument::read(Package package) {
  RawDocument document;
  document.shown = package.shown();
  document.findings = package.findings();
  bool sawAny = false;
  std::optional<ReadError> firstError;
  for (XmlPart& part : package.parts()) {
    const std::size_t index = document.parts.size();
    document.parts.push_back({part.name, part.shown});
    PartReader reader(document, index);
    try {
      readXml(part, reader, document.findings);
    } catch (const ReadError& error) {
      if (!firstError) firstError = error;
      document.findings.push_back({Finding::Severity::error,
                                   "unreadable-part",
                                   error.place(),
                                   {},
                                   error.message() + (reader.sawRoot() ? "; kept what stands before" : "; left out")});
    }
    sawAny |= reader.sawRoot();
    std::string().swap(part.bytes);
  }
  if (!sawAny && firstError) throw *firstError;
  return document;
}

}  // namespace zt
