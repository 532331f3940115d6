// SPDX-License-Identifier: MIT

// How a change travels: down the children, then to the observers, then to the notification centre.
//
// A style whose class leaves the handling of changes alone is not called but worked off from a list of levels, so
// that a chain of styles may be as long as it likes; one whose class overrides it is called, since its override
// expects everything below to have been told on return. What nobody can notice is left out: a change ends unseen at
// a quiet leaf, and no record is made where no child, no observer and no listener would get it.

#include <platform/NSUndoManager.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStylesheet.h>

#include <algorithm>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

/// Whether the map has an entry for one of the keys.
bool hasAny(const PropertyMap& map, const PropertySet& keys) {
  constexpr std::size_t kFew = 16;  // the size up to which a map is searched by walking it anyway
  if (map.count() <= kFew) {
    return std::any_of(map.begin(), map.end(),
                       [&](const PropertyMap::Entry& entry) { return keys.contains(entry.key); });
  }
  bool has = false;
  keys.forEach([&](PropertyKey key) { has = has || map.contains(key); });
  return has;
}

/// Those of the changed keys that are known and that the own entries do not hide; none where that is all of them.
Ref<const PropertySet> unhidden(const PropertySet& changed, const PropertySet& known, const PropertyMap* own) {
  if (changed.isSubsetOf(known) && (own == nullptr || !hasAny(*own, changed))) return {};
  Ref<PropertySet> rest = changed.copy();
  rest->intersect(known);
  if (own != nullptr) {
    for (const auto& [key, value] : *own) rest->remove(key);
  }
  return rest;
}

}  // namespace

// ---- Who can notice

bool ZTSStyle::isHeard() const {
  return NSNotificationCenter::anyoneListens(classObject().stylePropertiesChangedNotificationName(), this);
}

/// A plain, unlocked style without children and observers about which nobody listens: no record is made for it, and it
/// is not called.
bool ZTSStyle::isQuietLeaf() const {
  return isPlain(ZTSStyleClass::plainTelling) && mChildren.isEmpty() && mObservers.isEmpty() && !isLocked() &&
         !isHeard();
}

/// As for a quiet leaf, but a lock plays no part; and any plain style whose stylesheet tells nobody.
bool ZTSStyle::isUnheard() const {
  if (!isPlain(ZTSStyleClass::plainTelling)) return false;
  if (mStylesheet == nullptr || !mStylesheet->isChangeCommunicationEnabled()) return true;
  return mChildren.isEmpty() && !isNoticed();
}

/// Whether somebody besides the children is told when this style changes.
bool ZTSStyle::isNoticed() const { return !mObservers.isEmpty() || isHeard(); }

// ---- What arrives

/// A locked style takes what it has inherited so far as its own. During undo and redo nothing is to be kept: the
/// undo manager replays what was kept then.
void ZTSStyle::keepLook(const ZTSStyleChangeInfo& change, const PropertySet& arrived) {
  const NSUndoManager* manager = undoManager();
  if (manager != nullptr && manager->isUndoingOrRedoing()) return;
  const Ref<PropertyMap> kept = change.unchangedPropertyMapForProperties(arrived);
  if (!kept) return;
  kept->removeIf([&](const PropertyMap::Entry& entry) {
    const ZTSStyle* referenced = asStyle(entry.value.get());
    return referenced != nullptr && referenced->stylesheet() != nullptr && referenced->stylesheet() != mStylesheet;
  });
  if (!kept->isEmpty()) lockedStyleSetValuesForProperties(*kept, kZTSStyleNotifyOnRedo);
}

// ---- Telling

/// One style that a change has reached, with what it passes on and the children that are still to be told. The
/// children are held until they have been told: the set of children does not hold them.
class ZTSStyle::Telling {
 public:
  /// What a leaf has used and nobody has kept: its next sibling takes it over.
  struct SpareRecord {
    Ref<ZTSStyleChangeInfo> change;
    Ref<NSDictionary> userInfo;
  };

