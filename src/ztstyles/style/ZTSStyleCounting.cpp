// SPDX-License-Identifier: MIT

// Usage and orphan counts. Only the steps between 0 and 1 reach the parent, so that the chain above is walked
// in a loop as long as the classes leave the counting alone.

#include <platform/NSException.h>
#include <platform/ZTFirstFailure.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStyle.h>

#include <limits>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";
constexpr std::uint32_t kLargestCount = std::numeric_limits<std::uint32_t>::max();

}  // namespace

void ZTSStyle::incrementUsageCount() {
  for (Ref<ZTSStyle> style(this);;) {
    if (style->mUsageCount == kLargestCount) {
      ZT_REPORT("incrementUsageCount", style.get(), kSourceFile,
                "Attempt to increment the usage count of style <%p> beyond its range.", address(style.get()));
      return;
    }
    style->p_setUsageCount(style->mUsageCount + 1);
    if (style->mUsageCount != 1) return;
    ZTSStyle* const parent = style->mParent.get();
    if (parent == nullptr) return;
    if (!parent->isPlain(ZTSStyleClass::plainCounting)) {
      NestingGuard guard("incrementUsageCount", Nesting::counting);
      return style->passUseTo(*parent);
    }
    style = parent;
  }
}

void ZTSStyle::decrementUsageCount() {
  for (Ref<ZTSStyle> style(this);;) {
    if (style->mUsageCount == 0) {
      ZT_REPORT("decrementUsageCount", style.get(), kSourceFile,
                "Attempt to decrement the usage count of style <%p> whose usage count is 0.", address(style.get()));
      return;
    }
    style->p_setUsageCount(style->mUsageCount - 1);
    if (style->mUsageCount != 0) return;
    ZTSStyle* const parent = style->mParent.get();
    if (parent == nullptr) return;
    if (!parent->isPlain(ZTSStyleClass::plainCounting)) {
      NestingGuard guard("decrementUsageCount", Nesting::counting);
      return style->takeUseFrom(*parent);
    }
    style = parent;
  }
}

// An aggregate that is passing its own count on ignores requests, its children's too, and an override may throw before
// it counts. What the parent did not take must not be taken back from it.
void ZTSStyle::passUseTo(ZTSStyle& parent) {
  const Ref<ZTSStyle> self(this);
  const Ref<ZTSStyle> held(&parent);
  const bool isIgnoring = parent.isAdjustingUsageCount();
  const std::uint32_t before = parent.mUsageCount;
  ZTFirstFailure failure;
  const bool wentThrough = failure.attempt([&] { parent.incrementUsageCount(); });
  if ((isIgnoring || !wentThrough) && parent.mUsageCount == before) p_setMark(ZTSStyleMark::useWasRefused, true, {});
  failure.rethrow();
}

void ZTSStyle::takeUseFrom(ZTSStyle& parent) {
  if (!forgetRefusedUse()) Ref<ZTSStyle>(&parent)->decrementUsageCount();
}

bool ZTSStyle::forgetRefusedUse() noexcept {
  const bool wasRefused = p_hasMark(ZTSStyleMark::useWasRefused);
  p_setMark(ZTSStyleMark::useWasRefused, false, {});
  return wasRefused;
}

void ZTSStyle::incrementOrphanCount() {
  for (Ref<ZTSStyle> style(this);;) {
    if (style->mOrphanCount == kLargestOrphanCount) {
      ZT_REPORT("incrementOrphanCount", style.get(), kSourceFile,
                "Attempt to increment the orphan count of style <%p> beyond its range.", address(style.get()));
      return;
    }
    if (++style->mOrphanCount != 1) return;
    style = style->mParent;
    if (!style) return;
    if (!style->isPlain(ZTSStyleClass::plainCounting)) {
      NestingGuard guard("incrementOrphanCount", Nesting::counting);
      return style->incrementOrphanCount();
    }
  }
}

void ZTSStyle::decrementOrphanCount() {
  for (Ref<ZTSStyle> style(this);;) {
    if (style->mOrphanCount == 0) {
      throw NSInternalInconsistencyException(
          "Attempt to decrement the orphan count of a style whose orphan count is 0.");
    }
    if (--style->mOrphanCount != 0) return;
    style = style->mParent;
    if (!style) return;
    if (!style->isPlain(ZTSStyleClass::plainCounting)) {
      NestingGuard guard("decrementOrphanCount", Nesting::counting);
      return style->decrementOrphanCount();
    }
  }
}

}  // namespace zt
