// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/PropertySet.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace zt {

namespace {

// Records are found by ordinal without a lock: a fixed directory of chunks, each filled once.
constexpr std::uint32_t kChunk = 1024;
constexpr std::uint32_t kChunks = 4096;

struct Keys {
  std::mutex lock;
  std::unordered_map<std::string_view, const PropertyKey::Record*> byText;
  std::array<std::atomic<PropertyKey::Record*>, kChunks> chunks{};
  std::uint32_t count = 0;
};

Keys& keys() {
  static Keys* all = new Keys;  // never destroyed: keys are immortal
  return *all;
}

}  // namespace

PropertyKey::PropertyKey(std::string_view text) {
  Keys& all = keys();
  std::lock_guard guard(all.lock);
  if (auto found = all.byText.find(text); found != all.byText.end()) {
    mRecord = found->second;
    return;
  }
  const std::uint32_t ordinal = all.count;
  if (ordinal >= kChunk * kChunks) throw NSGenericException("Too many distinct property keys in one process.");
  std::atomic<Record*>& chunk = all.chunks[ordinal / kChunk];
  if (chunk.load(std::memory_order_relaxed) == nullptr) chunk.store(new Record[kChunk], std::memory_order_release);
  Record& record = chunk.load(std::memory_order_relaxed)[ordinal % kChunk];
  record.text = StringRef(text);
  record.bit = std::uint64_t{1} << (ordinal % 64);
  record.ordinal = ordinal;
  all.byText.emplace(record.text.view(), &record);
  ++all.count;
  mRecord = &record;
}

PropertyKey PropertyKey::withOrdinal(std::uint32_t ordinal) noexcept {
  return PropertyKey(keys().chunks[ordinal / kChunk].load(std::memory_order_acquire) + ordinal % kChunk);
}

Ref<PropertySet> PropertySet::with(std::initializer_list<PropertyKey> keys) {
  Ref<PropertySet> set = make();
  for (PropertyKey key : keys) set->add(key);
  return set;
}

Ref<PropertySet> PropertySet::with(const std::vector<PropertyKey>& keys) {
  Ref<PropertySet> set = make();
  for (PropertyKey key : keys) set->add(key);
  return set;
}

Ref<PropertySet> PropertySet::copy() const {
  Ref<PropertySet> set = make();
  set->mWords = mWords;
  return set;
}

std::size_t PropertySet::count() const noexcept {
  std::size_t all = 0;
  for (std::uint64_t word : mWords) all += static_cast<std::size_t>(std::popcount(word));
  return all;
}

bool PropertySet::isSubsetOf(const PropertySet& other) const noexcept {
  for (std::size_t word = 0; word < mWords.size(); ++word) {
    const std::uint64_t allowed = word < other.mWords.size() ? other.mWords[word] : 0;
    if ((mWords[word] & ~allowed) != 0) return false;
  }
  return true;
}

bool PropertySet::isEqual(const PropertySet& other) const noexcept {
  return isSubsetOf(other) && other.isSubsetOf(*this);
}

void PropertySet::add(PropertyKey key) {
  if (!key) return;
  const std::uint32_t word = key.ordinal() / 64;
  if (word >= mWords.size()) mWords.resize(word + 1, 0);
  mWords[word] |= std::uint64_t{1} << (key.ordinal() % 64);
}

void PropertySet::remove(PropertyKey key) noexcept {
  if (!key) return;
  const std::uint32_t word = key.ordinal() / 64;
  if (word < mWords.size()) mWords[word] &= ~(std::uint64_t{1} << (key.ordinal() % 64));
}

void PropertySet::unite(const PropertySet& other) {
  if (mWords.size() < other.mWords.size()) mWords.resize(other.mWords.size(), 0);
  for (std::size_t word = 0; word < other.mWords.size(); ++word) mWords[word] |= other.mWords[word];
}

void PropertySet::intersect(const PropertySet& other) noexcept {
  for (std::size_t word = 0; word < mWords.size(); ++word) {
    mWords[word] &= word < other.mWords.size() ? other.mWords[word] : 0;
  }
}

void PropertySet::subtract(const PropertySet& other) noexcept {
  const std::size_t common = std::min(mWords.size(), other.mWords.size());
  for (std::size_t word = 0; word < common; ++word) mWords[word] &= ~other.mWords[word];
}

std::vector<PropertyKey> PropertySet::keys() const {
  std::vector<PropertyKey> all;
  all.reserve(count());
  forEach([&](PropertyKey key) { all.push_back(key); });
  return all;
}

std::string describe(const PropertySet& set) {
  std::string text = "{(";
  set.forEach([&](PropertyKey key) {
    if (text.size() > 2) text += ", ";
    text += key.view();
  });
  return text + ")}";
}

}  // namespace zt
