// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSAggregateStyle.h>

namespace zt {

/// An aggregate some of whose properties are not stored but derived: computed from stored ones, their
/// sources. From outside both kinds are read, set, removed and found in maps alike; setting a derived
/// property sets its sources, and the own map never holds one.
///
/// What is derived and how it is converted, a subclass says in eight hooks, whose base versions are empty.
/// A *true* map holds stored properties only; a *derived* map also holds the derived properties of the
/// sources in it, computed from that map alone.
class ZT_EXPORT ZTSDerivingStyle : public ZTSAggregateStyle {
 public:
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override;

  /// Stores the true form of the map, through `setValuesForProperties`. An unacceptable value raises.
  bool initWithName(const ZTSStyleFields& fields) override;

  /// @name Hooks
  /// @{

  /// Whether the property is computed and never stored. The base answers false.
  virtual bool isDerivedProperty(PropertyKey key) const;
  /// Whether some derived property is computed from the property. The base answers false.
  virtual bool isSourceProperty(PropertyKey key) const;
  /// The property whose own entry decides whether the given one is overridden or defined; a property that is
  /// not derived is answered with itself. The base answers none, so that nothing counts as overridden.
  virtual PropertyKey sourcePropertyForProperty(PropertyKey key) const;
  /// The properties computed from a source. Not asked by the library. The base has none.
  virtual std::vector<PropertyKey> derivedPropertiesForProperty(PropertyKey key) const;
  /// The value of a derived property. The base answers none.
  virtual Ref<NSObject> deriveValueForProperty(PropertyKey key) const;
  /// Takes the place of removing a derived property, which has no entry of its own. The base does nothing.
  virtual void removeDerivedValueForProperty(PropertyKey key);
  /// Rewrites the map in place so that it holds no derived property. The base does nothing.
  virtual void convertToTruePropertyMap(PropertyMap& map) const;
  /// Rewrites the map in place so that it also holds what its sources derive. The map may be none, and then
  /// there is nothing to do. The base does nothing.
  virtual void convertToDerivedPropertyMap(PropertyMap* map) const;
  /// @}

  /// @name Conversion of maps
  /// The map itself where there is nothing to convert, else a new one. Where a map to be stored holds a derived
  /// property beside its source, the source counts. Not virtual: what a class converts it says in the hooks.
  /// @{

  [[nodiscard]] Ref<const PropertyMap> truePropertyMapFromPropertyMap(Ref<const PropertyMap> map) const;
  [[nodiscard]] Ref<const PropertyMap> derivedPropertyMapFromPropertyMap(Ref<const PropertyMap> map) const;
  /// @}

  /// @name Lookup
  /// As in `ZTSStyle`, with the derived properties shown. A derived property is overridden, or defined, where
  /// its source is.
  /// @{

  Ref<NSObject> valueForProperty(PropertyKey key) const override;
  Ref<NSObject> overrideValueForProperty(PropertyKey key) const override;
  bool overridesProperty(PropertyKey key) const override;
  bool definesProperty(PropertyKey key) const override;
  Ref<const PropertyMap> overridePropertyMap() const override;
  Ref<PropertyMap> propertyMap() const override;
  /// Computed with true properties and answered with the derived ones shown, as `overridePropertyMap` is, so
  /// that a style made from the answer is found when the same values are asked for again.
  Ref<PropertyMap> overridePropertyMapWithPropertyMap(const PropertyMap* wanted, const PropertyMap* overrides,
                                                      bool canCollapse) const override;
  /// @}

  /// What is stored, registered for undo and told are the true properties. Removing a derived one is left to
  /// `removeDerivedValueForProperty`; on the locked-style way it is reported and left out.
  void entriesWillChange(ZTSEntriesChange& change) override;

  /// Also reports every derived property that stands in the own map.
  void validate() const override;

  /// An archive that holds derived properties, which an earlier version of the class may have stored, is
  /// converted right after reading and logged at level 10.
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) override;

 protected:
  ZTSDerivingStyle() = default;
  ~ZTSDerivingStyle() override = default;

 private:
  void keepTrueKeys(ZTSEntriesChange& change);
};

}  // namespace zt
