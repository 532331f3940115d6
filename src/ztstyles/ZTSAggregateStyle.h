// SPDX-License-Identifier: MIT
#pragma once

#include <support/ZTUPointerKeyDictionary.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

class ZTFirstFailure;

/// From a style to the one that takes its place, by identity.
using ZTSStyleMap = ZTUPointerKeyDictionaryOf<ZTSStyle, ZTSStyle>;

/// The copies that a deep copy made, in the order of the originals that were given. They refer to one another, maybe in
/// circles, so they are owned together: what is in no stylesheet when this goes, and held by nobody else, is freed,
/// with everything that it reaches. What somebody keeps for longer stays with all that it reaches, and its circles are
/// then his to break, by removing the values, unless it enters a stylesheet, which frees them when it ends.
class ZT_EXPORT ZTSStyleCopies {
 public:
  ZTSStyleCopies(ZTSStyleSet given, std::vector<Ref<ZTSStyle>> all) noexcept;
  ZTSStyleCopies(ZTSStyleCopies&& other) noexcept = default;
  ZTSStyleCopies& operator=(ZTSStyleCopies&& other) noexcept;
  ~ZTSStyleCopies();

  /// The copies of the given originals, each once.
  [[nodiscard]] const ZTSStyleSet& styles() const& noexcept { return mStyles; }
  const ZTSStyleSet& styles() && = delete;  // they would be freed before they can be looked at
  [[nodiscard]] std::size_t count() const noexcept { return mStyles.count(); }
  [[nodiscard]] auto begin() const noexcept { return mStyles.begin(); }
  [[nodiscard]] auto end() const noexcept { return mStyles.end(); }

 private:
  ZTSStyleSet mStyles;
  std::vector<Ref<ZTSStyle>> mAll;  // with the copies of what they refer to
};

/// A style some of whose values are styles. While it belongs to a stylesheet it observes the styles that
/// its own values refer to and passes its own usage and orphan counts on to them, once for each property;
/// outside a stylesheet it does neither. A reference to itself is allowed and never observed or counted.
class ZT_EXPORT ZTSAggregateStyle : public ZTSStyle {
 public:
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override;

  /// The object as an aggregate style, or none.
  static ZTSAggregateStyle* from(NSObject* object) noexcept {
    return object != nullptr && tagOf(*object) == Tag::aggregateStyle ? static_cast<ZTSAggregateStyle*>(object)
                                                                      : nullptr;
  }

  /// @name Hooks
  /// What subclasses say about themselves.
  /// @{

  /// The properties whose values are styles, in an order that stays. The base has none.
  virtual const std::vector<PropertyKey>& referencedStyleProperties() const;
  /// The base answers all of them; the library consults neither list.
  virtual const std::vector<PropertyKey>& strongReferencedStyleProperties() const;
  virtual const std::vector<PropertyKey>& weakReferencedStyleProperties() const;
  /// The value that stands in where the lookup finds none. The base answers none.
  virtual Ref<NSObject> defaultValueForNilStyleProperty(PropertyKey key) const;
  /// Whether `referencedStyleProperties` holds the property.
  virtual bool isReferencedStyleProperty(PropertyKey key) const;
  /// @}

  /// @name Lookup
  /// Implemented in ZTSAggregateStyle.cpp.
  /// @{

  Ref<NSObject> valueForProperty(PropertyKey key) const override;
  /// The styles that own values refer to, without this one; never none.
  std::optional<ZTSStyleSet> referencedStyles() const override;
  /// Default styles that stand in for referenced-style properties without a value; none when there is none.
  std::optional<ZTSStyleSet> implicitlyReferencedStyles() const override;
  /// All styles that references lead to, without this one; never none.
  std::optional<ZTSStyleSet> recursivelyReferencedStyles() const override;
  /// @}

  /// @name Observing what it refers to
  /// Implemented in ZTSAggregateStyleObservation.cpp. Every change of own values ends the observation of the
  /// references concerned before and begins it after, by way of the hooks. A value of a referenced-style property that
  /// is neither a style nor the null sentinel (nor none) raises `NSInternalInconsistencyException`, except where undo
  /// puts it back.
  /// @{

  void entriesWillChange(ZTSEntriesChange& change) override;
  void entriesDidChange(const ZTSEntriesChange& change) override;
  /// As in `ZTSStyle`; ends observing under the old stylesheet and begins under the new one. What a reference
  /// throws reaches the caller once the link is what was asked for.
  void setStylesheet(ZTSStylesheet* stylesheet) override;
  void archivingSetStylesheet(ZTSStylesheet* stylesheet) override;
  /// Ends the observation of what it refers to, then clears the link.
  void cleanup() override;
  /// @}

