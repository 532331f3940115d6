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
    return std::any_of(map.begin(), map.end(), [&](const PropertyMap::Entry& entry) { return keys.contains(entry.key); });
  }
  bool has = false;
  keys.forEach([&](PropertyKey key) { has = has || map.contains(key); });
  return has;
}

}  // namespace

// ---- Who can notice

bool ZTSStyle::isHeard() const {
  return NSNotificationCenter::anyoneListens(classObject().stylePropertiesChangedNotificationName(), this);
}

bool ZTSStyle::isQuietLeaf() const {
  return isPlain(ZTSStyleClass::plainTelling) && mChildren.isEmpty() && mObservers.isEmpty() && !isLocked() && !isHeard();
}

bool ZTSStyle::isUnheard() const {
  if (!isPlain(ZTSStyleClass::plainTelling)) return false;
  if (mStylesheet == nullptr || !mStylesheet->isChangeCommunicationEnabled()) return true;
  return mChildren.isEmpty() && mObservers.isEmpty() && !isHeard();
}

// ---- What arrives

/// The changed keys that this style inherits: the very set where that is all of them.
Ref<const PropertySet> ZTSStyle::unhiddenProperties(const PropertySet& changed) const {
  const PropertySet& known = inspectableProperties();
  const Ref<const PropertyMap> own = overridePropertyMap();
  if (changed.isSubsetOf(known) && (!own || !hasAny(*own, changed))) return Ref<const PropertySet>(&changed);
  Ref<PropertySet> rest = changed.copy();
  rest->intersect(known);
  if (own) {
    for (const auto& [key, value] : *own) rest->remove(key);
  }
  return rest;
}

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
  /// Takes the change to the style; false where it ends there and nobody is to be told.
  bool begin(ZTSStyle& style, const ZTSStyleChangeInfo& change);

  /// The next child that is to be told, or none.
  Ref<ZTSStyle> nextChild() noexcept { return mNext < mChildren.size() ? std::move(mChildren[mNext++]) : Ref<ZTSStyle>(); }
  [[nodiscard]] bool hasChildren() const noexcept { return !mChildren.empty(); }
  [[nodiscard]] const ZTSStyleChangeInfo& change() const noexcept { return *mChange; }

  /// After the children: the observers, then the notification centre.
  void end();

 private:
  void takeChildren();

  Ref<ZTSStyle> mStyle;
  Ref<const ZTSStyleChangeInfo> mChange;
  std::vector<Ref<ZTSStyle>> mChildren;
  std::size_t mNext = 0;
};

bool ZTSStyle::Telling::begin(ZTSStyle& style, const ZTSStyleChangeInfo& change) {
  if (style.mStylesheet == nullptr || !style.mStylesheet->isChangeCommunicationEnabled()) return false;
  const ZTSStyle* source = change.style();
  const bool isOwn = source == &style;
  if (!isOwn && source != style.mParent.get()) return false;
  if (change.changedProperties() == nullptr) return false;
  mStyle = &style;
  Ref<const PropertySet> arrived(change.changedProperties());
  if (!isOwn) arrived = style.unhiddenProperties(*arrived);
  if (arrived->isEmpty()) return false;
  if (!isOwn && style.isLocked()) style.keepLook(change, *arrived);
  takeChildren();
  if (mChildren.empty() && style.mObservers.isEmpty() && !style.isHeard()) return false;
  mChange = isOwn ? Ref<const ZTSStyleChangeInfo>(&change) : ZTSStyleChangeInfo::cascadedFrom(&change, &style, std::move(arrived));
  return true;
}

/// A snapshot of the children, without the quiet leaves in front: while nobody has been called, they stay quiet.
void ZTSStyle::Telling::takeChildren() {
  const auto& children = mStyle->mChildren;
  auto place = children.begin();
  const auto end = children.end();
  while (place != end && (*place)->isQuietLeaf()) ++place;
  if (place == end) return;
  mChildren.reserve(children.count());
  for (; place != end; ++place) {
    if (Ref<ZTSStyle> held = retainIfAlive(*place)) mChildren.push_back(std::move(held));
  }
}

void ZTSStyle::Telling::end() {
  mStyle->tellObservers(*mChange);
  NSNotificationCenter::defaultCenter().postIfHeard(
      mStyle->classObject().stylePropertiesChangedNotificationName(), mStyle.get(), [&] {
        static const StringRef key(ZTSStyleNotificationChangeInfoKey);
        return NSDictionary::make(key, Ref<NSObject>(const_cast<ZTSStyleChangeInfo*>(mChange.get())));
      });
}

void ZTSStyle::tellObservers(const ZTSStyleChangeInfo& change) {
  if (mObservers.isEmpty()) return;
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
  Telling first;
  if (!first.begin(*this, change)) return;
  std::vector<Telling> below;  // the way from the first style down to where we are
  for (;;) {
    Telling& level = below.empty() ? first : below.back();
    const Ref<ZTSStyle> child = level.nextChild();
    if (!child) {
      level.end();
      if (below.empty()) return;
      below.pop_back();
    } else if (!child->isPlain(ZTSStyleClass::plainTelling)) {
      child->stylePropertiesChanged(level.change());
    } else if (Telling next; !child->isQuietLeaf() && next.begin(*child, level.change())) {
      if (next.hasChildren()) {
        below.push_back(std::move(next));
      } else {
        next.end();
      }
    }
  }
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
