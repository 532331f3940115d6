// SPDX-License-Identifier: MIT
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/references/ZTSDepartedStyles.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <mutex>
#include <utility>

namespace zt {

namespace {

/// In which list each listed style is. Stylesheets of all threads share it.
struct Table {
  std::mutex mutex;
  boost::unordered_flat_map<const ZTSStyle*, ZTSDepartedStyles*> lists;
};

Table& table() {
  static auto* all = new Table;  // outlives every static
  return *all;
}

}  // namespace

bool ZTSDepartedStyles::concerns(const ZTSStyle& style) {
  return asAggregateStyle(const_cast<ZTSStyle*>(&style)) != nullptr || holdsStylesAsValues(style);
}

void ZTSDepartedStyles::add(ZTSStyle& style) {
  const std::lock_guard lock(table().mutex);
  mStyles.makeRoom();
  const auto [entry, isNew] = table().lists.try_emplace(&style, this);
  if (!isNew) std::exchange(entry->second, this)->mStyles.removeObject(&style);
  mStyles.addObject(&style);
  style.p_setMark(ZTSStyleMark::isDeparted, true, {});
}

void ZTSDepartedStyles::forget(ZTSStyle& style) noexcept {
  if (!style.p_hasMark(ZTSStyleMark::isDeparted)) return;
  const std::lock_guard lock(table().mutex);
  const auto found = table().lists.find(&style);
  found->second->mStyles.removeObject(&style);
  table().lists.erase(found);
  style.p_setMark(ZTSStyleMark::isDeparted, false, {});
}

bool ZTSDepartedStyles::check() const {
  const std::lock_guard lock(table().mutex);
  return std::all_of(mStyles.begin(), mStyles.end(), [this](const ZTSStyle* style) {
    const auto found = table().lists.find(style);
    return style->p_hasMark(ZTSStyleMark::isDeparted) && style->stylesheet() == nullptr &&
           found != table().lists.end() && found->second == this;
  });
}

bool ZTSDepartedStyles::isEmpty() const noexcept {
  const std::lock_guard lock(table().mutex);
  return mStyles.isEmpty();
}

std::vector<Ref<ZTSStyle>> ZTSDepartedStyles::retainedStyles() const {
  const std::lock_guard lock(table().mutex);
  return mStyles.retainedSnapshot();
}

void ZTSDepartedStyles::forgetAll() noexcept {
  const std::lock_guard lock(table().mutex);
  for (ZTSStyle* style : mStyles) {
    table().lists.erase(style);
    style->p_setMark(ZTSStyleMark::isDeparted, false, {});
  }
  mStyles.removeAllObjects();
}

}  // namespace zt