  /// Takes the change to the style; false where it ends there and nobody is to be told. The spare record, if there
  /// is one, was cascaded from the change.
  bool begin(ZTSStyle& style, const ZTSStyleChangeInfo& change, SpareRecord* spare = nullptr);

  [[nodiscard]] bool hasChildren() const noexcept { return !mChildren.empty(); }
  /// Tells the children and all below them.
  void tellChildren();

  /// After the children: the observers, then the notification centre.
  void end();

 private:
  void takeChildren(const ZTSStyle& style);
  /// The next child that is to be told, or none.
  Ref<ZTSStyle> nextChild() noexcept {
    return mNext < mChildren.size() ? std::move(mChildren[mNext++]) : Ref<ZTSStyle>();
  }
  void takeRecord(const ZTSStyleChangeInfo& change, Ref<const PropertySet> arrived, SpareRecord* spare);
  void leaveRecordTo(SpareRecord& spare) noexcept;

  Ref<ZTSStyle> mStyle;
  Ref<ZTSStyleChangeInfo> mChange;
  Ref<NSDictionary> mUserInfo;  // none until it is needed
  std::vector<Ref<ZTSStyle>> mChildren;
  std::size_t mNext = 0;
};

bool ZTSStyle::Telling::begin(ZTSStyle& style, const ZTSStyleChangeInfo& change, SpareRecord* spare) {
  if (style.mStylesheet == nullptr || !style.mStylesheet->isChangeCommunicationEnabled()) return false;
  const ZTSStyle* source = change.style();
  const bool isOwn = source == &style;
  if (!isOwn && source != style.mParent.get()) return false;
  const PropertySet* changed = change.changedProperties();
  if (changed == nullptr) return false;
  // What a class overrides is asked, even where the answer cannot matter any more.
  const bool isPlainClass = style.isPlain(ZTSStyleClass::plainTelling);
  const bool showsOwnMap = style.isPlain(ZTSStyleClass::plainMatching);
  const PropertySet* known = isOwn || isPlainClass ? nullptr : &style.inspectableProperties();
  const Ref<const PropertyMap> answered = isOwn || showsOwnMap ? Ref<const PropertyMap>() : style.overridePropertyMap();
  bool isNoticed = style.isNoticed();
  if (!isNoticed && style.mChildren.isEmpty() && (isOwn || !style.isLocked())) return false;
  Ref<const PropertySet> rest;
  if (!isOwn) {
    if (known == nullptr) known = &style.inspectableProperties();
    const PropertyMap* own = answered.get();
    if (showsOwnMap && (style.mKeyMask & changed->keyMask()) != 0) own = style.mLocalPropertyMap.get();
    rest = unhidden(*changed, *known, own);
    if (rest) changed = rest.get();
  }
  if (changed->isEmpty()) return false;
  mStyle = &style;
  if (!isOwn && style.isLocked()) {
    style.keepLook(change, *changed);
    isNoticed = style.isNoticed();
  }
  if (!style.mChildren.isEmpty()) takeChildren(style);
  if (!isNoticed && mChildren.empty()) return false;
  if (isOwn) {
    mChange = const_cast<ZTSStyleChangeInfo*>(&change);
  } else {
    takeRecord(change, rest ? std::move(rest) : Ref<const PropertySet>(changed), spare);
  }
  return true;
}

/// The record to pass on: the spare one, else a new one.
void ZTSStyle::Telling::takeRecord(const ZTSStyleChangeInfo& change, Ref<const PropertySet> arrived,
                                   SpareRecord* spare) {
  if (spare == nullptr || !spare->change) {
    mChange = ZTSStyleChangeInfo::cascadedFrom(&change, mStyle.get(), std::move(arrived));
    return;
  }
  mChange = std::move(spare->change);
  mUserInfo = std::move(spare->userInfo);
  mChange->p_reuseFor(change, mStyle.get(), std::move(arrived));
}

void ZTSStyle::Telling::leaveRecordTo(SpareRecord& spare) noexcept {
  if (mUserInfo ? mUserInfo->referenceCount() != 1 || mChange->referenceCount() != 2 : mChange->referenceCount() != 1)
    return;
  mChange->mStyle.reset();
  spare.change = std::move(mChange);
  spare.userInfo = std::move(mUserInfo);
}

