// SPDX-License-Identifier: MIT

// Identity, links and the private setters.

#include <platform/NSException.h>
#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStyleClassOf.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/references/ZTSDepartedStyles.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>
#include <ztstyles/stylesheet/ZTSOrphanIndex.h>

#include <algorithm>
#include <vector>

namespace zt {

const NSNotificationName ZTSStylePropertiesChangedNotification("ZTSStylePropertiesChangedNotification");
const NSNotificationName ZTSStyleNameChangedNotification("ZTSStyleNameChangedNotification");

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

bool descendsFrom(const ZTSStyle* style, const ZTSStyle& ancestor) {
  while (style != nullptr && style != &ancestor) style = style->parent();
  return style != nullptr;
}

/// Whether the registry has all keys of the map; a set of them need not be made for that.
bool supportsKeysOf(const PropertyMap& map, const PropertySet& registry) {
  return std::all_of(map.begin(), map.end(),
                     [&](const PropertyMap::Entry& entry) { return registry.contains(entry.key); });
}

}  // namespace

const ZTSStyleClass& ZTSStyle::styleClass() {
  static const auto* object = new ZTSStyleClassOf<ZTSStyle>("ZTSStyle", nsObjectClass());
  return *object;
}

const ZTSStyleClass& ZTSStyle::classObject() const { return styleClass(); }

ZTSStyle::ZTSStyle(Tag tag) noexcept : ZTAXMLCoding(tag) {}

ZTSStyle::~ZTSStyle() {
  intrusive_ptr_add_ref(this);  // whoever is handed this style by what follows must not end it again
  storeStylesheet(nullptr);
  ZTSDepartedStyles::forget(*this);
  if (p_hasMark(ZTSStyleMark::isIndexedValue)) ZTSVariationIndexes::valueDies(*this);
  forgetClassOf(*this);
  if (mParent) {
    try {
      mParent->p_removeChild(*this);
    } catch (...) {
      // The parent's own counting failed; the children are right, and a destructor cannot say more.
    }
  }
}

bool ZTSStyle::initWithName(const ZTSStyleFields& fields) {
  if (fields.overridePropertyMap != nullptr &&
      !supportsKeysOf(*fields.overridePropertyMap, classObject().properties())) {
    constexpr const char* operation = "initWithName:identifier:parentIdentifier:overridePropertyMap:isLocked:";
    ZT_REPORT(operation, this, kSourceFile,
              "%@ Attempt to initialize a style with an override of an unsupported property.", operation);
    return false;
  }
  mName = fields.name;
  mIdentifier = fields.identifier;
  mParentIdentifier = fields.parentIdentifier;
  setState(kLocked, fields.isLocked);
  if (fields.overridePropertyMap != nullptr && !fields.overridePropertyMap->isEmpty()) {
    p_setPropertyMap(fields.overridePropertyMap->copy());
  }
  return true;
}

// ---- Identity

void ZTSStyle::setName(StringRef name) {
  if (name == mName) return;
  const Ref<ZTSStyle> self(this);
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setName:", self, [before = mName](ZTSStyle& style) { style.setName(before); });
  }
  p_setName(std::move(name));
  NSNotificationCenter::defaultCenter().postIfHeard(ZTSStyleNameChangedNotification, this,
                                                    [] { return Ref<NSDictionary>(); });
}

void ZTSStyle::setIdentifier(StringRef identifier) {
  if (identifier == mIdentifier) return;
  if (mStylesheet != nullptr) {
    ZT_REPORT("setIdentifier:", this, kSourceFile,
              "Attempt to set identifier of style <%p> which has a non-nil stylesheet.", address(this));
    return;
  }
  const Ref<ZTSStyle> self(this);
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setIdentifier:", self,
                       [before = mIdentifier](ZTSStyle& style) { style.setIdentifier(before); });
  }
  p_setIdentifier(std::move(identifier));
}

void ZTSStyle::setParentIdentifier(StringRef parentIdentifier) {
  if (parentIdentifier == mParentIdentifier) return;
  const Ref<ZTSStyle> self(this);
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setParentIdentifier:", self,
                       [before = mParentIdentifier](ZTSStyle& style) { style.setParentIdentifier(before); });
  }
  p_setParentIdentifier(std::move(parentIdentifier));
  if (mParent && equalTexts(mParent->identifier(), mParentIdentifier)) return;
  updateParent();
}

