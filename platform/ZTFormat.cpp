// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/ZTFormat.h>

#include <charconv>

namespace zt {

namespace {

template <class Number>
void appendNumber(std::string& result, Number number, int base) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number, base);
  result.append(digits, end.ptr);
}

void appendHexadecimal(std::string& result, std::uint64_t number) {
  result += "0x";
  appendNumber(result, number, 16);
}

[[noreturn]] void refuse(std::string_view text, const char* reason) {
  throw NSInvalidArgumentException("format \"" + singleLine(text) + "\": " + reason);
}

}  // namespace

void FormatArgument::append(std::string& result, unsigned takes) const {
  switch (mKind) {
    case Kind::text: result.append(static_cast<const char*>(mPointer), mNumber); return;
    case Kind::absentText: result += "(null)"; return;
    case Kind::described: result += mDescribe(mPointer); return;
    case Kind::place: appendHexadecimal(result, reinterpret_cast<std::uintptr_t>(mPointer)); return;
    case Kind::object:
      if ((takes & formatting::object) == 0) {
        appendHexadecimal(result, reinterpret_cast<std::uintptr_t>(mPointer));
      } else if (mPointer == nullptr) {
        result += "(null)";
      } else {
        result += static_cast<const NSObject*>(mPointer)->description();
      }
      return;
    case Kind::integer:
    case Kind::natural:
      if ((takes & formatting::place) != 0) {
        appendHexadecimal(result, mNumber);
      } else if (mKind == Kind::integer) {
        appendNumber(result, static_cast<std::int64_t>(mNumber), 10);
      } else {
        appendNumber(result, mNumber, 10);
      }
      return;
  }
}

std::string formatWithArguments(std::string_view text, const FormatArgument* arguments, std::size_t count) {
  std::string result;
  result.reserve(text.size() + 16 * count);
  std::size_t used = 0;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t percent = text.find('%', at);
    result.append(text.substr(at, percent == std::string_view::npos ? percent : percent - at));
    if (percent == std::string_view::npos) break;
    const formatting::Directive directive = formatting::directiveAt(text, percent + 1);
    if (directive.length == 0) refuse(text, "unknown directive");
    at = percent + 1 + directive.length;
    if (directive.takes == formatting::nothing) {
      result += '%';
      continue;
    }
    if (used == count) refuse(text, "too few arguments");
    if ((arguments[used].accepts() & directive.takes) == 0) refuse(text, "an argument does not fit its directive");
    arguments[used++].append(result, directive.takes);
  }
  if (used != count) refuse(text, "too many arguments");
  return result;
}

std::string singleLine(std::string_view text) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  result.reserve(text.size());
  for (const char each : text) {
    const auto code = static_cast<unsigned char>(each);
    if (each == '\n') {
      result += "\\n";
    } else if (each == '\t') {
      result += "\\t";
    } else if (each == '\r') {
      result += "\\r";
    } else if (code < 0x20 || code == 0x7f) {
      result += "\\x";
      result += kDigits[code >> 4];
      result += kDigits[code & 15];
    } else {
      result += each;
    }
  }
  return result;
}

}  // namespace zt