/// A snapshot of the children, without the quiet leaves in front: while nobody has been called, they stay quiet.
void ZTSStyle::Telling::takeChildren(const ZTSStyle& style) {
  const auto& children = style.mChildren.table();
  // As `isQuietLeaf`, with the notification's name asked once for a run of children of one class.
  const ZTSStyleClass* lastClass = nullptr;
  NSNotificationName name = ZTSStylePropertiesChangedNotification;
  const auto first = children.firstSlotWhere([&](const ZTSStyle* child) {
    if (!child->isPlain(ZTSStyleClass::plainTelling) || !child->mChildren.isEmpty()) return true;
    if (child->isLocked() || !child->mObservers.isEmpty()) return true;
    if (const ZTSStyleClass& itsClass = child->classObject(); &itsClass != lastClass) {
      lastClass = &itsClass;
      name = itsClass.stylePropertiesChangedNotificationName();
    }
    return NSNotificationCenter::anyoneListens(name, child);
  });
  if (first == children.kNoSlot) return;
  mChildren.reserve(children.count());
  const auto hold = [&](ZTSStyle* child) {
    if (Ref<ZTSStyle> held = retainIfAlive(child)) mChildren.push_back(std::move(held));
    return false;
  };
  (void)children.firstSlotWhere(hold, first);
}

void ZTSStyle::Telling::tellChildren() {
  std::vector<Telling> below;  // the way from this style down to where we are
  SpareRecord spare;           // of the level where we are
  for (;;) {
    Telling& level = below.empty() ? *this : below.back();
    const Ref<ZTSStyle> child = level.nextChild();
    if (!child) {
      spare = {};
      if (below.empty()) return;
      level.end();
      below.pop_back();
      continue;
    }
    if (!child->isPlain(ZTSStyleClass::plainTelling)) {
      child->stylePropertiesChanged(*level.mChange);
      continue;
    }
    Telling next;
    if (!next.begin(*child, *level.mChange, &spare)) continue;
    if (next.hasChildren()) {
      spare = {};
      below.push_back(std::move(next));
    } else {
      next.end();
      next.leaveRecordTo(spare);
    }
  }
}

void ZTSStyle::Telling::end() {
  if (!mStyle->mObservers.isEmpty()) mStyle->tellObservers(*mChange);
  NSNotificationCenter::defaultCenter().postIfHeard(mStyle->classObject().stylePropertiesChangedNotificationName(),
                                                    mStyle.get(), [&] {
                                                      static const StringRef key(ZTSStyleNotificationChangeInfoKey);
                                                      if (!mUserInfo) mUserInfo = NSDictionary::make(key, mChange);
                                                      return mUserInfo;
                                                    });
}

void ZTSStyle::tellObservers(const ZTSStyleChangeInfo& change) {
  if (mObservers.count() == 1) {
    mObservers.anyObject()->stylePropertiesChanged(change);
    return;
  }
  for (ZTSStyleObserver* observer : mObservers.allObjects()) {
    // One that has left meanwhile may be gone.
    if (mObservers.containsObject(observer)) observer->stylePropertiesChanged(change);
  }
}

void ZTSStyle::stylePropertiesChanged(const ZTSStyleChangeInfo& change) {
  const NestingGuard guard("stylePropertiesChanged:", Nesting::telling);
  Telling telling;
  if (!telling.begin(*this, change)) return;
  if (telling.hasChildren()) telling.tellChildren();
  telling.end();
}

// ---- Observers

void ZTSStyle::addObserver(ZTSStyleObserver* observer) {
  if (observer == static_cast<ZTSStyleObserver*>(this)) {
    ZT_REPORT("addObserver:", this, kSourceFile, "Attempted to add self (%p) as own observer.", address(this));
    return;
  }
  mObservers.addObject(observer);
}

void ZTSStyle::removeObserver(ZTSStyleObserver* observer) { mObservers.removeObject(observer); }

}  // namespace zt
