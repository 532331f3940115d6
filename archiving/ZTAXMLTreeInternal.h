// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAArchiveLimits.h>
#include <archiving/ZTAXMLNodesInternal.h>

#include <libxml/dict.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// The tree of an archive that is read: libxml2 nodes, made from libxml2's parser events and laid out in a
/// few blocks of memory that are freed at once. Allocating node by node is three quarters of what libxml2's
/// own tree costs. The nodes are good for reading with libxml2's functions (attributes, text, walking); they
/// must not be changed, moved or freed by them.
///
/// Blank text between elements, comments and processing instructions are left out. Elements of our namespace
/// have the one `CorvaleNamespace` record. A document type is refused, and with it every entity of a file's
/// own; nothing outside the bytes is ever read.
class ZTAXMLTree {
 public:
  /// Raises `ZTAArchiveException` with the line where the bytes are no XML or go beyond a limit.
  ZTAXMLTree(std::string_view bytes, const std::string& fileName, const ZTAArchiveLimits& limits);
  ~ZTAXMLTree();
  ZTAXMLTree(const ZTAXMLTree&) = delete;
  ZTAXMLTree& operator=(const ZTAXMLTree&) = delete;

  [[nodiscard]] xmlNode* root() const noexcept { return mDocument->children; }
  [[nodiscard]] bool contains(const xmlNode* node) const noexcept { return node->doc == mDocument; }
  /// The line where the element's start tag ends.
  [[nodiscard]] static std::size_t lineOf(const xmlNode* node) noexcept {
    return reinterpret_cast<std::uintptr_t>(node->psvi);
  }
  /// The elements with an "id", in document order.
  [[nodiscard]] const std::vector<xmlNode*>& identified() const noexcept { return mIdentified; }
  /// Whether some element has a "to".
  [[nodiscard]] bool hasReferences() const noexcept { return mHasReferences; }

 private:
  friend class ZTAXMLTreeBuilder;

  void* take(std::size_t bytes);

  std::vector<std::unique_ptr<char[]>> mBlocks;
  char* mFree = nullptr;
  std::size_t mLeft = 0;
  std::size_t mTaken = 0;
  xmlDoc* mDocument = nullptr;
  xmlDict* mNames = nullptr;  // holds the elements' and attributes' names
  std::vector<xmlNode*> mIdentified;
  bool mHasReferences = false;
};

}  // namespace zt
