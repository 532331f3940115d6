// SPDX-License-Identifier: MIT

// One walk over a part. Elements of styles and lists are counted as the reader counts them; a place of the text is
// known by its style and direct formatting, so that it is found wherever it stands, also in choices that nobody takes.

#include <wordprocessing/writing/WordPartWriter.h>

#include <wordprocessing/reading/WordUses.h>
#include <wordprocessing/writing/WordStyleWriter.h>

#include <fmt/format.h>

#include <algorithm>
#include <set>

namespace zt {

namespace {

WordElement treeOf(const PlacedElement& placed) {
  WordElement tree{.prefix = placed.prefix, .name = placed.name, .attributes = {}, .children = {}, .line = 0};
  for (const PlacedElement::Attribute& each : placed.attributes)
    tree.attributes.push_back({each.prefix, each.name, each.value});
  for (const auto& child : placed.children) tree.children.push_back(treeOf(*child));
  return tree;
}

/// Of doubled elements the last counts.
std::string styleIdIn(const WordElement& properties, const std::string& naming) {
  std::string id;
  for (const WordElement& child : properties.children) {
    if (!naming.empty() && child.is(naming) && child.val() != nullptr) id = *child.val();
  }
  return id;
}

class Walk {
 public:
  Walk(const XmlBytes& bytes, WordPartKind kind, const WordDifference& difference)
      : mScanner(bytes.text()),
        mKind(kind),
        mDifference(difference),
        mEdits(mSplices, bytes.isAscii()),
        mStyles(mEdits),
        mProperties(mEdits),
        mBareParagraph(bareUse(StyleFamily::paragraph)),
        mBareRun(bareUse(StyleFamily::text)) {}

  XmlSplices run() {
    while (mScanner.next()) {
      if (mScanner.isStart()) {
        start();
      } else {
        end();
      }
    }
    return std::move(mSplices);
  }

 private:
  /// An open element of the text; where it stands, for one that may get properties.
  struct Open {
    std::string name;  // of WordprocessingML, else empty
    bool hasProperties = true;
    std::size_t tagEnd = 0;
    bool isEmpty = false;
    std::string written;
    std::vector<XmlDeclaredPrefix> declared;
  };

  const WordDifference::Use* bareUse(StyleFamily family) const {
    const auto found = mDifference.uses.find(useKey(family, {}, {}));
    return found == mDifference.uses.end() ? nullptr : &found->second;
  }

  void start() {
    if (mKind == WordPartKind::styles) return startInStyles();
    if (mKind == WordPartKind::numbering) return startInNumbering();
    startInText();
  }

  void end() {
    if (mKind == WordPartKind::styles) return endInStyles();
    if (mKind == WordPartKind::numbering) {
      mAlternatives.end();
      return;
    }
    const Open open = std::move(mOpen.back());
    mOpen.pop_back();
    if (open.hasProperties) return;
    const bool isParagraph = open.name == "p";
    const std::string text = mEdits.fitted(open.declared, newProperties(isParagraph ? *mBareParagraph : *mBareRun));
    if (!open.isEmpty) return mEdits.put(open.tagEnd, open.tagEnd, text);
    mEdits.put(open.tagEnd - 2, open.tagEnd, '>' + text + "</" + open.written + '>');
  }

  // ---- Text

  void startInText() {
    const bool isWord = mScanner.prefix() == "w";
    const StyleFamily* family =
        isWord && !mOpen.empty() ? formattedFamily(mOpen.back().name, mScanner.name()) : nullptr;
    if (family != nullptr && *family != StyleFamily::text) return takeProperties(*family);
    if (family != nullptr && mOpen.back().name == "r") return takeProperties(*family);
    Open open;
    if (isWord) open.name = mScanner.name();
    if ((open.name == "p" && mBareParagraph != nullptr) || (open.name == "r" && mBareRun != nullptr)) {
      open.hasProperties = false;
      open.tagEnd = mScanner.end();
      open.isEmpty = mScanner.isEmpty();
      open.written = mScanner.written();
      open.declared = mScanner.declared();
    }
    if (isWord) followName();
    mOpen.push_back(std::move(open));
  }

