// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The style classes of the model: plain, aggregate, deriving, and the same with everything overridden that the library
/// may otherwise pass by.

#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <ztstyles/ZTSDerivingStyle.h>
#include <ztstyles/ZTSStyleClassOf.h>

#include <functional>
#include <string>
#include <vector>

namespace zt::fuzzing {

inline const PropertyKey size{"size"};
inline const PropertyKey weight{"weight"};  // derived where the class derives: ten times the size
inline const PropertyKey list{"list"};      // referenced styles
inline const PropertyKey label{"label"};

/// What hooks of the classes call; set by the model while it lives.
inline std::function<void(const char* hook)>& disturbance() {
  static std::function<void(const char*)> call;
  return call;
}
inline void disturb(const char* hook) {
  if (disturbance()) disturbance()(hook);
}

template <class T>
class FuzzClassOf final : public ZTSStyleClassOf<T> {
 public:
  using ZTSStyleClassOf<T>::ZTSStyleClassOf;
  const PropertySet& properties() const override {
    static const Ref<PropertySet> keys = PropertySet::with({size, weight, list, label});
    return *keys;
  }
};

template <class Self, class Base>
struct Named : Base {
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new FuzzClassOf<Self>(Self::name(), Base::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
};

struct Plain : Named<Plain, ZTSStyle> {
  static const char* name() { return "FuzzPlain"; }
};

struct Aggregate : Named<Aggregate, ZTSAggregateStyle> {
  static const char* name() { return "FuzzAggregate"; }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{list, label};
    return keys;
  }
};

struct Deriving : Named<Deriving, ZTSDerivingStyle> {
  static const char* name() { return "FuzzDeriving"; }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{list, label};
    return keys;
  }
  bool isDerivedProperty(PropertyKey key) const override { return key == weight; }
  bool isSourceProperty(PropertyKey key) const override { return key == size; }
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override { return key == weight ? size : key; }
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override { return times(valueForProperty(size).get(), 10); }
  void removeDerivedValueForProperty(PropertyKey) override { removeValueForProperty(size); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    const Ref<NSObject> derived = map.remove(weight);
    if (!derived) return;
    const NSNumber* number = NSNumber::from(derived.get());
    map.set(size, number != nullptr ? Ref<NSObject>(NSNumber::withInteger(number->integerValue() / 10)) : derived);
  }
  void convertToDerivedPropertyMap(PropertyMap* map) const override {
    if (map == nullptr) return;
    if (const Ref<NSObject> source{map->find(size)}) {
      if (Ref<NSObject> derived = isNull(source.get()) ? source : times(source.get(), 10))
        map->set(weight, std::move(derived));
    }
  }

 private:
  static Ref<NSObject> times(NSObject* value, int factor) {
    const NSNumber* number = NSNumber::from(value);
    return number != nullptr ? Ref<NSObject>(NSNumber::withInteger(number->integerValue() * factor)) : Ref<NSObject>();
  }
};

/// Every path through virtual functions, with the model let in at the hooks.
template <class Base>
struct Hooked : Base {
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new FuzzClassOf<Hooked>(std::string("Hooked") + Base::name(), Base::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  Ref<NSObject> valueForProperty(PropertyKey key) const override { return Base::valueForProperty(key); }
  Ref<PropertyMap> propertyMap() const override { return Base::propertyMap(); }
  void updateParent() override { Base::updateParent(); }
  void incrementUsageCount() override { Base::incrementUsageCount(); }
  void decrementUsageCount() override { Base::decrementUsageCount(); }
  bool isEqual(const NSObject* other) const override { return Base::isEqual(other); }
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    disturb("changed");
    Base::stylePropertiesChanged(change);
  }
  void willBeAddedToDocument(NSDocument*, NSObject*) override { disturb("will be added"); }
  void wasAddedToDocument(NSDocument*, NSObject*) override { disturb("was added"); }
  void willBeRemovedFromDocument(NSDocument*) override { disturb("will be removed"); }
  void wasRemovedFromDocument(NSDocument*) override { disturb("was removed"); }
};

}  // namespace zt::fuzzing