void ZTSStyle::setIsLocked(bool locked) {
  if (locked == isLocked()) return;
  const Ref<ZTSStyle> self(this);
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setIsLocked:", self, [before = isLocked()](ZTSStyle& style) { style.setIsLocked(before); });
  }
  p_setIsLocked(locked);
}

// ---- Links

void ZTSStyle::setStylesheet(ZTSStylesheet* stylesheet) {
  if (stylesheet == mStylesheet) return;
  const Ref<ZTSStyle> self(this);
  if (stylesheet == nullptr) mStylesheet->styleWillDepart(*this);
  storeStylesheet(stylesheet);
  // A class that resolves parents in its own way may never come to p_updateParent, which files orphans.
  if (!isPlain(ZTSStyleClass::plainResolving)) p_fileAsUntried();
  updateParent();
}

void ZTSStyle::cleanup() { storeStylesheet(nullptr); }

void ZTSStyle::updateParent() {
  const Ref<ZTSStyle> self(this);
  const Ref<ZTSStyle> oldParent = mParent;
  const bool wasOnRefusedWay = p_hasMark(ZTSStyleMark::isOnRefusedWay);
  if (!p_updateParent()) return;
  ZTFirstFailure failure;
  // A class of the old chain that overrides the reading of values could notice that it is not asked for them.
  if (!endsUnseen(Origin::parent) || (oldParent && !oldParent->isReadPlainly())) {
    failure.attempt([&] {
      const Ref<PropertyMap> oldValues = oldParent ? oldParent->propertyMap() : Ref<PropertyMap>();
      stylePropertiesChanged(
          *ZTSStyleChangeInfo::withStyleChangedProperties(mParent.get(), inspectableProperties(), oldValues.get()));
    });
  }
  if (wasOnRefusedWay && oldParent) failure.attempt([&] { oldParent->p_retryRefused(); });
  failure.rethrow();
}

bool ZTSStyle::isReadPlainly() noexcept {
  ZTSStyle* known = this;
  while (known != nullptr && !known->mIsReadPlainly) {
    if (!known->isPlain(ZTSStyleClass::plainReading)) return false;
    known = known->parent();
  }
  for (ZTSStyle* style = this; style != known; style = style->parent()) style->mIsReadPlainly = true;
  return true;
}

/// Keeps what `isReadPlainly` remembers right where the style is about to get a parent.
void ZTSStyle::willInheritFrom(ZTSStyle* parent) {
  if (!mIsReadPlainly || parent == nullptr || parent->isReadPlainly()) return;
  std::vector<ZTSStyle*> below{this};
  while (!below.empty()) {
    ZTSStyle& style = *below.back();
    below.pop_back();
    style.mIsReadPlainly = false;
    for (ZTSStyle* child : style.mChildren) {
      if (child->mIsReadPlainly) below.push_back(child);
    }
  }
}

// ---- Refused parents
//
// A parent that inherits from the style would close a loop, and is refused: the style stays without a parent, at the
// top of the way that leads up to it from the one that was refused. The loop may be gone as soon as a style on that way
// gets another parent or another identifier, and then the one at the top is to be tried again. So every style on the
// way is marked. One that leaves its place and finds itself marked goes up the rest of the way, takes the marks off,
// and tries the style at the top, which marks a way again if it is refused again. A mark that has lost its way costs
// one such walk and is gone. Where nothing is marked, nothing is walked.

/// Refuses the parent, which inherits from this style.
void ZTSStyle::refuseParent(ZTSStyle& refused) {
  ZTULog_Fn(
      kZTULogFailure, kSourceFile,
      "Style <%p> with identifier '%@' cannot inherit from style <%p> with identifier '%@', which inherits from it.",
      address(this), mIdentifier, address(&refused), refused.identifier());
  for (ZTSStyle* style = &refused; style != this; style = style->parent())
    style->p_setMark(ZTSStyleMark::isOnRefusedWay, true, {});
  p_setMark(ZTSStyleMark::isOnRefusedWay, true, {});
}

void ZTSStyle::p_retryRefused() {
  ZTSStyle* top = this;
  bool isRefused = p_hasMark(ZTSStyleMark::isOnRefusedWay);
  p_setMark(ZTSStyleMark::isOnRefusedWay, false, {});
  while (top->parent() != nullptr) {
    top = top->parent();
    isRefused = top->p_hasMark(ZTSStyleMark::isOnRefusedWay);
    top->p_setMark(ZTSStyleMark::isOnRefusedWay, false, {});
  }
  if (!isRefused) return;
  const Ref<ZTSStyle> held(top);
  held->updateParent();
}

