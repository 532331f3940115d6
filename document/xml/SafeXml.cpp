// SPDX-License-Identifier: MIT
#include <document/xml/SafeXml.h>

#include <document/xml/Namespaces.h>
#include <document/xml/XmlText.h>

#include <fmt/core.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <exception>
#include <memory>
#include <unordered_map>

namespace zt {

namespace {

std::string_view view(const xmlChar* text) {
  return text == nullptr ? std::string_view() : std::string_view(reinterpret_cast<const char*>(text));
}

struct ParserDeleter {
  void operator()(xmlParserCtxt* parser) const {
    if (parser->myDoc != nullptr) xmlFreeDoc(parser->myDoc);
    xmlFreeParserCtxt(parser);
  }
};

// Carries the events from the parser's callbacks, which must not throw, to the handler, which may.
class Reader {
 public:
  Reader(const XmlPart& part, XmlHandler& handler, const XmlLimits& limits)
      : mPart(part), mHandler(handler), mLimits(limits) {}

  void read(const XmlText& text) {
    xmlSAXHandler events = {};
    events.initialized = XML_SAX2_MAGIC;
    events.startElementNs = &startElement;
    events.endElementNs = &endElement;
    events.characters = &characters;
    events.ignorableWhitespace = &characters;
    events.cdataBlock = &characters;
    events.entityDecl = [](void* self, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
      from(self).fail("an entity is declared; refused");
    };
    events.serror = &problem;

    mParser.reset(xmlNewParserCtxt());
    if (mParser == nullptr) throw std::bad_alloc();
    *mParser->sax = events;
    mParser->userData = this;
    // Without its own limits (XML_PARSE_HUGE): size and nesting are bounded before and here, and a gigantic
    // attribute is no error. Entities cannot be declared, and without DTDLOAD and DTDATTR nothing is loaded; with
    // XML_PARSE_NOENT the parser hands out attributes with "&amp;" replaced, as it does with texts.
    const int options = XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_HUGE | XML_PARSE_NOWARNING |
                        (text.isUtf8 ? XML_PARSE_IGNORE_ENC : 0);
    xmlCtxtReadMemory(mParser.get(), text.text.data(), static_cast<int>(text.text.size()), nullptr,
                      text.isUtf8 ? "UTF-8" : nullptr, options);
    if (mException) std::rethrow_exception(mException);
    if (mParser->wellFormed == 0) {
      throw ReadError({mPart.shown, mErrorLine}, mError.empty() ? "not well-formed XML" : mError);
    }
  }

 private:
  static Reader& from(void* self) { return *static_cast<Reader*>(self); }

  [[nodiscard]] int line() const { return mParser->input != nullptr ? mParser->input->line : 0; }

  void stop(std::exception_ptr exception) {
    if (!mException) mException = std::move(exception);
    xmlStopParser(mParser.get());
  }

  void fail(const std::string& message) { stop(std::make_exception_ptr(ReadError({mPart.shown, line()}, message))); }

  template <class Call>
  void guarded(const Call& call) noexcept {
    if (mException) return;
    try {
      call();
    } catch (...) {
      stop(std::current_exception());
    }
  }

  // The parser interns addresses, so that one look at each is enough.
  std::string_view prefixOf(const xmlChar* address) {
    auto [found, isNew] = mPrefixes.try_emplace(address);
    if (isNew) found->second = prefixForAddress(view(address));
    return found->second;
  }

  static void startElement(void* self, const xmlChar* name, const xmlChar*, const xmlChar* address,
                           int declarationCount, const xmlChar**, int attributeCount, int, const xmlChar** attributes) {
    Reader& reader = from(self);
    reader.guarded([&] {
      reader.mOpenNamespaces += static_cast<std::size_t>(declarationCount);
      if (reader.mDeclarations.size() >= reader.mLimits.depth) {
        return reader.fail(fmt::format("more than {} elements inside each other", reader.mLimits.depth));
      }
      if (reader.mOpenNamespaces > reader.mLimits.openNamespaces) {
        return reader.fail(fmt::format("more than {} namespace declarations in force", reader.mLimits.openNamespaces));
      }
      reader.mDeclarations.push_back(declarationCount);
      reader.mAttributes.clear();
      for (int index = 0; index < attributeCount; ++index) {
        const xmlChar** fields = attributes + std::ptrdiff_t{5} * index;  // name, prefix, address, value, its end
        reader.mAttributes.push_back(
            {reader.prefixOf(fields[2]),
             view(fields[0]),
             {reinterpret_cast<const char*>(fields[3]), static_cast<std::size_t>(fields[4] - fields[3])}});
      }
      reader.mHandler.startElement({reader.prefixOf(address), view(name), reader.mAttributes, reader.line()});
    });
  }

  static void endElement(void* self, const xmlChar*, const xmlChar*, const xmlChar*) {
    Reader& reader = from(self);
    reader.guarded([&] {
      reader.mOpenNamespaces -= static_cast<std::size_t>(reader.mDeclarations.back());
      reader.mDeclarations.pop_back();
      reader.mHandler.endElement();
    });
  }

  static void characters(void* self, const xmlChar* text, int length) {
    Reader& reader = from(self);
    reader.guarded([&] {
      reader.mHandler.text({reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)});
    });
  }

  // The first error counts: what follows is its consequence.
  static void problem(void* self, xmlErrorPtr error) {
    Reader& reader = from(self);
    if (!reader.mError.empty() || error == nullptr || error->level < XML_ERR_ERROR) return;
    std::string_view message = error->message != nullptr ? error->message : "not well-formed XML";
    while (!message.empty() && (message.back() == '\n' || message.back() == ' ')) message.remove_suffix(1);
    constexpr std::size_t kLongest = 200;
    if (error->code == XML_NS_ERR_UNDEFINED_NAMESPACE) return;  // read as a name without namespace
    reader.mError = message.substr(0, kLongest);
    reader.mErrorLine = error->line;
  }

  const XmlPart& mPart;
  XmlHandler& mHandler;
  XmlLimits mLimits;
  std::unique_ptr<xmlParserCtxt, ParserDeleter> mParser;
  std::unordered_map<const xmlChar*, std::string> mPrefixes;
  std::vector<XmlAttribute> mAttributes;
  std::vector<int> mDeclarations;  // namespace declarations of each open element
  std::size_t mOpenNamespaces = 0;
  std::string mError;
  int mErrorLine = 0;
  std::exception_ptr mException;
};

}  // namespace

std::optional<std::string_view> XmlElement::attribute(std::string_view wantedPrefix,
                                                      std::string_view wantedName) const {
  for (const XmlAttribute& candidate : attributes) {
    if (candidate.is(wantedPrefix, wantedName)) return candidate.value;
  }
  return std::nullopt;
}

void readXml(const XmlPart& part, XmlHandler& handler, std::vector<Finding>& findings, const XmlLimits& limits) {
  if (part.bytes.empty()) throw ReadError({part.shown, 0}, "empty");
  const XmlText text = prepareXmlText(part, findings);
  if (text.text.empty()) throw ReadError({part.shown, 0}, "empty");
  checkTags(text.text, part.shown, limits);
  Reader(part, handler, limits).read(text);
}

}  // namespace zt
