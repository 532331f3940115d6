#pragma once

#include <support/ZTUPointerKeyDictionary.h>
#include <ztstyles/ZTSStyle.h>

namespace zt {

/// From a style to the one that takes its place, by identity.
using ZTSStyleMap = ZTUPointerKeyDictionaryOf<ZTSStyle, ZTSStyle>;

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

  /// @name Mutation
  /// Implemented in ZTSAggregateStyleMutation.cpp, the reading of an archive in ZTSStylePersistenceAdditions.cpp. As in
  /// `ZTSStyle`, with the observation of the affected references ended before and begun after. A value of a
  /// referenced-style property that is neither a style nor the null sentinel (nor none) raises
  /// `NSInternalInconsistencyException`.
  /// @{

  void setValueForProperty(Ref<NSObject> value, PropertyKey key) override;
  void setValuesForProperties(const PropertyMap& values) override;
  void removeValueForProperty(PropertyKey key) override;
  void removeValuesForProperties(const PropertySet& keys) override;
  void lockedStyleSetValuesForProperties(const PropertyMap& values, std::int32_t flags) override;
  void lockedStyleRemoveValuesForProperties(const PropertySet& keys, std::int32_t flags) override;
  void unconditionalRemoveValueForProperty(PropertyKey key) override;
  void setStylesheet(ZTSStylesheet* stylesheet) override;
  void archivingSetStylesheet(ZTSStylesheet* stylesheet) override;
  /// As in `ZTSStyle`; a stored value of a referenced-style property that is no style is reported and dropped.
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) override;
  /// Ends the observation of what it refers to, then clears the link.
  void cleanup() override;
  /// @}

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
  /// and the copies linked among themselves. Copies of referenced styles are held by the values alone.
  static ZTSStyleSet deepCopyStyles(const std::vector<Ref<ZTSStyle>>& styles);
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
  /// Begin or end observing and counting what the own value refers to; nothing without a reference, for one to
  /// itself, and outside a stylesheet. Not to be called twice in a row: each call counts.
  void p_beginObservingReferencedStyleForProperty(PropertyKey key);
  void p_endObservingReferencedStyleForProperty(PropertyKey key);
  void p_beginObservingAllReferencedStyles();
  void p_endObservingAllReferencedStyles();
  /// @}

 protected:
  ZTSAggregateStyle() noexcept : ZTSStyle(Tag::aggregateStyle) {}
  ~ZTSAggregateStyle() override;

 private:
  friend class ZTSStylesheet;

  /// Keeps the list of those that were removed from a stylesheet right.
  void departed(ZTSStylesheet* before) noexcept;

  ZTSStylesheet* mDepartedFrom = nullptr;  // lists this style as removed; cleared by that stylesheet's destructor
};

/// The object as an aggregate style, or none.
inline ZTSAggregateStyle* asAggregateStyle(NSObject* object) noexcept { return ZTSAggregateStyle::from(object); }

}  // namespace zt
