// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/ZTClass.h>

#include <memory>
#include <string>
#include <string_view>

struct _xmlNode;

namespace zt {

class ZTAXMLArchiver;
class ZTAXMLUnarchiver;

/// Writes and reads the values of one class of an application: immutable objects that are written in full
/// wherever they occur. The values of the platform (null, numbers, strings, colours, lists) need none.
class ZT_EXPORT ZTAValueCoder {
 public:
  ZTAValueCoder() = default;
  ZTAValueCoder(const ZTAValueCoder&) = delete;
  ZTAValueCoder& operator=(const ZTAValueCoder&) = delete;
  virtual ~ZTAValueCoder();

  /// Writes the value into the element that was made for it: as text (`ZTAXMLArchiver::setTextOfNode`),
  /// or as attributes and children.
  virtual void encodeValue(const NSObject& value, ZTAXMLArchiver& archiver, _xmlNode* node) const = 0;

  /// The value that the element describes, or none where it describes none. Should say why with
  /// `ZTAXMLUnarchiver::report`.
  virtual Ref<NSObject> decodeValue(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) const = 0;
};

/// From now on values of that class, and of classes derived from it, are written as elements of that name
/// and such elements are read by the coder. Archivers and unarchivers that exist already do not see it. A
/// later registration of the class or of the name replaces an earlier one. Raises where the name is no XML
/// name or one of the platform's values ("null", "boolean", "integer", "real", "string", "color", "list").
ZT_EXPORT void ztaxmlRegisterValueCoder(const ZTClass& valueClass, const char* elementName,
                                        std::shared_ptr<const ZTAValueCoder> coder);

/// The same for a value that is one text. `value` answers none for a text that is no such value, which is
/// then reported.
ZT_EXPORT void ztaxmlRegisterTextCoding(const ZTClass& valueClass, const char* elementName,
                                        std::string (*text)(const NSObject& value),
                                        Ref<NSObject> (*value)(std::string_view text));

}  // namespace zt
