// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAXMLCoding.h>
#include <platform/NSNotificationCenter.h>
#include <support/ZTURetainedPointerSet.h>
#include <ztstyles/ZTSStyle.h>
#include <ztstyles/ZTSStyleDictionary.h>
#include <ztstyles/ZTSStylesheetHost.h>
#include <ztstyles/ZTSStylesheetObserver.h>

#include <functional>
#include <memory>

namespace zt {

class ZTFirstFailure;
class ZTSAnonymousStyleOrderingMap;
class ZTSDepartedStyles;
class ZTSDowngradeStylesheet;
class ZTSOrphanIndex;
class ZTSUnusedStyles;
class ZTSVariationIndexes;
class ZTYTrackable;

/// Posted when a style was added, was removed, and when the parent changed, with the stylesheet as object, after its
/// observers were told. The first two name the style under `ZTSStylesheetNotificationStyleKey`; the third carries
/// nothing.
ZT_EXPORT extern const NSNotificationName ZTSStylesheetStyleAddedNotification;
ZT_EXPORT extern const NSNotificationName ZTSStylesheetStyleRemovedNotification;
ZT_EXPORT extern const NSNotificationName ZTSStylesheetParentChangedNotification;
/// The user information's key of the style that was added or removed.
inline constexpr const char* ZTSStylesheetNotificationStyleKey = "style";
/// Exported for applications; no notification of this library carries it.
inline constexpr const char* ZTSStylesheetNotificationOldParentKey = "oldParent";

/// What a variation of a style shall be; see `ZTSStylesheet::variationOfStyle`.
struct StyleVariationRequest {
  ZTSStyle* preferredStyle = nullptr;                ///< answered if it fits
  StringRef identifier = {};                         ///< only where `canReuse` is off
  const PropertyMap* propertyMap = nullptr;          ///< new values; kept where they differ from the base's
  const PropertyMap* overridePropertyMap = nullptr;  ///< new values that are kept in any case
  bool isLocked = false;
  bool canReuse = true;
  bool canCollapse = true;                 ///< whether overrides equal to inherited values are dropped
  bool canReuseIdentifiedChildren = true;  ///< whether identified styles may be answered too
};

/// Is asked to adjust a stylesheet after an archive was read. Held by the class-wide list.
class ZT_EXPORT ZTSStylesheetUpgrader : public NSObject {
 public:
  virtual void postUnarchiveUpgradeStylesheetForUnarchiver(ZTSStylesheet& stylesheet, ZTAXMLUnarchiver& unarchiver) = 0;
};
/// Is asked to adjust what is written before an archive of an older version is written.
class ZT_EXPORT ZTSStylesheetDowngrader : public NSObject {
 public:
  virtual void preArchiveDowngradeStylesheetForVersionArchiver(ZTSStylesheet& stylesheet, std::uint64_t version,
                                                               ZTAXMLArchiver& archiver) = 0;
};

/// Holds styles: identified ones under their identifier, anonymous ones in an identity set. Stylesheets form
/// a tree, through which identifiers are looked up: first here, then in the ancestors, so that a style here
/// shadows those of the same identifier above.
///
/// Owns its styles and its parent; neither its children, its observers nor its host. Used from one thread at
/// a time. Operations keep what they work on alive until they end, whatever hooks and observers do.
///
/// What calls of a change throw does not stop it: it is carried out and told to the end, every link is set, and the
/// first exception reaches the caller. A hook that is called before the change (`willBe...`) prevents it by throwing;
/// then nothing has changed and nothing is registered.
///
/// Operations that answer what is stored (the accessors of a field, the enumerators and snapshots, `holdsStyle`, the
/// questions after ancestors, and the `p_` operations) are not virtual: the library reads the same fields itself in
/// many places, and an override would be heeded in some of them only. Every other operation can be overridden, and the
/// library's own calls go through the override; so can `p_cleanupUnusedStylesOnUndoGroupClose`, alone among the `p_`
/// operations: it stores nothing but answers a notification, and a class may have its own idea of when a pass is due.
class ZT_EXPORT ZTSStylesheet : public ZTAXMLCoding {
 public:
  static const ZTClass& stylesheetClass();
  const ZTClass& classObject() const override;

