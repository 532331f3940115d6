// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// `format(text, arguments...)`: the formatter of every report, log line and description. The compiler checks number
/// and kinds of the arguments. The locale plays no part.
///
/// - `%@` takes an object or a reference to one, a text, or anything with `std::string describe(const T&)` beside it,
///   and prints its description; `(null)` for none and for an absent text.
/// - `%s` takes a text: `StringRef`, `std::string`, `std::string_view`, `const char*`; `(null)` if absent.
/// - `%p` takes an address and prints `0x` and hexadecimal digits; `0x0` for none.
/// - `%#x` takes an address or an integer and prints the same.
/// - `%d` takes an integer or a boolean and prints decimal digits.
/// - `%%` takes nothing and prints `%`.

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>

namespace zt {

namespace formatting {

/// What a type can stand for in a text; one bit for each group of directives.
enum Accepts : unsigned {
  nothing = 0,
  object = 1,   // %@
  text = 2,     // %s
  place = 4,    // %p %#x
  integer = 8,  // %d %#x
};

template <class T>
concept Described = requires(const T& value) {
  { describe(value) } -> std::convertible_to<std::string>;
};

template <class T>
struct IsRef : std::false_type {};
template <class T>
struct IsRef<Ref<T>> : std::true_type {};

template <class T>
constexpr unsigned acceptsOf() {
  using Plain = std::remove_cvref_t<T>;
  if constexpr (std::is_same_v<Plain, StringRef>) {
    return object | text;
  } else if constexpr (std::is_convertible_v<const Plain&, const NSObject*>) {
    return object | place;  // also the null pointer constant
  } else if constexpr (std::is_base_of_v<NSObject, Plain> || IsRef<Plain>::value) {
    return object | place;
  } else if constexpr (std::is_convertible_v<const Plain&, std::string_view>) {
    return object | text;
  } else if constexpr (std::is_integral_v<Plain>) {
    return integer;
  } else if constexpr (Described<Plain>) {
    return object;
  } else if constexpr (std::is_convertible_v<const Plain&, const volatile void*>) {
    return place;
  } else {
    return nothing;
  }
}

/// The directive that starts at `text[at]`, after the `%`: what it takes and how long it is.
/// A length of 0 stands for an unknown one.
struct Directive {
  unsigned takes = nothing;
  std::size_t length = 0;
};

constexpr Directive directiveAt(std::string_view text, std::size_t at) {
  if (at >= text.size()) return {};
  switch (text[at]) {
    case '%': return {nothing, 1};
    case '@': return {object, 1};
    case 's': return {Accepts::text, 1};
    case 'p': return {place, 1};
    case 'd': return {integer, 1};
    case '#': return at + 1 < text.size() && text[at + 1] == 'x' ? Directive{place | integer, 2} : Directive{};
    default: return {};
  }
}

// Not constant, so that reaching one of them while a text is checked is an error that tells why.
void theTextHasAnUnknownDirective();
void theTextAndTheArgumentsDifferInNumber();
void anArgumentDoesNotFitItsDirective();

}  // namespace formatting

/// One argument, for a text that is not known to the compiler. Borrows what it stands for.
class ZT_EXPORT FormatArgument {
 public:
  template <class T>
  FormatArgument(const T& value) {  // NOLINT(google-explicit-constructor)
    constexpr unsigned accepts = formatting::acceptsOf<T>();
    static_assert(accepts != formatting::nothing,
                  "a value of this type cannot be printed: give it a describe(const T&)");
    mAccepts = accepts;
    if constexpr (std::is_same_v<T, StringRef>) {
      setText(value.view(), value.isPresent());
    } else if constexpr (std::is_null_pointer_v<T>) {
      mKind = Kind::object;
    } else if constexpr (std::is_convertible_v<const T&, const NSObject*>) {
      mKind = Kind::object;
      mPointer = static_cast<const NSObject*>(value);
    } else if constexpr (std::is_base_of_v<NSObject, T>) {
      mKind = Kind::object;
      mPointer = static_cast<const NSObject*>(&value);
    } else if constexpr (formatting::IsRef<T>::value) {
      mKind = Kind::object;
      mPointer = static_cast<const NSObject*>(value.get());
    } else if constexpr (std::is_convertible_v<const T&, const char*>) {
      const char* text = value;
      setText(text != nullptr ? std::string_view(text) : std::string_view(), text != nullptr);
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
      setText(value, true);
    } else if constexpr (std::is_integral_v<T>) {
      mKind = std::is_signed_v<T> ? Kind::integer : Kind::natural;
      mNumber = static_cast<std::uint64_t>(value);  // a negative one keeps its bits
    } else if constexpr (formatting::Described<T>) {
      mKind = Kind::described;
      mPointer = &value;
      mDescribe = [](const void* it) -> std::string { return describe(*static_cast<const T*>(it)); };
    } else {
      mKind = Kind::place;
      mPointer = const_cast<const void*>(static_cast<const volatile void*>(value));
    }
  }

