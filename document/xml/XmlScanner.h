// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// Where the tags of an XML text stand, byte by byte: what an edit needs that touches nothing else.

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zt {

/// One attribute of a tag, declarations of namespaces left out.
struct XmlPlacedAttribute {
  std::string_view prefix;  ///< the standard prefix of its namespace, see `prefixForAddress`
  std::string_view name;    ///< local
  std::string_view raw;     ///< the value as it stands in the text, without its quotes
  std::size_t start = 0;    ///< of the white space before the name
  std::size_t valueStart = 0;
  std::size_t end = 0;  ///< behind the closing quote

  [[nodiscard]] bool is(std::string_view wantedPrefix, std::string_view wantedName) const {
    return name == wantedName && prefix == wantedPrefix;
  }
  /// With references and white space resolved, as a parser gives it.
  [[nodiscard]] std::string value() const;
};

/// A namespace declaration: the prefix that the text uses, and the standard one of its address.
struct XmlDeclaredPrefix {
  std::string written;
  std::string standard;
};

/// Walks over the tags of a text that was read without an error before. Comments, processing instructions and character
/// data are passed over. A tag that closes itself is told as a start and an end. Nothing is copied; the views into the
/// text live as long as it, prefixes as long as the scanner.
class XmlScanner {
 public:
  /// What the prefixes of a piece of a larger text mean has to be handed over.
  explicit XmlScanner(std::string_view text, std::vector<XmlDeclaredPrefix> declared = {});
  /// Of a text in the form that `OpaqueText` writes: prefixes without a declaration are standard ones.
  enum class Prefixes : bool { declared, standard };
  XmlScanner(std::string_view text, Prefixes prefixes) : XmlScanner(text) { mPrefixes = prefixes; }

  /// Goes to the next tag; false at the end. Throws `std::runtime_error` where the text is not well-formed after all.
  bool next();

  [[nodiscard]] bool isStart() const noexcept { return mIsStart; }
  /// Whether the tag closes itself; its end is told next, at the same place.
  [[nodiscard]] bool isEmpty() const noexcept { return mIsEmpty; }
  /// How many elements are open, the one that starts or ends here included.
  [[nodiscard]] std::size_t depth() const noexcept { return mIsStart ? mOpen.size() : mOpen.size() + 1; }
  [[nodiscard]] std::string_view prefix() const noexcept { return mPrefix; }
  [[nodiscard]] std::string_view name() const noexcept { return mName; }
  [[nodiscard]] bool is(std::string_view prefix, std::string_view name) const {
    return mName == name && mPrefix == prefix;
  }
  [[nodiscard]] const std::vector<XmlPlacedAttribute>& attributes() const noexcept { return mAttributes; }
  [[nodiscard]] std::size_t start() const noexcept { return mStart; }  ///< of the tag's `<`
  [[nodiscard]] std::size_t end() const noexcept { return mAt; }       ///< behind the tag's `>`
  /// The prefixes in force inside the element that starts here, the nearest last.
  [[nodiscard]] const std::vector<XmlDeclaredPrefix>& declared() const noexcept { return mDeclared; }
  /// The name of the tag as it stands in the text.
  [[nodiscard]] std::string_view written() const noexcept { return mWritten; }

 private:
  struct Open {
    std::string_view written;
    std::size_t declared;  // how many declarations were in force outside
  };

  void passOver(std::string_view mark, std::size_t from);
  void readStart();
  void readEnd();
  void close();
  std::string_view standard(std::string_view written) const;
  [[noreturn]] void fail() const;

  std::string_view mText;
  std::size_t mAt = 0;
  std::size_t mStart = 0;
  std::vector<XmlDeclaredPrefix> mDeclared;
  std::vector<Open> mOpen;
  std::vector<XmlPlacedAttribute> mAttributes;
  std::string_view mWritten;
  std::string_view mPrefix;
  std::string mPrefixOfEnd;  // declarations of an element are gone when its end is told
  std::string_view mName;
  Prefixes mPrefixes = Prefixes::declared;
  bool mIsStart = false;
  bool mIsEmpty = false;
  bool mOwesEnd = false;
};

/// A text as the value of an attribute in double or single quotes. What `isAscii` cannot carry becomes a reference.
std::string escapedAttribute(std::string_view value, bool isAscii = false);

/// What stands in an attribute, with references and white space resolved.
std::string unescapedAttribute(std::string_view raw);

}  // namespace zt