  /// @name Making one
  /// Implemented in ZTSStylesheet.cpp.
  /// @{

  /// A new stylesheet, empty, without parent, change communication on, cleanup off. The host may be none.
  static Ref<ZTSStylesheet> withHost(ZTSStylesheetHost* host = nullptr);
  virtual bool initWithHost(ZTSStylesheetHost* host);

  /// Not held; none once the host is destroyed.
  [[nodiscard]] ZTSStylesheetHost* host() const noexcept { return mHost; }
  virtual void setHost(ZTSStylesheetHost* host) { p_setHost(host); }
  void p_setHost(ZTSStylesheetHost* host);
  /// The host's; none without a host.
  virtual NSUndoManager* undoManager() const;
  virtual NSDocument* document() const;
  /// @}

  /// @name Registry
  /// Implemented in ZTSStylesheetRegistry.cpp, the search for parents in ZTSStylesheetResolving.cpp.
  /// @{

  /// `addStyleWithContext` without a context.
  virtual void addStyle(Ref<ZTSStyle> style);
  /// Adds one style: calls the document hooks, registers the inverse, stores it (an identified one displaces another of
  /// its identifier), links it, lets styles that may now find it resolve their parents, and tells. Reported, and
  /// nothing changed: none, a style that is held already, a style of another stylesheet. The context is
  /// handed to the document hooks. What is registered follows what the hooks have left: one that renames the
  /// style, or the one in its place, is undone exactly.
  virtual void addStyleWithContext(Ref<ZTSStyle> style, NSObject* context);
  /// Removes one style; its children resolve their parents again. Reported, and nothing changed: none, a
  /// style that is not held here.
  virtual void removeStyle(Ref<ZTSStyle> style);

  /// Borrowed; none where this stylesheet has no such style.
  [[nodiscard]] ZTSStyle* styleWithIdentifier(const StringRef& identifier) const noexcept {
    return mIdentifiedStyles.find(identifier);
  }
  /// The style of that identifier here, else in the nearest ancestor; none for none. Borrowed.
  virtual ZTSStyle* cascadedStyleWithIdentifier(const StringRef& identifier) const;
  /// Every style without parent that names one tries to find it, identified styles first. Called for this stylesheet
  /// and those below when a style with a new identifier has come, unless it is known that only the styles waiting for
  /// that identifier can find a parent, where those alone are asked, in the same order. A walk goes over the styles
  /// that were there when it began: one that loses its parent on the way has looked for another when it did.
  virtual void updateParentForOrphanStyles();
  /// One entry for each identifier: the style, or the null sentinel.
  [[nodiscard]] virtual std::vector<Ref<NSObject>> stylesWithIdentifiers(
      const std::vector<StringRef>& identifiers) const;
  /// All styles, identified ones first: a snapshot.
  [[nodiscard]] ZTSStyleSet styles() const;
  /// The same styles in the same order as references: what to walk where what is called may change the stylesheet.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> retainedStyles() const;
  [[nodiscard]] ZTURetainedPointerSet<ZTSStyle> identifiedStyles() const;
  /// The live set.
  [[nodiscard]] const ZTSStyleSet& anonymousStyles() const noexcept { return mAnonymousStyles; }
  /// Live walks: the stylesheet must not change meanwhile.
  [[nodiscard]] const ZTSStyleDictionary& identifiedStyleEnumerator() const noexcept { return mIdentifiedStyles; }
  [[nodiscard]] const ZTSStyleSet& anonymousStyleEnumerator() const noexcept { return mAnonymousStyles; }
  /// The styles whose class is exactly the given one: snapshots.
  [[nodiscard]] virtual ZTSStyleSet stylesOfClass(const ZTSStyleClass* styleClass) const;
  [[nodiscard]] virtual ZTSStyleSet identifiedStylesOfClass(const ZTSStyleClass* styleClass) const;
  [[nodiscard]] virtual ZTSStyleSet anonymousStylesOfClass(const ZTSStyleClass* styleClass) const;
  /// No class, no name and an empty name are reported. No class and no name match nothing, an empty name matches
  /// empty names.
  [[nodiscard]] virtual ZTSStyleSet stylesOfClassWithName(const ZTSStyleClass* styleClass, const StringRef& name) const;
  /// Calls the operation on every identified, then on every anonymous style of a snapshot.
  template <class Operation>
  void makeStylesPerform(Operation operation) const {
    for (const Ref<ZTSStyle>& style : retainedStyles()) operation(*style);
  }
  /// Whether the style is held here, by identity.
  [[nodiscard]] bool holdsStyle(const ZTSStyle& style) const noexcept;
  /// @}

