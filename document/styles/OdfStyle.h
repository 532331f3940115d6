// SPDX-License-Identifier: MIT
#pragma once

#include <document/styles/StyleFamily.h>

#include <ztstyles/ZTSStyleClassOf.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace zt {

/// A style of a document: what all families have in common. The properties of a family are those
/// that PropertyRules.h knows, and whatever else its documents were found to set.
class OdfStyle : public ZTSDerivingStyle {
 public:
  /// The class object of this class itself, the base of those of the families. It makes no styles.
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override { return styleClass(); }

  /// A map may hold derived properties; the values are taken as they are. Refused, after a report, for
  /// a key that the family's registry lacks.
  bool initWithName(const ZTSStyleFields& fields) override;
  /// Most families derive nothing: every property is its own source.
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override { return key; }

  /// @name Archive
  /// Implemented in archive/StyleArchiving.cpp. Beside what the library writes stands where the style came
  /// from; keys that the registry lacks are left to `ArchiveUpgrader`, which may add them.
  /// @{

  const ZTAArchivedItems* archivedItems() const override;
  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override;
  Ref<NSObject> initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) override;
  void upgradeStyleWithUnarchiver(ZTAXMLUnarchiver& unarchiver, std::uint64_t version) override;
  /// @}

  [[nodiscard]] virtual StyleFamily family() const { return StyleFamily::other; }
  /// The family's name as files write it, also for families that are not known.
  [[nodiscard]] std::string familyName() const;

  /// As the library has it, and beyond that: a percentage that is a share of the parent's value
  /// (font sizes, margins) is answered as what it comes to, over any number of levels; where no
  /// ancestor gives a length, as the percentage that remains. Properties that are not inherited
  /// (the next style, the linked style, ...) are answered from the style's own entry alone.
  /// Walks the chain in a loop, by the own entries of its styles: its length costs no call depth.
  Ref<NSObject> valueForProperty(PropertyKey key) const final;
  /// As the library has it, none where no style of the chain sets anything; in a loop too.
  Ref<PropertyMap> propertyMap() const final;

  /// Accepts none, what the property's rule takes, and opaque text for unknown properties.
  bool validateValueForProperty(NSObject* value, PropertyKey key) const override;

 protected:
  OdfStyle() = default;
  ~OdfStyle() override = default;
};

/// The object as a style of a document, or none.
const OdfStyle* asOdfStyle(const NSObject* object) noexcept;
OdfStyle* asOdfStyle(NSObject* object) noexcept;

/// The property registry of a family. It grows when a document sets something unknown: what is read
/// is never lost for want of a key.
class FamilyRegistry {
 public:
  explicit FamilyRegistry(StyleFamily family) : mFamily(family) {}

  /// The keys of now; the set stays as it is for ever.
  [[nodiscard]] const PropertySet& properties() const;

  /// Adds keys. Safe across threads. Each call that adds something keeps one more set for ever:
  /// collect keys and call once.
  void extend(const std::vector<PropertyKey>& keys) const;

  /// The one of a family.
  static const FamilyRegistry& of(StyleFamily family);

 private:
  StyleFamily mFamily;
  mutable std::atomic<const PropertySet*> mCurrent{nullptr};
  mutable std::mutex mMutex;                              // of those who extend
  mutable std::vector<Ref<const PropertySet>> mAnswered;  // all sets that were ever answered
};

/// The class object of a family.
const ZTSStyleClass& familyStyleClass(StyleFamily family);

/// Makes a style of a family; none where the map holds a key that the registry lacks.
Ref<OdfStyle> makeFamilyStyle(StyleFamily family, const ZTSStyleFields& fields);

}  // namespace zt