  /// What the argument can stand for, see `formatting::Accepts`.
  [[nodiscard]] unsigned accepts() const noexcept { return mAccepts; }

  /// Appends what a directive prints that takes one of the groups `takes`.
  void append(std::string& result, unsigned takes) const;

 private:
  enum class Kind : std::uint8_t { text, absentText, object, place, integer, natural, described };

  void setText(std::string_view text, bool present) noexcept {
    mKind = present ? Kind::text : Kind::absentText;
    mPointer = text.data();
    mNumber = text.size();
  }

  Kind mKind = Kind::object;
  unsigned mAccepts = formatting::nothing;
  const void* mPointer = nullptr;
  std::uint64_t mNumber = 0;
  std::string (*mDescribe)(const void*) = nullptr;
};

/// A text that the compiler has checked against the types of its arguments.
template <class... Arguments>
class FormatString {
 public:
  template <class Text>
  requires std::convertible_to<const Text&, std::string_view>
  consteval FormatString(const Text& text) : mText(text) {  // NOLINT(google-explicit-constructor)
    constexpr unsigned accepts[] = {formatting::acceptsOf<Arguments>()..., formatting::nothing};
    std::size_t used = 0;
    for (std::size_t at = 0; at < mText.size(); ++at) {
      if (mText[at] != '%') continue;
      const formatting::Directive directive = formatting::directiveAt(mText, at + 1);
      if (directive.length == 0) formatting::theTextHasAnUnknownDirective();
      at += directive.length;
      if (directive.takes == formatting::nothing) continue;
      if (used == sizeof...(Arguments)) formatting::theTextAndTheArgumentsDifferInNumber();
      if ((accepts[used] & directive.takes) == 0) formatting::anArgumentDoesNotFitItsDirective();
      ++used;
    }
    if (used != sizeof...(Arguments)) formatting::theTextAndTheArgumentsDifferInNumber();
  }

  [[nodiscard]] std::string_view text() const noexcept { return mText; }

 private:
  std::string_view mText;
};

/// The text with its directives replaced, for a text chosen at run time. Raises
/// `NSInvalidArgumentException` if a directive is unknown or the arguments do not fit.
ZT_EXPORT std::string formatWithArguments(std::string_view text, const FormatArgument* arguments, std::size_t count);

/// The text with its directives replaced. A wrong number or kind of arguments does not compile.
template <class... Arguments>
std::string formatted(std::type_identity_t<FormatString<Arguments...>> text, const Arguments&... arguments) {
  if constexpr (sizeof...(Arguments) == 0) {
    return formatWithArguments(text.text(), nullptr, 0);
  } else {
    const FormatArgument all[] = {FormatArgument(arguments)...};
    return formatWithArguments(text.text(), all, sizeof...(Arguments));
  }
}

/// The same, under the name by which it is called. An object: where `<format>` is included, the standard's function
/// would be found beside a function of ours for any argument of the standard's own types, would fit better, and would
/// leave every directive as it stands.
struct Formatting {
  template <class... Arguments>
  std::string operator()(std::type_identity_t<FormatString<Arguments...>> text, const Arguments&... arguments) const {
    return formatted<Arguments...>(text, arguments...);
  }
};
inline constexpr Formatting format{};

/// The text in one line that is safe on a terminal: line ends, tabs and other control characters
/// are written as escapes. What is printed may come from a file of anybody's.
ZT_EXPORT std::string singleLine(std::string_view text);

}  // namespace zt
