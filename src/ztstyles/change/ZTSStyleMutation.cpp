// SPDX-License-Identifier: MIT

// Setting and removing values. Each operation checks, registers its inverse, changes, and tells.
//
// Before anything else and after everything else it passes two hooks, through which references, counts and derived
// values follow (`Changing`). The first may replace what is to be stored, so that an operation on one entry may go on
// as one on several.
//
// What is handed in may be alive: the style's own map, or a set that an observer changes. Each operation
// therefore works on a copy of its own, and holds the style, which an observer may release. One that turns to the
// undo manager twice holds it too: a registration drops what could be redone, which may have kept the document.
// Where nobody can hear of a change, no record is made.

#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <platform/NSUndoManager.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStylesheet.h>

#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

/// A value as callers know it: none where the style is explicitly to have no value.
Ref<NSObject> noneForNull(const Ref<NSObject>& stored) { return isNull(stored.get()) ? Ref<NSObject>() : stored; }

/// Whether a change made through the locked-style operations tells anybody in the phase of the undo manager.
bool isTelling(const NSUndoManager* undoManager, std::int32_t flags) {
  std::int32_t phase = kZTSStyleNotifyOnChange;
  if (undoManager != nullptr && undoManager->isUndoing()) phase = kZTSStyleNotifyOnUndo;
  if (undoManager != nullptr && undoManager->isRedoing()) phase = kZTSStyleNotifyOnRedo;
  return (flags & phase) != 0;
}

/// What a change of several values finds: the own entries that it replaces, and the keys that are new.
struct Replaced {
  Ref<PropertyMap> entries;
  Ref<PropertySet> newKeys;

  Replaced(const ZTSStyle& style, const PropertyMap& values)
      : entries(PropertyMap::make(values.count())), newKeys(PropertySet::make()) {
    for (const auto& [key, value] : values) {
      if (NSObject* own = style.p_overrideValueForProperty(key)) {
        entries->set(key, Ref<NSObject>(own));
      } else {
        newKeys->add(key);
      }
    }
  }

  /// The entries, and for the new keys what the style has inherited so far. The inverse holds the entries
  /// alone, so the map is another one.
  [[nodiscard]] Ref<const PropertyMap> withInherited(const ZTSStyle& style) const {
    if (newKeys->isEmpty() || style.parent() == nullptr) return entries;
    Ref<PropertyMap> all = entries->copy(newKeys->count());
    newKeys->forEach([&](PropertyKey key) {
      if (NSObject* inherited = style.parent()->p_valueForProperty(key)) all->set(key, Ref<NSObject>(inherited));
    });
    return all;
  }
};

/// A record of the style over a set and a map that nobody changes any more, which it therefore need not copy.
Ref<ZTSStyleChangeInfo> recordOf(ZTSStyle& style, const Ref<const PropertySet>& changed,
                                 const Ref<const PropertyMap>& old) {
  return ZTSStyleChangeInfo::p_init(&style, &style, changed, changed, {}, {}, old);
}

/// The own entries of the keys, in the order in which they stand.
Ref<PropertyMap> ownEntries(const PropertySet& keys, const PropertyMap* own) {
  Ref<PropertyMap> found = PropertyMap::make();
  if (own == nullptr) return found;
  for (const auto& [key, value] : *own) {
    if (keys.contains(key)) found->set(key, value);
  }
  return found;
}

}  // namespace

// ---- The hooks

/// Brings a change through its hooks: `begin` before it, `finish` after it, and if it throws, the second hook on the
/// way out, where a further failure is passed over. A class that leaves the hooks alone is not called.
class ZTSStyle::Changing {
 public:
  Changing(ZTSStyle& style, ZTSEntriesChange& change) noexcept
      : mStyle(style.isPlain(ZTSStyleClass::plainCounting) ? nullptr : &style), mChange(change) {}
  Changing(const Changing&) = delete;
  Changing& operator=(const Changing&) = delete;
  ~Changing() {
    if (mStyle == nullptr) return;
    try {
      mStyle->entriesDidChange(mChange);
    } catch (...) {
      // What made the change fail is on its way already and says more.
    }
  }

  void begin() {
    if (mStyle != nullptr) mStyle->entriesWillChange(mChange);
  }
  void finish() {
    if (ZTSStyle* style = std::exchange(mStyle, nullptr)) style->entriesDidChange(mChange);
  }

 private:
  ZTSStyle* mStyle;  // none where nobody is to be called any more; held by the operation
  ZTSEntriesChange& mChange;
};

void ZTSStyle::entriesWillChange(ZTSEntriesChange&) {}
void ZTSStyle::entriesDidChange(const ZTSEntriesChange&) {}

