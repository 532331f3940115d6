// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAArchiveFile.h>
#include <archiving/ZTAArchiveLimits.h>
#include <archiving/ZTAError.h>
#include <archiving/ZTAXMLCoding.h>
#include <platform/NSString.h>
#include <platform/PropertyKey.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct _xmlNode;

namespace zt {

struct ZTAUnarchiverOptions {
  std::string fileName = {};  ///< for messages; set by `unarchiverForFile`
  std::uint64_t oldestVersion = 1;
  std::uint64_t newestVersion = std::numeric_limits<std::uint64_t>::max();
  ZTAArchiveLimits limits = {};
  /// The display string for the prefix joined to the stored key; absent where there is none.
  std::function<StringRef(std::string_view)> localize = {};
};

/// Reads an archive.
///
///     auto unarchiver = ZTAXMLUnarchiver::unarchiverForFile("styles.zts");
///     Ref<NSObject> root = unarchiver->unarchiveRootObject();
///
/// A file is taken for hostile: nothing but its bytes is read, depth and sizes have limits, and whatever it
/// says ends in objects, in findings (what was passed over, with file and line) or in one
/// `ZTAArchiveException`. Classes are found by the names that the file gives, but only objects that code
/// themselves are made.
///
/// An object that is referred to is made before the one that refers to it, whatever their order in the file;
/// in a circle one is handed out while it is still bare.
class ZT_EXPORT ZTAXMLUnarchiver : public NSObject {
 public:
  /// Parse the bytes, plain or compressed. Raise `ZTAArchiveException` where they are no archive, or one of
  /// a version that is not asked for.
  static Ref<ZTAXMLUnarchiver> unarchiverForBytes(std::string bytes, ZTAUnarchiverOptions options = {});
  static Ref<ZTAXMLUnarchiver> unarchiverForFile(const std::string& path, ZTAUnarchiverOptions options = {});
  /// Whether the bytes begin like an archive, plain or compressed: for telling files apart. Reads a few
  /// kilobytes and never raises.
  static bool looksLikeArchive(std::string_view bytes) noexcept;

  [[nodiscard]] std::uint64_t version() const noexcept;
  [[nodiscard]] const std::string& fileName() const noexcept;

  /// Makes the archive's object and everything in it, then lets it upgrade itself
  /// (`postUnarchiveUpgradeForUnarchiver`). Never none. Once for each unarchiver. Raises
  /// `ZTAArchiveException` where the object cannot be made; exceptions of the objects pass through, with a
  /// finding that names the line.
  Ref<NSObject> unarchiveRootObject();

  /// What was passed over so far, in the order in which it was met; at most as many as the limits allow.
  [[nodiscard]] const std::vector<Ref<ZTAError>>& findings() const noexcept;
  /// All of them, those included that were not kept.
  [[nodiscard]] std::size_t findingCount() const noexcept;

  /// @name Metadata
  /// Entries that the application leaves for the objects that are read.
  /// @{

  /// Borrowed; none without an entry.
  [[nodiscard]] NSObject* metadataForKey(std::string_view key) const;
  /// None removes the entry.
  void setMetadataForKey(Ref<NSObject> entry, std::string_view key);
  /// @}

  /// @name For objects that read themselves
  /// @{

  /// The object that the element describes or refers to; none, with a finding, where none can be made.
  virtual Ref<NSObject> createObjectFromNode(_xmlNode* node);
  /// The same for an element whose class the caller knows. An object of another class is a finding.
  virtual Ref<NSObject> createObjectOfClass(const ZTClass& objectClass, _xmlNode* node);
  /// The display string for a stored name: the prefix joined to the key, looked up; else the key itself.
  virtual StringRef localizedStringForKey(const StringRef& key, const StringRef& prefix) const;
  /// The text in the element, in place; empty, with a finding, where elements stand in it.
  std::string_view textOfNode(const _xmlNode* node);
  /// The text as a string that is shared with other readers of the same text.
  StringRef sharedString(std::string_view text);
  /// The element's name as a property key. Raises where the archive has more names than the limits allow.
  PropertyKey propertyKeyForNode(const _xmlNode* node);
  /// From now on, until the current object has been read, errors are shown to this object. None for nobody.
  void setErrorHandler(Ref<ZTAErrorHandler> handler);
  /// Tells what the element holds that nobody reads: texts, attributes that are neither the archiver's own nor among
  /// the items, and, where items are given, children that are not among them or stand there again.
  void reportUnknown(const _xmlNode* node, const ZTAArchivedItems* items = nullptr);
  /// The same for its attributes alone.
  void reportUnknownAttributes(const _xmlNode* node, const ZTAArchivedItems* items = nullptr);
  /// Notes that the object gave way to another. Nobody is told, and references still lead to it: whoever may hold it
  /// asks, when all has been read that may refer to it.
  void setReplacementForObject(Ref<NSObject> replacement, Ref<NSObject> object);
  /// What the object gave way to in the end, or none. Borrowed.
  [[nodiscard]] NSObject* replacementForObject(const NSObject* object) const;
  [[nodiscard]] bool hasReplacements() const noexcept;
  /// Notes that something at the node (may be none) was passed over.
  void report(const _xmlNode* node, std::string message);
  /// Ends the reading with an error at the node (may be none).
  [[noreturn]] void raise(const _xmlNode* node, std::string message) const;
  /// @}

 protected:
  ZTAXMLUnarchiver(std::string bytes, ZTAUnarchiverOptions options);
  ~ZTAXMLUnarchiver() override;

 private:
  struct State;
  class Entry;
  struct Frame;
  struct MakingScope;
  struct NestingScope;

  void checkArchive();
  void collectEntries();
  Entry* entryOf(const _xmlNode* node) const;
  void reportUnreferred(const _xmlNode* shelf);
  Entry* entryReferredTo(const _xmlNode* node, std::string_view id);
  Ref<NSObject> objectFor(_xmlNode* node, const ZTClass* wanted);
  Ref<NSObject> handOut(Entry& entry, const _xmlNode* node);
  Ref<NSObject> made(_xmlNode* node, const ZTClass* wanted, Entry* entry);
  const ZTClass* classFor(const _xmlNode* node, const ZTClass* wanted, bool& isStandIn);
  bool allocate(Frame& frame, const ZTClass* wanted);
  void open(Frame& frame);
  Ref<NSObject> readWithNeeds(Frame first);
  Ref<NSObject> read(Frame& frame);
  Ref<ZTAError> errorAt(const _xmlNode* node, std::string message) const;

  std::unique_ptr<State> mState;
};

}  // namespace zt