  /// @name Hierarchy
  /// Implemented in ZTSStylesheetHierarchy.cpp.
  /// @{

  [[nodiscard]] ZTSStylesheet* parent() const noexcept { return mParent.get(); }
  /// The live set.
  [[nodiscard]] const ZTUMutablePointerSet<ZTSStylesheet>& children() const noexcept { return mChildren; }
  /// Re-parents; every style below resolves its parent again. Raises `NSInvalidArgumentException`, with
  /// nothing changed, for itself or a descendant. The current parent does nothing.
  virtual void setParent(Ref<ZTSStylesheet> parent);
  /// Stores the parent: no checks, no re-resolution. The next retry asks every orphan here and below.
  void p_setParent(Ref<ZTSStylesheet> parent);
  void p_addChild(ZTSStylesheet& child) { mChildren.addObject(&child); }
  void p_removeChild(ZTSStylesheet& child) { mChildren.removeObject(&child); }
  /// Whether this stylesheet is a strict ancestor of the other; false for none.
  [[nodiscard]] bool isAncestorOfStylesheet(const ZTSStylesheet* other) const noexcept;
  [[nodiscard]] bool isDescendantOfStylesheet(const ZTSStylesheet* other) const noexcept;
  /// The styles that name a parent and have none: a snapshot.
  [[nodiscard]] virtual ZTSStyleSet orphanStyles() const;
  /// The given stylesheets and all their ancestors, each once, parents first.
  static std::vector<Ref<ZTSStylesheet>> sortedClosureOverParentsOfStylesheetsSet(
      const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets);
  static ZTUMutableRetainedPointerSet<ZTSStylesheet> p_stylesheetsClosureOverParents(
      const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets);
  static std::vector<Ref<ZTSStylesheet>> p_sortStylesheets(
      const ZTUMutableRetainedPointerSet<ZTSStylesheet>& stylesheets);
  /// @}

  /// @name Identify and anonymize
  /// Implemented in ZTSStylesheetIdentify.cpp. Always undoable; no observer and no notification hears of it.
  /// @{

  virtual void identifyStyle(Ref<ZTSStyle> style, StringRef identifier);
  virtual void identifyStyleKeepingAllChildren(Ref<ZTSStyle> style, StringRef identifier, bool keepAllChildren);
  /// Gives the style the identifier. The kept children (may be none; may be the live set) keep it as parent;
  /// the others look for whatever their parent identifier now names. Refused with a report, unchanged, where
  /// the identifier is taken or a kept child would find another style.
  virtual void identifyStyleKeepingChildren(Ref<ZTSStyle> style, StringRef identifier,
                                            const ZTUMutablePointerSet<ZTSStyle>* keptChildren);
  virtual void anonymizeStyle(Ref<ZTSStyle> style);
  /// @}

