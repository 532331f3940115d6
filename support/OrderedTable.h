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
#include <utility>

namespace zt {

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
/// like. `hashOf(entry)` must not be dearer than a look at the entry: growing asks it of every entry.
template <class Entry, class Policy>
class OrderedTable {
 public:
  using Key = typename Policy::Key;
  using Slot = std::uint32_t;
  static constexpr Slot kNoSlot = std::numeric_limits<Slot>::max();

  OrderedTable() = default;
  OrderedTable(const OrderedTable& other) {
    if (other.count() == 0) return;
    mBlock = allocate(other.mBlock->live);
    for (const Entry& entry : other) append(Entry(entry));
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
    if (mBlock == nullptr) return kNoSlot;
    return mBlock->hasTable() ? slotAt(placeOf(key, hash32(Policy::hash(key)))) : walkFor(key);
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
    if (mBlock != nullptr) {
      const Key& key = Policy::keyOf(entry);
      const Slot slot = mBlock->hasTable() ? slotAt(placeOf(key, hash)) : walkFor(key);
      if (slot != kNoSlot) return {&mBlock->entries()[slot], false};
    }
    if (mBlock == nullptr || mBlock->used == mBlock->capacity) makeRoom();
    return {append(std::move(entry), hash), true};
  }

  /// Takes the entry out and hands it over, so that what its destruction runs finds the table whole.
  /// A hole if there is none.
  Entry take(const Key& key) noexcept {
    if (mBlock == nullptr) return Policy::hole();
    const Slot place = mBlock->hasTable() ? placeOf(key, hash32(Policy::hash(key))) : kNoSlot;
    const Slot slot = mBlock->hasTable() ? slotAt(place) : walkFor(key);
    if (slot == kNoSlot) return Policy::hole();
    if (place != kNoSlot) removeFromTable(place);
    Entry taken = std::exchange(mBlock->entries()[slot], Policy::hole());
    --mBlock->live;
    while (mBlock->used != 0 && Policy::isHole(mBlock->entries()[mBlock->used - 1])) {
      std::destroy_at(&mBlock->entries()[--mBlock->used]);
    }
    if (mBlock->live == 0) destroy(std::exchange(mBlock, nullptr));
    return taken;
  }
  bool remove(const Key& key) noexcept { return !Policy::isHole(take(key)); }

  void removeAll() noexcept { destroy(std::exchange(mBlock, nullptr)); }

  /// Room for so many entries at once.
  void reserve(std::size_t count) {
    if (mBlock == nullptr ? count > 0 : count > mBlock->capacity) rebuild(std::bit_ceil(static_cast<Slot>(count)));
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
  /// for their hash. Those between hold the bits of the hash that stand there: with the home, which is the low
  /// bits of the hash, that is all but four of its bits in a table that has grown large.
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

  /// The search in a block without a table.
  [[nodiscard]] Slot walkFor(const Key& key) const noexcept {
    for (Slot slot = 0; slot < mBlock->used; ++slot) {
      const Entry& entry = mBlock->entries()[slot];
      if (!Policy::isHole(entry) && Policy::matches(entry, key)) return slot;
    }
    return kNoSlot;
  }

  /// The place in the table of the cell for the entry with this key; `kNoSlot` without one.
  [[nodiscard]] Slot placeOf(const Key& key, std::uint32_t hash) const noexcept {
    const Cell* table = mBlock->table();
    const Slot mask = mBlock->mask();
    const Cell compared = kHashBits & ~mask;
    for (Slot place = hash & mask; table[place] != 0; place = (place + 1) & mask) {
      if (((table[place] ^ hash) & compared) != 0) continue;
      if (Policy::matches(mBlock->entries()[slotAt(place)], key)) return place;
    }
    return kNoSlot;
  }
  [[nodiscard]] Slot slotAt(Slot place) const noexcept {
    return place != kNoSlot ? (mBlock->table()[place] & mBlock->mask()) - 1 : kNoSlot;
  }

  Entry* append(Entry entry) noexcept {
    const std::uint32_t hash = mBlock->hasTable() ? hash32(Policy::hashOf(entry)) : 0;
    return append(std::move(entry), hash);
  }
  Entry* append(Entry entry, std::uint32_t hash) noexcept {
    const Slot slot = mBlock->used++;
    Entry* place = ::new (static_cast<void*>(mBlock->entries() + slot)) Entry(std::move(entry));
    ++mBlock->live;
    if (mBlock->hasTable()) enterInTable(slot, hash);
    return place;
  }

  void enterInTable(Slot slot, std::uint32_t hash) noexcept {
    Cell* table = mBlock->table();
    const Slot mask = mBlock->mask();
    Slot distance = 0;
    while (table[(hash + distance) & mask] != 0) ++distance;
    table[(hash + distance) & mask] = (hash & kHashBits & ~mask) | (slot + 1) | distanceBits(distance);
  }

  static Cell distanceBits(Slot distance) noexcept { return std::min(distance, kFar) << kDistanceShift; }

  /// How far the cell at this place stands from its home.
  [[nodiscard]] Slot distanceAt(Slot place) const noexcept {
    const Slot distance = mBlock->table()[place] >> kDistanceShift;
    if (distance < kFar) return distance;
    return (place - hash32(Policy::hashOf(mBlock->entries()[slotAt(place)]))) & mBlock->mask();
  }

  /// Linear probing without tombstones: cells behind the gap that may stand nearer to home move up.
  void removeFromTable(Slot gap) noexcept {
    Cell* table = mBlock->table();
    const Slot mask = mBlock->mask();
    for (Slot next = (gap + 1) & mask; table[next] != 0; next = (next + 1) & mask) {
      const Slot distance = distanceAt(next);
      const Slot step = (next - gap) & mask;
      if (distance < step) continue;
      table[gap] = (table[next] & kHashBits) | distanceBits(distance - step);
      gap = next;
    }
    table[gap] = 0;
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
    for (Slot slot = 0; slot < old->used; ++slot) {
      Entry& entry = old->entries()[slot];
      if (!Policy::isHole(entry)) append(std::move(entry));
    }
    destroy(old);
  }

  Block* mBlock = nullptr;
};

/// Addresses are spread by one multiplication: they differ in few bits, and nobody chooses them.
inline std::size_t hashOfAddress(const void* address) noexcept {
  return static_cast<std::size_t>(reinterpret_cast<std::uintptr_t>(address) * std::uint64_t{0x9e3779b97f4a7c15} >> 32);
}

/// Entries that are plain pointers, compared by address.
template <class T>
struct PointerPolicy {
  using Key = const void*;
  static const void* keyOf(T* entry) noexcept { return entry; }
  static bool isHole(T* entry) noexcept { return entry == nullptr; }
  static T* hole() noexcept { return nullptr; }
  static std::size_t hash(const void* key) noexcept { return hashOfAddress(key); }
  static std::size_t hashOf(T* entry) noexcept { return hash(entry); }
  static bool matches(T* entry, const void* key) noexcept { return entry == key; }
};

/// Entries that are counted references, compared by address.
template <class T>
struct RefPolicy {
  using Key = const void*;
  static const void* keyOf(const Ref<T>& entry) noexcept { return entry.get(); }
  static bool isHole(const Ref<T>& entry) noexcept { return entry == nullptr; }
  static Ref<T> hole() noexcept { return {}; }
  static std::size_t hash(const void* key) noexcept { return hashOfAddress(key); }
  static std::size_t hashOf(const Ref<T>& entry) noexcept { return hash(entry.get()); }
  static bool matches(const Ref<T>& entry, const void* key) noexcept { return entry.get() == key; }
};

}  // namespace zt
