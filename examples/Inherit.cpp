// SPDX-License-Identifier: MIT

// A style class, a stylesheet with two styles, and what they look like.

#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kSize("size"), kBold("bold");

//! [class]
class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize, kBold}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};
//! [class]

//! [inherit]
int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<PropertyMap> plain =
      PropertyMap::with({{kSize, NSNumber::withInteger(10)}, {kBold, NSNumber::withBool(false)}});
  sheet->addStyle(make<TextStyle>({.identifier = "body", .overridePropertyMap = plain.get()}));
  sheet->addStyle(make<TextStyle>({.identifier = "heading", .parentIdentifier = "body"}));
  ZTSStyle& heading = *sheet->styleWithIdentifier("heading");

  heading.setValueForProperty(NSNumber::withBool(true), kBold);
  sheet->styleWithIdentifier("body")->setValueForProperty(NSNumber::withInteger(12), kSize);
  std::cout << "heading: size " << heading.valueForProperty(kSize)->description() << ", bold "
            << heading.valueForProperty(kBold)->description() << '\n';
}
//! [inherit]
