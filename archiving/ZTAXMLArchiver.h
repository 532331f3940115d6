// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAArchiveFile.h>
#include <archiving/ZTAArchiveLimits.h>
#include <archiving/ZTAError.h>
#include <archiving/ZTAXMLCoding.h>
#include <platform/NSString.h>
#include <platform/PropertyKey.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct _xmlDoc;
struct _xmlNode;
struct _xmlNs;

namespace zt {

/// Writes one object, with everything that belongs to it, as an XML archive.
///
///     auto archiver = make<ZTAXMLArchiver>(2);
///     archiver->encodeRootObject(stylesheet);
///     archiver->writeToFile("styles.zts");
///
/// Values (null, numbers, strings, colours, lists, values with a registered coder) are written in full
/// wherever they occur. An object that codes itself (`ZTAXMLCoding`) is written once and referred to
/// afterwards; where it occurs among what another object only refers to, a reference is written in any case,
/// and the object is written where its owner writes it, or at the end of the archive if nobody does. So
/// references may lead forward and in circles, and no chain of references nests.
///
/// The tree is built in memory: what cannot be written is found before a byte is written. An archiver
/// writes one archive; after an exception it is of no more use.
class ZT_EXPORT ZTAXMLArchiver : public NSObject {
 public:
  /// An archiver for an archive of that version. Where the version is older than the current one, the root
  /// object is asked to downgrade itself first (`preArchiveDowngradeForVersion`).
  explicit ZTAXMLArchiver(std::uint64_t version = 1);
  ZTAXMLArchiver(std::uint64_t version, std::uint64_t currentVersion);

  [[nodiscard]] std::uint64_t version() const noexcept;
  /// Where the archiver can be found without being held: none is found there once it is destroyed.
  [[nodiscard]] std::shared_ptr<ZTAXMLArchiver* const> place() const noexcept;

  /// @name The archive
  /// @{

  /// For readers that allow less than usual. Before the root object is written.
  void setLimits(const ZTAArchiveLimits& limits);

  /// Builds the archive's tree. Once for each archiver. Raises `ZTAArchiveException` where something
  /// cannot be written; exceptions of the objects pass through.
  void encodeRootObject(NSObject& root);
  /// The archive as text, or compressed. Raises `ZTAArchiveException` without a root object that has been written to
  /// its end: what a failed encoding leaves would read like a good archive that holds less. Raises it too for an
  /// archive that is larger than its readers allow.
  [[nodiscard]] std::string bytes(ZTACompression compression = ZTACompression::none) const;
  /// Replaces the file: a failure, and a crash at any moment, leave the old file or the new one whole.
  /// Raises `ZTAArchiveException`.
  void writeToFile(const std::string& path, ZTACompression compression = ZTACompression::none) const;
  /// @}

  /// @name For objects that write themselves
  /// @{

  /// Writes the object, its substitute, or a reference to it as a new child element. None is written as
  /// null. The element lies in `CorvaleNamespace`, whatever namespace is given: objects are read from no
  /// other. Raises `ZTAArchiveException` for an object that neither is a value nor codes itself.
  virtual void encodeObject(NSObject* object, _xmlNode* parent, _xmlNs& xmlNamespace);
  /// The same with the element's name given; raises where that is no XML name.
  virtual void encodeObjectWithName(NSObject* object, _xmlNode* parent, const char* name, _xmlNs& xmlNamespace);
  /// A new child element named like the property. Raises where that is no XML name, and where the archive then had more
  /// property names than its readers allow.
  [[nodiscard]] _xmlNode* newNodeForPropertyKey(_xmlNode* parent, PropertyKey key);
  /// Writes a text into an element. Raises where XML cannot hold it.
  void setTextOfNode(_xmlNode* node, std::string_view text);
  /// From now on, until the current object is written, errors are shown to this object. None for nobody.
  void setErrorHandler(Ref<ZTAErrorHandler> handler);
  /// @}

  /// @name Metadata
  /// Entries that the application leaves for the objects that are written.
  /// @{

  /// Borrowed; none without an entry.
  [[nodiscard]] NSObject* metadataForKey(std::string_view key) const;
  /// None removes the entry.
  void setMetadataForKey(Ref<NSObject> entry, std::string_view key);
  /// @}

  /// @name Substitutes
  /// By identity; the archiver holds both.
  /// @{

  /// From now on the substitute is written wherever the object would be. Neither may be none: then nothing happens.
  void setEncoderForObject(Ref<NSObject> substitute, Ref<NSObject> object);
  /// Borrowed; none without one.
  [[nodiscard]] NSObject* encoderForObject(const NSObject* object) const;
  void removeEncoderForObject(const NSObject* object);
  /// @}

 protected:
  ~ZTAXMLArchiver() override;

 private:
  struct State;
  struct ErrorScope;
  struct Written;

  [[nodiscard]] _xmlDoc* document() const;
  void writeIn(Written& written, ZTAXMLCoding& object, _xmlNode* parent, const char* name);
  void writeReference(Written& written, _xmlNode* parent, const char* name);
  void writeOwed();
  void checkSize(std::size_t bytes) const;

  std::unique_ptr<State> mState;
};

/// An archiver with which styles write themselves when they are needed, see `ensureSavedWithXMLArchiver`.
/// The application puts both entries below into its metadata.
class ZT_EXPORT ZTVXMLArchiverForPB : public ZTAXMLArchiver {
 public:
  using ZTAXMLArchiver::ZTAXMLArchiver;

 protected:
  ~ZTVXMLArchiverForPB() override;
};

}  // namespace zt
