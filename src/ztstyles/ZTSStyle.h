// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAXMLCoding.h>
#include <platform/NSDocument.h>
#include <platform/PropertyMap.h>
#include <support/ZTUCountedPointerSet.h>
#include <support/ZTUDocumentObject.h>
#include <support/ZTUMutablePointerSet.h>
#include <support/ZTUMutableRetainedPointerSet.h>
#include <ztstyles/ZTSEntriesChange.h>
#include <ztstyles/ZTSStyleClass.h>
#include <ztstyles/ZTSStyleObserver.h>
#include <ztstyles/ZTSStyleTypes.h>

#include <optional>
#include <vector>

namespace zt {

class NSUndoManager;
class ZTSStyle;
class ZTSStylesheet;
class ZTFirstFailure;

/// A set of styles that keeps its members alive.
using ZTSStyleSet = ZTUMutableRetainedPointerSet<ZTSStyle>;

/// A style: a bag of property values that inherits every value it does not set itself from a parent
/// style. A style is made detached, without stylesheet and parent. A stylesheet adopts it by setting its
/// link, whereupon the style finds its parent by identifier, and drops it by clearing the link.
///
/// An application derives its style classes from this one (or from `ZTSAggregateStyle`) by way of `ZTSStyleOf`, which
/// gives each a class object with its property registry, and overrides what differs. Every call between the
/// operations below that are virtual goes through dynamic dispatch, also of a style on itself. Those that are not
/// virtual answer what is stored, or store it: the accessors, `overridesAnyProperty`, and the `p_` operations. The
/// library reads the same fields itself in many places, and an override would be heeded in some of them only. Or they
/// are another spelling of one that is: `canInspectProperty`, `makeChildrenPerform`.
///
/// A style is used from one thread at a time; only equality takes a lock of its own.
class ZT_EXPORT ZTSStyle : public ZTAXMLCoding, public ZTSStyleObserver {
 public:
  /// The class object of `ZTSStyle` itself. Styles are made by class objects, or with `make<T>(...)`.
  static const ZTSStyleClass& styleClass();
  /// The class object of this style's exact class.
  const ZTSStyleClass& classObject() const override;
  /// The object as a style, or none; the same as `asStyle`.
  static const ZTSStyle* from(const NSObject* object) noexcept;

  /// @name Making one, identity and links
  /// Implemented in ZTSStyle.cpp. The accessors answer their field.
  /// @{

  /// Initialises a bare style. False, after a report, if the map holds a key outside the class's
  /// registry; the style is then dropped by its maker. The parent is not resolved here.
  virtual bool initWithName(const ZTSStyleFields& fields);
  [[nodiscard]] const StringRef& name() const noexcept { return mName; }
  [[nodiscard]] const StringRef& identifier() const noexcept { return mIdentifier; }
  [[nodiscard]] const StringRef& parentIdentifier() const noexcept { return mParentIdentifier; }
  /// The resolved parent, held by this style; none without one.
  [[nodiscard]] ZTSStyle* parent() const noexcept { return mParent.get(); }
  /// The styles whose parent is this one: the live set, which does not hold them.
  [[nodiscard]] const ZTUMutablePointerSet<ZTSStyle>& children() const noexcept { return mChildren; }
  /// The stylesheet that the style belongs to, or none. A back-link: cleared by the stylesheet when the
  /// style leaves it or when it is destroyed.
  [[nodiscard]] ZTSStylesheet* stylesheet() const noexcept { return mStylesheet; }
  [[nodiscard]] bool isLocked() const noexcept { return hasState(kLocked); }
  [[nodiscard]] std::uint32_t usageCount() const noexcept { return mUsageCount; }
  [[nodiscard]] std::uint32_t orphanCount() const noexcept { return mOrphanCount; }
  /// The observers: the live counted set, which does not hold them.
  [[nodiscard]] const ZTUCountedPointerSet<ZTSStyleObserver>& observers() const noexcept { return mObservers; }
  /// Whether a name is there, even an empty one.
  [[nodiscard]] bool isNamed() const noexcept { return mName.isPresent(); }
  [[nodiscard]] bool isIdentified() const noexcept { return mIdentifier.isPresent(); }
  [[nodiscard]] bool isAnonymous() const noexcept { return !mIdentifier.isPresent(); }
  /// Changes the name, undoably, and posts `ZTSStyleNameChangedNotification`. An equal name does nothing.
  virtual void setName(StringRef name);
  /// Changes the identifier of a style that has no stylesheet. With a stylesheet it is reported and the
  /// identifier stays: identify and anonymize are the stylesheet's.
  virtual void setIdentifier(StringRef identifier);
  /// Changes where the style inherits from, undoably, and resolves the parent again unless the parent
  /// has that identifier already.
  virtual void setParentIdentifier(StringRef parentIdentifier);
  /// Stores the link and resolves the parent. The current stylesheet does nothing.
  virtual void setStylesheet(ZTSStylesheet* stylesheet);
  /// Locks or unlocks, undoably. Locking keeps an inspector from changing the style, and keeps the
  /// style's look when its parent changes.
  virtual void setIsLocked(bool isLocked);
  /// Resolves the parent and, if it changed, treats the difference as a change that comes from it.
  virtual void updateParent();
  /// Clears the stylesheet link without resolving the parent: the stylesheet is being destroyed.
  virtual void cleanup();
  /// Calls the operation on each member of a snapshot of the children.
  void makeChildrenPerform(auto operation) const { mChildren.makeObjectsPerform(operation); }
  /// @}

