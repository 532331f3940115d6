// SPDX-License-Identifier: MIT

// Styles that refer to other styles: a heading that names the style of its number, and the style of the paragraph that
// follows it.

#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kSize("size"), kNumber("number"), kNext("next");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

//! [class]
class ParagraphStyle : public ZTSStyleOf<ParagraphStyle, ZTSAggregateStyle> {
 public:
  static constexpr const char* kClassName = "ParagraphStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize, kNumber, kNext}); }
  const std::vector<PropertyKey>& referencedStyleProperties() const override {
    static const std::vector<PropertyKey> keys{kNumber, kNext};
    return keys;
  }
  bool validateValueForProperty(NSObject* value, PropertyKey key) const override {
    return isReferencedStyleProperty(key) || NSNumber::from(value) != nullptr;
  }
};
//! [class]

int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<TextStyle> number = make<TextStyle>({.identifier = "number"});
  const Ref<ParagraphStyle> body = make<ParagraphStyle>({.identifier = "body"});
  const Ref<PropertyMap> references = PropertyMap::with({{kNumber, number}, {kNext, body}});
  const Ref<ParagraphStyle> heading =
      make<ParagraphStyle>({.identifier = "heading", .overridePropertyMap = references.get()});
  for (const Ref<ZTSStyle>& style : {Ref<ZTSStyle>(number), Ref<ZTSStyle>(body), Ref<ZTSStyle>(heading)})
    sheet->addStyle(style);

  //! [counting]
  // A use of the heading is a use of what it refers to, so that a cleanup keeps the number style.
  heading->incrementUsageCount();
  std::cout << "number is used " << number->usageCount() << " time(s)\n";
  heading->setValueForProperty(body, kNumber);
  std::cout << "after the heading let go of it: " << number->usageCount() << ", body: " << body->usageCount() << '\n';
  //! [counting]

  //! [copying]
  // Copies refer to one another, as the originals do.
  heading->setValueForProperty(heading, kNext);  // a style may refer to itself
  const ZTSStyleCopies copies = ZTSAggregateStyle::deepCopyStyles({heading});
  const ZTSStyle& copy = **copies.begin();
  std::cout << "the copy is followed by " << (copy.valueForProperty(kNext).get() == &copy ? "itself" : "the original")
            << ", its number looks like a copy of body: "
            << (copy.valueForProperty(kNumber) != body && copy.valueForProperty(kNumber)->isEqual(body.get())) << '\n';
  //! [copying]
}