  /// @name Variations
  /// Implemented in ZTSStylesheetVariations.cpp. The search stands in ZTSVariationIndex.cpp.
  /// @{

  /// A style with the same base as `style` and the wanted values: one that this stylesheet holds already
  /// where it may be reused, else a new one of the class of `style`, added here. None only without a style or
  /// where the class refuses. Expected constant in the number of siblings.
  virtual Ref<ZTSStyle> variationOfStyle(ZTSStyle* style, const StyleVariationRequest& request);
  /// The first anonymous child of the style that this stylesheet holds with that lock and those overrides (none
  /// counts as empty); none if there is none. Never creates.
  virtual Ref<ZTSStyle> anonymousChildOfStyle(ZTSStyle* style, const PropertyMap* overridePropertyMap, bool isLocked);
  /// The first anonymous style here of exactly that class, parent identifier, lock and overrides, else a new one.
  virtual Ref<ZTSStyle> anonymousStyleOfClass(const ZTSStyleClass& styleClass, const StringRef& parentIdentifier,
                                              const PropertyMap* overridePropertyMap, bool isLocked);
  /// Makes a style and adds it; none where the class refuses it.
  virtual Ref<ZTSStyle> createStyleOfClass(const ZTSStyleClass& styleClass, const ZTSStyleFields& fields);
  /// Adds the style and every style reachable through references that is in no stylesheet yet, references first.
  virtual void addStyleAndReferencedStyles(Ref<ZTSStyle> style);
  virtual void addStyleAndReferencedStylesWithContext(Ref<ZTSStyle> style, NSObject* context);
  /// Removes the style and every style that is reachable from it through references and held here, whoever else uses
  /// it, by `removeStyle`, the one found last first. No style, and one that is not held here, is reported and stays as
  /// it is; its references are not followed.
  virtual void removeStyleAndReferencedStyles(Ref<ZTSStyle> style);
  /// @}

  /// @name Cleanup of unused styles
  /// Implemented in ZTSStylesheetCleanup.cpp.
  /// @{

  /// From now on a pass runs whenever the outermost undo group of the undo manager is about to close.
  virtual void enableUnusedStyleCleanup();
  virtual void disableUnusedStyleCleanup();
  [[nodiscard]] bool isUnusedStyleCleanupEnabled() const noexcept { return mStyleCleanupEnabled; }
  /// Removes the styles that nothing uses and that the host lets go, undoably. Removes nothing during undo or redo.
  virtual void cleanupUnusedStyles();
  virtual void p_cleanupUnusedStylesOnUndoGroupClose(const NSNotification& notification);
  /// @}

  /// @name Observers, change communication, change tracking, document hooks
  /// Implemented in ZTSStylesheetObservers.cpp.
  /// @{

  /// An observer is told of this stylesheet and of its ancestors. Added twice, it is told once; it must leave before it
  /// is destroyed.
  virtual void addObserver(ZTSStylesheetObserver* observer) { mObservers.addObject(observer); }
  virtual void removeObserver(ZTSStylesheetObserver* observer) { mObservers.removeObject(observer); }
  /// The live set, which does not hold them.
  [[nodiscard]] const ZTUMutablePointerSet<ZTSStylesheetObserver>& observers() const noexcept { return mObservers; }
  /// Whether adding, removing, re-parenting and property changes tell anybody. Nothing is replayed.
  [[nodiscard]] bool isChangeCommunicationEnabled() const noexcept { return mIsChangeCommunicationEnabled; }
  virtual void setIsChangeCommunicationEnabled(bool enabled) { mIsChangeCommunicationEnabled = enabled; }

  /// Asked of the host, or of its document; false and none where neither tracks changes.
  virtual bool isTrackingChanges() const;
  virtual NSObject* currentChangeTrackingSession() const;
  /// A stylesheet keeps no changes of its own: false, none, and nothing to accept or reject.
  virtual bool changeTrackingHasChanges() const;
  virtual NSObject* changeTrackingChanges() const;
  virtual void acceptAllChanges();
  virtual void rejectAllChanges();

