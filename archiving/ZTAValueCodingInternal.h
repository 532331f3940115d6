// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <string>
#include <string_view>

struct _xmlNode;

namespace zt {

class ZTAXMLArchiver;
class ZTAXMLUnarchiver;

/// Whether elements of that name hold values of the platform.
bool isPlatformValueName(std::string_view elementName) noexcept;

/// Writes the object as a new child, under the given name or under that of its kind, if it is a value of
/// the platform; answers whether it is one.
bool writePlatformValue(const NSObject& value, ZTAXMLArchiver& archiver, _xmlNode* parent, const char* name);

/// The value of an element, or none, which has then been reported. The kind is the element's name, or
/// for an element whose name was given by its owner, its "class".
Ref<NSObject> readPlatformValue(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::string_view kind);

/// The text as an error quotes it: cut where it is long.
std::string shortened(std::string_view text);

}  // namespace zt