  void takeProperties(StyleFamily family) {
    mOpen.back().hasProperties = true;
    const std::unique_ptr<PlacedElement> element = readElement(mScanner);
    if (family == StyleFamily::paragraph) {
      for (const PlacedElement* mark : element->childrenNamed("w", "rPr")) {
        if (!mark->children.empty()) format(StyleFamily::text, *mark);
      }
    }
    format(family, *element);
  }

  void format(StyleFamily family, const PlacedElement& element) {
    const std::string naming(styleElementOf(family));
    WordElement tree = treeOf(element);
    const std::string styleId = styleIdIn(tree, naming);
    std::erase_if(tree.children, isNoFormatting);
    const auto found = mDifference.uses.find(useKey(family, styleId, tree));
    const bool isKnown = found != mDifference.uses.end();
    for (const auto& child : element.children) {
      const bool isMark = family == StyleFamily::paragraph && child->prefix == "w" && child->name == "rPr";
      const bool isNaming = child->prefix == "w" && child->name == naming;
      if (!isMark && !(isNaming && isKnown && found->second.hasOtherName)) followNames(*child);
    }
    if (!isKnown) return;
    const WordDifference::Use& use = found->second;
    NewChildren added(mEdits, element);
    if (use.hasOtherName) mProperties.setVal(element, naming, use.name, added);
    mProperties.edit(element, familyName(family), *use.before, *use.after, added);
    added.write();
  }

  static std::string newProperties(const WordDifference::Use& use) {
    const char* holder = use.family == StyleFamily::paragraph ? "pPr" : "rPr";
    std::string inside;
    if (use.hasOtherName && use.name)
      inside = fmt::format("<w:{} w:val=\"{}\"/>", styleElementOf(use.family), escapedAttribute(*use.name));
    inside += PropertyWriter::textOf(familyName(use.family), holder, *use.after);
    return fmt::format("<w:{0}>{1}</w:{0}>", holder, inside);
  }

  // ---- Names

  [[nodiscard]] const std::string* nameNow(std::string_view element, std::string_view id) const {
    const StyleFamily* family = referredFamilyOf(element);
    if (family == nullptr || mDifference.names.empty()) return nullptr;
    const auto found = mDifference.names.find(styleIdentifier(familyName(*family), id));
    return found == mDifference.names.end() ? nullptr : &found->second;
  }

  void followName() {
    if (!mScanner.name().ends_with("Style")) return;
    for (const XmlPlacedAttribute& attribute : mScanner.attributes()) {
      if (!attribute.is("w", "val")) continue;
      if (const std::string* name = nameNow(mScanner.name(), attribute.value()))
        mEdits.put(attribute.valueStart, attribute.end - 1, escapedAttribute(*name));
    }
  }

  void followNames(const PlacedElement& element) {
    const PlacedElement::Attribute* val = element.prefix == "w" ? element.attribute("w", "val") : nullptr;
    if (const std::string* name = val != nullptr ? nameNow(element.name, val->value) : nullptr)
      mEdits.setAttribute(element, "w", "val", *name);
    for (const auto& child : element.children) followNames(*child);
  }

  // ---- Styles and lists

  /// Whether the element that starts is a child of the root as the reader sees it.
  bool isTop(Alternatives::Way way) const { return way == Alternatives::Way::shown && mWalked == 1; }

  void startInStyles() {
    const Alternatives::Way way = mAlternatives.start(mScanner.prefix(), mScanner.name());
    const bool isShownTop = isTop(way);
    mWays.push_back(way);
    if (way == Alternatives::Way::shown) ++mWalked;
    if (mWalked == 1 && mWays.size() == 1) {
      mRoot = mScanner.declared();
      mRootEnd = mScanner.end();
      mRootIsEmpty = mScanner.isEmpty();
      mRootWritten = mScanner.written();
      return;
    }
    if (!isShownTop || mScanner.prefix() != "w") return;
    if (mScanner.name() == "style") {
      const auto found = mDifference.styles.find(mElement++);
      if (found != mDifference.styles.end()) mStyles.editStyle(*take(), found->second);
    } else if (mScanner.name() == "docDefaults" && !mDifference.roots.empty()) {
      mHasDefaults = true;
      mStyles.editDefaults(*take(), mDifference.roots);
    } else if (mScanner.name() == "latentStyles" && !mDifference.roots.empty()) {
      const std::unique_ptr<PlacedElement> element = take();
      for (const StyleAsRead* root : mDifference.roots) {
        if (root->style->family() == StyleFamily::paragraph) mStyles.editLatentStyles(*element, *root);
      }
    }
  }

