// SPDX-License-Identifier: MIT
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

namespace zt {

void ZTSOrphanIndex::file(ZTSStyle& style) noexcept {
  if (!style.isPlain(ZTSStyleClass::plainResolving)) return fileUntried(style);
  unfile(style);
  try {
    mMissing[style.mParentIdentifier].addObject(&style);
    style.setState(ZTSStyle::kFiledAsOrphan, true);
  } catch (...) {
    mMissesSome = true;  // it found none just now
  }
}

void ZTSOrphanIndex::fileUntried(ZTSStyle& style) noexcept {
  if (style.hasState(ZTSStyle::kUntried)) return;
  unfile(style);
  try {
    mUntried.addObject(&style);
    style.setState(ZTSStyle::kUntried, true);
  } catch (...) {
    mMissesSome = true;
  }
}

void ZTSOrphanIndex::unfile(ZTSStyle& style) noexcept {
  if (style.hasState(ZTSStyle::kUntried)) {
    mUntried.removeObject(&style);
    style.setState(ZTSStyle::kUntried, false);
  }
  if (style.hasState(ZTSStyle::kFiledAsOrphan)) {
    auto found = mMissing.find(style.mParentIdentifier);
    if (found != mMissing.end()) {
      found->second.removeObject(&style);
      if (found->second.isEmpty()) mMissing.erase(found);
    }
    style.setState(ZTSStyle::kFiledAsOrphan, false);
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
      if (style->parentIdentifier() != identifier || style->hasState(ZTSStyle::kUntried)) return false;
    }
  }
  std::size_t expected = 0;
  for (const ZTSStyle* style : held) {
    const bool isOrphan = style->parent() == nullptr && style->parentIdentifier().isPresent();
    if (isOrphan) ++expected;
    if (isOrphan != style->hasState(ZTSStyle::kUntried | ZTSStyle::kFiledAsOrphan)) return false;
  }
  return filed == expected;
}

}  // namespace zt
