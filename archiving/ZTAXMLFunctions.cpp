#include <archiving/ZTAError.h>
#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAXMLCoding.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <new>
#include <utility>

namespace zt {

namespace {

// The record is part of the tree's nodes, and libxml2 wants it writable; nothing ever writes it.
xmlChar gAddress[] = "urn:ztstyles:archive";
xmlChar gPrefix[] = "zt";

thread_local bool tDiffable = false;

/// The UTF-8 character at `at` if XML can hold it; a length of 0 if not.
struct Character {
  std::size_t length = 0;
  unsigned code = 0;
};
Character goodCharacter(const unsigned char* at, std::size_t left) noexcept {
  const unsigned char first = at[0];
  const auto follows = [&](std::size_t index) { return index < left && (at[index] & 0xc0) == 0x80; };
  if (first < 0x80) return {std::size_t{first >= 0x20 || first == '\t' || first == '\n' || first == '\r'}, first};
  if (first < 0xc2 || !follows(1)) return {};
  if (first < 0xe0) return {2, (first & 0x1fu) << 6 | (at[1] & 0x3fu)};
  if (first < 0xf0) {
    if (!follows(2)) return {};
    const unsigned code = (first & 0x0fu) << 12 | (at[1] & 0x3fu) << 6 | (at[2] & 0x3fu);
    const bool isGood = code >= 0x800 && (code < 0xd800 || code > 0xdfff) && code < 0xfffe;
    return {isGood ? std::size_t{3} : 0, code};
  }
  if (first > 0xf4 || !follows(2) || !follows(3)) return {};
  const unsigned code = (first & 0x07u) << 18 | (at[1] & 0x3fu) << 12 | (at[2] & 0x3fu) << 6 | (at[3] & 0x3fu);
  return {code >= 0x10000 && code <= 0x10ffff ? std::size_t{4} : 0, code};
}

/// Whether a name may begin with the character, as the fifth edition of XML 1.0 has it, which the parser reads.
/// (libxml2's own check of names keeps to the fourth.)
bool beginsName(unsigned code) noexcept {
  if (code < 0x80) return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || code == '_';
  constexpr std::pair<unsigned, unsigned> kRanges[] = {
      {0xc0, 0xd6},     {0xd8, 0xf6},     {0xf8, 0x2ff},    {0x370, 0x37d},   {0x37f, 0x1fff},  {0x200c, 0x200d},
      {0x2070, 0x218f}, {0x2c00, 0x2fef}, {0x3001, 0xd7ff}, {0xf900, 0xfdcf}, {0xfdf0, 0xfffd}, {0x10000, 0xeffff}};
  return std::any_of(std::begin(kRanges), std::end(kRanges),
                     [code](const auto& range) { return code >= range.first && code <= range.second; });
}

bool continuesName(unsigned code) noexcept {
  return (code >= '0' && code <= '9') || code == '-' || code == '.' || beginsName(code) || code == 0xb7 ||
         (code >= 0x300 && code <= 0x36f) || code == 0x203f || code == 0x2040;
}

}  // namespace

_xmlNs CorvaleNamespace = {nullptr, XML_LOCAL_NAMESPACE, gAddress, gPrefix, nullptr, nullptr};

namespace xml {

std::string_view whyNotText(std::string_view text) noexcept {
  if (text.size() > kLongestText) return "it is longer than 9,999,999 bytes";
  const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
  for (std::size_t at = 0; at < text.size();) {
    if (bytes[at] >= 0x20 && bytes[at] < 0x80) {  // nearly all
      ++at;
      continue;
    }
    const std::size_t length = goodCharacter(bytes + at, text.size() - at).length;
    if (length == 0) {
      return bytes[at] < 0x20 ? "XML cannot hold a control character in it"
                              : "it is no UTF-8, or holds a character that XML cannot hold";
    }
    at += length;
  }
  return {};
}

void raise(std::string message) { throw ZTAArchiveException(ZTAError::withMessage(std::move(message))); }

void checkName(std::string_view name) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(name.data());
  bool isName = !name.empty();
  for (std::size_t at = 0; isName && at < name.size();) {
    const Character character = goodCharacter(bytes + at, name.size() - at);
    isName = character.length != 0 && (at == 0 ? beginsName(character.code) : continuesName(character.code));
    at += character.length;
  }
  if (!isName) raise(format("an element cannot be named '%s': that is no XML name", name));
}

xmlNode* newChild(xmlNode* parent, const char* name) {
  xmlNode* node = xmlNewChild(parent, &CorvaleNamespace, chars(name), nullptr);
  if (node == nullptr) throw std::bad_alloc();
  return node;
}

xmlNode* newText(xmlDoc* document, std::string_view value) {
  xmlNode* node = xmlNewDocText(document, nullptr);
  if (node == nullptr) throw std::bad_alloc();
  constexpr std::size_t kRoom = sizeof node->properties + sizeof node->psvi;
  if (value.size() < kRoom) {
    auto* place = reinterpret_cast<char*>(&node->properties);
    value.copy(place, value.size());
    place[value.size()] = '\0';
    node->content = reinterpret_cast<xmlChar*>(place);
  } else if (node->content = xmlStrndup(chars(value.data()), static_cast<int>(value.size())); !node->content) {
    xmlFreeNode(node);
    throw std::bad_alloc();
  }
  return node;
}

void setAttribute(xmlNode* node, xmlNs& ns, const char* name, std::string_view value) {
  xmlAttr* attribute = xmlHasNsProp(node, chars(name), ns.href);
  if (attribute == nullptr) attribute = xmlNewNsProp(node, &ns, chars(name), nullptr);
  if (attribute == nullptr) throw std::bad_alloc();
  xmlNode* text = newText(node->doc, value);
  if (attribute->children != nullptr) xmlFreeNodeList(attribute->children);
  text->parent = reinterpret_cast<xmlNode*>(attribute);
  attribute->children = attribute->last = text;
}

void checkDepthBelow(const xmlNode* parent) {
  int depth = 4;  // for what an object writes below itself
  for (const xmlNode* each = parent; each != nullptr; each = each->parent) ++depth;
  if (depth > kDeepest) raise(format("elements would nest deeper than %d levels", kDeepest));
}

void releaseReferrers(std::vector<Ref<NSObject>>&& objects) noexcept {
  const auto* first = objects.empty() ? nullptr : dynamic_cast<const ZTAXMLCoding*>(objects.front().get());
  if (first == nullptr) return;
  try {
    first->releaseArchivedObjects(std::move(objects));
  } catch (...) {
    // They are released in any case; what could not be freed stays allocated.
  }
}

}  // namespace xml

