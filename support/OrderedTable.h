// SPDX-License-Identifier: MIT
#pragma once

#include <platform/Ref.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

namespace zt {

/// Whether objects of these types may be moved by copying their bits and forgetting the originals: nothing refers back
/// into one, and what they own does not ask where they stand. True for what is trivially copied, for references and,
/// said there, for types whose author has looked.
template <class... Types>
inline constexpr bool kMoveByBits = (kMoveByBits<Types> && ...);
template <class T>
inline constexpr bool kMoveByBits<T> = std::is_trivially_copyable_v<T>;
template <class T>
inline constexpr bool kMoveByBits<Ref<T>> = sizeof(Ref<T>) == sizeof(T*);  // a pointer and nothing else

/// The table under every identity set and dictionary of the library: entries in insertion order, add,
/// remove and find in constant time at any size, one null pointer while empty.
///
/// Entries stand in numbered slots; a removed one leaves a hole until the table is next compacted.
/// Above eight entries a table of cells finds them by hash; a cell holds enough of the hash that hardly any search
/// reads an entry that it does not want. Iterators hold a slot number, not an address: adding and removing while one is
/// in use is safe, and an entry added meanwhile is met. (After a compaction the walk may meet an entry again or miss
/// one: where that matters, walk a snapshot.)
///
/// `Policy` says what the key of an entry is, how keys and entries are hashed and compared, and what a hole looks
/// like, which owns nothing. `hashOf(entry)` must not be dearer than a look at the entry: growing asks it of every
/// entry. Growing also moves entries by copying their bits, without a call: `kMovesByBits` says that they bear it, for
/// the members of the entry one by one (`kMoveByBits`).
template <class Entry, class Policy>
class OrderedTable {
  static_assert(Policy::kMovesByBits, "growing copies the bits of the entries");

 public:
  using Key = typename Policy::Key;
  using Slot = std::uint32_t;
  static constexpr Slot kNoSlot = std::numeric_limits<Slot>::max();

  OrderedTable() = default;
  OrderedTable(const OrderedTable& other) {
    if (other.count() == 0) return;
    mBlock = allocate(other.mBlock->live);
    for (const Entry& entry : other) {
      const std::uint32_t hash = hash32(Policy::hashOf(entry));
      append(Entry(entry), hash, freePlaceFor(hash));
    }
  }
  OrderedTable(OrderedTable&& other) noexcept : mBlock(std::exchange(other.mBlock, nullptr)) {}
  OrderedTable& operator=(OrderedTable other) noexcept {
    std::swap(mBlock, other.mBlock);
    return *this;
  }
  ~OrderedTable() { destroy(mBlock); }

  [[nodiscard]] std::size_t count() const noexcept { return mBlock != nullptr ? mBlock->live : 0; }
  [[nodiscard]] bool isEmpty() const noexcept { return count() == 0; }

  /// The slot of the entry with this key, or `kNoSlot`.
  [[nodiscard]] Slot slotOf(const Key& key) const noexcept {
    Slot place = 0;
    return mBlock != nullptr ? search(key, hashFor(key), place) : kNoSlot;
  }
  [[nodiscard]] bool contains(const Key& key) const noexcept { return slotOf(key) != kNoSlot; }

  /// The entry, valid until the next addition or removal; none if there is none.
  [[nodiscard]] Entry* find(const Key& key) noexcept { return atSlot(slotOf(key)); }
  [[nodiscard]] const Entry* find(const Key& key) const noexcept { return const_cast<OrderedTable*>(this)->find(key); }

  /// Slots are numbered 0 to `slotCount() - 1`, in insertion order. They stay while `generation()` stays.
  [[nodiscard]] Slot slotCount() const noexcept { return mBlock != nullptr ? mBlock->used : 0; }
  [[nodiscard]] std::uint32_t generation() const noexcept { return mBlock != nullptr ? mBlock->generation : 0; }
  /// The entry in a slot; none for a hole or no slot.
  [[nodiscard]] Entry* atSlot(Slot slot) noexcept {
    if (slot >= slotCount() || Policy::isHole(mBlock->entries()[slot])) return nullptr;
    return &mBlock->entries()[slot];
  }
  [[nodiscard]] const Entry* atSlot(Slot slot) const noexcept { return const_cast<OrderedTable*>(this)->atSlot(slot); }

  /// The first slot from `first` on whose entry answers the question with true; `kNoSlot` without one. The
  /// fastest walk, during which the table must not change.
  template <class Question>
  [[nodiscard]] Slot firstSlotWhere(Question question, Slot first = 0) const {
    if (mBlock == nullptr) return kNoSlot;
    const Entry* const entries = mBlock->entries();
    for (Slot slot = first, end = mBlock->used; slot < end; ++slot) {
      if (!Policy::isHole(entries[slot]) && question(entries[slot])) return slot;
    }
    return kNoSlot;
  }