  /// Hand the same question on to every identified, then to every anonymous style.
  virtual void willBeAddedToDocument(NSDocument* document, NSObject* context);
  virtual void wasAddedToDocument(NSDocument* document, NSObject* context);
  virtual void willBeRemovedFromDocument(NSDocument* document);
  virtual void wasRemovedFromDocument(NSDocument* document);
  /// @}

  /// @name Copy, equality, description
  /// Implemented in ZTSStylesheetComparison.cpp.
  /// @{

  /// A new stylesheet of the same class under the same parent, with the same host and copies of all styles that
  /// inherit from and refer to one another. Observers, children and cleanup are not carried over; nothing is
  /// registered for undo, and only the new parent is told. None where the class makes no bare instances, and, after a
  /// report, where it has no class object of its own. A style whose `copy` answers none is reported and left out.
  Ref<NSObject> copy() const override;
  /// Whether class and host are the same, the styles under each identifier equal, the anonymous styles equal one for
  /// one, and the parents the same or equal. Linear, but for anonymous styles whose class compares in a way of its own.
  bool isEqual(const NSObject* other) const override;
  /// From the identified styles. Walks all of them.
  std::size_t hash() const override;
  /// Several lines: one for each style, with its address, class, name, identifiers and usage count.
  std::string description() const override;
  /// @}

  /// @name Validation
  /// Implemented in ZTSStylesheetValidation.cpp, the check of the indexes in ZTSStylesheetChecks.cpp.
  /// @{

  /// Reports every broken invariant of the registry, of each style (`ZTSStyle::validate`) and of what the styles
  /// refer to, and goes on after each report; a reference to a style of an ancestor is only logged, at level 10.
  /// Changes nothing and does not go down to child stylesheets. Linear.
  virtual void validate() const;
  /// Checks of the application's own, called last by `validate`. The base does nothing.
  virtual void appSpecificValidate() const;
  /// Recomputes every index beside the data the slow way and compares. Looks also whether each style without parent
  /// finds none, counts are what children and references give at least, what is in use keeps what it inherits from and
  /// refers to in use, and each reference is observed. True where all of that holds. For tests.
  [[nodiscard]] bool indexesAreRight() const;
  /// @}

  /// @name Archive
  /// Implemented in ZTSStylesheetPersistenceAdditions.cpp, ZTSStyleOrdering.cpp and ZTSDowngradeStylesheet.cpp.
  /// @{

