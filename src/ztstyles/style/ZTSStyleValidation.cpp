#include <platform/NSObject.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTUDynamicCast.h>
#include <ztstyles/ZTSStylesheet.h>

// Validation reports and goes on; whoever takes the reports may do anything meanwhile. So children are held, and an
// observer, which nobody holds, is looked for again before it is asked.

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

/// The style that the style's parent identifier stands for, found the way the style itself would find it.
const ZTSStyle* resolvedParent(const ZTSStyle& style) {
  const ZTSStylesheet* reach = style.p_reachStylesheet();
  return reach != nullptr ? reach->cascadedStyleWithIdentifier(style.parentIdentifier()) : nullptr;
}

}  // namespace

void ZTSStyle::validate() const {
  const Ref<const ZTSStyle> self = retainIfAlive(this);

  if (const Ref<ZTSStyle> parent = mParent) {
    if (parent == this) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style is its own parent!", shortDescription());
    }
    if (!parent->isIdentified()) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style has anonymous parent!", shortDescription());
    }
    if (!equalTexts(parent->identifier(), mParentIdentifier)) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style's parent identifier does not match identifier of parent!",
                shortDescription());
    }
    if (!parent->children().containsObject(this)) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style is not the child of it's parent!", shortDescription());
    }
    if (mStylesheet == nullptr) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Parented style is not contained in a stylesheet!",
                shortDescription());
    }
    if (resolvedParent(*this) != parent) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style's parent is not reachable from style's stylesheet!",
                shortDescription());
    }
  }

  if (!mChildren.isEmpty()) {
    if (!isIdentified()) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Anonymous style has children!", shortDescription());
    }
    if (mStylesheet == nullptr) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Parent style is not contained in a stylesheet!",
                shortDescription());
    }
  }

  for (const Ref<ZTSStyle>& child : mChildren.retainedSnapshot()) {
    if (child == this) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style is its own child!", shortDescription());
    }
    if (!equalTexts(mIdentifier, child->parentIdentifier())) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style's identifier does not match parent identifier of child!",
                shortDescription());
    }
    if (child->parent() != this) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style is not the parent of it's child!", shortDescription());
    }
    if (child->stylesheet() == nullptr) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Child style is not contained in a stylesheet!",
                shortDescription());
    }
    if (resolvedParent(*child) != this) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style not reachable from child's stylesheet!",
                shortDescription());
    }
  }

  for (ZTSStyleObserver* observer : mObservers.allObjects()) {
    if (!mObservers.containsObject(observer)) continue;
    if (dynamic_cast<NSObject*>(observer) == nullptr) {
      ZT_REPORT("validate", this, kSourceFile, "%@ -- Style's observer %#x is not an NSObject!", shortDescription(),
                address(dynamic_cast<const void*>(observer)));
    }
    if (observer == static_cast<const ZTSStyleObserver*>(this)) {
      ZT_REPORT("validate", this, kSourceFile, "-- Style is observing itself!");
    }
  }

  appSpecificValidate();
}

void ZTSStyle::appSpecificValidate() const {}

}  // namespace zt
