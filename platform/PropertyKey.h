// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSString.h>

#include <compare>
#include <cstdint>

namespace zt {

/// The name of a property, interned for ever: two keys with one text are one record, compared by
/// pointer. Keys also have a dense ordinal, by which sets of keys are bit sets.
///
/// Making one from text costs a hash lookup under a lock: keep keys in constants.
class ZT_EXPORT PropertyKey {
 public:
  struct Record {
    StringRef text;
    std::uint64_t bit;
    std::uint32_t ordinal;
  };

  /// No key: equals only itself, and no map has an entry for it.
  PropertyKey() = default;
  /// Interns the text. Raises `NSGenericException` above four million distinct keys in one process.
  PropertyKey(std::string_view text);  // NOLINT(google-explicit-constructor): a literal is a key
  PropertyKey(const char* text) : PropertyKey(std::string_view(text)) {}
  PropertyKey(const std::string& text) : PropertyKey(std::string_view(text)) {}

  explicit operator bool() const noexcept { return mRecord != nullptr; }
  /// The text as a shared string; absent for no key.
  [[nodiscard]] StringRef string() const { return mRecord != nullptr ? mRecord->text : StringRef(); }
  [[nodiscard]] std::string_view view() const noexcept {
    return mRecord != nullptr ? mRecord->text.view() : std::string_view();
  }
  /// The ordinal of a key that is there.
  [[nodiscard]] std::uint32_t ordinal() const noexcept { return mRecord->ordinal; }
  /// One of 64 bits: a map whose mask lacks it has no entry for the key. No bit for no key.
  [[nodiscard]] std::uint64_t bit() const noexcept { return mRecord != nullptr ? mRecord->bit : 0; }

  friend bool operator==(PropertyKey left, PropertyKey right) noexcept { return left.mRecord == right.mRecord; }

  /// The key with this ordinal, which must have been handed out.
  static PropertyKey withOrdinal(std::uint32_t ordinal) noexcept;

 private:
  explicit PropertyKey(const Record* record) noexcept : mRecord(record) {}

  const Record* mRecord = nullptr;
};

/// What `%@` prints for a key.
inline std::string describe(PropertyKey key) { return key ? std::string(key.view()) : std::string("(null)"); }

}  // namespace zt
