// Setting and removing values. Each operation checks, registers its inverse, changes, and tells.
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

/// Takes the own entries of the keys out of the style and answers them, in the order in which they stood.
Ref<PropertyMap> takeOwnEntries(ZTSStyle& style, const PropertySet& keys, const PropertyMap* own) {
  Ref<PropertyMap> taken = PropertyMap::make();
  if (own == nullptr) return taken;
  for (const auto& [key, value] : *own) {
    if (keys.contains(key)) taken->set(key, value);
  }
  for (const auto& [key, value] : *taken) style.p_removeValueForProperty(key);
  return taken;
}

}  // namespace

void ZTSStyle::setValueForProperty(Ref<NSObject> value, PropertyKey key) {
  const Ref<ZTSStyle> self(this);
  if (!key || !validateValueForProperty(value.get(), key)) {
    ZT_RAISE("setValue:forProperty:", this, kSourceFile,
             "[ZTSStyle %s] Attempted to set an invalid value %@ for property %@.", "setValue:forProperty:", value,
             key);
  }
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
  p_setValueForProperty(value ? std::move(value) : Ref<NSObject>(NSNull::null()), key);
  if (isUnheard()) return;
  stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperty(this, key, std::move(old)));
}

void ZTSStyle::setValueForPropertyWithScope(Ref<NSObject> value, PropertyKey key, NSObject*) {
  setValueForProperty(std::move(value), key);
}

void ZTSStyle::setValuesForProperties(const PropertyMap& values) {
  const Ref<ZTSStyle> self(this);
  const Ref<const PropertyMap> wanted = values.copy();
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
  Ref<NSObject> old(p_overrideValueForProperty(key));
  if (!old) return;
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setValue:forProperty:", self,
                       [before = noneForNull(old), key](ZTSStyle& style) { style.setValueForProperty(before, key); });
  }
  p_removeValueForProperty(key);
  if (isUnheard()) return;
  stylePropertiesChanged(*ZTSStyleChangeInfo::withStyleChangedProperty(this, key, std::move(old)));
}

void ZTSStyle::removeValuesForProperties(const PropertySet& keys) {
  const Ref<ZTSStyle> self(this);
  const Ref<const PropertyMap> old = takeOwnEntries(*this, keys, mLocalPropertyMap.get());
  if (old->isEmpty()) return;
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(undoManager())) {
    undo->registerUndo("setValuesForProperties:", self, [old](ZTSStyle& style) { style.setValuesForProperties(*old); });
  }
  if (!isUnheard()) stylePropertiesChanged(*recordOf(*this, old->keySet(), old));
}

void ZTSStyle::lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags) {
  const Ref<ZTSStyle> self(this);
  const Ref<const PropertyMap> wanted = values.copy();
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
}

void ZTSStyle::lockedStyleRemoveValuesForProperties(const PropertySet& keys, std::int32_t flags) {
  const Ref<ZTSStyle> self(this);
  const Ref<const PropertyMap> old = takeOwnEntries(*this, keys, mLocalPropertyMap.get());
  if (old->isEmpty()) return;
  const Ref<NSUndoManager> manager(undoManager());
  if (NSUndoManager* undo = NSUndoManager::ifRegistering(manager.get())) {
    undo->registerUndo("lockedStyleSetValuesForProperties:notificationFlags:", self,
                       [old, flags](ZTSStyle& style) { style.lockedStyleSetValuesForProperties(*old, flags); });
  }
  if (isTelling(manager.get(), flags) && !isUnheard()) stylePropertiesChanged(*recordOf(*this, old->keySet(), old));
}

bool ZTSStyle::validateValueForProperty(NSObject*, PropertyKey) const { return false; }

bool ZTSStyle::canMutateViaAction(const StringRef&) const { return false; }

void ZTSStyle::mutateViaActionArguments(const StringRef& action, NSObject*) {
  throw NSInvalidArgumentException(format("Style cannot perform the action %@", action));
}

}  // namespace zt
