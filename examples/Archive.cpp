// SPDX-License-Identifier: MIT

// Saving a stylesheet as XML, and reading it again.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSNumber.h>
#include <support/ZTUDynamicCast.h>
#include <ztstyles/ZTSArchiving.h>
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

//! [write]
std::string saved(ZTSStylesheet& sheet) {
  const Ref<ZTAXMLArchiver> archiver = make<ZTAXMLArchiver>(/* version */ 1);
  archiver->encodeRootObject(sheet);
  return archiver->bytes();  // or archiver->writeToFile(path): the old file or the new one, never half of either
}
//! [write]

//! [read]
Ref<ZTSStylesheet> loaded(const std::string& bytes) {
  const Ref<ZTAXMLUnarchiver> unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(bytes, {.fileName = "styles.zts"});
  Ref<ZTSStylesheet> sheet = ZTUDynamicCast<ZTSStylesheet>(unarchiver->unarchiveRootObject());
  // What could not be kept was passed over, and is said with its line.
  for (const Ref<ZTAError>& finding : unarchiver->findings()) std::cout << finding->description() << '\n';
  return sheet;
}
//! [read]

int main() {
  TextStyle::styleClass();  // archives name classes: a program that reads first has to mention its own once
  ZTSInitArchivingClassToElementNameMappings();
  const ZTADiffableXmlScope diffable;  // one element a line, no numbers: for version control

  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<PropertyMap> ten = PropertyMap::with({{kSize, NSNumber::withInteger(10)}});
  sheet->addStyle(make<TextStyle>({.identifier = "body", .overridePropertyMap = ten.get()}));
  sheet->addStyle(make<TextStyle>({.name = "Heading 1", .identifier = "heading", .parentIdentifier = "body"}));

  const std::string bytes = saved(*sheet);
  const Ref<ZTSStylesheet> again = loaded(bytes);
  std::cout << bytes << "heading: size "
            << again->styleWithIdentifier("heading")->valueForProperty(kSize)->description()
            << ", equal to what was saved: " << (again->isEqual(sheet.get()) ? "yes" : "no") << '\n';

  // A file is taken for hostile: it ends in a stylesheet, or in one exception that says where and why.
  try {
    loaded("<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='1'>\n<zt:stylesheet></zt:archive>");
  } catch (const ZTAArchiveException& exception) {
    std::cout << exception.reason() << '\n';
  }
}
