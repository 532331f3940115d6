// SPDX-License-Identifier: MIT

// A document that serves a stylesheet: undo, and which unused styles may go.

#include <platform/NSNumber.h>
#include <platform/NSUndoManager.h>
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

//! [host]
/// Anonymous styles go when nothing uses them; a style with a name is the user's.
class Document : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return mUndo.get(); }
  NSDocument* document() const override { return nullptr; }
  bool willRemoveUnusedStyle(ZTSStyle& style) override { return style.isAnonymous(); }
  void didRemoveUnusedStyles() override { std::cout << "  the list of styles is drawn again\n"; }

 private:
  Ref<NSUndoManager> mUndo = zt::make<NSUndoManager>();
};
//! [host]

int main() {
  Document document;
  NSUndoManager& undo = *document.undoManager();
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&document);
  const auto print = [&](const char* when) {
    std::cout << when << ": " << sheet->identifiedStyles().count() << " identified, "
              << sheet->anonymousStyles().count() << " anonymous\n";
  };

  //! [cleanup]
  sheet->enableUnusedStyleCleanup();
  undo.performInGroup([&] {
    sheet->addStyle(make<TextStyle>({.identifier = "body"}));
    for (const int size : {9, 12, 18}) {
      const Ref<PropertyMap> map = PropertyMap::with({{kSize, NSNumber::withInteger(size)}});
      const Ref<ZTSStyle> style =
          sheet->variationOfStyle(sheet->styleWithIdentifier("body"), {.propertyMap = map.get()});
      if (size == 12) style->incrementUsageCount();  // one paragraph looks like this
    }
    print("before the user action ends");
  });
  print("after it");
  undo.undo();
  print("undone");
  undo.redo();
  print("redone");
  //! [cleanup]
}
