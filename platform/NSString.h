// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

#include <string>
#include <string_view>

namespace zt {

/// An immutable text in UTF-8 with its hash, made once and shared: a million styles with one parent
/// identifier hold one string. Compared byte by byte.
class ZT_EXPORT NSString final : public NSObject {
 public:
  static Ref<NSString> make(std::string_view text);

  [[nodiscard]] std::string_view view() const noexcept { return {mText, mLength}; }

  const ZTClass& classObject() const override;
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override { return mHash; }
  std::size_t stableHash() const override { return mHash; }
  std::string description() const override { return std::string(view()); }
  Ref<NSObject> copy() const override;

  static const ZTClass& stringClass();
  static std::size_t hashOf(std::string_view text) noexcept;

  /// The object as a string, or none.
  static const NSString* from(const NSObject* object) noexcept {
    return object != nullptr && tagOf(*object) == Tag::string ? static_cast<const NSString*>(object) : nullptr;
  }

  void operator delete(void* memory) noexcept;

 private:
  NSString(std::size_t length, std::size_t hash) noexcept : NSObject(Tag::string), mLength(length), mHash(hash) {}
  ~NSString() override = default;

  std::size_t mLength;
  std::size_t mHash;
  char mText[8] = {};  // the text follows in the same block
};

/// A name or identifier: a shared immutable string that may be absent. Absent and empty are two
/// things. `==` holds for two absent ones; where an absent one must equal nothing, ask `equalTexts`.
class StringRef {
 public:
  StringRef() = default;
  StringRef(std::nullptr_t) noexcept {}
  StringRef(const char* text) : mString(text != nullptr ? NSString::make(text) : Ref<NSString>()) {}
  StringRef(std::string_view text) : mString(NSString::make(text)) {}
  StringRef(const std::string& text) : mString(NSString::make(text)) {}
  StringRef(Ref<NSString> string) noexcept : mString(std::move(string)) {}

  [[nodiscard]] bool isPresent() const noexcept { return mString != nullptr; }
  explicit operator bool() const noexcept { return isPresent(); }

  /// The text; empty if absent.
  [[nodiscard]] std::string_view view() const noexcept { return mString ? mString->view() : std::string_view(); }
  [[nodiscard]] std::string text() const { return std::string(view()); }

  /// The cached hash of the text; 0 if absent.
  [[nodiscard]] std::size_t hash() const noexcept { return mString ? mString->hash() : 0; }

  /// The string object, or none.
  [[nodiscard]] NSString* object() const noexcept { return mString.get(); }

  /// Both absent, the same object, or the same text.
  friend bool operator==(const StringRef& left, const StringRef& right) noexcept {
    if (left.mString == right.mString) return true;
    return left.mString && right.mString && left.hash() == right.hash() && left.view() == right.view();
  }

 private:
  Ref<NSString> mString;
};

/// Whether both are present and hold the same text. An absent text equals nothing, not even another absent one.
inline bool equalTexts(const StringRef& left, const StringRef& right) noexcept {
  return left.isPresent() && left == right;
}

struct StringRefHash {
  std::size_t operator()(const StringRef& text) const noexcept { return text.hash(); }
};

}  // namespace zt
