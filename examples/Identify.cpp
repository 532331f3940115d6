// SPDX-License-Identifier: MIT

// "Make it a style": an anonymous variation becomes a named style, and back.

#include <platform/NSNumber.h>
#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kSize("size"), kBold("bold");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize, kBold}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

class Document : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return mUndo.get(); }
  NSDocument* document() const override { return nullptr; }

 private:
  Ref<NSUndoManager> mUndo = zt::make<NSUndoManager>();
};

int main() {
  Document document;
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&document);
  sheet->addStyle(make<TextStyle>({.identifier = "body"}));
  const Ref<PropertyMap> large = PropertyMap::with({{kSize, NSNumber::withInteger(18)}});
  const Ref<PropertyMap> bold = PropertyMap::with({{kBold, NSNumber::withBool(true)}});
  const Ref<ZTSStyle> title = sheet->variationOfStyle(sheet->styleWithIdentifier("body"), {.propertyMap = large.get()});

  //! [identify]
  document.undoManager()->performInGroup([&] {
    title->setName("Title");
    sheet->identifyStyle(title, "title");
  });
  // What is made of it from now on inherits from it, not from body.
  const Ref<ZTSStyle> strong = sheet->variationOfStyle(title.get(), {.propertyMap = bold.get()});
  title->setValueForProperty(NSNumber::withInteger(24), kSize);
  std::cout << strong->parent()->name().view() << " became " << title->valueForProperty(kSize)->description()
            << ", its variation " << strong->valueForProperty(kSize)->description() << '\n';
  //! [identify]

  while (document.undoManager()->canUndo()) document.undoManager()->undo();
  std::cout << "all undone: " << sheet->styles().count() << " styles, title is "
            << (title->isAnonymous() ? "anonymous" : "identified") << '\n';
}
