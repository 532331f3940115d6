// SPDX-License-Identifier: MIT

// A panel over the values of a style: what is set here, what is inherited, what is explicitly none; and a table of
// styles.

#include <inspection/HVStyleTableDataSource.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kSize("size"), kBold("bold"), kBorder("border"), kColour("colour");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kSize, kBold, kBorder, kColour}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

//! [why]
std::string why(const ZTSStyle& style, PropertyKey key) {
  const ZTSStyle* setter = &style;
  while (setter != nullptr && !setter->overridesProperty(key)) setter = setter->parent();
  if (setter == nullptr) return "set nowhere";
  const std::string value = isNull(setter->overrideValueForProperty(key).get())
                                ? "explicitly none"
                                : setter->overrideValueForProperty(key)->description();
  return value + (setter == &style ? ", set here" : ", from " + setter->identifier().text());
}
//! [why]

int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<PropertyMap> plain =
      PropertyMap::with({{kSize, NSNumber::withInteger(10)}, {kBorder, NSNumber::withInteger(1)}});
  const Ref<PropertyMap> own =
      PropertyMap::with({{kBold, NSNumber::withBool(true)}, {kBorder, Ref<NSObject>(NSNull::null())}});
  sheet->addStyle(make<TextStyle>({.identifier = "body", .overridePropertyMap = plain.get()}));
  sheet->addStyle(
      make<TextStyle>({.identifier = "quote", .parentIdentifier = "body", .overridePropertyMap = own.get()}));
  sheet->addStyle(make<TextStyle>({.identifier = "frozen", .parentIdentifier = "body", .isLocked = true}));
  ZTSStyle& quote = *sheet->styleWithIdentifier("quote");

  std::cout << "quote\n";
  quote.inspectableProperties().forEach(
      [&](PropertyKey key) { std::cout << "  " << key.view() << ": " << why(quote, key) << '\n'; });
  std::cout << "size can be changed: quote " << quote.canMutateProperty(kSize) << ", frozen "
            << sheet->styleWithIdentifier("frozen")->canMutateProperty(kSize) << '\n';

  //! [table]
  const Ref<HVStyleTableDataSource> rows = HVStyleTableDataSource::dataSourceWithStyles(sheet->retainedStyles());
  const Ref<NSTableView> table = make<NSTableView>();
  table->addTableColumn(make<NSTableColumn>("class"));
  table->addTableColumn(make<NSTableColumn>("identifier"));
  table->setDataSource(rows.get());
  for (std::size_t row = 0; row < table->numberOfRows(); ++row) {
    std::cout << table->objectValueAtColumnRow(0, row)->description() << "  "
              << table->objectValueAtColumnRow(1, row)->description() << '\n';
  }
  //! [table]
}
