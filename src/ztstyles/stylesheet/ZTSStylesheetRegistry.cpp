// SPDX-License-Identifier: MIT

// Adding and removing single styles, lookup, enumeration.
//
// The document hooks, the styles' own overrides, observers and listeners that are called on the way may add,
// remove and release anything. So the operation holds what it works on, looks the displaced style up again after
// the hooks, and leaves the style either held and linked or neither if one of them throws.

#include <platform/NSNull.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <algorithm>
#include <typeinfo>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";

/// Clears the link of a style that is held no longer, whatever its overrides throw.
void unlink(ZTSStyle& style) noexcept {
  try {
    style.setStylesheet(nullptr);
  } catch (...) {
    style.p_setStylesheet(nullptr);
  }
}

}  // namespace

bool ZTSStylesheet::holdsStyle(const ZTSStyle& style) const noexcept {
  return style.isIdentified() ? mIdentifiedStyles.find(style.identifier()) == &style
                              : mAnonymousStyles.containsObject(&style);
}

void ZTSStylesheet::addStyle(Ref<ZTSStyle> style) { addStyleWithContext(std::move(style), nullptr); }

/// Whether the style may be added; reports where not.
bool ZTSStylesheet::mayAdd(const ZTSStyle& style) {
  if (holdsStyle(style)) {
    ZT_REPORT("addStyle:context:", this, kSourceFile,
              "Attempt to re-add style <%@ %p> with identifier '%@' to its stylesheet <%p>.",
              style.classObject().name(), address(&style), style.identifier(), address(this));
    return false;
  }
  if (style.stylesheet() != nullptr && style.stylesheet() != this) {
    ZT_REPORT("addStyle:context:", this, kSourceFile,
              "Attempt to add a style <%@ %p> with stylesheet <%p> to stylesheet <%p>.", style.classObject().name(),
              address(&style), address(style.stylesheet()), address(this));
    return false;
  }
  return true;
}

void ZTSStylesheet::addStyleWithContext(Ref<ZTSStyle> style, NSObject* context) {
  if (!style) {
    ZT_REPORT("addStyle:context:", this, kSourceFile, "Attempt to add nil style to stylesheet <%@>", this);
    return;
  }
  if (!mayAdd(*style)) return;
  const Ref<ZTSStylesheet> self(this);
  const Ref<NSObject> heldContext(context);
  const Ref<NSDocument> document(this->document());
  Ref<ZTSStyle> displaced(mIdentifiedStyles.find(style->identifier()));

  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    if (displaced) {
      undo->registerUndo("addStyle:", self, [displaced](ZTSStylesheet& stylesheet) { stylesheet.addStyle(displaced); });
    } else {
      undo->registerUndo("removeStyle:", self, [style](ZTSStylesheet& stylesheet) { stylesheet.removeStyle(style); });
    }
  }
  if (document) {
    if (displaced) displaced->willBeRemovedFromDocument(document.get());
    style->willBeAddedToDocument(document.get(), context);
    if (!mayAdd(*style)) return;  // a hook has added it, here or elsewhere
  }

  displaced = hold(style);
  try {
    style->setStylesheet(this);
    if (style->isIdentified()) resolveParentsAfterAdding(*style, displaced.get());
  } catch (...) {
    if (!holdsStyle(*style) || style->stylesheet() != this) {
      release(*style);
      if (displaced && !mIdentifiedStyles.find(displaced->identifier())) {
        hold(displaced);
      } else if (displaced) {
        unlink(*displaced);
      }
    } else if (displaced && !holdsStyle(*displaced)) {
      unlink(*displaced);
    }
    throw;
  }
  if (displaced && !holdsStyle(*displaced)) displaced->setStylesheet(nullptr);
  if (document) {
    if (displaced) displaced->wasRemovedFromDocument(document.get());
    style->wasAddedToDocument(document.get(), context);
  }
  if (mIsChangeCommunicationEnabled) tellStyleAdded(*style);
}