  /// @name Document
  /// Implemented in ZTSStyle.cpp.
  /// @{

  /// The stylesheet's document and undo manager; none without a stylesheet.
  virtual NSDocument* document() const;
  virtual NSUndoManager* undoManager() const;
  /// Called by the stylesheet around adding and removing, where it has a document. The base does nothing.
  /// The context is what was handed to `addStyleWithContext`, or none.
  virtual void willBeAddedToDocument(NSDocument* document, NSObject* context);
  virtual void wasAddedToDocument(NSDocument* document, NSObject* context);
  virtual void willBeRemovedFromDocument(NSDocument* document);
  virtual void wasRemovedFromDocument(NSDocument* document);
  /// @}

  /// @name Counting
  /// Implemented in ZTSStyleCounting.cpp. A style counts the uses that its users report plus its children
  /// that are in use; only the steps between 0 and 1 reach the parent.
  /// @{

  virtual void incrementUsageCount();
  /// At 0 it is reported, and nothing changes.
  virtual void decrementUsageCount();
  virtual void incrementOrphanCount();
  /// At 0 it raises `NSInternalInconsistencyException`, and nothing changes.
  virtual void decrementOrphanCount();
  /// @}

  /// @name Lookup
  /// Implemented in ZTSStyleLookup.cpp. Nothing here changes anything.
  /// @{

  /// The effective value of `key`: the own value, else the nearest ancestor's. None if nobody sets it, or if the
  /// nearest setter set it explicitly to no value. Cost: one mask test per ancestor, one search where the key is found.
  virtual Ref<NSObject> valueForProperty(PropertyKey key) const;
  /// The same, but the null sentinel is answered as it is. Borrowed until a style of the chain changes.
  [[nodiscard]] NSObject* p_valueForProperty(PropertyKey key) const noexcept;
  /// The own entry, null sentinel included, or none.
  virtual Ref<NSObject> overrideValueForProperty(PropertyKey key) const;
  /// The own entry as it is stored: borrowed until the style changes, or none.
  [[nodiscard]] NSObject* p_overrideValueForProperty(PropertyKey key) const noexcept {
    return (mKeyMask & key.bit()) != 0 ? mLocalPropertyMap->find(key) : nullptr;
  }
  /// Whether there is an own entry; one that holds the null sentinel counts.
  virtual bool overridesProperty(PropertyKey key) const;
  /// Whether the style or an ancestor has an entry.
  virtual bool definesProperty(PropertyKey key) const;
  /// The own entries: the live map itself, or none when it is empty. (A subclass may answer a fresh one.)
  virtual Ref<const PropertyMap> overridePropertyMap() const;
  [[nodiscard]] bool overridesAnyProperty() const noexcept {
    return mLocalPropertyMap && !mLocalPropertyMap->isEmpty();
  }
  /// The flattened map, null sentinels included: a fresh one that the caller may change; none when neither
  /// the style nor an ancestor has entries.
  virtual Ref<PropertyMap> propertyMap() const;
  /// The styles that the values refer to. None in this class.
  virtual std::optional<ZTSStyleSet> referencedStyles() const;
  virtual std::optional<ZTSStyleSet> implicitlyReferencedStyles() const;
  virtual std::optional<ZTSStyleSet> recursivelyReferencedStyles() const;
  /// @}

