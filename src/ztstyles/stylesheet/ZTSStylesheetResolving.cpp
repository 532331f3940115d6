// SPDX-License-Identifier: MIT
// How styles look for their parents when an identifier comes, goes or changes.
//
// Whoever is called on the way may throw: the walks go on to the next style and keep the first exception. A style that
// throws before it has looked is linked to its parent all the same, untold; one for which even that fails is listed as
// untried, so that the next retry asks it again. Without memory for a snapshot the live sets are walked.
//
// A retry asks only the orphans that wait for the identifier that was found, where nothing else can have changed for
// the others: what they found missing was looked up in this stylesheet and in those above, each of which looks into its
// own styles and then above, and each of which is told when one of those gains an identifier. The first half holds for
// the library's own class, the second for a stylesheet that its parent lists among its children, up to the root. All
// others have every orphan asked, by their own `updateParentForOrphanStyles`.

#include <platform/ZTFirstFailure.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <algorithm>
#include <typeinfo>

namespace zt {

namespace {

bool isOrphan(const ZTSStyle& style) { return style.parent() == nullptr && style.parentIdentifier(); }

}  // namespace

/// Lets the style look for its parent, whatever it throws.
void ZTSStylesheet::resolveParentOf(ZTSStyle& style, ZTFirstFailure& failure) {
  if (!failure.attempt([&] { style.updateParent(); })) setParentLinkOf(style, failure);
}

/// Links the style to its parent, of which nobody is told. Without memory it goes without parent, and is asked again.
void ZTSStylesheet::setParentLinkOf(ZTSStyle& style, ZTFirstFailure& failure) {
  const auto dropHalfLink = [&] {
    if (style.parent() != nullptr && !style.parent()->children().containsObject(&style)) style.p_setParent({});
  };
  dropHalfLink();
  if (failure.attempt([&] { style.p_updateParent(); })) return;
  dropHalfLink();
  style.p_fileAsUntried();
}

/// Asks the styles again that an earlier change could not ask.
void ZTSStylesheet::finishResolving(ZTFirstFailure& failure) {
  if (mOrphans->isUnfinished()) failure.attempt([&] { updateParentForOrphanStyles(); });
}

void ZTSStylesheet::resolveParentsOfChildrenOf(const ZTSStyle& style, ZTFirstFailure& failure) {
  if (style.children().isEmpty()) return;
  std::vector<Ref<ZTSStyle>> children;
  if (failure.attempt([&] { children = style.children().retainedSnapshot(); })) {
    for (const Ref<ZTSStyle>& child : children) resolveParentOf(*child, failure);
  } else {
    for (ZTSStyle* child : style.children()) resolveParentOf(*Ref<ZTSStyle>(child), failure);
  }
}

void ZTSStylesheet::resolveParentsOfStyles(ZTFirstFailure& failure) {
  std::vector<Ref<ZTSStyle>> all;
  if (failure.attempt([&] { all = retainedStyles(); })) {
    for (const Ref<ZTSStyle>& style : all) resolveParentOf(*style, failure);
  } else {
    for (const ZTSStyleDictionary::Entry& entry : mIdentifiedStyles)
      resolveParentOf(*Ref<ZTSStyle>(entry.style), failure);
    for (ZTSStyle* style : mAnonymousStyles) resolveParentOf(*Ref<ZTSStyle>(style), failure);
  }
}

/// Whether everything that can make an orphan of this stylesheet find a parent is heard of here.
bool ZTSStylesheet::looksUpPlainly() const noexcept {
  const ZTSStylesheet* stylesheet = this;
  while (typeid(*stylesheet) == typeid(ZTSStylesheet)) {
    const ZTSStylesheet* above = stylesheet->parent();
    if (above == nullptr) return true;
    if (!above->mChildren.containsObject(stylesheet)) return false;
    stylesheet = above;
  }
  return false;
}

void ZTSStylesheet::resolveParentsAfterIdentifying(const StringRef& identifier, ZTFirstFailure& failure) {
  const Ref<ZTSStylesheet> self(this);
  Ref<ZTSStyle> shadowed;
  if (mParent) failure.attempt([&] { shadowed = mParent->cascadedStyleWithIdentifier(identifier); });
  if (shadowed) return resolveParentsOfChildrenOf(*shadowed, failure);

  const auto retry = [&](ZTSStylesheet& stylesheet, bool isPlain) {
    if (isPlain) return stylesheet.retryOrphans(&identifier, failure);
    failure.attempt([&] { stylesheet.updateParentForOrphanStyles(); });
  };
  const bool isPlain = looksUpPlainly();
  retry(*this, isPlain);
  if (mChildren.isEmpty()) return;
  // Held, since what a retry runs may change the tree.
  struct Below {
    Ref<ZTSStylesheet> stylesheet;
    bool isPlain;
  };
  std::vector<Below> tree;
  const auto appendChildrenOf = [&](const ZTSStylesheet& stylesheet, bool isAbovePlain) {
    for (Ref<ZTSStylesheet>& child : stylesheet.mChildren.retainedSnapshot()) {
      const ZTSStylesheet& each = *child;
      const bool isChildPlain = isAbovePlain && typeid(each) == typeid(ZTSStylesheet);
      tree.push_back({std::move(child), isChildPlain});
    }
  };
  failure.attempt([&] { appendChildrenOf(*this, isPlain); });
  for (std::size_t index = 0; index < tree.size(); ++index) {
    const Below below = tree[index];
    retry(*below.stylesheet, below.isPlain);
    failure.attempt([&] { appendChildrenOf(*below.stylesheet, below.isPlain); });
  }
}

void ZTSStylesheet::updateParentForOrphanStyles() {
  const Ref<ZTSStylesheet> self(this);
  ZTFirstFailure failure;
  retryOrphans(nullptr, failure);
  failure.rethrow();
}

/// Asks the orphans that wait for the identifier, or all without one.
void ZTSStylesheet::retryOrphans(const StringRef* foundIdentifier, ZTFirstFailure& failure) {
  if (mOrphans->isEmpty() && !mOrphans->missesSome()) return;
  const bool asksAll = foundIdentifier == nullptr || mOrphans->missesSome();
  std::vector<Ref<ZTSStyle>> asked;
  const bool hasList = failure.attempt(
      [&] { asked = asksAll ? retainedStyles() : heldInOrder(mOrphans->candidatesFor(*foundIdentifier)); });
  if (!hasList) return mOrphans->couldNotAsk();
  if (asksAll) mOrphans->listsAllAgain();
  for (const Ref<ZTSStyle>& style : asked) {
    if (!isOrphan(*style) || !holdsStyle(*style)) continue;
    resolveParentOf(*style, failure);
    if (asksAll && isOrphan(*style) && !style->p_hasMark(ZTSStyleMark::isFiledAsOrphan)) style->p_fileAsUntried();
  }
}

/// Those of the styles that are held here: identified ones first, each kind in the order in which it was added.
std::vector<Ref<ZTSStyle>> ZTSStylesheet::heldInOrder(std::vector<Ref<ZTSStyle>>&& candidates) const {
  if (candidates.size() < 2) return std::move(candidates);
  std::vector<std::pair<std::uint64_t, Ref<ZTSStyle>>> placed;
  placed.reserve(candidates.size());
  for (Ref<ZTSStyle>& style : candidates) {
    const bool isIdentified = style->isIdentified();
    const std::uint32_t slot =
        isIdentified ? mIdentifiedStyles.slotOf(*style) : mAnonymousStyles.table().slotOf(style.get());
    if (slot == ZTSStyleDictionary::Table::kNoSlot) continue;
    placed.emplace_back(std::uint64_t{slot} | std::uint64_t{!isIdentified} << 32, std::move(style));
  }
  std::sort(placed.begin(), placed.end(), [](const auto& left, const auto& right) { return left.first < right.first; });
  candidates.clear();
  for (auto& [place, style] : placed) candidates.push_back(std::move(style));
  return std::move(candidates);
}

}  // namespace zt
