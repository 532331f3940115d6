#pragma once

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <boost/container/small_vector.hpp>

#include <initializer_list>
#include <string_view>

namespace zt {

/// An immutable dictionary from text to object for a handful of entries, such as the user
/// information of a notification. Keeps the order in which the entries were given; a key that is
/// given twice keeps its first place and its last value. Finding is a search through the entries.
class ZT_EXPORT NSDictionary final : public NSObject {
 public:
  struct Entry {
    StringRef key;
    Ref<NSObject> value;
  };
  using Entries = boost::container::small_vector<Entry, 2>;

  /// Raises `NSInvalidArgumentException` for an absent key or a value of none.
  static Ref<NSDictionary> make(std::initializer_list<Entry> entries);

  /// One entry: a single allocation if the key is a shared text.
  static Ref<NSDictionary> make(StringRef key, Ref<NSObject> value);

  /// The value, borrowed for the life of the dictionary; none if there is no such key.
  [[nodiscard]] NSObject* objectForKey(std::string_view key) const noexcept;

  [[nodiscard]] std::size_t count() const noexcept { return mEntries.size(); }
  [[nodiscard]] const Entries& entries() const noexcept { return mEntries; }

  const ZTClass& classObject() const override;

  /// The same keys with equal values, in whatever order.
  bool isEqual(const NSObject* other) const override;
  std::size_t hash() const override;

  /// `{key = value; key = value}`.
  std::string description() const override;

  /// The dictionary itself: it cannot change.
  Ref<NSObject> copy() const override;

  static const ZTClass& dictionaryClass();

 private:
  NSDictionary() = default;
  ~NSDictionary() override;

  void add(StringRef key, Ref<NSObject> value);

  Entries mEntries;
};

}  // namespace zt
