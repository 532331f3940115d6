// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The functions of the archiver that work on single nodes. Nodes are libxml2 element nodes, names UTF-8.
/// A function whose name ends in `OrRaise` raises `ZTAArchiveException` and leaves the node as it was.

#include <platform/NSObject.h>
#include <platform/NSString.h>

struct _xmlNode;
struct _xmlNs;

namespace zt {

class ZTClass;

/// The namespace of every element and attribute of an archive; its prefix is declared on the root.
ZT_EXPORT extern _xmlNs CorvaleNamespace;

/// The first child element of that name in that namespace, or none.
ZT_EXPORT _xmlNode* ztaxmlFirstChildNsNamed(const _xmlNode* node, const _xmlNs& xmlNamespace, const char* name);

/// Appends a new empty child element. Raises where the text is no XML name.
ZT_EXPORT _xmlNode* ztaxmlNewNsChildNodeOrRaise(_xmlNode* parent, _xmlNs& xmlNamespace, const StringRef& name);

/// Sets the attribute. Raises where XML cannot hold the text.
ZT_EXPORT void ztaxmlSetNSStringNsPropOrRaise(_xmlNode* node, _xmlNs& xmlNamespace, const char* name,
                                              const StringRef& value);

/// Sets the attribute to "true" or "false". It is written even where it equals the default, so that a file
/// keeps its meaning when a default changes.
ZT_EXPORT void ztaxmlSetBoolNsPropDefaultOrRaise(_xmlNode* node, _xmlNs& xmlNamespace, const char* name, bool value,
                                                 bool defaultValue);

/// The attribute's value: "true" or "1", "false" or "0"; the default where it is absent or reads otherwise.
ZT_EXPORT bool ztaxmlBoolNsPropDefault(const _xmlNode* node, const _xmlNs& xmlNamespace, const char* name,
                                       bool defaultValue);

/// Whether an element from which no object could be made may be passed over without a log line: it says so
/// itself, by an attribute "optional" that is true. A newer writer marks what older readers need not know.
ZT_EXPORT bool ztaxmlOkToSkipNode(const _xmlNode* node);

/// From now on objects of exactly that class are written as elements of that name, and such elements
/// without a class record of their own are read as objects of the class. Archivers and unarchivers that
/// exist already do not see it. Raises where the name is no XML name.
ZT_EXPORT void ztaxmlRegisterClassNamePair(const ZTClass& objectClass, const char* elementName);

/// Records the object's class, as `classForCoder` gives it, and the class that may stand in for it.
ZT_EXPORT void ztaxmlSetZTClassOnNodeOrRaise(_xmlNode* node, const NSObject& object);

/// Whether archives are to be written in a stable order, so that two of like content compare well as text.
/// Also asked on reading, where it makes a stylesheet remember the order of its file.
ZT_EXPORT bool ztaShouldGenerateDiffableXml() noexcept;

/// Sets the answer of `ztaShouldGenerateDiffableXml` on this thread while it lives. Scopes nest; outside
/// of any the answer is no.
class ZT_EXPORT ZTADiffableXmlScope {
 public:
  explicit ZTADiffableXmlScope(bool diffable = true) noexcept;
  ~ZTADiffableXmlScope();
  ZTADiffableXmlScope(const ZTADiffableXmlScope&) = delete;
  ZTADiffableXmlScope& operator=(const ZTADiffableXmlScope&) = delete;

 private:
  bool mPrevious;
};

}  // namespace zt
