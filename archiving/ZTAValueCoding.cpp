// SPDX-License-Identifier: MIT

// The values of the platform as elements: <null/>, <boolean>, <integer>, <real>, <string>, <color>, <list>.

#include <archiving/ZTAValueCodingInternal.h>
#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>
#include <platform/ZTFormat.h>
#include <platform/ZTUtf8.h>

#include <array>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <string>
#include <utility>

namespace zt {

namespace {

enum class Kind { null, boolean, integer, real, string, color, list, none };

constexpr std::array<const char*, 7> kNames = {"null", "boolean", "integer", "real", "string", "color", "list"};

Kind kindNamed(std::string_view name) noexcept {
  for (std::size_t index = 0; index < kNames.size(); ++index) {
    if (name == kNames[index]) return static_cast<Kind>(index);
  }
  return Kind::none;
}

Kind kindOf(const NSObject& value) noexcept {
  if (const NSNumber* number = NSNumber::from(&value)) {
    return number->isBool() ? Kind::boolean : number->isInteger() ? Kind::integer : Kind::real;
  }
  if (isNull(&value)) return Kind::null;
  if (NSString::from(&value) != nullptr) return Kind::string;
  if (NSColor::from(&value) != nullptr) return Kind::color;
  return NSArray::from(&value) != nullptr ? Kind::list : Kind::none;
}

template <class T>
bool readNumber(std::string_view text, T& number) {
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  return code == std::errc() && end == text.data() + text.size();
}

#if !defined(__cpp_lib_to_chars)  // libc++ reads no reals with from_chars
bool readNumber(std::string_view text, double& number) {
  static const locale_t locale = ::newlocale(LC_ALL_MASK, "C", nullptr);
  const std::string terminated(text);
  if (text.empty() || text.find_first_of(" \t\n\v\f\r+xX(") < text.find_first_of("eE")) return false;
  char* end = nullptr;
  number = ::strtod_l(terminated.c_str(), &end, locale);
  return end == terminated.c_str() + text.size() && (std::isfinite(number) || text.find_first_of("nN") < text.size());
}
#endif

Ref<NSObject> colorFrom(std::string_view text) {
  std::uint32_t components = 0;
  if ((text.size() != 7 && text.size() != 9) || text[0] != '#') return {};
  const auto [end, code] = std::from_chars(text.data() + 1, text.data() + text.size(), components, 16);
  if (code != std::errc() || end != text.data() + text.size()) return {};
  if (text.size() == 7) components = components << 8 | 0xff;
  const auto part = [&](int shift) { return static_cast<std::uint8_t>(components >> shift); };
  return NSColor::withComponents(part(24), part(16), part(8), part(0));
}

Ref<NSObject> scalarFrom(Kind kind, std::string_view text) {
  switch (kind) {
    case Kind::boolean:
      if (text == "true" || text == "1") return NSNumber::withBool(true);
      if (text == "false" || text == "0") return NSNumber::withBool(false);
      return {};
    case Kind::integer: {
      std::int64_t integer = 0;
      return readNumber(text, integer) ? NSNumber::withInteger(integer) : Ref<NSNumber>();
    }
    case Kind::real: {
      double real = 0;
      return readNumber(text, real) ? NSNumber::withReal(real) : Ref<NSNumber>();
    }
    case Kind::color: return colorFrom(text);
    default: return NSString::make(text);
  }
}

}  // namespace

bool isPlatformValueName(std::string_view elementName) noexcept { return kindNamed(elementName) != Kind::none; }

bool writePlatformValue(const NSObject& value, ZTAXMLArchiver& archiver, _xmlNode* parent, const char* name) {
  const Kind kind = kindOf(value);
  if (kind == Kind::none) return false;
  if (kind == Kind::list) xml::checkDepthBelow(parent);
  const char* kindName = kNames[static_cast<std::size_t>(kind)];
  xmlNode* node = xml::newChild(parent, name != nullptr ? name : kindName);
  if (name != nullptr) xml::setAttribute(node, CorvaleNamespace, xml::kClass, kindName);
  switch (kind) {
    case Kind::null: break;
    case Kind::boolean: archiver.setTextOfNode(node, NSNumber::from(&value)->boolValue() ? "true" : "false"); break;
    case Kind::string: archiver.setTextOfNode(node, NSString::from(&value)->view()); break;
    case Kind::list:
      for (const Ref<NSObject>& element : NSArray::from(&value)->objects()) {
        archiver.encodeObject(element.get(), node, CorvaleNamespace);
      }
      break;
    default: archiver.setTextOfNode(node, value.description());
  }
  return true;
}

Ref<NSObject> readPlatformValue(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::string_view name) {
  static const ZTAArchivedItems nothing;
  const Kind kind = kindNamed(name);
  if (kind == Kind::null) {
    unarchiver.reportUnknown(node, &nothing);
    return Ref<NSObject>(NSNull::null());
  }
  if (kind == Kind::list) {
    unarchiver.reportUnknown(node);
    std::vector<Ref<NSObject>> elements;
    for (xmlNode* child = xml::firstElement(node); child != nullptr; child = xml::nextElement(child)) {
      // An element that cannot be read has been reported; the others keep their order.
      if (Ref<NSObject> element = unarchiver.createObjectFromNode(child)) elements.push_back(std::move(element));
    }
    return NSArray::withObjects(std::move(elements));
  }
  if (node->properties != nullptr) unarchiver.reportUnknownAttributes(node);
  const std::string_view text = unarchiver.textOfNode(node);
  Ref<NSObject> value = scalarFrom(kind, text);
  if (!value) unarchiver.report(node, format("'%s' is no %s", shortened(text), name));
  return value;
}

std::string shortened(std::string_view text) {
  constexpr std::size_t kQuoted = 60;
  return std::string(utf8Beginning(text, kQuoted)) + (text.size() <= kQuoted ? "" : "...");
}

}  // namespace zt
