// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <initializer_list>
#include <span>
#include <string_view>

namespace zt {

/// An immutable dictionary from text to object for a handful of entries, such as the user
/// information of a notification. Keeps the order in which the entries were given; a key that is
/// given twice keeps its first place and its last value. Finding is a search through the entries,
/// which lie in the object's own block of memory.
class ZT_EXPORT NSDictionary final : public NSObject {
 public:
  struct Entry {
    StringRef key;
    Ref<NSObject> value;
  };

  /// Raises `NSInvalidArgumentException` for an absent key or a value of none.
  static Ref<NSDictionary> make(std::initializer_list<Entry> entries);

  /// One entry.
  static Ref<NSDictionary> make(StringRef key, Ref<NSObject> value);

  /// The value, borrowed for the life of the dictionary; none if there is no such key.
  [[nodiscard]] NSObject* objectForKey(std::string_view key) const noexcept;

  [[nodiscard]] std::size_t count() const noexcept { return mEntryCount; }
  [[nodiscard]] std::span<const Entry> entries() const noexcept { return {room(), mEntryCount}; }

  const ZTClass& classObject() const override;

  /// The same keys with equal values, in whatever order.
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;

  /// `{key = value; key = value}`.
  std::string description() const override;

  /// The dictionary itself: it cannot change.
  Ref<NSObject> copy() const override;

  static const ZTClass& dictionaryClass();

  void operator delete(void* memory) noexcept;

 private:
  NSDictionary() noexcept = default;
  ~NSDictionary() override;

  static Ref<NSDictionary> withRoomFor(std::size_t count);
  void add(StringRef key, Ref<NSObject> value);
  [[nodiscard]] Entry* room() noexcept { return reinterpret_cast<Entry*>(this + 1); }
  [[nodiscard]] const Entry* room() const noexcept { return reinterpret_cast<const Entry*>(this + 1); }

  std::size_t mEntryCount = 0;  // the entries follow in the same block
};

}  // namespace zt
