// SPDX-License-Identifier: MIT

// Properties that are computed, not stored: a width in inches that is the stored width in points, seen otherwise.

#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kPoints("points"), kInches("inches");

//! [class]
class BoxStyle : public ZTSStyleOf<BoxStyle, ZTSDerivingStyle> {
 public:
  static constexpr const char* kClassName = "BoxStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kPoints, kInches}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }

  bool isDerivedProperty(PropertyKey key) const override { return key == kInches; }
  bool isSourceProperty(PropertyKey key) const override { return key == kPoints; }
  PropertyKey sourcePropertyForProperty(PropertyKey key) const override { return key == kInches ? kPoints : key; }
  Ref<NSObject> deriveValueForProperty(PropertyKey) const override {
    return times(valueForProperty(kPoints).get(), 1.0 / 72);
  }
  void removeDerivedValueForProperty(PropertyKey) override { removeValueForProperty(kPoints); }
  void convertToTruePropertyMap(PropertyMap& map) const override {
    if (const Ref<NSObject> inches = map.remove(kInches)) map.set(kPoints, times(inches.get(), 72));
  }
  void convertToDerivedPropertyMap(PropertyMap* map) const override {
    if (map != nullptr && map->contains(kPoints)) map->set(kInches, times(map->find(kPoints), 1.0 / 72));
  }

 private:
  /// The product; anything else than a number (the null sentinel) stays what it is.
  static Ref<NSObject> times(NSObject* value, double factor) {
    const NSNumber* number = NSNumber::from(value);
    if (number == nullptr) return Ref<NSObject>(value);
    return NSNumber::withReal(number->realValue() * factor);
  }
};
//! [class]

void print(const char* when, const ZTSStyle& style) {
  const auto text = [&](PropertyKey key) {
    const Ref<NSObject> value = style.valueForProperty(key);
    return value ? value->description() : "none";
  };
  std::cout << when << ": " << text(kPoints) << " points, " << text(kInches) << " inches\n";
}

int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  sheet->addStyle(make<BoxStyle>({.identifier = "box"}));
  sheet->addStyle(make<BoxStyle>({.identifier = "small box", .parentIdentifier = "box"}));
  ZTSStyle& box = *sheet->styleWithIdentifier("box");
  const ZTSStyle& small = *sheet->styleWithIdentifier("small box");

  //! [set]
  box.setValueForProperty(NSNumber::withInteger(144), kPoints);
  print("points set", small);
  box.setValueForProperty(NSNumber::withReal(0.5), kInches);
  print("inches set", small);
  box.removeValueForProperty(kInches);
  print("removed", small);
  //! [set]
}
