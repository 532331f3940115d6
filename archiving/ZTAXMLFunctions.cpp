// SPDX-License-Identifier: MIT
#include <archiving/ZTAArchiveLimits.h>
#include <archiving/ZTAError.h>
#include <archiving/ZTARegistryInternal.h>
#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLCoding.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>
#include <platform/ZTUtf8.h>

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

/// The length of the character if it is one that XML can hold (XML 1.0, production 2), else 0.
std::size_t goodLength(const Utf8Character& character) noexcept {
  const std::uint32_t code = character.code;
  const bool isGood = code >= 0x20 ? code != 0xfffe && code != 0xffff : code == '\t' || code == '\n' || code == '\r';
  return isGood ? character.length : 0;
}

/// Whether a name may begin with the character, as the fifth edition of XML 1.0 has it, which the parser reads.
/// (`xmlValidateNCName` keeps to the fourth: below U+20000 it refuses 85,022 characters that the parser reads.)
bool beginsName(std::uint32_t code) noexcept {
  if (code < 0x80) return (code >= 'a' && code <= 'z') || (code >= 'A' && code <= 'Z') || code == '_';
  constexpr std::pair<std::uint32_t, std::uint32_t> kRanges[] = {
      {0xc0, 0xd6},     {0xd8, 0xf6},     {0xf8, 0x2ff},    {0x370, 0x37d},   {0x37f, 0x1fff},  {0x200c, 0x200d},
      {0x2070, 0x218f}, {0x2c00, 0x2fef}, {0x3001, 0xd7ff}, {0xf900, 0xfdcf}, {0xfdf0, 0xfffd}, {0x10000, 0xeffff}};
  return std::any_of(std::begin(kRanges), std::end(kRanges),
                     [code](const auto& range) { return code >= range.first && code <= range.second; });
}

bool continuesName(std::uint32_t code) noexcept {
  return (code >= '0' && code <= '9') || code == '-' || code == '.' || beginsName(code) || code == 0xb7 ||
         (code >= 0x300 && code <= 0x36f) || code == 0x203f || code == 0x2040;
}

}  // namespace

_xmlNs CorvaleNamespace = {nullptr, XML_LOCAL_NAMESPACE, gAddress, gPrefix, nullptr, nullptr};

namespace xml {

std::string_view whyNotText(std::string_view text) noexcept {
  if (text.size() > ZTAArchiveLimits::longest) return "it is longer than 9,999,999 bytes";
  for (std::size_t at = 0; at < text.size();) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20 && byte < 0x80) {  // nearly all
      ++at;
      continue;
    }
    const std::size_t length = goodLength(utf8CharacterAt(text, at));
    if (length == 0) {
      return byte < 0x20 ? "XML cannot hold a control character in it"
                         : "it is no UTF-8, or holds a character that XML cannot hold";
    }
    at += length;
  }
  return {};
}

void raise(std::string message) { throw ZTAArchiveException(ZTAError::withMessage(std::move(message))); }

void checkName(std::string_view name) {
  if (name.size() > ZTAArchiveLimits::name) {
    raise(format("an element cannot be named '%s': the name is longer than %d bytes", shortened(name),
                 ZTAArchiveLimits::name));
  }
  bool isName = !name.empty();
  for (std::size_t at = 0; isName && at < name.size();) {
    const Utf8Character character = utf8CharacterAt(name, at);
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

std::size_t treeBytes(const xmlNode* top) noexcept {
  constexpr std::size_t kText = treeBytes(sizeof(xmlNode));
  std::size_t bytes = treeBytes(sizeof(xmlDoc));
  for (const xmlNode* node = top; node != nullptr;) {
    bytes += treeBytes(sizeof(xmlNode));
    if (node->type == XML_TEXT_NODE) bytes += treeBytes(view(node->content).size() + 1);
    if (isElement(node) && !isIn(node->ns, CorvaleNamespace)) bytes += treeBytes(sizeof(xmlNs));
    for (const xmlAttr* each = isElement(node) ? node->properties : nullptr; each != nullptr; each = each->next) {
      const std::size_t length = each->children != nullptr ? view(each->children->content).size() : 0;
      bytes += treeBytes(sizeof(xmlAttr)) + kText + treeBytes(length + 1);
    }
    if (isElement(node) && node->children != nullptr) {
      node = node->children;
      continue;
    }
    while (node != top && node->next == nullptr) node = node->parent;
    node = node != top ? node->next : nullptr;
  }
  return bytes;
}

void checkDepthBelow(const xmlNode* parent) {
  int depth = 4;  // for what an object writes below itself
  for (const xmlNode* each = parent; each != nullptr; each = each->parent) ++depth;
  if (depth > ZTAArchiveLimits::depth) {
    raise(format("elements would nest deeper than %d levels", ZTAArchiveLimits::depth));
  }
}

void addReferrer(std::vector<Ref<NSObject>>& referrers, const Ref<NSObject>& object) noexcept {
  const auto* coding = object && !object->isPlainValue() ? dynamic_cast<const ZTAXMLCoding*>(object.get()) : nullptr;
  try {
    if (coding != nullptr && coding->archivesByReference()) referrers.push_back(object);
  } catch (...) {
    // An object that does not answer is released like any other.
  }
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