// ---- The parent

ZTSStylesheet* ZTSStyle::p_reachStylesheet() const noexcept {
  // A style that shares its identifier with its parent specialises the style of that identifier above.
  if (mStylesheet != nullptr && equalTexts(mIdentifier, mParentIdentifier)) return mStylesheet->parent();
  return mStylesheet;
}

/// The style that the parent identifier stands for, unless it is refused. Raises where it stands for this style.
inline Ref<ZTSStyle> ZTSStyle::findParent() {
  const ZTSStylesheet* reach = p_reachStylesheet();
  Ref<ZTSStyle> found(reach != nullptr ? reach->cascadedStyleWithIdentifier(mParentIdentifier) : nullptr);
  if (found && found == mParent) return found;
  if (found == this) {
    p_fileAsUntried();
    ZT_RAISE("p_updateParent", this, kSourceFile, "-[ZTSStyle (%p) setParent:] tried to set ourself as our parent.",
             address(this));
  }
  p_setMark(ZTSStyleMark::isOnRefusedWay, false, {});
  // Only a style that has children can close a loop.
  if (found && !mChildren.isEmpty() && descendsFrom(found.get(), *this)) {
    refuseParent(*found);
    found.reset();
  }
  return found;
}

bool ZTSStyle::p_updateParent() {
  const Ref<ZTSStyle> found = findParent();
  if (found && found == mParent) return false;
  const Ref<ZTSStyle> old = mParent;
  ZTFirstFailure failure;
  failure.attempt([&] {
    willInheritFrom(found.get());
    if (found) found->mChildren.makeRoom();
  });
  if (old) failure.attempt([&] { old->p_removeChild(*this); });
  if (failure.hasFailed()) {
    // Rather no parent than half a link to one. The next retry asks the style again.
    mParent.reset();
    p_fileAsUntried();
    if (mStylesheet != nullptr) mStylesheet->orphans().couldNotAsk();
    failure.rethrow();
  }
  mParent = found;
  if (mStylesheet != nullptr && mParentIdentifier) {
    if (!found) {
      mStylesheet->orphans().file(*this);
    } else if (p_isListedAsOrphan()) {
      mStylesheet->orphans().unfile(*this);
    }
  }
  if (found) found->p_addChild(*this);
  return old != found;
}

void ZTSStyle::p_addChild(ZTSStyle& child) {
  if (&child == this) {
    ZT_RAISE("p_addChild:", this, kSourceFile, "-[%@ %@] -- attempted to add self (%p) as own child.",
             classObject().name(), "p_addChild:", address(this));
  }
  if (!mChildren.addObject(&child)) return;
  if (p_hasMark(ZTSStyleMark::hasVariationIndex)) ZTSVariationIndexes::childWasAdded(*this, child);
  ZTFirstFailure failure;
  if (child.usageCount() != 0) failure.attempt([&] { child.passUseTo(*this); });
  if (child.orphanCount() != 0) failure.attempt([&] { incrementOrphanCount(); });
  failure.rethrow();
}

void ZTSStyle::p_removeChild(ZTSStyle& child) {
  if (!mChildren.removeObject(&child)) return;
  ZTFirstFailure failure;
  if (child.usageCount() != 0) failure.attempt([&] { child.takeUseFrom(*this); });
  if (child.orphanCount() != 0) failure.attempt([&] { decrementOrphanCount(); });
  failure.rethrow();
}

// ---- Document

NSDocument* ZTSStyle::document() const { return mStylesheet != nullptr ? mStylesheet->document() : nullptr; }

NSUndoManager* ZTSStyle::undoManager() const { return mStylesheet != nullptr ? mStylesheet->undoManager() : nullptr; }

void ZTSStyle::willBeAddedToDocument(NSDocument*, NSObject*) {}
void ZTSStyle::wasAddedToDocument(NSDocument*, NSObject*) {}
void ZTSStyle::willBeRemovedFromDocument(NSDocument*) {}
void ZTSStyle::wasRemovedFromDocument(NSDocument*) {}

// ---- Private setters

void ZTSStyle::p_setIdentifier(StringRef identifier) {
  mIdentifier = std::move(identifier);
  matchingChanged();
}