/// Stores the style, and answers the one that it displaces.
Ref<ZTSStyle> ZTSStylesheet::hold(const Ref<ZTSStyle>& style) {
  if (mUnused) mUnused->willStore();
  Ref<ZTSStyle> displaced;
  if (style->isIdentified()) {
    displaced = mIdentifiedStyles.set(style->identifier(), style);
  } else {
    mAnonymousStyles.addObject(style.get());
    if (mVariations) mVariations->anonymousStyleChanged(*style);
  }
  // A style whose link named this stylesheet before will not be told that it enters.
  if (mUnused && style->stylesheet() == this) mUnused->styleEntered(*style);
  return displaced;
}

/// Drops the style if it is the one that is held.
void ZTSStylesheet::release(const ZTSStyle& style) noexcept {
  if (mUnused) mUnused->willRelease(style);
  if (style.isAnonymous()) {
    mAnonymousStyles.removeObject(&style);
  } else if (mIdentifiedStyles.find(style.identifier()) == &style) {
    mIdentifiedStyles.remove(style.identifier());
  }
}

void ZTSStylesheet::resolveParentsAfterAdding(ZTSStyle& style, ZTSStyle* displaced) {
  if (displaced != nullptr) {
    displaced->makeChildrenPerform([](ZTSStyle& child) { child.updateParent(); });
  } else {
    resolveParentsAfterIdentifying(style.identifier());
  }
}

void ZTSStylesheet::resolveParentsAfterIdentifying(const StringRef& identifier) {
  if (const Ref<ZTSStyle> shadowed(mParent ? mParent->cascadedStyleWithIdentifier(identifier) : nullptr); shadowed) {
    shadowed->makeChildrenPerform([](ZTSStyle& child) { child.updateParent(); });
    return;
  }
  const auto retry = [&identifier](ZTSStylesheet& stylesheet) {
    const StringRef* const outer = std::exchange(stylesheet.mRetriedIdentifier, &identifier);
    try {
      stylesheet.updateParentForOrphanStyles();
    } catch (...) {
      stylesheet.mRetriedIdentifier = outer;
      throw;
    }
    stylesheet.mRetriedIdentifier = outer;
  };
  const Ref<ZTSStylesheet> self(this);
  retry(*this);
  if (mChildren.isEmpty()) return;
  // Held, since what a retry runs may change the tree.
  std::vector<Ref<ZTSStylesheet>> tree = mChildren.retainedSnapshot();
  for (std::size_t index = 0; index < tree.size(); ++index) {
    const Ref<ZTSStylesheet> stylesheet = tree[index];
    retry(*stylesheet);
    for (Ref<ZTSStylesheet>& child : stylesheet->mChildren.retainedSnapshot()) tree.push_back(std::move(child));
  }
}

