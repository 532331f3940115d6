// SPDX-License-Identifier: MIT
#pragma once

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <string>
#include <vector>

/// What the benchmarks of the style model share: plain and overriding style classes with a registry of 160 keys,
/// a host with an undo manager, and families of styles.
namespace zt::bench {

inline const std::vector<PropertyKey>& keys() {
  static const std::vector<PropertyKey> all = [] {
    std::vector<PropertyKey> made;
    for (int key = 0; key < 160; ++key) made.emplace_back("bench." + std::to_string(key));
    return made;
  }();
  return all;
}

/// Leaves everything alone.
struct PlainStyle : ZTSStyleOf<PlainStyle> {
  static constexpr const char* kClassName = "PlainStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with(keys()); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
};

struct Host : ZTSStylesheetHost {
  NSUndoManager* undoManager() const override { return undo.get(); }
  NSDocument* document() const override { return nullptr; }
  bool willRemoveUnusedStyle(ZTSStyle&) override { return true; }
  Ref<NSUndoManager> undo = make<NSUndoManager>();
};

/// So many entries from the given key on; the values are shared by all maps.
inline Ref<PropertyMap> mapOf(std::size_t first, std::size_t count) {
  static const std::vector<Ref<NSNumber>> values = [] {
    std::vector<Ref<NSNumber>> made;
    for (int value = 0; value < 64; ++value) made.push_back(NSNumber::withInteger(value));
    return made;
  }();
  Ref<PropertyMap> map = PropertyMap::make(count);
  for (std::size_t key = first; key < first + count; ++key) map->set(keys()[key], values[key % values.size()]);
  return map;
}

/// A chain of `depth` ancestors above the answered style; each level sets three keys of its own, the root also the
/// first of all keys. Keys 1 to 3 are the nearest level's.
template <class T = PlainStyle>
Ref<ZTSStyle> chain(ZTSStylesheet& sheet, std::size_t depth) {
  StringRef above;
  Ref<ZTSStyle> last;
  for (std::size_t level = 0; level <= depth; ++level) {
    const Ref<PropertyMap> map = mapOf(level == depth ? 1 : 4 + level % 40 * 3, 3);
    if (level == 0) map->set(keys()[0], NSNumber::withInteger(0));
    StringRef identifier("chain." + std::to_string(depth) + "." + std::to_string(level));
    last = make<T>({.identifier = identifier, .parentIdentifier = above, .overridePropertyMap = map.get()});
    sheet.addStyle(last);
    above = identifier;
  }
  return last;
}

/// The yardstick: one lookup of an interned key in the fastest hash map at hand.
inline void HashLookup(benchmark::State& state) {
  boost::unordered_flat_map<const void*, Ref<NSObject>> map;
  for (PropertyKey key : keys()) map.emplace(key.string().object(), NSNumber::withInteger(1));
  const void* key = keys()[0].string().object();
  for (auto each : state) {
    Ref<NSObject> value = map.find(key)->second;
    benchmark::DoNotOptimize(value);
  }
}

inline std::size_t heapInUse() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace zt::bench