void ZTSStyle::p_setParentIdentifier(StringRef parentIdentifier) {
  if (p_isListedAsOrphan()) mStylesheet->orphans().unfile(*this);
  mParentIdentifier = std::move(parentIdentifier);
  p_fileAsUntried();
  matchingChanged();
}

void ZTSStyle::p_setParent(Ref<ZTSStyle> parent) {
  if (p_isListedAsOrphan()) mStylesheet->orphans().unfile(*this);
  willInheritFrom(parent.get());
  // Nothing would tell the index over the children of the style so far when this one changes.
  if (mParent && mParent != parent && mParent->p_hasMark(ZTSStyleMark::hasVariationIndex))
    ZTSVariationIndexes::dropIndexOf(*mParent);
  mParent = std::move(parent);
  p_fileAsUntried();
}

void ZTSStyle::p_setChildren(ZTUMutablePointerSet<ZTSStyle> children) {
  if (p_hasMark(ZTSStyleMark::hasVariationIndex)) ZTSVariationIndexes::dropIndexOf(*this);
  mChildren = std::move(children);
}

void ZTSStyle::p_setIsLocked(bool isLocked) {
  setState(kLocked, isLocked);
  matchingChanged();
}

void ZTSStyle::p_setPropertyMap(Ref<PropertyMap> map) {
  mLocalPropertyMap.swap(map);
  mKeyMask = mLocalPropertyMap ? mLocalPropertyMap->keyMask() : 0;
  matchingChanged();
}

void ZTSStyle::p_setValueForProperty(Ref<NSObject> value, PropertyKey key) {
  if (!mLocalPropertyMap) mLocalPropertyMap = PropertyMap::make(3);
  mLocalPropertyMap->setPresent(key, std::move(value));
  mKeyMask |= key.bit();
  matchingChanged();
}

void ZTSStyle::p_removeValueForProperty(PropertyKey key) {
  if (!mLocalPropertyMap) return;
  const Ref<NSObject> removed = mLocalPropertyMap->remove(key);
  if (!removed) return;
  mKeyMask = mLocalPropertyMap->keyMask();
  matchingChanged();
}

void ZTSStyle::p_removeValuesForProperties(const PropertyMap& removed) {
  if (!mLocalPropertyMap) return;
  const std::size_t gone =
      mLocalPropertyMap->removeIf([&](const PropertyMap::Entry& entry) { return removed.contains(entry.key); });
  if (gone == 0) return;
  mKeyMask = mLocalPropertyMap->keyMask();
  matchingChanged();
}

void ZTSStyle::p_setStylesheet(ZTSStylesheet* stylesheet) {
  if (stylesheet == mStylesheet) return;
  if (stylesheet == nullptr) {
    ZTFirstFailure passedOver;  // without memory, a circle that the style is part of stays
    passedOver.attempt([&] { mStylesheet->styleWillDepart(*this); });
  }
  storeStylesheet(stylesheet);
  p_fileAsUntried();
}

void ZTSStyle::p_setUsageCount(std::uint32_t count) {
  const bool wasUnused = mUsageCount == 0;
  mUsageCount = count;
  if (wasUnused != (count == 0) && mStylesheet != nullptr && mStylesheet->mUnused) {
    mStylesheet->mUnused->useChanged(*this);
  }
}

/// The link and every index that goes with it.
void ZTSStyle::storeStylesheet(ZTSStylesheet* stylesheet) {
  ZTSStylesheet* const old = mStylesheet;
  if (stylesheet != nullptr && stylesheet != old) {
    stylesheet->styleWillBeLinked(*this);
    ZTSDepartedStyles::forget(*this);
  }
  if (old != nullptr) {
    if (p_isListedAsOrphan()) old->orphans().unfile(*this);
    if (p_hasMark(ZTSStyleMark::hasVariationIndex)) ZTSVariationIndexes::dropIndexOf(*this);
    if (stylesheet != old) old->styleWasUnlinked(*this);
  }
  mStylesheet = stylesheet;
  if (mStylesheet != nullptr && mStylesheet->mUnused) mStylesheet->mUnused->styleEntered(*this);
  if (old != nullptr && old->mVariations) old->mVariations->anonymousStyleChanged(*this);
  matchingChanged();
}

void ZTSStyle::p_fileAsUntried() {
  if (mStylesheet != nullptr && !mParent && mParentIdentifier) mStylesheet->orphans().fileUntried(*this);
}

}  // namespace zt