  /// As in `ZTSStyle`; a stored value of a referenced-style property that is no style is reported and dropped.
  /// Implemented in ZTSStylePersistenceAdditions.cpp.
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) override;

  /// @name Counting
  /// Implemented in ZTSAggregateStyleCounting.cpp.
  /// @{

  void incrementUsageCount() override;
  /// At 0 it is logged at level 10, and nothing changes.
  void decrementUsageCount() override;
  void incrementOrphanCount() override;
  void decrementOrphanCount() override;
  /// @}

  std::string description() const override;

  /// @name Deep copy and replacement
  /// Implemented in ZTSAggregateStyleCopy.cpp.
  /// @{

  /// Copies of the styles, in their order, with everything that they reach through references copied too
  /// and the copies linked among themselves. The answer owns all of them together.
  static ZTSStyleCopies deepCopyStyles(const std::vector<Ref<ZTSStyle>>& styles);
  /// Replaces every referenced style by its entry in the map. A missing entry is reported, and the property
  /// is set to explicitly no value.
  virtual void replaceReferencedStylesUsingStyleMap(const ZTSStyleMap& map);
  /// Refers to the replacement wherever it referred to the replaced style, undoably. Either none does nothing.
  void didReplaceStyleWithStyle(ZTSStyle* replaced, ZTSStyle* replacement) override;
  /// Whether some own value is no style, or leads through a style that is not directly referenced to an own value.
  virtual bool overridesAnyNonReferencedStyleProperty() const;
  virtual bool overridesAnyNonReferencedStylePropertyIgnoringStyles(
      const ZTUMutablePointerSet<ZTSStyle>& ignored) const;
  /// @}

  /// @name Private operations
  /// @{

  /// The style that the own value of a referenced-style property is; none for any other property and where the
  /// value is absent or the null sentinel. Raises `NSInternalInconsistencyException` for any other value.
  Ref<ZTSStyle> p_referencedStyleForProperty(PropertyKey key) const;
  /// Begin or end observing and counting what the own value refers to; beginning does nothing without a reference,
  /// for one to itself, and outside a stylesheet. Either may be repeated: beginning adds what is missing, ending takes
  /// back what was given. What is thrown on the way reaches the caller when everything has been tried.
  void p_beginObservingReferencedStyleForProperty(PropertyKey key);
  void p_endObservingReferencedStyleForProperty(PropertyKey key);
  void p_beginObservingAllReferencedStyles();
  void p_endObservingAllReferencedStyles();

  /// A reference that is observed, and which units the style took for it.
  struct Reference {
    PropertyKey key;
    Ref<ZTSStyle> style;
    bool isObserved = false;
    bool hasUsageUnit = false;
    bool hasOrphanUnit = false;
    [[nodiscard]] bool isEmpty() const noexcept { return !isObserved && !hasUsageUnit && !hasOrphanUnit; }
  };
  /// The records of all references that are observed; none outside a stylesheet.
  [[nodiscard]] const std::vector<Reference>& p_references() const noexcept { return mReferences; }
  /// Whether observing could not begin or end everywhere; the next change tries again.
  [[nodiscard]] bool p_isUnfinished() const noexcept { return mIsUnfinished; }
  /// The record of one, borrowed until the next change; none if it is not observed.
  [[nodiscard]] Reference* p_recordOf(PropertyKey key, const ZTSStyle& style) noexcept;
  /// @}

 protected:
  ZTSAggregateStyle() noexcept : ZTSStyle(Tag::aggregateStyle) {}
  ~ZTSAggregateStyle() override;

 private:
  class CountingWalk;  // in ZTSAggregateStyleCounting.cpp
  enum class CountingStep : std::uint8_t { useUp, useDown, orphanUp, orphanDown };
  /// Calls one of the four counting operations; whether the style took the step.
  static bool takesStep(ZTFirstFailure& failure, ZTSStyle& style, CountingStep step);
  void beginReference(ZTFirstFailure& failure, PropertyKey key, const Ref<ZTSStyle>& style);
  void endReference(ZTFirstFailure& failure, PropertyKey key, const Ref<ZTSStyle>& style);
  void endReferences(ZTFirstFailure& failure, PropertyKey key, const ZTSStyle* butNotTo);
  [[nodiscard]] bool isPuttingBack() const;
  /// Ends what the own value no longer refers to and begins what it does refer to.
  void followValue(ZTFirstFailure& failure, PropertyKey key);
  /// The referenced-style properties, and those under which something is still observed.
  [[nodiscard]] std::vector<PropertyKey> observedProperties() const;
  template <class Assign>
  void relink(Assign assign);
  void letGoOfReferences() noexcept;

  std::vector<Reference> mReferences;
  bool mIsUnfinished = false;   // observing could not begin or end everywhere
  bool mHasRefusedUse = false;  // a request was ignored while this style passed its own count on
};

/// The object as an aggregate style, or none.
inline ZTSAggregateStyle* asAggregateStyle(NSObject* object) noexcept { return ZTSAggregateStyle::from(object); }

}  // namespace zt