  /// @name Inspection
  /// Implemented in ZTSStyleInspection.cpp, the actions in ZTSStyleMutation.cpp. The scope is opaque and is ignored by
  /// this class.
  /// @{

  virtual const PropertySet& inspectableProperties() const;
  [[nodiscard]] bool canInspectProperty(PropertyKey key) const { return inspectableProperties().contains(key); }
  /// None for a locked style.
  virtual const PropertySet* mutableProperties() const;
  virtual bool canMutateProperty(PropertyKey key) const;
  virtual Ref<NSObject> valueForPropertyWithScope(PropertyKey key, NSObject* scope) const;
  /// The effective values as a list without repetitions, or none where there is no value. A style has one.
  virtual std::optional<std::vector<Ref<NSObject>>> valuesForProperty(PropertyKey key) const;
  virtual std::optional<std::vector<Ref<NSObject>>> valuesForPropertyWithScope(PropertyKey key, NSObject* scope) const;
  /// Each given key that has values, with them, in the order of the set.
  virtual std::vector<std::pair<PropertyKey, std::vector<Ref<NSObject>>>> valuesForPropertiesWithScope(
      const PropertySet& keys, NSObject* scope) const;
  virtual bool isStateMixedForProperty(PropertyKey key) const;
  /// Each given key with a boolean number.
  virtual Ref<PropertyMap> isStateMixedForPropertiesWithScope(const PropertySet& keys, NSObject* scope) const;
  virtual bool canMutateViaAction(const StringRef& action) const;
  /// Raises `NSInvalidArgumentException` in this class.
  virtual void mutateViaActionArguments(const StringRef& action, NSObject* arguments);
  /// @}

  /// @name Mutation
  /// Implemented in ZTSStyleMutation.cpp, what only stores in ZTSStyle.cpp. Each operation registers its inverse,
  /// changes, and tells; none asks whether the style is locked or whether the value differs. None as value is stored
  /// as the null sentinel. An unacceptable value raises `NSInternalInconsistencyException` before anything changes,
  /// but for the locked-style operations, which report it and go on.
  /// @{

  virtual void setValueForProperty(Ref<NSObject> value, PropertyKey key);
  virtual void setValueForPropertyWithScope(Ref<NSObject> value, PropertyKey key, NSObject* scope);
  virtual void setValuesForProperties(const PropertyMap& values);
  virtual void setValuesForPropertiesWithScope(const PropertyMap& values, NSObject* scope);
  /// Without an own entry nothing happens.
  virtual void removeValueForProperty(PropertyKey key);
  virtual void removeValuesForProperties(const PropertySet& keys);
  /// Tells only in the phases that `flags` (ZTSStyleNotificationFlags) name; so does its undo.
  virtual void lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags);
  virtual void lockedStyleRemoveValuesForProperties(const PropertySet& keys, std::int32_t flags);
  /// Removes the own entry without undo and telling. An aggregate lets go of what it refers to.
  virtual void unconditionalRemoveValueForProperty(PropertyKey key);
  /// Whether the value (none where it is to be unset) may be stored. This class refuses every value.
  virtual bool validateValueForProperty(NSObject* value, PropertyKey key) const;

  /// Store or remove the own entry and nothing else; indexes follow. The value must be present.
  void p_setValueForProperty(Ref<NSObject> value, PropertyKey key);
  void p_removeValueForProperty(PropertyKey key);
  /// Removes the own entries that the map has keys of, in one pass.
  void p_removeValuesForProperties(const PropertyMap& removed);
  /// @}

