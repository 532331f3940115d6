// What a user of the installed library writes first: a style class, a stylesheet, a question. It is compiled against
// the installed headers and linked with the installed library, and nothing else.

#include <cstdio>

#include <platform/NSException.h>
#include <platform/NSNumber.h>
#include <platform/PropertyKey.h>
#include <platform/PropertyMap.h>
#include <platform/ZTVersion.h>
#include <ztstyles/ZTSStyleClassOf.h>
#include <ztstyles/ZTSStylesheet.h>

namespace {

using namespace zt;

const PropertyKey size{"size"};

class BoxStyle : public ZTSStyle {
 public:
  static const ZTSStyleClass& styleClass();
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }
};

class BoxStyleClass : public ZTSStyleClassOf<BoxStyle> {
 public:
  using ZTSStyleClassOf::ZTSStyleClassOf;
  const PropertySet& properties() const override {
    static const Ref<PropertySet> keys = PropertySet::with({size});
    return *keys;
  }
};

const ZTSStyleClass& BoxStyle::styleClass() {
  static const auto* object = new BoxStyleClass("BoxStyle", ZTSStyle::styleClass());
  return *object;
}

}  // namespace

int main() {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost(nullptr);
  const Ref<PropertyMap> values = PropertyMap::make(1);
  values->set(size, NSNumber::withInteger(12));
  const Ref<ZTSStyle> body = make<BoxStyle>({.identifier = "body", .overridePropertyMap = values.get()});
  const Ref<ZTSStyle> quote = make<BoxStyle>({.identifier = "quote", .parentIdentifier = "body"});
  sheet->addStyle(body);
  sheet->addStyle(quote);

  const NSNumber* effective = NSNumber::from(quote->valueForProperty(size).get());
  if (effective == nullptr || effective->integerValue() != 12) return 1;

  // The types of exceptions live in the library; they have to be recognised on this side of its edge.
  try {
    throw NSInternalInconsistencyException("caught by name");
  } catch (const NSException& exception) {
    std::printf("ZTStyles %s: size %d, %s\n", versionString(), static_cast<int>(effective->integerValue()),
                exception.what());
  }
  return 0;
}
