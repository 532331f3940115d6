#pragma once

#include <app/styles/StyleFamily.h>

#include <ztstyles/ZTSStyleClassOf.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace zt {

class OdfStyleClass;

/// A style of a document: what all families have in common. The properties of a family are those
/// that PropertyRules.h knows, and whatever else its documents were found to set.
class OdfStyle : public ZTSAggregateStyle {
 public:
  /// The class object of this class itself, the base of those of the families. It makes no styles.
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override { return styleClass(); }

  [[nodiscard]] virtual StyleFamily family() const { return StyleFamily::other; }
  /// The family's name as files write it, also for families that are not known.
  [[nodiscard]] std::string familyName() const;

  /// As the library has it, and beyond that: a percentage that is a share of the parent's value
  /// (font sizes, margins) is answered as what it comes to, over any number of levels; where no
  /// ancestor gives a length, as the percentage that remains. Properties that are not inherited
  /// (the next style, the linked style, ...) are answered from the style's own entry alone.
  /// Walks the chain in a loop: its length costs no call depth.
  Ref<NSObject> valueForProperty(PropertyKey key) const final;

  /// Accepts none, what the property's rule takes, and opaque text for unknown properties.
  bool validateValueForProperty(NSObject* value, PropertyKey key) const override;

 protected:
  OdfStyle() = default;
  ~OdfStyle() override = default;
};

/// The object as a style of a document, or none.
const OdfStyle* asOdfStyle(const NSObject* object) noexcept;
OdfStyle* asOdfStyle(NSObject* object) noexcept;

/// The class object of a family. Its registry grows when a document sets something unknown: what is
/// read is never lost for want of a key.
class OdfStyleClass : public ZTSStyleClass {
 public:
  [[nodiscard]] virtual StyleFamily family() const = 0;
  const PropertySet& properties() const override;

  /// Adds keys to the registry. Safe across threads; sets answered before stay as they were. Each
  /// call that adds something keeps one more set for ever: collect keys and call once.
  void extendRegistry(const std::vector<PropertyKey>& keys) const;

  /// The class object of a family.
  static const OdfStyleClass& forFamily(StyleFamily family);

 protected:
  using ZTSStyleClass::ZTSStyleClass;

 private:
  mutable std::atomic<const PropertySet*> mCurrent{nullptr};
  mutable std::mutex mMutex;                               // of those who extend
  mutable std::vector<Ref<const PropertySet>> mEarlier;  // all sets that were ever answered
};

}  // namespace zt