  /// @name Hooks of a change
  /// Implemented in ZTSStyleMutation.cpp. Every mutation of own entries passes both, whichever way it was asked for.
  /// The base does nothing; an override calls the inherited one.
  /// @{

  /// Called before anything is checked, registered or stored. May replace what the change is to store or remove, and
  /// may raise, which ends the change.
  virtual void entriesWillChange(ZTSEntriesChange& change);
  /// Called when the change has been stored and told, and also, with what it throws passed over, where the change or
  /// the first hook has thrown.
  virtual void entriesDidChange(const ZTSEntriesChange& change);
  /// @}

  /// @name Telling
  /// Implemented in ZTSStylePropagation.cpp.
  /// @{

  /// Takes a change of this style or of its parent: drops what it hides, keeps the look of a locked style,
  /// tells children, then observers, then the notification centre.
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override;
  /// Adds one count of the observer, or takes one away. The style itself is reported and not added.
  virtual void addObserver(ZTSStyleObserver* observer);
  virtual void removeObserver(ZTSStyleObserver* observer);
  /// @}

  /// @name Override maps
  /// Implemented in ZTSStyleOverrides.cpp.
  /// @{

  /// The smallest override map that gives the wanted values relative to this style's base: the entries of
  /// `overrides` always, those of `wanted` (and, with `canCollapse`, the own entries of an anonymous style)
  /// only where they differ from the base's values. Either map may be none. A new map, possibly empty.
  virtual Ref<PropertyMap> overridePropertyMapWithPropertyMap(const PropertyMap* wanted, const PropertyMap* overrides,
                                                              bool canCollapse) const;
  /// The same as this class computes it, put into an empty map of the caller's.
  void p_collectOverrides(PropertyMap& result, const PropertyMap* wanted, const PropertyMap* overrides,
                          bool canCollapse) const;
  /// Removes own values that equal the parent's, in one undoable step. Nothing if locked or without parent.
  virtual void collapseOverriddenPropertyValues();
  /// Removes all own values unless the style is locked.
  virtual void clearOverriddenPropertyValues();
  /// The keys in which the two differ, or none where there is no such key.
  virtual Ref<PropertySet> compareProperties(const ZTSStyle& other) const;
  virtual bool isEqualToStyleForProperty(const ZTSStyle& other, PropertyKey key) const;
  /// Hands children and observers over to another style of the same class. Anything else does nothing.
  virtual void replaceWithStyle(ZTSStyle* other);
  /// @}

  /// @name Copy, equality, descriptions
  /// Implemented in ZTSStyleComparison.cpp.
  /// @{

  /// A new detached style of the same class with the same name, identifiers, own values and lock.
  Ref<NSObject> copy() const override;
  /// Structural equality, names included.
  bool isEqual(const NSObject* other) const override;
  /// Same class, lock, identifiers, (name,) equal parents and equal own values. Styles that refer to one
  /// another are compared once. Takes the process-wide lock of comparisons.
  virtual bool isEqualCompareNames(const ZTSStyle* other, CompareNames compareNames) const;
  /// The hash of the identifier; 0 for an anonymous style.
  std::size_t hash() const override;
  /// One constant for each class: equality may change with the style's state.
  std::size_t stableHash() const override;
  /// -1, 0 or 1. Nameless styles come first. None is reported and counts as nameless.
  virtual int compareByName(const ZTSStyle* other) const;
  std::string description() const override;
  /// One line that names the style by what identifies it.
  virtual std::string shortDescription() const;
  /// The number of comparisons in progress, for tests: 0 between comparisons.
  static std::size_t comparisonsInProgress();
  /// @}

  /// @name Validation
  /// Implemented in ZTSStyleValidation.cpp.
  /// @{

  /// Reports every broken invariant of the style's links; changes nothing.
  virtual void validate() const;
  /// Checks of the application's own, called last by `validate`. The base does nothing.
  virtual void appSpecificValidate() const;
  /// @}