_xmlNode* ztaxmlFirstChildNsNamed(const _xmlNode* node, const _xmlNs& xmlNamespace, const char* name) {
  for (xmlNode* child = xml::firstElement(node); child != nullptr; child = xml::nextElement(child)) {
    if (xml::isNamed(child, name) && xml::isIn(child->ns, xmlNamespace)) return child;
  }
  return nullptr;
}

_xmlNode* ztaxmlNewNsChildNodeOrRaise(_xmlNode* parent, _xmlNs& xmlNamespace, const StringRef& name) {
  xml::checkName(name.view());
  // A shared string is terminated, and a good name holds no other zero byte.
  xmlNode* node = xmlNewChild(parent, &xmlNamespace, xml::chars(name.view().data()), nullptr);
  if (node == nullptr) throw std::bad_alloc();
  return node;
}

void ztaxmlSetNSStringNsPropOrRaise(_xmlNode* node, _xmlNs& xmlNamespace, const char* name, const StringRef& value) {
  if (const std::string_view reason = xml::whyNotText(value.view()); !reason.empty()) {
    xml::raise(format("the text of '%s' cannot be written: %s", name, reason));
  }
  xml::setAttribute(node, xmlNamespace, name, value.view());
}

void ztaxmlSetBoolNsPropDefaultOrRaise(_xmlNode* node, _xmlNs& xmlNamespace, const char* name, bool value, bool) {
  xml::setAttribute(node, xmlNamespace, name, value ? "true" : "false");
}

bool ztaxmlBoolNsPropDefault(const _xmlNode* node, const _xmlNs& xmlNamespace, const char* name, bool defaultValue) {
  const std::string_view text = xml::attribute(node, xmlNamespace, name);
  if (text == "true" || text == "1") return true;
  if (text == "false" || text == "0") return false;
  return defaultValue;
}

bool ztaxmlOkToSkipNode(const _xmlNode* node) {
  return ztaxmlBoolNsPropDefault(node, CorvaleNamespace, xml::kOptional, false);
}

void ztaxmlSetZTClassOnNodeOrRaise(_xmlNode* node, const NSObject& object) {
  const auto* coding = dynamic_cast<const ZTAXMLCoding*>(&object);
  const ZTClass& recorded = coding != nullptr ? coding->classForCoder() : object.classObject();
  ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, xml::kClass, recorded.name());
  const ZTClass* ancestor = coding != nullptr ? coding->ztClassAncestor() : nullptr;
  if (ancestor != nullptr) ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, xml::kAncestor, ancestor->name());
}

bool ztaShouldGenerateDiffableXml() noexcept { return tDiffable; }

ZTADiffableXmlScope::ZTADiffableXmlScope(bool diffable) noexcept : mPrevious(std::exchange(tDiffable, diffable)) {}
ZTADiffableXmlScope::~ZTADiffableXmlScope() { tDiffable = mPrevious; }

}  // namespace zt