  /// Adds the entry at the end unless its key is there already; answers the entry that is there now
  /// and whether it was added.
  std::pair<Entry*, bool> insert(Entry entry) {
    const std::uint32_t hash = hash32(Policy::hashOf(entry));
    Slot place = 0;
    if (mBlock != nullptr) {
      const Slot slot = search(Policy::keyOf(entry), hash, place);
      if (slot != kNoSlot) return {&mBlock->entries()[slot], false};
    }
    if (mBlock == nullptr || mBlock->used == mBlock->capacity) {
      makeRoom();
      place = freePlaceFor(hash);
    }
    return {append(std::move(entry), hash, place), true};
  }

  /// Takes the entry out and hands it over, so that what its destruction runs finds the table whole.
  /// A hole if there is none.
  Entry take(const Key& key) noexcept {
    if (mBlock == nullptr) return Policy::hole();
    Slot place = 0;
    const Slot slot = search(key, hashFor(key), place);
    if (slot == kNoSlot) return Policy::hole();
    if (mBlock->hasTable()) freeCell(place);
    Entry taken = std::exchange(mBlock->entries()[slot], Policy::hole());
    --mBlock->live;
    giveBackHolesAtEnd();
    if (mBlock->live == 0) destroy(std::exchange(mBlock, nullptr));
    return taken;
  }
  bool remove(const Key& key) noexcept { return !Policy::isHole(take(key)); }

  void removeAll() noexcept { destroy(std::exchange(mBlock, nullptr)); }

  /// Room for so many entries at once.
  void reserve(std::size_t count) {
    if (mBlock == nullptr ? count > 0 : count > mBlock->capacity) rebuild(std::bit_ceil(static_cast<Slot>(count)));
  }

  /// Room for one more at the end: adding it then allocates nothing. Counts as an addition for what is said of slots.
  void reserveOne() {
    if (mBlock == nullptr || mBlock->used == mBlock->capacity) makeRoom();
  }

  /// Bytes on the heap, for measurements.
  [[nodiscard]] std::size_t heapBytes() const noexcept { return mBlock != nullptr ? bytesFor(mBlock->capacity) : 0; }

  template <class Table, class Value>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Entry;
    using difference_type = std::ptrdiff_t;
    using pointer = Value*;
    using reference = Value&;

    Iterator() = default;
    Iterator(Table* table, Slot slot) noexcept : mTable(table), mSlot(slot) { skipHoles(); }
    Value& operator*() const noexcept { return *mTable->atSlot(mSlot); }
    Value* operator->() const noexcept { return mTable->atSlot(mSlot); }
    Iterator& operator++() noexcept {
      ++mSlot;
      skipHoles();
      return *this;
    }
    Iterator operator++(int) noexcept {
      Iterator before = *this;
      ++*this;
      return before;
    }
    [[nodiscard]] Slot slot() const noexcept { return mSlot; }
    /// All iterators behind the last entry are equal, whatever was added meanwhile.
    friend bool operator==(const Iterator& left, const Iterator& right) noexcept {
      return left.place() == right.place();
    }

   private:
    [[nodiscard]] Slot place() const noexcept {
      return mTable == nullptr || mSlot >= mTable->slotCount() ? kNoSlot : mSlot;
    }
    void skipHoles() noexcept {
      while (mSlot < mTable->slotCount() && mTable->atSlot(mSlot) == nullptr) ++mSlot;
    }
    Table* mTable = nullptr;
    Slot mSlot = 0;
  };
  using iterator = Iterator<OrderedTable, Entry>;
  using const_iterator = Iterator<const OrderedTable, const Entry>;
  iterator begin() noexcept { return {this, 0}; }
  iterator end() noexcept { return {this, kNoSlot}; }
  const_iterator begin() const noexcept { return {this, 0}; }
  const_iterator end() const noexcept { return {this, kNoSlot}; }

 private:
  static constexpr Slot kWalked = 8;

  /// Zero where free. The low bits, as many as the mask of the table has, hold the slot plus one. The highest four
  /// say how far from its home the cell stands, up to `kFar`, so that removing moves cells without asking entries
  /// for their hash. Those between hold the bits of the hash that stand there: with the home, which is its low bits,
  /// a cell tells 28 bits of the hash at any size.
  using Cell = std::uint32_t;
  static constexpr Cell kDistanceShift = 28;
  static constexpr Cell kFar = 15;
  static constexpr Cell kHashBits = (Cell{1} << kDistanceShift) - 1;

  struct alignas(8) Block {
    Slot live;
    Slot used;
    Slot capacity;
    std::uint32_t generation;