void ZTSStylesheet::updateParentForOrphanStyles() {
  if (!mOrphans || mOrphans->isEmpty()) return;
  // Where one identifier became findable, only those can find a parent that wait for it, or that were never tried.
  const std::vector<Ref<ZTSStyle>> orphans =
      mRetriedIdentifier != nullptr ? heldInOrder(mOrphans->candidatesFor(*mRetriedIdentifier)) : retainedStyles();
  for (const Ref<ZTSStyle>& style : orphans) {
    if (style->parent() == nullptr && style->parentIdentifier() && holdsStyle(*style)) style->updateParent();
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

void ZTSStylesheet::removeStyle(Ref<ZTSStyle> style) {
  if (!style) {
    ZT_REPORT("removeStyle:", this, kSourceFile, "Attempt to remove nil style from stylesheet %@", this);
    return;
  }
  if (!holdsStyle(*style)) {
    ZT_REPORT("removeStyle:", this, kSourceFile, "Attempt to remove style %@ not contained in stylesheet %@.", style,
              this);
    return;
  }
  const Ref<ZTSStylesheet> self(this);
  const Ref<NSDocument> document(this->document());
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("addStyle:", self, [style](ZTSStylesheet& stylesheet) { stylesheet.addStyle(style); });
  }
  if (document) {
    style->willBeRemovedFromDocument(document.get());
    if (!holdsStyle(*style)) return;  // the hook has removed it
  }
  release(*style);
  try {
    if (style->isIdentified()) style->makeChildrenPerform([](ZTSStyle& child) { child.updateParent(); });
    if (!holdsStyle(*style)) style->setStylesheet(nullptr);
  } catch (...) {
    if (!holdsStyle(*style)) unlink(*style);
    throw;
  }
  if (mIsChangeCommunicationEnabled) tellStyleRemoved(*style);
  if (document) style->wasRemovedFromDocument(document.get());
}

// ---- Lookup

ZTSStyle* ZTSStylesheet::cascadedStyleWithIdentifier(const StringRef& identifier) const {
  if (!identifier) return nullptr;
  const ZTSStylesheet* stylesheet = this;
  do {
    if (ZTSStyle* style = stylesheet->mIdentifiedStyles.find(identifier)) return style;
    stylesheet = stylesheet->mParent.get();
    if (stylesheet == nullptr) return nullptr;
  } while (typeid(*stylesheet) == typeid(ZTSStylesheet));
  // A derived class may look elsewhere.
  NestingGuard guard("cascadedStyleWithIdentifier:", Nesting::lookup);
  return stylesheet->cascadedStyleWithIdentifier(identifier);
}

std::vector<Ref<NSObject>> ZTSStylesheet::stylesWithIdentifiers(const std::vector<StringRef>& identifiers) const {
  std::vector<Ref<NSObject>> found;
  found.reserve(identifiers.size());
  for (const StringRef& identifier : identifiers) {
    ZTSStyle* style = mIdentifiedStyles.find(identifier);
    found.emplace_back(style != nullptr ? static_cast<NSObject*>(style) : NSNull::null());
  }
  return found;
}

ZTSStyleSet ZTSStylesheet::styles() const {
  ZTSStyleSet all = identifiedStyles();
  all.unionSet(mAnonymousStyles);
  return all;
}

std::vector<Ref<ZTSStyle>> ZTSStylesheet::retainedStyles() const {
  std::vector<Ref<ZTSStyle>> all;
  all.reserve(mIdentifiedStyles.count() + mAnonymousStyles.count());
  for (const auto& entry : mIdentifiedStyles) all.push_back(entry.style);
  for (ZTSStyle* style : mAnonymousStyles) all.emplace_back(style);
  return all;
}

ZTURetainedPointerSet<ZTSStyle> ZTSStylesheet::identifiedStyles() const {
  ZTSStyleSet all;
  for (const auto& entry : mIdentifiedStyles) all.addObject(entry.style.get());
  return all;
}

ZTSStyleSet ZTSStylesheet::identifiedStylesOfClass(const ZTSStyleClass* styleClass) const {
  ZTSStyleSet found;
  for (const auto& entry : mIdentifiedStyles) {
    if (&entry.style->classObject() == styleClass) found.addObject(entry.style.get());
  }
  return found;
}

ZTSStyleSet ZTSStylesheet::anonymousStylesOfClass(const ZTSStyleClass* styleClass) const {
  ZTSStyleSet found;
  for (ZTSStyle* style : mAnonymousStyles) {
    if (&style->classObject() == styleClass) found.addObject(style);
  }
  return found;
}

ZTSStyleSet ZTSStylesheet::stylesOfClass(const ZTSStyleClass* styleClass) const {
  ZTSStyleSet found = identifiedStylesOfClass(styleClass);
  found.unionSet(anonymousStylesOfClass(styleClass));
  return found;
}

ZTSStyleSet ZTSStylesheet::stylesOfClassWithName(const ZTSStyleClass* styleClass, const StringRef& name) const {
  constexpr const char* operation = "stylesOfClass:withName:";
  if (styleClass == nullptr) ZT_REPORT(operation, this, kSourceFile, "Class should not be nil.");
  if (!name) ZT_REPORT(operation, this, kSourceFile, "Name should not be nil.");
  if (name.view().empty()) ZT_REPORT(operation, this, kSourceFile, "Name should not be zero length.");
  ZTSStyleSet found;
  for (ZTSStyle* style : stylesOfClass(styleClass)) {
    if (equalTexts(style->name(), name)) found.addObject(style);
  }
  return found;
}

}  // namespace zt
