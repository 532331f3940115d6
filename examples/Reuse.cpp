// SPDX-License-Identifier: MIT

// Formatting a document: ask for variations, share what is equal, count uses, undo, clean up.

#include <platform/NSNumber.h>
#include <platform/NSUndoManager.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kBold("bold");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kBold}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

/// The document that owns the undo manager and says which unused styles may go: the anonymous ones.
class Document : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return mUndo.get(); }
  NSDocument* document() const override { return nullptr; }
  bool willRemoveUnusedStyle(ZTSStyle& style) override { return style.isAnonymous(); }

 private:
  Ref<NSUndoManager> mUndo = zt::make<NSUndoManager>();
};

int main() {
  Document document;
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(&document);
  sheet->addStyle(make<TextStyle>({.identifier = "body"}));
  ZTSStyle* body = sheet->styleWithIdentifier("body");
  document.undoManager()->removeAllActions();
  sheet->enableUnusedStyleCleanup();

  //! [share]
  // Two paragraphs are made bold in one user action. They share one style.
  const Ref<PropertyMap> bold = PropertyMap::with({{kBold, NSNumber::withBool(true)}});
  Ref<ZTSStyle> first;
  Ref<ZTSStyle> second;
  document.undoManager()->performInGroup([&] {
    first = sheet->variationOfStyle(body, {.propertyMap = bold.get()});
    first->incrementUsageCount();
    second = sheet->variationOfStyle(body, {.propertyMap = bold.get()});
    second->incrementUsageCount();
  });
  std::cout << "shared: " << (first == second) << ", anonymous styles: " << sheet->anonymousStyles().count() << '\n';
  //! [share]

  // Nothing uses it any longer: it goes when the action ends, and comes back when that is undone.
  document.undoManager()->performInGroup([&] {
    first->decrementUsageCount();
    second->decrementUsageCount();
  });
  std::cout << "after the last use: " << sheet->anonymousStyles().count() << '\n';
  document.undoManager()->undo();
  std::cout << "after undo: " << sheet->anonymousStyles().count() << '\n';
}