    Entry* entries() noexcept { return reinterpret_cast<Entry*>(this + 1); }
    Cell* table() noexcept { return reinterpret_cast<Cell*>(entries() + capacity); }
    [[nodiscard]] bool hasTable() const noexcept { return capacity > kWalked; }
    [[nodiscard]] Slot tableSize() const noexcept { return capacity * 2; }
    [[nodiscard]] Slot mask() const noexcept { return tableSize() - 1; }
  };
  static_assert(alignof(Entry) <= alignof(Block));

  static std::size_t bytesFor(std::size_t capacity) noexcept {
    return sizeof(Block) + capacity * sizeof(Entry) + (capacity > kWalked ? capacity * 2 * sizeof(Cell) : 0);
  }

  /// An empty block for at least so many entries.
  static Block* allocate(std::size_t capacity) {
    if (capacity > (kHashBits >> 1) + 1) throw std::bad_alloc();
    capacity = std::bit_ceil(capacity);
    auto* block = static_cast<Block*>(::operator new(bytesFor(capacity)));
    ::new (block) Block{0, 0, static_cast<Slot>(capacity), 0};
    if (block->hasTable()) std::memset(static_cast<void*>(block->table()), 0, block->tableSize() * sizeof(Cell));
    return block;
  }

  static void destroy(Block* block) noexcept {
    if (block == nullptr) return;
    std::destroy_n(block->entries(), block->used);
    ::operator delete(block);
  }

  static std::uint32_t hash32(std::size_t hash) noexcept { return static_cast<std::uint32_t>(hash); }
  /// What a search of the block for this key needs: a block without a table is walked, and no hash is made.
  [[nodiscard]] std::uint32_t hashFor(const Key& key) const noexcept {
    return mBlock->hasTable() ? hash32(Policy::hash(key)) : 0;
  }

  /// The slot of the entry with this key, or `kNoSlot`, in a block that is there. Where that has a table, `place` is
  /// where the search ended: at the entry's cell, or at the free one that it would take.
  [[nodiscard]] Slot search(const Key& key, std::uint32_t hash, Slot& place) const noexcept {
    const Entry* const entries = mBlock->entries();
    if (!mBlock->hasTable()) {
      for (Slot slot = 0; slot < mBlock->used; ++slot) {
        if (!Policy::isHole(entries[slot]) && Policy::matches(entries[slot], key)) return slot;
      }
      return kNoSlot;
    }
    const Cell* const table = mBlock->table();
    const Slot mask = mBlock->mask();
    const Cell compared = kHashBits & ~mask;
    for (place = hash & mask; table[place] != 0; place = (place + 1) & mask) {
      if (((table[place] ^ hash) & compared) != 0) continue;
      const Slot slot = slotIn(table[place]);
      if (Policy::matches(entries[slot], key)) return slot;
    }
    return kNoSlot;
  }
  [[nodiscard]] Slot slotIn(Cell cell) const noexcept { return (cell & mBlock->mask()) - 1; }

  /// Where an entry that is not there would be entered; means nothing without a table.
  [[nodiscard]] Slot freePlaceFor(std::uint32_t hash) const noexcept {
    if (!mBlock->hasTable()) return 0;
    const Cell* const table = mBlock->table();
    const Slot mask = mBlock->mask();
    Slot place = hash & mask;
    while (table[place] != 0) place = (place + 1) & mask;
    return place;
  }

  /// Adds an entry for which there is room, with its hash and the free place in the table.
  Entry* append(Entry&& entry, std::uint32_t hash, Slot place) noexcept {
    const Slot slot = mBlock->used++;
    Entry* added = ::new (static_cast<void*>(mBlock->entries() + slot)) Entry(std::move(entry));
    ++mBlock->live;
    if (mBlock->hasTable()) enterInTable(slot, hash, place);
    return added;
  }
  void enterInTable(Slot slot, std::uint32_t hash, Slot place) noexcept {
    const Slot mask = mBlock->mask();
    mBlock->table()[place] = (hash & kHashBits & ~mask) | (slot + 1) | distanceBits((place - hash) & mask);
  }
  static Cell distanceBits(Slot distance) noexcept { return std::min(distance, kFar) << kDistanceShift; }

  /// How many places the cell stands behind its home. What the cell itself tells ends at `kFar`.
  [[nodiscard]] Slot distanceFromHome(Slot place) const noexcept {
    const Slot distance = mBlock->table()[place] >> kDistanceShift;
    if (distance < kFar) return distance;
    return (place - hash32(Policy::hashOf(mBlock->entries()[slotIn(mBlock->table()[place])]))) & mBlock->mask();
  }

