// SPDX-License-Identifier: MIT
#pragma once

#include <support/OrderedTable.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

template <>
inline constexpr bool kMoveByBits<StringRef> = sizeof(StringRef) == sizeof(NSString*);  // a reference and nothing else

/// A stylesheet's identified styles: from the text of an identifier to the style registered under it, in
/// the order of registration. Holds the styles. The key is normally the style's own identifier; it is kept
/// apart so that validation can tell.
class ZTSStyleDictionary {
 public:
  struct Entry {
    StringRef key;
    Ref<ZTSStyle> style;
    std::size_t hash = 0;  // of the key: growing and probing read no text
  };
  struct Policy {
    using Key = StringRef;
    static constexpr bool kMovesByBits = kMoveByBits<StringRef, Ref<ZTSStyle>, std::size_t>;
    static const StringRef& keyOf(const Entry& entry) noexcept { return entry.key; }
    static bool isHole(const Entry& entry) noexcept { return entry.style == nullptr; }
    static Entry hole() noexcept { return {}; }
    static std::size_t hash(const StringRef& key) noexcept { return key.hash(); }
    static std::size_t hashOf(const Entry& entry) noexcept { return entry.hash; }
    static bool matches(const Entry& entry, const StringRef& key) noexcept {
      return entry.hash == key.hash() && equalTexts(entry.key, key);
    }
  };
  using Table = OrderedTable<Entry, Policy>;

  /// The style, borrowed; none without an entry and for an absent identifier.
  [[nodiscard]] ZTSStyle* find(const StringRef& identifier) const noexcept {
    const Entry* entry = identifier ? mTable.find(identifier) : nullptr;
    return entry != nullptr ? entry->style.get() : nullptr;
  }
  /// Registers the style, in the place of an earlier one of the same identifier, and answers that one, or none.
  Ref<ZTSStyle> set(StringRef identifier, Ref<ZTSStyle> style);
  /// Removes the entry and hands its style over; none without one.
  Ref<ZTSStyle> remove(const StringRef& identifier) noexcept { return std::move(mTable.take(identifier).style); }
  void removeAll() noexcept { mTable.removeAll(); }
  /// Room for one more style: registering it then allocates nothing.
  void makeRoom() { mTable.reserveOne(); }

  [[nodiscard]] std::size_t count() const noexcept { return mTable.count(); }
  /// The place in the order; `Table::kNoSlot` where the style is not registered under its identifier.
  [[nodiscard]] Table::Slot slotOf(const ZTSStyle& style) const noexcept;

  [[nodiscard]] auto begin() const noexcept { return mTable.begin(); }
  [[nodiscard]] auto end() const noexcept { return mTable.end(); }

 private:
  Table mTable;
};

}  // namespace zt
