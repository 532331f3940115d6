// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSUserDefaults.h>
#include <support/ZTUDynamicCast.h>
#include <tests/Files.h>
#include <tests/ztstyles/Scene.h>
#include <ztstyles/ZTSArchiving.h>

namespace zt::testing {

inline std::string archived(NSObject& root, ZTAXMLArchiver& archiver) {
  ZTSInitArchivingClassToElementNameMappings();
  archiver.encodeRootObject(root);
  return archiver.bytes();
}
inline std::string archived(NSObject& root) {
  ZTSInitArchivingClassToElementNameMappings();  // an archiver knows what was registered before it was made
  return archived(root, *make<ZTAXMLArchiver>(1));
}

/// An archive that has been read, with what was said about it.
struct Loaded {
  Ref<ZTAXMLUnarchiver> unarchiver;
  Ref<ZTSStylesheet> sheet;
  Log logs;

  explicit Loaded(const std::string& bytes) {
    TestStyle::styleClass();
    TestAggregate::styleClass();
    ZTSInitArchivingClassToElementNameMappings();
    ZTULogRecorder recorder;
    unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(bytes, {.fileName = "f"});
    sheet = ZTUDynamicCast<ZTSStylesheet>(unarchiver->unarchiveRootObject());
    for (const ZTULogEntry& entry : recorder.entries())
      logs.push_back(std::to_string(entry.level) + " " + entry.message);
  }
  ZTSStyle& operator[](const char* identifier) const {
    ZTSStyle* style = sheet->styleWithIdentifier(identifier);
    if (style == nullptr) throw std::runtime_error(std::string("no style ") + identifier);
    return *style;
  }
  ZTSStyle& anonymous(std::size_t index) const { return *sheet->anonymousStyles().allObjects().at(index); }
  [[nodiscard]] Log findings() const {
    Log texts;
    for (const Ref<ZTAError>& each : unarchiver->findings()) texts.push_back(each->description());
    return texts;
  }
};

/// What validation reports of the stylesheet and its ancestors.
inline Log reportsOf(const ZTSStylesheet& sheet) {
  ZTUAssertionRecorder recorder;
  for (const ZTSStylesheet* each = &sheet; each != nullptr; each = each->parent()) {
    each->validate();
    EXPECT_TRUE(each->indexesAreRight());
  }
  return recorder.descriptions();
}

/// The reason of the exception that the operation ends in.
inline std::string reasonOf(const std::function<void()>& operation) {
  try {
    operation();
  } catch (const NSException& exception) {
    return exception.reason();
  }
  return "no error";
}

/// A stylesheet of version 1 with these style elements in it.
inline std::string sheetOf(const std::string& styles, const std::string& anonymous = {}, const std::string& more = {}) {
  return "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='1'><zt:stylesheet zt:id='0'>" + more + "<zt:styles>" +
         styles + "</zt:styles><zt:anon-styles>" + anonymous + "</zt:anon-styles></zt:stylesheet></zt:archive>";
}
inline std::string element(const std::string& attributes, const std::string& properties = {},
                           const char* styleClass = "TestStyle") {
  return "\n<zt:object zt:class='" + std::string(styleClass) + "' " + attributes + "><zt:property-map>" + properties +
         "</zt:property-map></zt:object>";
}

using test::expectStored;

/// Sets the class-wide settings back.
struct ClassSettingsScope {
  ClassSettingsScope() = default;
  ClassSettingsScope(const ClassSettingsScope&) = delete;
  ClassSettingsScope& operator=(const ClassSettingsScope&) = delete;
  ~ClassSettingsScope() {
    NSUserDefaults::standardUserDefaults().removeObjectForKey("UseStyleIdentifierShortcuts");
    ZTSStylesheet::p_resetClassSettings();
  }
};

}  // namespace zt::testing