  /// Frees a cell. A search begins at the home of what it wants and gives up at the first free cell, so between a cell
  /// and its home all cells must be taken. Freeing one in the middle of a run would break that for those behind it.
  /// Therefore the gap wanders: each cell further on in the run that may fill it (its home is no nearer than the gap)
  /// does so and leaves the gap where it stood. At the end of the run nothing is left behind the gap that could miss
  /// it, and it becomes the free cell. Cells that may not fill it have their home behind the gap and miss nothing.
  void freeCell(Slot gap) noexcept {
    Cell* table = mBlock->table();
    const Slot mask = mBlock->mask();
    for (Slot next = (gap + 1) & mask; table[next] != 0; next = (next + 1) & mask) {
      const Slot distance = distanceFromHome(next);
      const Slot nearer = (next - gap) & mask;
      if (distance < nearer) continue;
      table[gap] = (table[next] & kHashBits) | distanceBits(distance - nearer);
      gap = next;
    }
    table[gap] = 0;
  }

  /// Slots at the end are used again, so that walks over a set that has shrunk stay short.
  void giveBackHolesAtEnd() noexcept {
    while (mBlock->used != 0 && Policy::isHole(mBlock->entries()[mBlock->used - 1])) {
      std::destroy_at(&mBlock->entries()[--mBlock->used]);
    }
  }

  /// The block is full: closes the holes where they are a quarter of it or more, else doubles it.
  void makeRoom() {
    if (mBlock == nullptr) {
      mBlock = allocate(1);
    } else {
      rebuild(mBlock->live <= mBlock->capacity / 4 * 3 ? mBlock->capacity : mBlock->capacity * 2);
    }
  }

  void rebuild(std::size_t capacity) {
    Block* old = std::exchange(mBlock, allocate(capacity));
    if (old == nullptr) return;
    mBlock->generation = old->generation + (old->live != old->used ? 1 : 0);
    Entry* const entries = mBlock->entries();
    for (Slot slot = 0; slot < old->used; ++slot) {
      if (Policy::isHole(old->entries()[slot])) continue;
      std::memcpy(static_cast<void*>(entries + mBlock->live), static_cast<const void*>(old->entries() + slot),
                  sizeof(Entry));
      ++mBlock->live;
    }
    mBlock->used = mBlock->live;
    for (Slot slot = 0; mBlock->hasTable() && slot < mBlock->used; ++slot) {
      const std::uint32_t hash = hash32(Policy::hashOf(entries[slot]));
      enterInTable(slot, hash, freePlaceFor(hash));
    }
    ::operator delete(old);
  }

  Block* mBlock = nullptr;
};

/// Addresses are spread by one multiplication: they differ in few bits, and nobody chooses them. Large objects that
/// stand close together in memory, as those made one after the other mostly do, get places close together, so that a
/// walk over a million of them finds their places in the cache; small ones would crowd there.
template <class T>
std::size_t hashOfAddress(const void* address) noexcept {
  constexpr std::uint64_t kSpread = 0x9e3779b97f4a7c15;
  constexpr std::size_t kLarge = 96;
  const auto number = reinterpret_cast<std::uintptr_t>(address);
  if constexpr (sizeof(T) < kLarge) return static_cast<std::size_t>(number * kSpread >> 32);
  // 2 KiB of memory share 32 cells, which are two lines of a cache.
  return static_cast<std::size_t>(((number >> 11) * kSpread >> 32 & ~std::uint64_t{31}) | (number >> 6 & 31));
}

/// Entries that are plain pointers, compared by address.
template <class T>
struct PointerPolicy {
  using Key = const void*;
  static constexpr bool kMovesByBits = kMoveByBits<T*>;
  static const void* keyOf(T* entry) noexcept { return entry; }
  static bool isHole(T* entry) noexcept { return entry == nullptr; }
  static T* hole() noexcept { return nullptr; }
  static std::size_t hash(const void* key) noexcept { return hashOfAddress<T>(key); }
  static std::size_t hashOf(T* entry) noexcept { return hash(entry); }
  static bool matches(T* entry, const void* key) noexcept { return entry == key; }
};

/// Entries that are counted references, compared by address.
template <class T>
struct RefPolicy {
  using Key = const void*;
  static constexpr bool kMovesByBits = kMoveByBits<Ref<T>>;
  static const void* keyOf(const Ref<T>& entry) noexcept { return entry.get(); }
  static bool isHole(const Ref<T>& entry) noexcept { return entry == nullptr; }
  static Ref<T> hole() noexcept { return {}; }
  static std::size_t hash(const void* key) noexcept { return hashOfAddress<T>(key); }
  static std::size_t hashOf(const Ref<T>& entry) noexcept { return hash(entry.get()); }
  static bool matches(const Ref<T>& entry, const void* key) noexcept { return entry.get() == key; }
};

}  // namespace zt
