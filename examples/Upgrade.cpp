// SPDX-License-Identifier: MIT

// Archives of an earlier version: a property that has been renamed since and counts in half points now.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSNumber.h>
#include <support/ZTUDynamicCast.h>
#include <ztstyles/ZTSArchiving.h>
#include <ztstyles/ZTSStyleOf.h>
#include <ztstyles/ZTSStylesheet.h>

#include <iostream>

using namespace zt;

const PropertyKey kHalfPoints("halfPoints"), kPoints("points");

class TextStyle : public ZTSStyleOf<TextStyle> {
 public:
  static constexpr const char* kClassName = "TextStyle";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({kHalfPoints}); }
  bool validateValueForProperty(NSObject* value, PropertyKey) const override {
    return NSNumber::from(value) != nullptr;
  }

  //! [upgrade]
  /// Version 1 wrote points. Called for each style once the whole stylesheet has been read; what the class does not
  /// accept is dropped by the inherited operation, so the conversion comes first.
  void upgradeStyleWithUnarchiver(ZTAXMLUnarchiver& unarchiver, std::uint64_t version) override {
    if (version < 2) {
      if (const NSNumber* points = NSNumber::from(rawValueForProperty(kPoints)))
        p_setValueForProperty(NSNumber::withInteger(points->integerValue() * 2), kHalfPoints);
      unconditionalRemoveValueForProperty(kPoints);
    }
    ZTSStyleOf::upgradeStyleWithUnarchiver(unarchiver, version);
  }
  //! [upgrade]

  //! [downgrade]
  /// What an archive of version 1 gets to hold.
  Ref<const PropertyMap> archivedPropertiesForVersion(std::uint64_t version, ZTAXMLArchiver&) const override {
    const Ref<PropertyMap> map = overridePropertyMap() ? overridePropertyMap()->copy() : PropertyMap::make();
    if (version < 2) {
      if (const Ref<NSObject> half = map->remove(kHalfPoints))
        map->set(kPoints, NSNumber::withInteger(NSNumber::from(half.get())->integerValue() / 2));
    }
    return map;
  }
  //! [downgrade]
};

Ref<ZTSStylesheet> loaded(const std::string& bytes) {
  return ZTUDynamicCast<ZTSStylesheet>(ZTAXMLUnarchiver::unarchiverForBytes(bytes)->unarchiveRootObject());
}

std::string saved(ZTSStylesheet& sheet, std::uint64_t version) {
  const Ref<ZTAXMLArchiver> archiver = make<ZTAXMLArchiver>(version, /* newest */ 2);
  archiver->encodeRootObject(sheet);
  return archiver->bytes();
}

int main() {
  TextStyle::styleClass();
  ZTSInitArchivingClassToElementNameMappings();
  const Ref<ZTSStylesheet> sheet = loaded(R"(<zt:archive xmlns:zt="urn:ztstyles:archive" zt:version="1">
    <zt:stylesheet>
      <zt:styles><zt:object zt:class="TextStyle" zt:ident="body"><zt:property-map>
        <zt:points><zt:integer>11</zt:integer></zt:points>
      </zt:property-map></zt:object></zt:styles>
      <zt:anon-styles/>
    </zt:stylesheet></zt:archive>)");
  const ZTSStyle& body = *sheet->styleWithIdentifier("body");
  std::cout << "version 1 read: " << describe(*body.overridePropertyMap()) << '\n';
  for (const std::uint64_t version : {1, 2}) {
    const std::string bytes = saved(*sheet, version);
    std::cout << "version " << version << " written holds points: " << (bytes.find("<zt:points>") != std::string::npos)
              << ", and reads as " << describe(*loaded(bytes)->styleWithIdentifier("body")->overridePropertyMap())
              << '\n';
  }
}
