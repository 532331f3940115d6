// SPDX-License-Identifier: MIT
#include <ztstyles/ZTSStyleDictionary.h>

namespace zt {

Ref<ZTSStyle> ZTSStyleDictionary::set(StringRef identifier, Ref<ZTSStyle> style) {
  const std::size_t hash = identifier.hash();
  auto [entry, isNew] = mTable.insert(Entry{std::move(identifier), style, hash});
  if (isNew) return {};
  entry->style.swap(style);
  return style;
}

ZTSStyleDictionary::Table::Slot ZTSStyleDictionary::slotOf(const ZTSStyle& style) const noexcept {
  if (!style.isIdentified()) return Table::kNoSlot;
  const Table::Slot slot = mTable.slotOf(style.identifier());
  return slot != Table::kNoSlot && mTable.atSlot(slot)->style.get() == &style ? slot : Table::kNoSlot;
}

}  // namespace zt