  void endInStyles() {
    if (mWays.size() == 1) finishStyles();
    if (mWays.back() == Alternatives::Way::shown) --mWalked;
    mWays.pop_back();
    mAlternatives.end();
  }

  // The scanner goes on behind the end of the element, whose end is not told any more.
  std::unique_ptr<PlacedElement> take() {
    std::unique_ptr<PlacedElement> element = readElement(mScanner);
    --mWalked;
    mWays.pop_back();
    mAlternatives.end();
    return element;
  }

  void finishStyles() {
    std::string first;
    if (!mHasDefaults && !mDifference.roots.empty()) first = WordStyleWriter::newDefaults(mDifference.roots);
    std::string last;
    for (const OdfStyle* style : mDifference.newStyles) last += WordStyleWriter::newStyle(*style);
    if (!first.empty()) first = mEdits.fitted(mRoot, first);
    if (!last.empty()) last = mEdits.fitted(mRoot, last);
    if (first.empty() && last.empty()) return;
    if (mRootIsEmpty) {
      return mEdits.put(mRootEnd - 2, mRootEnd, '>' + first + last + "</" + mRootWritten + '>');
    }
    if (!first.empty()) mEdits.put(mRootEnd, mRootEnd, first);
    if (!last.empty()) mEdits.put(mScanner.start(), mScanner.start(), last);
  }

  void startInNumbering() {
    const Alternatives::Way way = mAlternatives.start(mScanner.prefix(), mScanner.name());
    const bool isList = mScanner.prefix() == "w" && mScanner.depth() > 1 && way == Alternatives::Way::shown &&
                        (mScanner.name() == "abstractNum" || mScanner.name() == "num");
    if (!isList) {
      if (mScanner.prefix() == "w") followName();
      return;
    }
    const bool isAbstract = mScanner.name() == "abstractNum";
    const auto& changed = isAbstract ? mDifference.abstractLists : mDifference.lists;
    const auto found = changed.find(isAbstract ? mElement++ : mListElement++);
    if (found == changed.end()) return;
    const std::unique_ptr<PlacedElement> element = readElement(mScanner);
    mAlternatives.end();
    mStyles.editList(*element, found->second);
    std::set<std::string> edited;
    for (const WordDifference::Changed& each : found->second) edited.insert(each.part);
    followLevels(*element, edited);
  }

  // The levels that were not edited themselves.
  void followLevels(const PlacedElement& element, const std::set<std::string>& edited) {
    for (const auto& child : element.children) {
      if (child->name == "lvlOverride") followLevels(*child, edited);
      const PlacedElement::Attribute* number = child->attribute("w", "ilvl");
      if (child->name == "lvl" && (number == nullptr || !edited.contains(number->value))) followNames(*child);
    }
  }

  XmlScanner mScanner;
  WordPartKind mKind;
  const WordDifference& mDifference;
  XmlSplices mSplices;
  ElementEdits mEdits;
  WordStyleWriter mStyles;
  PropertyWriter mProperties;
  const WordDifference::Use* mBareParagraph;  // what happens to paragraphs and runs without properties
  const WordDifference::Use* mBareRun;
  std::vector<Open> mOpen;
  Alternatives mAlternatives;
  std::vector<Alternatives::Way> mWays;
  std::size_t mWalked = 0;  // how many of the open elements are shown
  std::size_t mElement = 0;
  std::size_t mListElement = 0;
  std::vector<XmlDeclaredPrefix> mRoot;
  std::size_t mRootEnd = 0;
  bool mRootIsEmpty = false;
  std::string mRootWritten;
  bool mHasDefaults = false;
};

}  // namespace

std::string writtenWordPart(const XmlPart& part, WordPartKind kind, const WordDifference& difference,
                            std::vector<ShownEdit>& shown) {
  const XmlBytes bytes(part);
  return editedBytes(part, bytes, Walk(bytes, kind, difference).run(), shown);
}

}  // namespace zt
