// SPDX-License-Identifier: MIT

// How a change travels: down the children, then to the observers, then to the notification centre.
//
// A style whose class leaves the handling of changes alone is not called but worked off from a list of levels, so
// that a chain of styles may be as long as it likes; one whose class overrides it is called, since its override
// expects everything below to have been told on return. What nobody can notice is left out: a change ends unseen at
// a quiet leaf, and no record is made where no child, no observer and no listener would get it.
//
// Whoever is told may throw. The others are told all the same, and what the first one threw reaches the caller.

#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
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
//
// Three can: a class that handles changes itself; whoever is told by a style, which are its children, its observers
// and those who listen for its notification; and the style itself, which when it is locked keeps what it has inherited
// so far. This is the only place that knows them.
//
// The questions are asked of every style that a change could reach, nearly always in vain. They are cut for the reader,
// and put together again for the compiler: as calls, a child that nobody can see change costs half as much again.

/// Asks whether anyone listens for the notification of a style's changes; in a run of styles of one class, for the name
/// once.
class ZTSStyle::Listeners {
 public:
  [[gnu::always_inline]] [[nodiscard]] bool hear(const ZTSStyle& style) {
    if (const ZTSStyleClass& its = style.classObject(); &its != mClass) {
      mClass = &its;
      mName = its.stylePropertiesChangedNotificationName();
    }
    return NSNotificationCenter::anyoneListens(mName, &style);
  }

 private:
  const ZTSStyleClass* mClass = nullptr;
  NSNotificationName mName = ZTSStylePropertiesChangedNotification;
};

/// Whether somebody besides the children is told when this style changes.
bool ZTSStyle::isNoticed() const { return !mObservers.isEmpty() || Listeners().hear(*this); }

[[gnu::always_inline]] inline bool ZTSStyle::isQuiet(Origin origin, Listeners& listeners) const {
  return mChildren.isEmpty() && (origin == Origin::own || !isLocked()) && mObservers.isEmpty() &&
         !listeners.hear(*this);
}

/// The stylesheet is asked last: where many children are asked one after the other, nearly all are quiet.
[[gnu::always_inline]] inline bool ZTSStyle::endsUnseen(Origin origin, Listeners& listeners) const {
  return isPlain(ZTSStyleClass::plainTelling) && (isQuiet(origin, listeners) || !communicates());
}

bool ZTSStyle::endsUnseen(Origin origin) const {
  Listeners listeners;
  return endsUnseen(origin, listeners);
}

inline bool ZTSStyle::communicates() const {
  return mStylesheet != nullptr && mStylesheet->isChangeCommunicationEnabled();
}

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
  /// is one, was cascaded from the change. What keeping a look throws is put into `failure`: those below are told.
  bool begin(ZTSStyle& style, const ZTSStyleChangeInfo& change, ZTFirstFailure& failure, SpareRecord* spare = nullptr);

  [[nodiscard]] bool hasChildren() const noexcept { return !mChildren.empty(); }
  /// Tells the children and all below them.
  void tellChildren(ZTFirstFailure& failure);

  /// After the children: the observers, then the notification centre.
  void end(ZTFirstFailure& failure);

 private:
  static bool isFor(const ZTSStyle& style, const ZTSStyle* source, const PropertySet* changed);
  static Ref<const PropertySet> arriving(const ZTSStyle& style, const PropertySet& changed);
  void tellChild(ZTSStyle& child, std::vector<Telling>& below, ZTFirstFailure& failure, SpareRecord& spare);
  [[nodiscard]] bool isRecordKept() const noexcept;
  void post();
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

/// Whether the style tells at all, and the change is its own or its parent's.
inline bool ZTSStyle::Telling::isFor(const ZTSStyle& style, const ZTSStyle* source, const PropertySet* changed) {
  return style.communicates() && (source == &style || source == style.mParent.get()) && changed != nullptr;
}

/// What of the parent's change arrives: the keys that the style inspects and does not hide. None where there is no such
/// key, or where nobody would be told.
[[gnu::always_inline]] inline Ref<const PropertySet> ZTSStyle::Telling::arriving(const ZTSStyle& style,
                                                                                 const PropertySet& changed) {
  // What a class overrides is asked before anything else, even where the answer cannot matter any more. The first
  // answer is held where giving the second may replace it.
  const bool showsOwnMap = style.isPlain(ZTSStyleClass::plainMatching);
  const PropertySet* known = style.isPlain(ZTSStyleClass::plainTelling) ? nullptr : &style.inspectableProperties();
  const Ref<const PropertySet> held(showsOwnMap ? nullptr : known);
  const Ref<const PropertyMap> answered = showsOwnMap ? Ref<const PropertyMap>() : style.overridePropertyMap();
  Listeners listeners;
  if (style.isQuiet(Origin::parent, listeners)) return {};

  const PropertyMap* own = answered.get();
  if (showsOwnMap && (style.mKeyMask & changed.keyMask()) != 0) own = style.mLocalPropertyMap.get();
  Ref<const PropertySet> rest = unhidden(changed, known != nullptr ? *known : style.inspectableProperties(), own);
  return rest ? std::move(rest) : Ref<const PropertySet>(&changed);
}

