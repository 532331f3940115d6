// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <cstdint>
#include <string_view>
#include <vector>

struct _xmlNode;

namespace zt {

class ZTAError;
class ZTAXMLArchiver;
class ZTAXMLUnarchiver;

/// Is asked by an archiver or unarchiver to say more about an error that arose while one object was
/// being written or read.
class ZT_EXPORT ZTAErrorHandler : public NSObject {
 public:
  /// The error to report in place of `error`. The base answers the error itself.
  virtual Ref<ZTAError> handleError(Ref<ZTAError> error);

 protected:
  using NSObject::NSObject;
};

/// The names of what the element of an object may hold besides what every element may.
struct ZTAArchivedItems {
  std::vector<std::string_view> attributes = {};
  std::vector<std::string_view> children = {};  ///< each at most once
  std::vector<std::string_view> repeated = {};  ///< children that may stand there more than once
};

/// An object that can be written to and read from an XML archive.
class ZT_EXPORT ZTAXMLCoding : public ZTAErrorHandler {
 public:
  /// Writes the object into the element that was made for it. Exceptions of the archiver pass through.
  virtual void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) = 0;

  /// Initialises a bare object from its element. False stands for no object: the bare one is dropped.
  virtual bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t version) = 0;

  /// @name Moments of an archive
  /// Called by the archiver, never by the library.
  /// @{

  /// Right after `initWithXMLUnarchiver`; answers the object to keep, which may be another or none.
  /// The base answers the object itself.
  virtual Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node);
  /// Before the object is written. The base does nothing.
  virtual void preencodeHookWithXMLArchiver(ZTAXMLArchiver& archiver);
  /// After the whole archive has been read. The base does nothing.
  virtual void postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver& unarchiver);
  /// Before an archive of the given, older version is written. The base does nothing.
  virtual void preArchiveDowngradeForVersion(std::uint64_t version, ZTAXMLArchiver& archiver);
  /// The class that the archive records. The base answers the object's class.
  virtual const ZTClass& classForCoder() const;
  /// A class that stands for the object's class where that one is unknown; the base answers none.
  virtual const ZTClass* ztClassAncestor() const;
  /// What the element of such an object may hold: an unarchiver tells what else it finds there, and passes over it.
  /// None (the base) leaves it to the object. The answer lives as long as the process.
  virtual const ZTAArchivedItems* archivedItems() const;
  /// The archive names a class that is not known here, and this object is one of the ancestor that it names. Called
  /// before the object reads itself. The base does nothing.
  virtual void standInForClassNamed(const StringRef& className);
  /// The element to which this object belongs although its owner did not write it there, asked for an object that
  /// others refer to. None (the base) where it belongs nowhere.
  virtual _xmlNode* containerInArchive(const ZTAXMLArchiver& archiver) const;
  /// Whether the objects among what it writes are others' and only referred to. The base says no: they are
  /// written in place, as parts of it.
  virtual bool archivesByReference() const;
  /// An object that this one was handed while that one was still being read turned out to be another one,
  /// or none: no reference to it may stay. Called when this object has been read. The base does nothing.
  virtual void replaceUnarchivedObject(NSObject& dropped, NSObject* kept);
  /// An archiver or unarchiver lets go of these objects, all of which archive by reference; called on one of
  /// them. Where such objects may hold one another in circles, this is the place to free them. The receiver is
  /// among them and may be gone as soon as they are released: it must not be touched then. The base releases
  /// them.
  virtual void releaseArchivedObjects(std::vector<Ref<NSObject>>&& objects) const;
  /// @}

 protected:
  using ZTAErrorHandler::ZTAErrorHandler;
};

}  // namespace zt
