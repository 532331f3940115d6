// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSNotificationCenter.h>
#include <platform/PropertySet.h>
#include <platform/ZTClass.h>

#include <atomic>

namespace zt {

class PropertyMap;
class ZTSStyle;

/// What a new style starts with.
struct ZTSStyleFields {
  StringRef name = {};                               ///< absent: no name
  StringRef identifier = {};                         ///< absent: an anonymous style
  StringRef parentIdentifier = {};                   ///< absent: no parent
  const PropertyMap* overridePropertyMap = nullptr;  ///< none counts as empty; its entries are copied
  bool isLocked = false;
};

/// The class object of a style class: its property registry, its notification name, how its styles are
/// made and archived, and which operations it leaves alone. `ZTSStyleOf` makes one for an application's style class.
class ZT_EXPORT ZTSStyleClass : public ZTClass {
 public:
  using ZTClass::ZTClass;

  /// @name Questions of the class
  /// @{

  /// The property registry: the keys that styles of this class support. The base class has none.
  virtual const PropertySet& properties() const;
  /// Whether the registry contains the key.
  [[nodiscard]] bool isValidProperty(PropertyKey key) const { return properties().contains(key); }
  /// Whether the registry contains all of the keys.
  [[nodiscard]] bool areValidProperties(const PropertySet& keys) const { return keys.isSubsetOf(properties()); }

  /// The notification that styles of this class post when their values change.
  virtual NSNotificationName stylePropertiesChangedNotificationName() const;

  /// The prefix with which names of such styles are looked up for display when they are read: "STYLE_".
  virtual StringRef localizationKeyPrefix() const;
  /// The identifier of the style that an application's style class falls back on; absent in the base. Asked of the
  /// class named "ZTWPListStyle" alone, when a variation's base and the style reachable under its identifier differ.
  virtual StringRef defaultStyleIdentifier() const;
  /// Whether a style of this class can be made from the identifier alone. The base answers false.
  virtual bool canConstructStyleFromIdentifier(const StringRef& identifier) const;
  /// @}

  /// A bare style of the class, before its initialiser has run; none where the class cannot be made from outside.
  virtual Ref<ZTSStyle> allocateStyle() const;
  /// The same for an archive; none, after a report, where `makeStyle` would refuse the class.
  Ref<NSObject> allocate() const final;
  /// A new style, initialised through its virtual `initWithName`; none where that refuses. None, after a report that
  /// names the class, if the C++ class forgot to override `classObject()`: its styles would be taken for styles of the
  /// class that they inherit it from.
  Ref<ZTSStyle> makeStyle(const ZTSStyleFields& fields = {}) const;
  /// The same for a caller who will take the style for one of that C++ type; none, after a report that names the type,
  /// where the class is that of another one.
  Ref<ZTSStyle> makeStyleOfType(const std::type_info& type, const ZTSStyleFields& fields) const;

  /// Groups of operations; a set bit says that the class, and every class between it and the library's
  /// own, leaves the whole group alone, so that a shortcut past the calls cannot be noticed.
  enum Plain : std::uint8_t {
    plainReading = 1,     ///< valueForProperty, definesProperty, propertyMap (and the default-value hook)
    plainTelling = 2,     ///< stylePropertiesChanged and what it consults
    plainCounting = 4,    ///< the four counting operations, and the hooks of a change
    plainMatching = 8,    ///< overridePropertyMap
    plainResolving = 16,  ///< updateParent
    plainComparing = 32,  ///< isEqual, isEqualCompareNames
    // These hold for aggregates too: each operation is the one of `ZTSStyle` or of `ZTSAggregateStyle`.
    libraryCounting = 64,  ///< the four counting operations
    libraryReading = 128   ///< valueForProperty, and what follows references: referencedStyles and the like
  };
  [[nodiscard]] std::uint8_t plainGroups() const noexcept { return mPlainGroups; }
  /// The same for overridePropertyMapWithPropertyMap, of which styles carry no bit.
  [[nodiscard]] bool isPlainVarying() const noexcept { return mIsPlainVarying; }

 protected:
  void setPlainGroups(std::uint8_t groups, bool isPlainVarying) noexcept {
    mPlainGroups = groups;
    mIsPlainVarying = isPlainVarying;
  }
  /// Stamps a bare style with its class's plain groups. Styles made otherwise have none and always take
  /// the virtual path.
  void stamp(ZTSStyle& style) const noexcept;

 private:
  [[nodiscard]] bool isClassOf(const ZTSStyle& made) const;

  mutable std::atomic<bool> mIsKnownToMakeItsOwn = false;  // what `isClassOf` has found is true of all that it makes
  std::uint8_t mPlainGroups = 0;
  bool mIsPlainVarying = false;
};

}  // namespace zt
