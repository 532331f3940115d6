// SPDX-License-Identifier: MIT

// Adding and removing single styles, lookup, enumeration.
//
// Both operations have two halves. In the first they ask: the checks, the document hooks, the checks again, since a
// hook may have added, removed or renamed anything, and then the registration of the inverse, which describes what will
// be done to the styles as the hooks have left them. Whatever throws here ends an operation that has changed nothing.
//
// In the second half nothing stops them. The style is stored, for which there is room already, and then styles, hooks,
// observers and listeners are called, each of which may throw: the first exception is kept until the end. A style that
// threw while it was linked or unlinked is linked or unlinked all the same. So a style is never held without a link,
// nor linked without being held, and the inverse that was registered takes back what was done.

#include <platform/NSNull.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/references/ZTSDepartedStyles.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <typeinfo>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";

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

  if (document) {
    if (const Ref<ZTSStyle> leaving(mIdentifiedStyles.find(style->identifier())); leaving) {
      leaving->willBeRemovedFromDocument(document.get());
    }
    style->willBeAddedToDocument(document.get(), context);
    if (!mayAdd(*style)) return;  // a hook has added it, here or elsewhere
  }
  const Ref<ZTSStyle> displaced(mIdentifiedStyles.find(style->identifier()));
  makeRoomFor(*style);
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    if (displaced) {
      undo->registerUndo("addStyle:", self, [displaced](ZTSStylesheet& stylesheet) { stylesheet.addStyle(displaced); });
    } else {
      undo->registerUndo("removeStyle:", self, [style](ZTSStylesheet& stylesheet) { stylesheet.removeStyle(style); });
    }
  }

  ZTFirstFailure failure;
  hold(style);
  link(*style, failure);
  if (displaced) {
    resolveParentsOfChildrenOf(*displaced, failure);
    if (!holdsStyle(*displaced)) unlink(*displaced, failure);
  } else if (style->isIdentified()) {
    resolveParentsAfterIdentifying(style->identifier(), failure);
  }
  finishResolving(failure);
  if (document) {
    if (displaced) failure.attempt([&] { displaced->wasRemovedFromDocument(document.get()); });
    failure.attempt([&] { style->wasAddedToDocument(document.get(), context); });
  }
  if (mIsChangeCommunicationEnabled) failure.attempt([&] { tellStyleAdded(*style); });
  failure.rethrow();
}

/// After this, storing the style allocates nothing.
void ZTSStylesheet::makeRoomFor(const ZTSStyle& style) {
  if (mUnused) mUnused->willStore();
  if (!style.isIdentified()) {
    mAnonymousStyles.makeRoom();
  } else if (mIdentifiedStyles.find(style.identifier()) == nullptr) {
    mIdentifiedStyles.makeRoom();
  }
}

/// Stores the style, in the place of one that has its identifier.
void ZTSStylesheet::hold(const Ref<ZTSStyle>& style) {
  if (style->isIdentified()) {
    mIdentifiedStyles.set(style->identifier(), style);
  } else {
    mAnonymousStyles.addObject(style.get());
    if (mVariations) mVariations->anonymousStyleChanged(*style);
  }
  // A style whose link named this stylesheet before will not be told that it enters.
  if (style->stylesheet() != this) return;
  mLinkedOnly.removeObject(style.get());
  if (mUnused) mUnused->styleEntered(*style);
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

/// Links a style that is held, unless what it calls has removed it.
void ZTSStylesheet::link(ZTSStyle& style, ZTFirstFailure& failure) {
  if (failure.attempt([&] { style.setStylesheet(this); }) || !holdsStyle(style)) return;
  style.p_setStylesheet(this);
  setParentLinkOf(style, failure);
}

/// Ends the link of a style that is held no longer.
void ZTSStylesheet::unlink(ZTSStyle& style, ZTFirstFailure& failure) {
  const ZTSStylesheet* const left = style.stylesheet();
  if (failure.attempt([&] { style.setStylesheet(nullptr); })) return;
  // What was called before it threw may have added the style again, here or elsewhere.
  if (left != nullptr && style.stylesheet() == left && !left->holdsStyle(style)) style.p_setStylesheet(nullptr);
  if (style.stylesheet() == nullptr) setParentLinkOf(style, failure);
}

void ZTSStylesheet::styleWillBeLinked(ZTSStyle& style) {
  if (!holdsStyle(style)) mLinkedOnly.addObject(&style);
}

void ZTSStylesheet::styleWillDepart(ZTSStyle& style) {
  if (!ZTSDepartedStyles::concerns(style)) return;
  if (!mDeparted) mDeparted = std::make_unique<ZTSDepartedStyles>();
  mDeparted->add(style);
}

void ZTSStylesheet::styleWasUnlinked(ZTSStyle& style) noexcept {
  if (!mLinkedOnly.isEmpty()) mLinkedOnly.removeObject(&style);
  if (!mUnused) return;
  mUnused->styleLeft(style);
  if (holdsStyle(style)) mUnused->mayMissSome();  // it tells another stylesheet of its uses, or none
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
  if (document) {
    style->willBeRemovedFromDocument(document.get());
    if (!holdsStyle(*style)) return;  // the hook has removed it
  }
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("addStyle:", self, [style](ZTSStylesheet& stylesheet) { stylesheet.addStyle(style); });
  }

  ZTFirstFailure failure;
  release(*style);
  if (style->isIdentified()) resolveParentsOfChildrenOf(*style, failure);
  if (!holdsStyle(*style)) unlink(*style, failure);
  finishResolving(failure);
  if (mIsChangeCommunicationEnabled) failure.attempt([&] { tellStyleRemoved(*style); });
  if (document) failure.attempt([&] { style->wasRemovedFromDocument(document.get()); });
  failure.rethrow();
}

/// Whoever asks for these may store anything, of which no index hears.
ZTSStyleDictionary& ZTSStylesheet::p_identifiedStyles() noexcept {
  if (mUnused) mUnused->mayMissSome();
  return mIdentifiedStyles;
}

ZTSStyleSet& ZTSStylesheet::p_anonymousStyles() noexcept {
  if (mUnused) mUnused->mayMissSome();
  if (mVariations) mVariations->anonymousStylesAreOpen();
  return mAnonymousStyles;
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
