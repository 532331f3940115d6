// SPDX-License-Identifier: MIT
#include <archiving/ZTAError.h>
#include <archiving/ZTAXMLTreeInternal.h>
#include <platform/ZTFormat.h>

#include <libxml/parser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <unordered_map>
#include <utility>

namespace zt {

void* ZTAXMLTree::take(std::size_t bytes) {
  bytes = xml::treeBytes(bytes);
  if (bytes > mLeft) {
    // Blocks grow with the tree, so that a small archive costs little and a large one few blocks.
    const std::size_t block = std::max(bytes, std::clamp(mTaken, std::size_t{1} << 15, std::size_t{1} << 20));
    mBlocks.push_back(std::make_unique_for_overwrite<char[]>(block));
    mFree = mBlocks.back().get();
    mLeft = block;
  }
  mTaken += bytes;
  mLeft -= bytes;
  return std::exchange(mFree, mFree + bytes);
}

/// Receives the parser's events. No exception may pass through libxml2: a failure is kept and the parser stopped.
class ZTAXMLTreeBuilder {
 public:
  ZTAXMLTreeBuilder(ZTAXMLTree& tree, const std::string& fileName, const ZTAArchiveLimits& limits)
      : mTree(tree), mFileName(fileName), mLimits(limits) {}

  void parse(std::string_view bytes) {
    xmlInitParser();
    const xml::QuietErrors quiet;
    const std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)> parser(
        xmlCreateMemoryParserCtxt(bytes.data(), static_cast<int>(bytes.size())), xmlFreeParserCtxt);
    if (parser == nullptr) fail("the file is empty");
    mParser = parser.get();
    // The five entities of XML itself are replaced; others cannot be declared. The parser's own limits are lifted: they
    // count what we cannot tell while we write, such as a start tag's bytes with all escapes, and differ by version.
    xmlCtxtUseOptions(mParser,
                      XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_HUGE);
    installHandlers();
    makeDocument();
    xmlParseDocument(mParser);
    if (mIsOutOfMemory) throw std::bad_alloc();
    if (mFailure.empty() && (mParser->wellFormed == 0 || mTree.mDocument->children == nullptr))
      mFailure = "this is no XML";
    if (!mFailure.empty()) fail(mFailure);
  }

 private:
  static ZTAXMLTreeBuilder& self(void* builder) { return *static_cast<ZTAXMLTreeBuilder*>(builder); }

  [[noreturn]] void fail(const std::string& message) const {
    throw ZTAArchiveException(ZTAError::withMessage(message, mFileName, mFailedLine));
  }

  [[nodiscard]] std::size_t line() const {
    return mParser->input != nullptr && mParser->input->line > 0 ? static_cast<std::size_t>(mParser->input->line) : 0;
  }

  void stop(std::string message) {
    if (!mFailure.empty()) return;  // the first failure is the one to tell
    mFailedLine = line();
    mFailure = std::move(message);
    xmlStopParser(mParser);
  }

  template <class Step>
  void guarded(Step step) noexcept {
    if (!mFailure.empty() || mIsOutOfMemory) return;
    try {
      step();
      if (mTree.mTaken > mLimits.treeBytes) {
        stop(format("the archive's tree is larger than the %d bytes that are used", mLimits.treeBytes));
      }
    } catch (...) {
      // There may be none left to say so: it is said when the parser has given back its own.
      mIsOutOfMemory = true;
      xmlStopParser(mParser);
    }
  }

