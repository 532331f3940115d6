// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Small helpers over libxml2 nodes, for the sources of this folder.

#include <archiving/ZTAXMLFunctions.h>

#include <libxml/globals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace zt::xml {

inline const xmlChar* chars(const char* text) noexcept { return reinterpret_cast<const xmlChar*>(text); }
inline const char* text(const xmlChar* chars) noexcept { return reinterpret_cast<const char*>(chars); }
inline std::string_view view(const xmlChar* chars) noexcept {
  return chars != nullptr ? std::string_view(text(chars)) : std::string_view();
}

inline bool isElement(const xmlNode* node) noexcept {
  return node != nullptr && node->type == XML_ELEMENT_NODE && node->name != nullptr;
}
/// The node itself or its nearest next sibling that is an element.
inline xmlNode* elementFrom(xmlNode* node) noexcept {
  while (node != nullptr && !isElement(node)) node = node->next;
  return node;
}
inline xmlNode* firstElement(const xmlNode* parent) noexcept { return elementFrom(parent->children); }
inline xmlNode* nextElement(const xmlNode* node) noexcept { return elementFrom(node->next); }

/// Trees that the unarchiver builds use the one namespace record; others have records of their own.
inline bool isIn(const xmlNs* found, const xmlNs& wanted) noexcept {
  return found == &wanted || (found != nullptr && xmlStrEqual(found->href, wanted.href) != 0);
}
inline bool isNamed(const xmlNode* node, const char* name) noexcept { return std::strcmp(text(node->name), name) == 0; }
inline bool isOurs(const xmlNode* node) noexcept { return isElement(node) && isIn(node->ns, CorvaleNamespace); }

/// The attribute's text in place; none without the attribute. (The data of an empty text is not null.)
inline std::string_view attribute(const xmlNode* node, const xmlNs& ns, const char* name) noexcept {
  for (const xmlAttr* each = node->properties; each != nullptr; each = each->next) {
    if (std::strcmp(text(each->name), name) != 0 || !isIn(each->ns, ns)) continue;
    return each->children != nullptr && each->children->content != nullptr ? view(each->children->content)
                                                                           : std::string_view("");
  }
  return {};
}
inline std::string_view attribute(const xmlNode* node, const char* name) noexcept {
  return attribute(node, CorvaleNamespace, name);
}
inline bool isPresent(std::string_view attribute) noexcept { return attribute.data() != nullptr; }

/// Attributes of the archiver's own.
inline constexpr const char* kClass = "class";
inline constexpr const char* kAncestor = "ancestor";
inline constexpr const char* kOptional = "optional";
inline constexpr const char* kId = "id";
inline constexpr const char* kTo = "to";
inline constexpr const char* kVersion = "version";
/// Elements of the archiver's own.
inline constexpr const char* kArchive = "archive";
inline constexpr const char* kReference = "ref";
inline constexpr const char* kShelf = "objects";
inline constexpr const char* kObject = "object";

/// What reading takes for an archive with this root, of `ZTAArchiveLimits::treeBytes`.
std::size_t treeBytes(const xmlNode* root) noexcept;
/// What a record takes there, and a text of the length.
constexpr std::size_t treeBytes(std::size_t bytes) noexcept { return (bytes + 7) & ~std::size_t{7}; }

/// What keeps the text from being written as XML; an empty text where nothing does.
std::string_view whyNotText(std::string_view text) noexcept;

/// Raises where the text is no XML name.
void checkName(std::string_view text);
/// Makes an element of a name that is known to be good. Raises where there is no memory.
xmlNode* newChild(xmlNode* parent, const char* name);
/// Makes a text that is known to be good. A short one stands within the node, as libxml2 itself lays it out
/// when it reads compactly: one allocation less for most values. Raises where there is no memory.
xmlNode* newText(xmlDoc* document, std::string_view value);
/// Sets an attribute whose text is known to be good.
void setAttribute(xmlNode* node, xmlNs& ns, const char* name, std::string_view value);

/// Raises where what is written below this element could not be read again for its depth.
void checkDepthBelow(const xmlNode* parent);

/// Adds the object if it archives by reference. Allocates nothing where there is room.
void addReferrer(std::vector<Ref<NSObject>>& referrers, const Ref<NSObject>& object) noexcept;

/// Keeps libxml2 silent on this thread while it lives: errors of its input and output layers pass by the handlers of a
/// parser, and would be printed. (A parser then finds its text cut short.)
class QuietErrors {
 public:
  QuietErrors() : mHandler(xmlStructuredError), mContext(xmlStructuredErrorContext) {
    xmlSetStructuredErrorFunc(nullptr, [](void*, xmlError*) {});
  }
  ~QuietErrors() { xmlSetStructuredErrorFunc(mContext, mHandler); }
  QuietErrors(const QuietErrors&) = delete;
  QuietErrors& operator=(const QuietErrors&) = delete;

 private:
  xmlStructuredErrorFunc mHandler;
  void* mContext;
};

/// Lets go of the objects that archive by reference, as `ZTAXMLCoding::releaseArchivedObjects` says. To be
/// called when nothing else of an archiver holds them.
void releaseReferrers(std::vector<Ref<NSObject>>&& objects) noexcept;

/// Raises an error without place: the archiver or unarchiver that it passes through adds that.
[[noreturn]] void raise(std::string message);

}  // namespace zt::xml
