// SPDX-License-Identifier: MIT

// The tree of stylesheets.

#include <platform/NSException.h>
#include <platform/ZTFirstFailure.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <algorithm>

namespace zt {

void ZTSStylesheet::setParent(Ref<ZTSStylesheet> parent) {
  if (parent == mParent) return;
  if (parent == this) throw NSInvalidArgumentException("Attempt to set a stylesheet's parent to self.");
  if (isAncestorOfStylesheet(parent.get())) {
    throw NSInvalidArgumentException("Attempt to set a stylesheet's parent to one of its descendants.");
  }
  const Ref<ZTSStylesheet> self(this);
  const Ref<ZTSStylesheet> old = mParent;  // its styles are parents until all have been resolved again
  // Before anything changes, should memory run out. What comes below later resolves itself when it comes.
  std::vector<Ref<ZTSStylesheet>> tree{self};
  for (std::size_t index = 0; index < tree.size(); ++index) {
    for (Ref<ZTSStylesheet>& child : tree[index]->mChildren.retainedSnapshot()) tree.push_back(std::move(child));
  }
  if (parent) parent->p_addChild(*this);
  if (old) old->p_removeChild(*this);
  storeParent(parent);

  ZTFirstFailure failure;
  for (const Ref<ZTSStylesheet>& stylesheet : tree) stylesheet->resolveParentsOfStyles(failure);
  if (mIsChangeCommunicationEnabled) failure.attempt([&] { tellParentChanged(); });
  failure.rethrow();
}

void ZTSStylesheet::p_setParent(Ref<ZTSStylesheet> parent) {
  if (parent == mParent) return;
  storeParent(std::move(parent));
  // What was not found may be found now, by whoever looks up through this stylesheet.
  std::vector<ZTSStylesheet*> tree{this};
  for (std::size_t index = 0; index < tree.size(); ++index) {
    tree[index]->mOrphans->mayMissSome();
    for (ZTSStylesheet* child : tree[index]->mChildren) tree.push_back(child);
  }
}

void ZTSStylesheet::storeParent(Ref<ZTSStylesheet> parent) noexcept { mParent = std::move(parent); }

bool ZTSStylesheet::isAncestorOfStylesheet(const ZTSStylesheet* other) const noexcept {
  if (other == nullptr) return false;
  for (const ZTSStylesheet* each = other->parent(); each != nullptr; each = each->parent()) {
    if (each == this) return true;
  }
  return false;
}

bool ZTSStylesheet::isDescendantOfStylesheet(const ZTSStylesheet* other) const noexcept {
  return other != nullptr && other->isAncestorOfStylesheet(this);
}

ZTSStyleSet ZTSStylesheet::orphanStyles() const {
  ZTSStyleSet orphans;
  for (ZTSStyle* style : styles()) {
    if (style->parent() == nullptr && style->parentIdentifier()) orphans.addObject(style);
  }
  return orphans;
}

std::vector<Ref<ZTSStylesheet>> ZTSStylesheet::sortedClosureOverParentsOfStylesheetsSet(
    const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets) {
  return p_sortStylesheets(p_stylesheetsClosureOverParents(stylesheets));
}

ZTUMutableRetainedPointerSet<ZTSStylesheet> ZTSStylesheet::p_stylesheetsClosureOverParents(
    const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets) {
  ZTUMutableRetainedPointerSet<ZTSStylesheet> closure = stylesheets;
  ZTUMutableRetainedPointerSet<ZTSStylesheet> frontier = stylesheets;
  while (!frontier.isEmpty()) {
    ZTUMutableRetainedPointerSet<ZTSStylesheet> next;
    for (ZTSStylesheet* stylesheet : frontier) {
      if (closure.addObject(stylesheet->parent())) next.addObject(stylesheet->parent());
    }
    frontier = std::move(next);
  }
  return closure;
}

std::vector<Ref<ZTSStylesheet>> ZTSStylesheet::p_sortStylesheets(
    const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets) {
  // The same order as p_addParentAndStylesheet for each in turn, with the identity search in a set.
  std::vector<Ref<ZTSStylesheet>> sorted;
  ZTUMutablePointerSet<ZTSStylesheet> placed;
  std::vector<ZTSStylesheet*> chain;
  for (ZTSStylesheet* stylesheet : stylesheets) {
    for (ZTSStylesheet* each = stylesheet; each != nullptr && placed.addObject(each); each = each->parent())
      chain.push_back(each);
    sorted.insert(sorted.end(), chain.rbegin(), chain.rend());
    chain.clear();
  }
  return sorted;
}

void p_addParentAndStylesheet(std::vector<Ref<ZTSStylesheet>>& list, ZTSStylesheet& stylesheet) {
  std::vector<ZTSStylesheet*> chain;
  for (ZTSStylesheet* each = &stylesheet; each != nullptr; each = each->parent()) chain.push_back(each);
  for (auto each = chain.rbegin(); each != chain.rend(); ++each) {
    if (std::find(list.begin(), list.end(), *each) == list.end()) list.emplace_back(*each);
  }
}

}  // namespace zt