  void installHandlers() {
    xmlSAXHandler& handlers = *mParser->sax;
    std::memset(&handlers, 0, sizeof handlers);
    handlers.initialized = XML_SAX2_MAGIC;
    handlers.startElementNs = [](void* builder, const xmlChar* name, const xmlChar*, const xmlChar* uri, int,
                                 const xmlChar**, int count, int, const xmlChar** attributes) {
      self(builder).guarded([&] { self(builder).startElement(name, uri, count, attributes); });
    };
    handlers.endElementNs = [](void* builder, const xmlChar*, const xmlChar*, const xmlChar*) {
      self(builder).guarded([&] { self(builder).endElement(); });
    };
    // The same function for both: the parser then does not look for blanks itself.
    handlers.characters = [](void* builder, const xmlChar* text, int length) {
      self(builder).guarded([&] { self(builder).addText(text, length); });
    };
    handlers.ignorableWhitespace = handlers.characters;
    handlers.cdataBlock = handlers.characters;
    handlers.internalSubset = [](void* builder, const xmlChar*, const xmlChar*, const xmlChar*) {
      self(builder).guarded([&] { self(builder).stop("a document type (DOCTYPE) has no place in an archive"); });
    };
    handlers.serror = [](void* builder, xmlError* error) {
      self(builder).guarded([&] { self(builder).takeError(*error); });
    };
    mParser->userData = this;
  }

  void takeError(const xmlError& error) {
    if (error.level < XML_ERR_ERROR) return;
    std::string message = error.message != nullptr ? error.message : "this is no XML";
    message = singleLine(message.substr(0, message.find('\n')));
    mFailedLine = error.line > 0 ? static_cast<std::size_t>(error.line) : 0;
    mFailure = "this is no good XML: " + message;
  }

  template <class T>
  T* make() {
    return static_cast<T*>(std::memset(mTree.take(sizeof(T)), 0, sizeof(T)));
  }

  xmlChar* keep(const char* bytes, std::size_t length) {
    auto* kept = static_cast<char*>(mTree.take(length + 1));
    if (length != 0) std::memcpy(kept, bytes, length);
    kept[length] = '\0';
    return reinterpret_cast<xmlChar*>(kept);
  }

  void makeDocument() {
    auto* document = make<xmlDoc>();
    document->type = XML_DOCUMENT_NODE;
    document->doc = document;
    document->charset = XML_CHAR_ENCODING_UTF8;
    document->standalone = -1;
    mTree.mDocument = document;
    mTree.mNames = mParser->dict;
    xmlDictReference(mTree.mNames);
    document->dict = mTree.mNames;
    mCurrent = reinterpret_cast<xmlNode*>(document);  // a document begins like a node
  }

  /// The record of a namespace. The parser hands out one text for each.
  xmlNs* recordOf(const xmlChar* uri) {
    if (uri == nullptr) return nullptr;
    if (uri == mLastUri) return mLastRecord;
    auto [place, isNew] = mRecords.try_emplace(uri, nullptr);
    if (isNew && xmlStrEqual(uri, CorvaleNamespace.href) != 0) {
      place->second = &CorvaleNamespace;
    } else if (isNew) {
      place->second = make<xmlNs>();
      place->second->type = XML_LOCAL_NAMESPACE;
      place->second->href = uri;
    }
    mLastUri = uri;
    mLastRecord = place->second;
    return mLastRecord;
  }

  void append(xmlNode* node) {
    node->doc = mTree.mDocument;
    node->parent = mCurrent;
    node->prev = mCurrent->last;
    (mCurrent->last != nullptr ? mCurrent->last->next : mCurrent->children) = node;
    mCurrent->last = node;
  }

  xmlNode* makeText(const char* bytes, std::size_t length) {
    auto* text = make<xmlNode>();
    text->type = XML_TEXT_NODE;
    text->name = xmlStringText;
    text->doc = mTree.mDocument;
    text->content = keep(bytes, length);
    return text;
  }

  bool isShort(const xmlChar* name) {
    if (xml::view(name).size() <= ZTAArchiveLimits::name) return true;
    stop(format("a name is longer than the %d bytes that are read", ZTAArchiveLimits::name));
    return false;
  }