// Four questions. Is the change for this style? What of it arrives? Then, if the style is locked, its look is kept:
// that takes the old values out of the record, which is the parent's still, and it calls out, so that children,
// observers and listeners may be others afterwards. Therefore who is there to be told is asked last.
bool ZTSStyle::Telling::begin(ZTSStyle& style, const ZTSStyleChangeInfo& change, ZTFirstFailure& failure,
                              SpareRecord* spare) {
  const ZTSStyle* const source = change.style();
  const PropertySet* const changed = change.changedProperties();
  if (!isFor(style, source, changed)) return false;
  const Origin origin = source == &style ? Origin::own : Origin::parent;
  Ref<const PropertySet> arrived = origin == Origin::own ? Ref<const PropertySet>(changed) : arriving(style, *changed);
  if (!arrived || arrived->isEmpty()) return false;

  mStyle = &style;
  const bool keepsLook = origin == Origin::parent && style.isLocked();
  if (keepsLook) failure.attempt([&] { style.keepLook(change, *arrived); });

  // What arrives at a leaf that keeps nothing has somebody to hear it.
  const bool isKnownToBeNoticed = origin == Origin::parent && !keepsLook && style.mChildren.isEmpty();
  if (!style.mChildren.isEmpty()) takeChildren(style);
  if (mChildren.empty() && !isKnownToBeNoticed && !style.isNoticed()) return false;

  if (origin == Origin::own) {
    mChange = const_cast<ZTSStyleChangeInfo*>(&change);
  } else {
    takeRecord(change, std::move(arrived), spare);
  }
  return true;
}

/// The record to pass on: the spare one, else a new one.
inline void ZTSStyle::Telling::takeRecord(const ZTSStyleChangeInfo& change, Ref<const PropertySet> arrived,
                                          SpareRecord* spare) {
  if (spare == nullptr || !spare->change) {
    mChange = ZTSStyleChangeInfo::cascadedFrom(&change, mStyle.get(), std::move(arrived));
    return;
  }
  mChange = std::move(spare->change);
  mUserInfo = std::move(spare->userInfo);
  mChange->p_reuseFor(change, mStyle.get(), std::move(arrived));
}

/// Whether somebody besides this telling, and the user information that it made, holds the record or that information.
bool ZTSStyle::Telling::isRecordKept() const noexcept {
  const std::uint32_t holdersOfChange = mUserInfo ? 2 : 1;
  return mChange->referenceCount() != holdersOfChange || (mUserInfo && mUserInfo->referenceCount() != 1);
}

inline void ZTSStyle::Telling::leaveRecordTo(SpareRecord& spare) noexcept {
  if (isRecordKept()) return;
  mChange->mStyle.reset();
  spare.change = std::move(mChange);
  spare.userInfo = std::move(mUserInfo);
}

/// A snapshot of the children, without the quiet leaves in front: while nobody has been called, they stay quiet.
void ZTSStyle::Telling::takeChildren(const ZTSStyle& style) {
  const auto& children = style.mChildren.table();
  Listeners listeners;
  const auto first =
      children.firstSlotWhere([&](const ZTSStyle* child) { return !child->endsUnseen(Origin::parent, listeners); });
  if (first == children.kNoSlot) return;
  mChildren.reserve(children.count());
  const auto hold = [&](ZTSStyle* child) {
    if (Ref<ZTSStyle> held = retainIfAlive(child)) mChildren.push_back(std::move(held));
    return false;
  };
  (void)children.firstSlotWhere(hold, first);
}

void ZTSStyle::Telling::tellChildren(ZTFirstFailure& failure) {
  std::vector<Telling> below;  // the way from this style down to where we are
  SpareRecord spare;           // of the level where we are
  for (;;) {
    Telling& level = below.empty() ? *this : below.back();
    const Ref<ZTSStyle> child = level.nextChild();
    if (!child) {
      spare = {};
      if (below.empty()) return;
      level.end(failure);
      below.pop_back();
      continue;
    }
    failure.attempt([&] { level.tellChild(*child, below, failure, spare); });
  }
}

/// Tells a child; one that has children itself becomes the level where we are.
[[gnu::always_inline]] inline void ZTSStyle::Telling::tellChild(ZTSStyle& child, std::vector<Telling>& below,
                                                                ZTFirstFailure& failure, SpareRecord& spare) {
  if (!child.isPlain(ZTSStyleClass::plainTelling)) return child.stylePropertiesChanged(*mChange);
  Telling next;
  if (!next.begin(child, *mChange, failure, &spare)) return;
  if (next.hasChildren()) {
    spare = {};
    below.push_back(std::move(next));
  } else {
    next.end(failure);
    next.leaveRecordTo(spare);
  }
}

void ZTSStyle::Telling::end(ZTFirstFailure& failure) {
  if (!mStyle->mObservers.isEmpty()) failure.attempt([&] { mStyle->tellObservers(*mChange, failure); });
  failure.attempt([&] { post(); });
}

[[gnu::always_inline]] inline void ZTSStyle::Telling::post() {
  NSNotificationCenter::defaultCenter().postIfHeard(mStyle->classObject().stylePropertiesChangedNotificationName(),
                                                    mStyle.get(), [&] {
                                                      static const StringRef key(ZTSStyleNotificationChangeInfoKey);
                                                      if (!mUserInfo) mUserInfo = NSDictionary::make(key, mChange);
                                                      return mUserInfo;
                                                    });
}

void ZTSStyle::tellObservers(const ZTSStyleChangeInfo& change, ZTFirstFailure& failure) {
  if (mObservers.count() == 1) {
    failure.attempt([&] { mObservers.anyObject()->stylePropertiesChanged(change); });
    return;
  }
  for (ZTSStyleObserver* observer : mObservers.allObjects()) {
    // One that has left meanwhile may be gone.
    if (!mObservers.containsObject(observer)) continue;
    failure.attempt([&] { observer->stylePropertiesChanged(change); });
  }
}

void ZTSStyle::stylePropertiesChanged(const ZTSStyleChangeInfo& change) {
  const NestingGuard guard("stylePropertiesChanged:", Nesting::telling);
  ZTFirstFailure failure;
  Telling telling;
  if (telling.begin(*this, change, failure)) {
    if (telling.hasChildren()) telling.tellChildren(failure);
    telling.end(failure);
  }
  failure.rethrow();
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
