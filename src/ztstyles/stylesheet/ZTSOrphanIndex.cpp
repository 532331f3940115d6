// SPDX-License-Identifier: MIT
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

namespace zt {

void ZTSOrphanIndex::file(ZTSStyle& style) noexcept {
  if (!style.isPlain(ZTSStyleClass::plainResolving)) return fileUntried(style);
  unfile(style);
  try {
    mMissing[style.parentIdentifier()].addObject(&style);
    style.p_setMark(ZTSStyleMark::isFiledAsOrphan, true, {});
  } catch (...) {
    mMissesSome = true;  // it found none just now
  }
}

void ZTSOrphanIndex::fileUntried(ZTSStyle& style) noexcept {
  if (style.p_hasMark(ZTSStyleMark::isUntried)) return;
  unfile(style);
  try {
    mUntried.addObject(&style);
    style.p_setMark(ZTSStyleMark::isUntried, true, {});
  } catch (...) {
    mMissesSome = true;
  }
}

void ZTSOrphanIndex::unfile(ZTSStyle& style) noexcept {
  if (style.p_hasMark(ZTSStyleMark::isUntried)) {
    mUntried.removeObject(&style);
    style.p_setMark(ZTSStyleMark::isUntried, false, {});
  }
  if (style.p_hasMark(ZTSStyleMark::isFiledAsOrphan)) {
    auto found = mMissing.find(style.parentIdentifier());
    if (found != mMissing.end()) {
      found->second.removeObject(&style);
      if (found->second.isEmpty()) mMissing.erase(found);
    }
    style.p_setMark(ZTSStyleMark::isFiledAsOrphan, false, {});
  }
}

std::vector<Ref<ZTSStyle>> ZTSOrphanIndex::candidatesFor(const StringRef& identifier) const {
  std::vector<Ref<ZTSStyle>> candidates = mUntried.retainedSnapshot();
  if (auto found = mMissing.find(identifier); found != mMissing.end()) {
    for (Ref<ZTSStyle>& style : found->second.retainedSnapshot()) candidates.push_back(std::move(style));
  }
  return candidates;
}

bool ZTSOrphanIndex::check(const ZTSStyleSet& held) const {
  if (mMissesSome) return true;
  std::size_t filed = mUntried.count();
  for (const auto& [identifier, styles] : mMissing) {
    filed += styles.count();
    for (const ZTSStyle* style : styles) {
      if (style->parentIdentifier() != identifier || style->p_hasMark(ZTSStyleMark::isUntried)) return false;
    }
  }
  std::size_t expected = 0;
  for (const ZTSStyle* style : held) {
    const bool isOrphan = style->parent() == nullptr && style->parentIdentifier().isPresent();
    if (isOrphan) ++expected;
    if (isOrphan != style->p_isListedAsOrphan()) return false;
  }
  return filed == expected;
}

}  // namespace zt