  void startElement(const xmlChar* name, const xmlChar* uri, int count, const xmlChar** attributes) {
    if (++mDepth > ZTAArchiveLimits::depth) {
      return stop(format("elements nest deeper than %d levels", ZTAArchiveLimits::depth));
    }
    if (!isShort(name)) return;
    flushText(true);
    auto* node = make<xmlNode>();
    node->type = XML_ELEMENT_NODE;
    node->name = name;
    node->ns = recordOf(uri);
    const std::size_t at = line();
    node->line = static_cast<unsigned short>(std::min<std::size_t>(at, 0xffff));
    node->psvi = reinterpret_cast<void*>(at);  // NOLINT(performance-no-int-to-ptr): the field above ends at 65535
    append(node);
    xmlAttr* last = nullptr;
    for (int index = 0; index < count; ++index) {
      // Five fields each: name, prefix, address, first and end of the text.
      const xmlChar** fields = attributes + index * 5;
      const auto length = static_cast<std::size_t>(fields[4] - fields[3]);
      if (length > mLimits.text)
        return stop(format("an attribute is longer than the %d bytes that are read", mLimits.text));
      if (!isShort(fields[0])) return;
      auto* attribute = make<xmlAttr>();
      attribute->type = XML_ATTRIBUTE_NODE;
      attribute->name = fields[0];
      attribute->ns = recordOf(fields[2]);
      attribute->doc = mTree.mDocument;
      attribute->parent = node;
      attribute->prev = last;
      xmlNode* text = makeText(reinterpret_cast<const char*>(fields[3]), length);
      text->parent = reinterpret_cast<xmlNode*>(attribute);
      attribute->children = attribute->last = text;
      (last != nullptr ? last->next : node->properties) = attribute;
      last = attribute;
      if (attribute->ns == &CorvaleNamespace) noteSpecial(*node, *attribute);
    }
    mCurrent = node;
  }

  void noteSpecial(xmlNode& node, const xmlAttr& attribute) {
    const std::string_view name = xml::view(attribute.name);
    if (name == xml::kId) mTree.mIdentified.push_back(&node);
    if (name == xml::kTo) mTree.mHasReferences = true;
  }

  void endElement() {
    flushText(false);
    --mDepth;
    mCurrent = mCurrent->parent;
  }

  void addText(const xmlChar* text, int length) {
    if (mText.size() + static_cast<std::size_t>(length) > mLimits.text) {
      return stop(format("a text is longer than the %d bytes that are read", mLimits.text));
    }
    mText.append(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
  }

  /// Blank text is layout where an element stands beside it.
  void flushText(bool elementFollows) {
    if (mText.empty()) return;
    const bool isLayout =
        (elementFollows || mCurrent->children != nullptr) && mText.find_first_not_of(" \t\r\n") == std::string::npos;
    if (!isLayout) append(makeText(mText.data(), mText.size()));
    mText.clear();
  }

  ZTAXMLTree& mTree;
  const std::string& mFileName;
  const ZTAArchiveLimits& mLimits;
  xmlParserCtxt* mParser = nullptr;
  xmlNode* mCurrent = nullptr;
  int mDepth = 0;
  std::string mText;
  std::unordered_map<const xmlChar*, xmlNs*> mRecords;
  const xmlChar* mLastUri = nullptr;
  xmlNs* mLastRecord = nullptr;
  bool mIsOutOfMemory = false;
  std::string mFailure;
  std::size_t mFailedLine = 0;
};

ZTAXMLTree::ZTAXMLTree(std::string_view bytes, const std::string& fileName, const ZTAArchiveLimits& limits) {
  if (bytes.size() > std::min(limits.bytes, static_cast<std::size_t>(std::numeric_limits<int>::max()))) {
    throw ZTAArchiveException(
        ZTAError::withMessage(format("the archive is longer than the %d bytes that are read", limits.bytes), fileName));
  }
  try {
    ZTAXMLTreeBuilder(*this, fileName, limits).parse(bytes);
  } catch (...) {
    if (mNames != nullptr) xmlDictFree(mNames);
    throw;
  }
}

ZTAXMLTree::~ZTAXMLTree() { xmlDictFree(mNames); }

}  // namespace zt
