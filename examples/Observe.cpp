// SPDX-License-Identifier: MIT

// Who hears of a change, and in which order: descendants first, then observers, then the notification centre.

#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyleChangeInfo.h>
#include <ztstyles/ZTSStyleObserver.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kSize("size");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

//! [view]
/// A view that lays its text out again when the style that it shows changes.
struct View : ZTSStyleObserver {
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    const Ref<PropertyMap> old = change.unchangedPropertyMapForProperties(*change.changedProperties());
    std::cout << "view of " << change.style()->identifier().view() << ": size was " << old->find(kSize)->description()
              << '\n';
  }
};
//! [view]

int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<PropertyMap> ten = PropertyMap::with({{kSize, NSNumber::withInteger(10)}});
  sheet->addStyle(make<TextStyle>({.identifier = "body", .overridePropertyMap = ten.get()}));
  sheet->addStyle(make<TextStyle>({.identifier = "heading", .parentIdentifier = "body"}));
  sheet->addStyle(make<TextStyle>({.identifier = "frozen", .parentIdentifier = "body", .isLocked = true}));

  //! [change]
  View view;
  sheet->styleWithIdentifier("heading")->addObserver(&view);
  const NotificationListener listener(ZTSStylePropertiesChangedNotification, nullptr, [](const NSNotification& note) {
    std::cout << "posted for " << static_cast<ZTSStyle*>(note.object)->identifier().view() << '\n';
  });

  sheet->styleWithIdentifier("body")->setValueForProperty(NSNumber::withInteger(12), kSize);
  //! [change]
  // A locked style keeps its look.
  std::cout << "frozen: " << sheet->styleWithIdentifier("frozen")->valueForProperty(kSize)->description() << '\n';
  sheet->styleWithIdentifier("heading")->removeObserver(&view);
}
