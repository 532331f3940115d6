// SPDX-License-Identifier: MIT
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
  const auto broken = [this](FormatString<std::string> text) {
    ZT_REPORT("validate", this, kSourceFile, text, shortDescription());
  };

  if (const Ref<ZTSStyle> parent = mParent) {
    if (parent == this) broken("%@ -- Style is its own parent!");
    if (!parent->isIdentified()) broken("%@ -- Style has anonymous parent!");
    if (!equalTexts(parent->identifier(), mParentIdentifier))
      broken("%@ -- Style's parent identifier does not match identifier of parent!");
    if (!parent->children().containsObject(this)) broken("%@ -- Style is not the child of it's parent!");
    if (mStylesheet == nullptr) broken("%@ -- Parented style is not contained in a stylesheet!");
    if (resolvedParent(*this) != parent) broken("%@ -- Style's parent is not reachable from style's stylesheet!");
  }

  if (!mChildren.isEmpty()) {
    if (!isIdentified()) broken("%@ -- Anonymous style has children!");
    if (mStylesheet == nullptr) broken("%@ -- Parent style is not contained in a stylesheet!");
  }

  for (const Ref<ZTSStyle>& child : mChildren.retainedSnapshot()) {
    if (child == this) broken("%@ -- Style is its own child!");
    if (!equalTexts(mIdentifier, child->parentIdentifier()))
      broken("%@ -- Style's identifier does not match parent identifier of child!");
    if (child->parent() != this) broken("%@ -- Style is not the parent of it's child!");
    if (child->stylesheet() == nullptr) broken("%@ -- Child style is not contained in a stylesheet!");
    if (resolvedParent(*child) != this) broken("%@ -- Style not reachable from child's stylesheet!");
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