// ---- Operations

void ZTSStyle::setValueForProperty(Ref<NSObject> value, PropertyKey key) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "setValue:forProperty:", .key = key, .value = std::move(value)};
  Changing changing(*this, change);
  changing.begin();
  if (change.values) {
    storeEntries(change.values);
  } else {
    storeEntry(change.value, change.key);
  }
  changing.finish();
}

void ZTSStyle::storeEntry(const Ref<NSObject>& value, PropertyKey key) {
  if (!key || !validateValueForProperty(value.get(), key)) {
    ZT_RAISE("setValue:forProperty:", this, kSourceFile,
             "[ZTSStyle %s] Attempted to set an invalid value %@ for property %@.", "setValue:forProperty:", value,
             key);
  }
  const Ref<ZTSStyle> self(this);
  Ref<NSObject> old(p_overrideValueForProperty(key));
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    if (old) {
      undo->registerUndo("setValue:forProperty:", self,
                         [before = noneForNull(old), key](ZTSStyle& style) { style.setValueForProperty(before, key); });
    } else {
      undo->registerUndo("removeValueForProperty:", self,
                         [key](ZTSStyle& style) { style.removeValueForProperty(key); });
    }
  }
  // Deliberately the parent's effective value, where the several-value operations take the raw one.
  if (!old && mParent) old = mParent->valueForProperty(key);
  p_setValueForProperty(value ? value : Ref<NSObject>(NSNull::null()), key);
  if (isUnheard()) return;
  stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperty(this, key, std::move(old)));
}

void ZTSStyle::setValueForPropertyWithScope(Ref<NSObject> value, PropertyKey key, NSObject*) {
  setValueForProperty(std::move(value), key);
}

void ZTSStyle::setValuesForProperties(const PropertyMap& values) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "setValuesForProperties:", .values = values.copy()};
  Changing changing(*this, change);
  changing.begin();
  storeEntries(change.values);
  changing.finish();
}

void ZTSStyle::storeEntries(const Ref<const PropertyMap>& wanted) {
  const Ref<ZTSStyle> self(this);
  for (const auto& [key, value] : *wanted) {
    if (validateValueForProperty(noneForNull(value).get(), key)) continue;
    ZT_RAISE("setValuesForProperties:", this, kSourceFile,
             "[ZTSStyle %s] Attempted to set an invalid value %@ for property %@.", "setValuesForProperties:", value,
             key);
  }
  const Replaced replaced(*this, *wanted);
  if (const Ref<NSUndoManager> undo{NSUndoManager::ifRegistering(undoManager())}) {
    if (!replaced.entries->isEmpty()) {
      undo->registerUndo("setValuesForProperties:", self,
                         [before = Ref<const PropertyMap>(replaced.entries)](ZTSStyle& style) {
                           style.setValuesForProperties(*before);
                         });
    }
    if (!replaced.newKeys->isEmpty()) {
      undo->registerUndo("removeValuesForProperties:", self,
                         [added = Ref<const PropertySet>(replaced.newKeys)](ZTSStyle& style) {
                           style.removeValuesForProperties(*added);
                         });
    }
  }
  const Ref<const PropertyMap> old = replaced.withInherited(*this);
  for (const auto& [key, value] : *wanted) p_setValueForProperty(value, key);
  if (!isUnheard()) stylePropertiesChanged(*recordOf(*this, wanted->keySet(), old));
}

void ZTSStyle::setValuesForPropertiesWithScope(const PropertyMap& values, NSObject*) { setValuesForProperties(values); }

void ZTSStyle::removeValueForProperty(PropertyKey key) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "removeValueForProperty:", .isRemoval = true, .key = key};
  Changing changing(*this, change);
  changing.begin();
  if (change.keys) {
    removeEntries(*change.keys);
  } else {
    removeEntry(change.key);
  }
  changing.finish();
}

void ZTSStyle::removeEntry(PropertyKey key) {
  Ref<NSObject> old(key ? p_overrideValueForProperty(key) : nullptr);
  if (!old) return;
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setValue:forProperty:", Ref<ZTSStyle>(this),
                       [before = noneForNull(old), key](ZTSStyle& style) { style.setValueForProperty(before, key); });
  }
  p_removeValueForProperty(key);
  if (isUnheard()) return;
  stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperty(this, key, std::move(old)));
}

void ZTSStyle::removeValuesForProperties(const PropertySet& keys) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "removeValuesForProperties:", .isRemoval = true, .keys = keysToRemove(keys)};
  Changing changing(*this, change);
  changing.begin();
  removeEntries(*change.keys);
  changing.finish();
}