  /// Writes the styles that the host lets through, and the parent. One that the host holds back but a written style
  /// refers to comes last in its container. Where the archiver saves on demand, leaves the
  /// containers of the styles in its metadata instead. Raises `NSGenericException` where a container cannot be made.
  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override;
  /// Reads and links all styles, then resolves all parents, then upgrades all styles. Where an identifier is given
  /// twice, the later style counts, and what referred to the earlier one refers to it. What cannot be kept is logged
  /// and passed over; without "anon-styles" it raises `NSGenericException`. The host stays none.
  bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t version) override;
  const ZTAArchivedItems* archivedItems() const override;
  void postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver& unarchiver) override;
  /// Asks the downgraders about the ancestors first, then about this stylesheet: as upgraders see them.
  void preArchiveDowngradeForVersion(std::uint64_t version, ZTAXMLArchiver& archiver) override;

  /// Orders of an application's own, used where `sortXMLStyles` is on; none where it has none.
  virtual std::optional<std::vector<Ref<ZTSStyle>>> enumeratorForOrderedIdentifiedStyles() const;
  virtual std::optional<std::vector<Ref<ZTSStyle>>> enumeratorForOrderedAnonymousStyles() const;
  /// The default writing order: plain styles before aggregates, each after its nearest ancestor.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> p_orderedIdentifiedStyles() const;
  /// Drops from the order of anonymous styles those that have left; makes an empty one where there is none.
  void p_cleanupAnonymousStyleOrderingMap();

  /// Class-wide settings and lists. Upgraders and downgraders run in the order of registration, as often as they
  /// were registered, and stay; none is ignored. `p_resetClassSettings` puts all of it back, for tests.
  static bool sortXMLStyles();
  static void setSortXMLStyles(bool sort);
  static void registerUpgrader(Ref<ZTSStylesheetUpgrader> upgrader);
  static void registerDowngrader(Ref<ZTSStylesheetDowngrader> downgrader);
  static void p_resetClassSettings();

  /// The downgrade stylesheet that stands for this one in the archiver, or none; see ZTSDowngradeStylesheet.h.
  virtual Ref<ZTSStylesheet> downgradeStylesheetWithArchiver(ZTAXMLArchiver& archiver);
  /// The same, made where there is none: for this stylesheet and the whole family.
  virtual Ref<ZTSStylesheet> overrideDowngradeStylesheetWithArchiver(ZTAXMLArchiver& archiver);
  /// @}

  ZTSStylesheet();

 protected:
  ~ZTSStylesheet() override;

  /// To store and do nothing else. What is changed through a reference is found from the next call of either on.
  ZTSStyleDictionary& p_identifiedStyles() noexcept;
  ZTSStyleSet& p_anonymousStyles() noexcept;
  /// Whether a style that is written counts as used; the copy for an older version asks its original.
  [[nodiscard]] virtual bool isUsedInArchive(const ZTSStyle& style) const;

 private:
  friend class ZTSStyle;
  friend class ZTSStylesheetHost;
  friend class ZTSUnusedStyles;
  friend class ZTSVariationIndexes;

  // Broadcasts, asked for where change communication is on: tell the observers of this stylesheet and of its
  // descendants, then the notification centre. The caller holds the stylesheet and the style.
  void tellStyleAdded(ZTSStyle& style);
  void tellStyleRemoved(ZTSStyle& style);
  void tellParentChanged();

  // What equality asks of a style before anything else, as a number: class, lock, identifiers and name. Styles
  // that differ in it are unequal, unless their class compares in a way of its own. ZTSStylesheetComparison.cpp.
  static std::size_t shapeOf(const ZTSStyle& style);
  // The same with the own values; none where a class that compares in a way of its own is involved.
  static std::optional<std::size_t> shapeWithValuesOf(const ZTSStyle& style);
  static bool comparesPlainly(const ZTSStyle& style) noexcept;
  [[nodiscard]] bool isEqualApartFromParents(const ZTSStylesheet& other) const;
  [[nodiscard]] bool isReferencedByDoomedStyleAlone(const ZTSStyle& referenced) const;
  class Copying;
  class RegistryIndex;
  void validateRegistrationOf(const ZTSStyle& style, const RegistryIndex& registry) const;

  // Steps of adding and removing, see ZTSStylesheetRegistry.cpp.
  bool mayAdd(const ZTSStyle& style);
  void makeRoomFor(const ZTSStyle& style);
  void hold(const Ref<ZTSStyle>& style);
  void release(const ZTSStyle& style) noexcept;
  void link(ZTSStyle& style, ZTFirstFailure& failure);
  static void unlink(ZTSStyle& style, ZTFirstFailure& failure);
  /// A style's link to this stylesheet is about to be stored, about to be cleared, and is gone. Called by the style.
  void styleWillBeLinked(ZTSStyle& style);
  void styleWillDepart(ZTSStyle& style);
  void styleWasUnlinked(ZTSStyle& style) noexcept;
  // Steps of resolving parents, see ZTSStylesheetResolving.cpp.
  static void resolveParentOf(ZTSStyle& style, ZTFirstFailure& failure);
  static void setParentLinkOf(ZTSStyle& style, ZTFirstFailure& failure);
  void resolveParentsOfStyles(ZTFirstFailure& failure);
  static void resolveParentsOfChildrenOf(const ZTSStyle& style, ZTFirstFailure& failure);
  /// The identifier was not findable here and is now: whoever found it above, or missed it, looks again.
  void resolveParentsAfterIdentifying(const StringRef& identifier, ZTFirstFailure& failure);
  void retryOrphans(const StringRef* foundIdentifier, ZTFirstFailure& failure);
  void finishResolving(ZTFirstFailure& failure);
  [[nodiscard]] bool looksUpPlainly() const noexcept;
  void storeParent(Ref<ZTSStylesheet> parent) noexcept;
  // Steps of identifying, see ZTSStylesheetIdentify.cpp, and of finding or creating a variation.
  bool mayIdentify(const char* operation, const ZTSStyle* style) const;
  bool mayTakeIdentifier(const StringRef& identifier, const ZTSStyleSet& kept) const;
  Ref<ZTSStyle> variationOfStyleWithOverrides(ZTSStyle& style, const Ref<ZTSStyle>& base,
                                              const Ref<ZTSStyle>& reachable, const StyleVariationRequest& request,
                                              const PropertyMap* wanted);
  [[nodiscard]] std::vector<Ref<ZTSStyle>> heldInOrder(std::vector<Ref<ZTSStyle>>&& candidates) const;
  ZTSOrphanIndex& orphans() noexcept { return *mOrphans; }
  [[nodiscard]] bool isOrphanRight(const ZTSStyle& style) const;
  static bool areCountsRight(const ZTSStyle& style);

  // Reading an archive.
  void readStyles(ZTAXMLUnarchiver& unarchiver, _xmlNode* container,
                  const std::function<void(Ref<ZTSStyle>, _xmlNode*)>& take);
  void readParent(ZTAXMLUnarchiver& unarchiver, _xmlNode* node);
  void relinkReplaced(ZTAXMLUnarchiver& unarchiver);
  // A style found among the identified or the anonymous ones; taken as what it is, with a report where it was
  // misplaced.
  void takeFromIdentified(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child);
  void takeFromAnonymous(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child);
  void takeIdentified(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child);
  void takeAnonymous(Ref<ZTSStyle> style);

  enum class Tracker : std::uint8_t { none, host, document };
  [[nodiscard]] const ZTYTrackable* changeTracker() const;  // who answers now, or none

  Ref<ZTSStylesheet> mParent;
  ZTUMutablePointerSet<ZTSStylesheet> mChildren;  // each leaves when it is re-parented or destroyed
  ZTSStyleDictionary mIdentifiedStyles;
  ZTSStyleSet mAnonymousStyles;
  ZTUMutablePointerSet<ZTSStyle> mLinkedOnly;  // linked without being held; each leaves with its link
  ZTSStylesheetHost* mHost = nullptr;          // cleared by the host's destructor
  Tracker mChangeTracker = Tracker::none;
  ZTUMutablePointerSet<ZTSStylesheetObserver> mObservers;
  bool mIsChangeCommunicationEnabled = true;
  bool mStyleCleanupEnabled = false;
  std::unique_ptr<ZTSAnonymousStyleOrderingMap> mAnonymousStyleOrderingMap;  // none until first needed

  // Indexes beside the data; each class says in its header what it must always equal.
  std::unique_ptr<ZTSDepartedStyles> mDeparted;  // none until first needed
  const std::unique_ptr<ZTSOrphanIndex> mOrphans;
  std::unique_ptr<ZTSVariationIndexes> mVariations;
  std::unique_ptr<ZTSUnusedStyles> mUnused;  // while cleanup is enabled
};

/// Appends the stylesheet after its ancestors, each unless the list holds it already.
ZT_EXPORT void p_addParentAndStylesheet(std::vector<Ref<ZTSStylesheet>>& list, ZTSStylesheet& stylesheet);

}  // namespace zt
