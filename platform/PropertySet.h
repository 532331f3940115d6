// SPDX-License-Identifier: MIT
#pragma once

#include <platform/PropertyKey.h>

#include <boost/container/small_vector.hpp>

#include <bit>
#include <initializer_list>
#include <vector>

namespace zt {

/// A counted set of property keys: a registry, or the keys of a change. A bit set over the keys'
/// ordinals, so that uniting, filtering and comparing cost a few operations however many keys there
/// are. Enumerates in the order in which the keys were first made.
///
/// `Ref<const PropertySet>` is an immutable set that may be shared, `Ref<PropertySet>` one that its
/// holder may change.
class ZT_EXPORT PropertySet final : public Counted<PropertySet> {
 public:
  static Ref<PropertySet> make() { return Ref<PropertySet>(new PropertySet); }
  static Ref<PropertySet> with(std::initializer_list<PropertyKey> keys);
  static Ref<PropertySet> with(const std::vector<PropertyKey>& keys);

  /// A set of its own with the same members.
  [[nodiscard]] Ref<PropertySet> copy() const;

  [[nodiscard]] bool isEmpty() const noexcept {
    for (const std::uint64_t word : mWords) {
      if (word != 0) return false;
    }
    return true;
  }
  [[nodiscard]] std::size_t count() const noexcept;

  [[nodiscard]] bool contains(PropertyKey key) const noexcept {
    if (!key) return false;
    const std::uint32_t word = key.ordinal() / 64;
    return word < mWords.size() && (mWords[word] >> (key.ordinal() % 64) & 1u) != 0;
  }
  /// The keys' bits, as in a map's `keyMask`: no member's bit is missing.
  [[nodiscard]] std::uint64_t keyMask() const noexcept {
    std::uint64_t mask = 0;
    for (const std::uint64_t word : mWords) mask |= word;
    return mask;
  }
  [[nodiscard]] bool isSubsetOf(const PropertySet& other) const noexcept;
  [[nodiscard]] bool isEqual(const PropertySet& other) const noexcept;

  /// Adding no key does nothing.
  void add(PropertyKey key);
  void remove(PropertyKey key) noexcept;
  void unite(const PropertySet& other);
  void intersect(const PropertySet& other) noexcept;
  void subtract(const PropertySet& other) noexcept;

  /// Calls with every key. The set must not change meanwhile.
  template <class Visit>
  void forEach(Visit visit) const {
    for (std::size_t word = 0; word < mWords.size(); ++word) {
      for (std::uint64_t bits = mWords[word]; bits != 0; bits &= bits - 1) {
        visit(PropertyKey::withOrdinal(static_cast<std::uint32_t>(word * 64) +
                                       static_cast<std::uint32_t>(std::countr_zero(bits))));
      }
    }
  }
  /// The keys as a snapshot.
  [[nodiscard]] std::vector<PropertyKey> keys() const;

 private:
  PropertySet() = default;

  boost::container::small_vector<std::uint64_t, 4> mWords;
};

/// What `%@` prints for a set: `{(a, b)}`.
ZT_EXPORT std::string describe(const PropertySet& set);

}  // namespace zt