/// The set itself where nobody is called before it is read, else one that nobody changes meanwhile.
Ref<const PropertySet> ZTSStyle::keysToRemove(const PropertySet& keys) const {
  return isPlain(ZTSStyleClass::plainCounting) ? Ref<const PropertySet>(&keys) : Ref<const PropertySet>(keys.copy());
}

void ZTSStyle::removeEntries(const PropertySet& keys) {
  const Ref<const PropertyMap> old = ownEntries(keys, mLocalPropertyMap.get());
  if (old->isEmpty()) return;
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setValuesForProperties:", Ref<ZTSStyle>(this),
                       [old](ZTSStyle& style) { style.setValuesForProperties(*old); });
  }
  p_removeValuesForProperties(*old);
  if (!isUnheard()) stylePropertiesChanged(*recordOf(*this, old->keySet(), old));
}

void ZTSStyle::lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "lockedStyleSetValuesForProperties:notificationFlags:",
                          .way = ZTSEntriesChange::Way::lockedStyle,
                          .values = values.copy()};
  Changing changing(*this, change);
  changing.begin();
  const Ref<const PropertyMap> wanted = change.values;
  for (const auto& [key, value] : *wanted) {
    if (validateValueForProperty(noneForNull(value).get(), key)) continue;
    ZT_REPORT("lockedStyleSetValuesForProperties:notificationFlags:", this, kSourceFile,
              "Attempted to set an invalid value %@ for property %@.", value, key);
  }
  const Replaced replaced(*this, *wanted);
  const Ref<NSUndoManager> manager(undoManager());
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(manager.get())) {
    if (!replaced.entries->isEmpty()) {
      undo->registerUndo("lockedStyleSetValuesForProperties:notificationFlags:", self,
                         [before = Ref<const PropertyMap>(replaced.entries), flags](ZTSStyle& style) {
                           style.lockedStyleSetValuesForProperties(*before, flags);
                         });
    }
    if (!replaced.newKeys->isEmpty()) {
      undo->registerUndo("lockedStyleRemoveValuesForProperties:notificationFlags:", self,
                         [added = Ref<const PropertySet>(replaced.newKeys), flags](ZTSStyle& style) {
                           style.lockedStyleRemoveValuesForProperties(*added, flags);
                         });
    }
  }
  const bool tells = isTelling(manager.get(), flags);
  const Ref<const PropertyMap> old = tells ? replaced.withInherited(*this) : Ref<const PropertyMap>();
  for (const auto& [key, value] : *wanted) p_setValueForProperty(value, key);
  if (tells && !isUnheard()) stylePropertiesChanged(*recordOf(*this, wanted->keySet(), old));
  changing.finish();
}

void ZTSStyle::lockedStyleRemoveValuesForProperties(const PropertySet& keys, std::int32_t flags) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "lockedStyleRemoveValuesForProperties:notificationFlags:",
                          .way = ZTSEntriesChange::Way::lockedStyle,
                          .isRemoval = true,
                          .keys = keysToRemove(keys)};
  Changing changing(*this, change);
  changing.begin();
  if (const Ref<const PropertyMap> old = ownEntries(*change.keys, mLocalPropertyMap.get()); !old->isEmpty()) {
    const Ref<NSUndoManager> manager(undoManager());
    if (NSUndoManager* undo = NSUndoManager::ifRegistering(manager.get())) {
      undo->registerUndo("lockedStyleSetValuesForProperties:notificationFlags:", self,
                         [old, flags](ZTSStyle& style) { style.lockedStyleSetValuesForProperties(*old, flags); });
    }
    p_removeValuesForProperties(*old);
    if (isTelling(manager.get(), flags) && !isUnheard()) stylePropertiesChanged(*recordOf(*this, old->keySet(), old));
  }
  changing.finish();
}

void ZTSStyle::unconditionalRemoveValueForProperty(PropertyKey key) {
  const Ref<ZTSStyle> self(this);
  ZTSEntriesChange change{.operation = "unconditionalRemoveValueForProperty:",
                          .way = ZTSEntriesChange::Way::unconditional,
                          .isRemoval = true,
                          .key = key};
  Changing changing(*this, change);
  changing.begin();
  p_removeValueForProperty(key);
  changing.finish();
}

bool ZTSStyle::validateValueForProperty(NSObject*, PropertyKey) const { return false; }

bool ZTSStyle::canMutateViaAction(const StringRef&) const { return false; }

void ZTSStyle::mutateViaActionArguments(const StringRef& action, NSObject*) {
  throw NSInvalidArgumentException(format("Style cannot perform the action %@", action));
}

}  // namespace zt