  /// @name Archive
  /// Implemented in ZTSStylePersistenceAdditions.cpp and ZTSStyleSavingOnDemand.cpp, the copies in
  /// ZTSDowngradeStylesheet.cpp and ZTSStyleComparison.cpp.
  /// @{

  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override;
  bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t version) override;
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) override;
  void preencodeHookWithXMLArchiver(ZTAXMLArchiver& archiver) override;
  const ZTClass* ztClassAncestor() const override;
  Ref<ZTAError> handleError(Ref<ZTAError> error) override;
  /// A style refers to the styles among its values; it does not own them.
  bool archivesByReference() const override { return true; }
  void replaceUnarchivedObject(NSObject& dropped, NSObject* kept) override;
  /// A class that writes more than this one does answers these and its own.
  const ZTAArchivedItems* archivedItems() const override;
  /// Saving writes this class's name again, with the style's class as the ancestor that may stand in.
  void standInForClassNamed(const StringRef& className) override;
  /// The container of its stylesheet, where that is written too.
  _xmlNode* containerInArchive(const ZTAXMLArchiver& archiver) const override;
  void releaseArchivedObjects(std::vector<Ref<NSObject>>&& objects) const override;
  /// The map to write; none counts as empty. The base answers the live own map.
  virtual Ref<const PropertyMap> archivedPropertiesForVersion(std::uint64_t version, ZTAXMLArchiver& archiver) const;
  /// Whether the key's element is written empty. The base answers false.
  virtual bool hasDefaultValueForProp(PropertyKey key) const;
  /// The value taken on reading when the archive gives none. The base answers none.
  virtual Ref<NSObject> defaultValueForProp(PropertyKey key) const;
  /// Whether the identifier says it all, so that nothing else need be written. The class answers.
  virtual bool canBeReconstructedFromIdentifier() const;
  /// Initialises a bare style from its identifier alone; none drops it. Raises `NSGenericException` in this class.
  virtual Ref<ZTSStyle> initWithIdentifier(const StringRef& identifier);
  /// With a `ZTVXMLArchiverForPB`, writes the style and everything that it needs, each once; else nothing.
  virtual void ensureSavedWithXMLArchiver(ZTAXMLArchiver& archiver);
  /// The same with any archiver whose metadata asks for it (see ZTSArchiving.h): parent and references first, each
  /// into the container of its stylesheet. Raises `NSGenericException`, after a log, where one is missing.
  void p_archiveStyleAndRelatedWithArchiver(ZTAXMLArchiver& archiver);
  /// Links a style that was read, or unlinks one that another replaced. An aggregate begins or ends observing.
  virtual void archivingSetStylesheet(ZTSStylesheet* stylesheet);
  /// Resolves the parent of a style that was read; nobody is told.
  virtual void archivingUpdateParent();
  /// After the whole stylesheet was read: removes what the class does not accept, without undo and telling.
  virtual void upgradeStyleWithUnarchiver(ZTAXMLUnarchiver& unarchiver, std::uint64_t version);
  /// The own entry as stored, borrowed, or none.
  [[nodiscard]] NSObject* rawValueForProperty(PropertyKey key) const { return p_overrideValueForProperty(key); }
  /// A new style of the class with the same fields and own values, for an archive of an older version.
  virtual Ref<ZTSStyle> downgradeCopy() const;
  /// The copy that a deep copy makes; the base answers `copy()`.
  virtual Ref<ZTSStyle> copyWithoutSettingStylesheet() const;
  /// Class-wide: whether property elements are written in the order of their names.
  static bool sortXMLPropertiesByKey();
  static void setSortXMLPropertiesByKey(bool sort);
  /// @}

  /// @name Private operations
  /// For construction, copying, the stylesheet and the archive: they store and do nothing else; indexes follow.
  /// @{

  void p_setName(StringRef name) { mName = std::move(name); }
  void p_setIdentifier(StringRef identifier);
  void p_setParentIdentifier(StringRef parentIdentifier);
  void p_setParent(Ref<ZTSStyle> parent);
  void p_setChildren(ZTUMutablePointerSet<ZTSStyle> children);
  void p_setPropertyMap(Ref<PropertyMap> map);
  void p_setObservers(ZTUCountedPointerSet<ZTSStyleObserver> observers) { mObservers = std::move(observers); }
  void p_setStylesheet(ZTSStylesheet* stylesheet);
  void p_setUsageCount(std::uint32_t count);
  void p_setIsLocked(bool isLocked);
  /// Resolves the parent; answers whether it changed. A parent that would close a loop is refused: the
  /// style stays without one and is tried again when a link of that loop changes.
  bool p_updateParent();
  /// To be called where a style has left the place where others looked it up: tries the style again whose parent would
  /// have closed a loop by way of this one, if there is one.
  void p_retryRefused();
  /// A style that names a parent and has none is to be tried at the next retry.
  void p_fileAsUntried();
  /// A child in use, or with orphans, passes one unit on, or takes it back.
  void p_addChild(ZTSStyle& child);
  void p_removeChild(ZTSStyle& child);
  /// The stylesheet in which the parent identifier is looked up; none without one.
  [[nodiscard]] ZTSStylesheet* p_reachStylesheet() const noexcept;
  /// The own entries as they are stored, whatever the class shows of them; none while none was ever written. Borrowed
  /// until one is stored.
  [[nodiscard]] const PropertyMap* p_ownEntries() const noexcept { return mLocalPropertyMap.get(); }
  /// Whether the class leaves all operations of these groups (`ZTSStyleClass::Plain`) alone.
  [[nodiscard]] bool isPlain(std::uint8_t groups) const noexcept { return (mSmall.mPlainGroups & groups) == groups; }
  /// What is noted on the style; see ZTSStyleTypes.h.
  [[nodiscard]] bool p_hasMark(ZTSStyleMark mark) const noexcept {
    return mark == ZTSStyleMark::isDeparted ? mIsDeparted != 0 : hasState(static_cast<std::uint8_t>(mark));
  }
  void p_setMark(ZTSStyleMark mark, bool on, ZTSStyleMarkKey) noexcept {
    if (mark == ZTSStyleMark::isDeparted) {
      mIsDeparted = on ? 1 : 0;
    } else {
      setState(static_cast<std::uint8_t>(mark), on);
    }
  }
  [[nodiscard]] bool p_isListedAsOrphan() const noexcept {
    return p_hasMark(ZTSStyleMark::isFiledAsOrphan) || p_hasMark(ZTSStyleMark::isUntried);
  }
  /// @}

 protected:
  explicit ZTSStyle(Tag tag = Tag::style) noexcept;
  ~ZTSStyle() override;

  /// While an aggregate passes its own usage count on, requests that lead back to it are ignored.
  [[nodiscard]] bool isAdjustingUsageCount() const noexcept { return hasState(kAdjustingUsageCount); }
  void setIsAdjustingUsageCount(bool adjusting) noexcept { setState(kAdjustingUsageCount, adjusting); }

 private:
  friend class ZTSAggregateStyle;
  friend class ZTSStyleClass;

  enum State : std::uint8_t {
    kLocked = 1,
    kAdjustingUsageCount = 16  // an aggregate is passing its own usage count on
    // The other bits are marks.
  };
  void setPlainGroups(std::uint8_t groups) noexcept { mSmall.mPlainGroups = groups; }  // ZTSStyleClass::Plain
  void setState(std::uint8_t state, bool on) noexcept {
    mSmall.mState = static_cast<std::uint8_t>(on ? mSmall.mState | state : mSmall.mState & ~state);
  }
  [[nodiscard]] bool hasState(std::uint8_t states) const noexcept { return (mSmall.mState & states) != 0; }
  /// What a search for a variation compares has changed: own entries, lock, identifier, stylesheet.
  void matchingChanged();
  void storeStylesheet(ZTSStylesheet* stylesheet);
  Ref<ZTSStyle> findParent();
  void refuseParent(ZTSStyle& refused);
  /// Whether from here up no class overrides the reading of values. Cost: constant for a chain that is taken down from
  /// its end, since what was found is remembered.
  [[nodiscard]] bool isReadPlainly() noexcept;
  void willInheritFrom(ZTSStyle* parent);
  /// The unit of usage that a used child gives its parent, and takes back unless the parent ignored it.
  void passUseTo(ZTSStyle& parent);
  void takeUseFrom(ZTSStyle& parent);
  bool forgetRefusedUse() noexcept;
  [[gnu::noinline]] Ref<NSObject> valueThroughTables(PropertyKey key) const;
  /// Where a change comes from that reaches this style: from itself, or from its parent.
  enum class Origin : bool { own, parent };
  class Listeners;
  /// Whether a change ends here with nobody the wiser. Implemented, like what follows, in ZTSStylePropagation.cpp.
  [[nodiscard]] bool endsUnseen(Origin origin) const;
  [[nodiscard]] bool endsUnseen(Origin origin, Listeners& listeners) const;
  [[nodiscard]] bool isUnheard() const { return endsUnseen(Origin::own); }
  /// Whether there is nobody to be told, and no look to be kept.
  [[nodiscard]] bool isQuiet(Origin origin, Listeners& listeners) const;
  [[nodiscard]] bool isNoticed() const;
  [[nodiscard]] bool communicates() const;
  void keepLook(const ZTSStyleChangeInfo& change, const PropertySet& arrived);
  void tellObservers(const ZTSStyleChangeInfo& change, ZTFirstFailure& failure);
  class Changing;  // brings a change through its hooks; in ZTSStyleMutation.cpp
  /// The changes themselves, between the hooks.
  void storeEntry(const Ref<NSObject>& value, PropertyKey key);
  void storeEntries(const Ref<const PropertyMap>& wanted);
  void removeEntry(PropertyKey key);
  void removeEntries(const PropertySet& keys);
  [[nodiscard]] Ref<const PropertySet> keysToRemove(const PropertySet& keys) const;
  [[nodiscard]] Ref<PropertySet> storedKeys() const;
  static void forgetClassOf(const ZTSStyle& style) noexcept;  // what `standInForClassNamed` noted
  class Telling;     // a style and the children that it has yet to tell; in ZTSStylePropagation.cpp
  class Comparison;  // the comparisons under way; in ZTSStyleComparison.cpp

  StringRef mName;
  StringRef mIdentifier;
  StringRef mParentIdentifier;
  Ref<ZTSStyle> mParent;
  ZTUMutablePointerSet<ZTSStyle> mChildren;
  ZTSStylesheet* mStylesheet = nullptr;  // cleared by the stylesheet: setStylesheet(none) or cleanup
  Ref<PropertyMap> mLocalPropertyMap;    // none while it was never written
  std::uint64_t mKeyMask = 0;            // the bits of the own keys: always mLocalPropertyMap->keyMask()
  std::uint32_t mUsageCount = 0;
  static constexpr std::uint32_t kLargestOrphanCount = 0x3fff'ffff;
  std::uint32_t mOrphanCount : 30 = 0;
  /// While it is set, this style and all above it have classes that leave the reading of values alone.
  std::uint32_t mIsReadPlainly : 1 = 0;
  std::uint32_t mIsDeparted : 1 = 0;  // the mark, for which the other bits have no room
  ZTUCountedPointerSet<ZTSStyleObserver> mObservers;
};

static_assert(ZTUCountedDocumentObject<ZTSStyle>);

inline const ZTSStyle* ZTSStyle::from(const NSObject* object) noexcept {
  if (object == nullptr) return nullptr;
  const Tag tag = tagOf(*object);
  return tag == Tag::style || tag == Tag::aggregateStyle ? static_cast<const ZTSStyle*>(object) : nullptr;
}
/// The object as a style, or none. Cost: one comparison.
inline const ZTSStyle* asStyle(const NSObject* object) noexcept { return ZTSStyle::from(object); }
inline ZTSStyle* asStyle(NSObject* object) noexcept {
  return const_cast<ZTSStyle*>(asStyle(static_cast<const NSObject*>(object)));
}

/// Makes a style of a C++ class; none where its initialiser refuses. None, after a report that names the class, where
/// it has no `styleClass()` or no `classObject()` of its own.
template <class T>
requires requires { T::styleClass(); }
Ref<T> make(const ZTSStyleFields& fields = {}) {
  return boost::static_pointer_cast<T>(T::styleClass().makeStyleOfType(typeid(T), fields));
}

}  // namespace zt
