// SPDX-License-Identifier: MIT
#include <tests/ztstyles/Archives.h>
#include <ztstyles/ZTSDowngradeStylesheet.h>

namespace zt::testing {

namespace {

struct Family {
  Scene parent;
  Scene scene{parent.sheet.get()};
  Scene sibling{parent.sheet.get()};
  Scene unrelated;
  ZTSStyle& body = parent.style("body", {}, {{size, 1}}, true);
  ZTSStyle& far = unrelated.style("far");
  TestAggregate& h1 = scene.style<TestAggregate>("h1", "body", {{list, body}, {label, far}});
  TestAggregate& loose = scene.style<TestAggregate>({}, "h1", {{list, h1}});
  Ref<ZTAXMLArchiver> archiver = make<ZTAXMLArchiver>(1, 2);

  Ref<ZTSDowngradeStylesheet> downgraded(ZTSStylesheet& sheet) const {
    return ZTUDynamicCast<ZTSDowngradeStylesheet>(sheet.overrideDowngradeStylesheetWithArchiver(*archiver));
  }
  ZTSStyle& copyOf(const ZTSStyle& style) const { return dynamic_cast<ZTSStyle&>(*archiver->encoderForObject(&style)); }
};

struct Counted : ZTSStyleOf<Counted, TestStyle> {
  static constexpr const char* kClassName = "Counted";
  Ref<ZTSStyle> downgradeCopy() const override {
    ++copies();
    return TestStyle::downgradeCopy();
  }
  static int& copies() {
    static int count = 0;
    return count;
  }
};

struct Defaulting : ZTSStyleOf<Defaulting, TestAggregate> {
  static constexpr const char* kClassName = "Defaulting";
  Ref<ZTSStyle> standIn = make<TestStyle>({.identifier = "stand-in"});
  Ref<NSObject> defaultValueForNilStyleProperty(PropertyKey key) const override {
    return key == label ? Ref<NSObject>(standIn) : Ref<NSObject>();
  }
  Ref<const PropertyMap> overridePropertyMap() const override { return mapOf({{size, 1}, {weight, 2}}); }
};

}  // namespace

TEST(DowngradeStylesheetTest, EveryStyleOfTheFamilyHasACopyThatRefersToCopies) {
  Family family;
  EXPECT_EQ(family.scene.sheet->downgradeStylesheetWithArchiver(*family.archiver), nullptr);
  const Ref<ZTSDowngradeStylesheet> copy = family.downgraded(*family.scene.sheet);
  EXPECT_EQ(family.downgraded(*family.scene.sheet), copy);
  EXPECT_EQ(copy->downgradeStylesheetWithArchiver(*family.archiver), copy);
  EXPECT_EQ(&copy->originalStylesheet(), family.scene.sheet.get());
  EXPECT_NE(family.sibling.sheet->downgradeStylesheetWithArchiver(*family.archiver), nullptr);
  for (ZTSStyle* style : {&family.body, static_cast<ZTSStyle*>(&family.h1), static_cast<ZTSStyle*>(&family.loose)}) {
    ZTSStyle& standIn = family.copyOf(*style);
    EXPECT_EQ(&standIn.classObject(), &style->classObject());
    EXPECT_EQ(standIn.identifier(), style->identifier());
    EXPECT_EQ(standIn.parentIdentifier(), style->parentIdentifier());
    EXPECT_EQ(standIn.isLocked(), style->isLocked());
    EXPECT_EQ(standIn.stylesheet(), style->stylesheet()->downgradeStylesheetWithArchiver(*family.archiver).get());
  }
  ZTSStyle& h1 = family.copyOf(family.h1);
  EXPECT_EQ(h1.rawValueForProperty(list), &family.copyOf(family.body));
  EXPECT_EQ(h1.rawValueForProperty(label), &family.far);
  EXPECT_EQ(family.copyOf(family.loose).rawValueForProperty(list), &h1);
  EXPECT_EQ(family.copyOf(family.loose).parent(), &h1);
  EXPECT_FALSE(copy->isChangeCommunicationEnabled());
  EXPECT_FALSE(copy->parent()->children().containsObject(copy.get()));
}

TEST(DowngradeStylesheetTest, ReplacedAndRemovedStylesAreWrittenSoAndTheOriginalsStay) {
  Family family;
  auto& goes = family.scene.style("goes", "h1");
  const std::string before = archived(*family.scene.sheet);
  const Ref<ZTSDowngradeStylesheet> copy = family.downgraded(*family.scene.sheet);
  copy->replaceStyleWithStyle(Ref<ZTSStyle>(&family.h1),
                              make<TestStyle>({.identifier = "h1", .parentIdentifier = "body"}));
  copy->removeStyle(Ref<ZTSStyle>(&goes));
  EXPECT_FALSE(copy->hasReplacementForStyle(goes));
  ZTUAssertionRecorder reports;
  EXPECT_EQ(copy->replacementForStyle(goes), nullptr);
  EXPECT_EQ(reports.descriptions(), Log{"Could not find replacement style."});
  EXPECT_EQ(copy->replacementForStyle(family.h1).get(), copy->styleWithIdentifier("h1"));
  const Loaded loaded(archived(*family.scene.sheet, *family.archiver));
  EXPECT_EQ(loaded.sheet->styleWithIdentifier("goes"), nullptr);
  EXPECT_EQ(&loaded.sheet->classObject(), &ZTSStylesheet::stylesheetClass());
  EXPECT_EQ(&loaded["h1"].classObject(), &TestStyle::styleClass());
  EXPECT_EQ(valueOf(loaded["h1"], size), 1) << "the parent is written as a copy too";
  EXPECT_EQ(archived(*family.scene.sheet), before);
}

TEST(DowngradeStylesheetTest, AFamilyIsCopiedOnceFromWhereverItIsAskedFor) {
  Family family;
  Scene below(family.scene.sheet.get());
  family.parent.style<Counted>("top");
  family.scene.style<Counted>("middle");
  below.style<Counted>("bottom");
  family.downgraded(*family.scene.sheet);
  EXPECT_EQ(Counted::copies(), 3);
}

TEST(DowngradeStylesheetTest, TheOriginalsSayWhatIsUsed) {
  struct KeepsUsed final : TestHost {
    bool shouldArchiveUnusedStyle(const ZTSStyle&) const override { return false; }
  } host;
  Family family;
  family.loose.incrementUsageCount();
  auto& replaced = family.scene.style("replaced");
  replaced.incrementUsageCount();
  family.scene.style("unused");
  family.scene.sheet->setHost(&host);
  const Ref<ZTSDowngradeStylesheet> copy = family.downgraded(*family.scene.sheet);
  copy->replaceStyleWithStyle(Ref<ZTSStyle>(&replaced), make<TestStyle>({.identifier = "new"}));
  const Loaded loaded(archived(*family.scene.sheet, *family.archiver));
  EXPECT_EQ(loaded.sheet->styles().count(), 3u) << "h1, the loose one and the replacement";
  EXPECT_NE(loaded.sheet->styleWithIdentifier("new"), nullptr);
  replaced.decrementUsageCount();
}

TEST(DowngradeStylesheetTest, CopiesFollowWhatIsReplacedAndForgetWhatIsRemoved) {
  Family family;
  const Ref<ZTSDowngradeStylesheet> copy = family.downgraded(*family.scene.sheet);
  const Ref<ZTSStyle> next = make<TestStyle>({.identifier = "body"});
  const Ref<ZTSDowngradeStylesheet> above = family.downgraded(*family.parent.sheet);
  above->replaceStyleWithStyle(Ref<ZTSStyle>(&family.body), next);
  EXPECT_EQ(family.copyOf(family.h1).rawValueForProperty(list), next.get());
  const Ref<ZTSStyle> loose(&family.copyOf(family.loose));
  copy->removeStyle(Ref<ZTSStyle>(&family.h1));
  EXPECT_EQ(loose->rawValueForProperty(list), nullptr);
  EXPECT_EQ(family.loose.rawValueForProperty(list), &family.h1) << "the original stays as it is";
}

TEST(DowngradeStylesheetTest, InheritedValuesAndDefaultsDoNotBecomeOwnOnes) {
  Family family;
  auto& heir = family.scene.style<Defaulting>("heir", "h1", {{size, 7}});
  family.scene.add(static_cast<ZTSStyle&>(*heir.standIn));
  family.downgraded(*family.scene.sheet);
  ZTSStyle& copy = family.copyOf(heir);
  EXPECT_EQ(valueOf(copy, size), 7);
  for (const PropertyKey key : {weight, list, label}) EXPECT_EQ(copy.rawValueForProperty(key), nullptr) << key.view();
}

TEST(DowngradeStylesheetTest, NothingOfTheCopiesStaysOnTheOriginals) {
  Family family;
  family.loose.incrementUsageCount();
  const auto usage = family.far.usageCount();
  Ref<ZTSDowngradeStylesheet> copy = family.downgraded(*family.scene.sheet);
  family.copyOf(family.loose).incrementUsageCount();
  family.copyOf(family.h1).setValueForProperty(Ref<NSObject>(&family.copyOf(family.loose)), label);
  family.copyOf(family.h1).p_setName("\x01");
  EXPECT_THROW(family.archiver->encodeRootObject(*family.scene.sheet), ZTAArchiveException);
  EXPECT_EQ(copy->host(), nullptr) << "also when writing ended early";
  EXPECT_EQ(copy->parent(), family.parent.sheet->downgradeStylesheetWithArchiver(*family.archiver).get());
  family.archiver.reset();
  EXPECT_FALSE(copy->hasReplacementForStyle(family.body)) << "it may outlive its archiver";
  copy.reset();
  EXPECT_EQ(family.far.usageCount(), usage);
  EXPECT_EQ(family.far.observers().countForObject(&family.h1), 1u);
  EXPECT_EQ(family.far.observers().count(), 1u);
  EXPECT_EQ(family.body.children().count(), 1u);
  EXPECT_EQ(family.unrelated.sheet->children().count() + family.scene.sheet->children().count(), 0u);
}

TEST(DowngradeStylesheetTest, ASubstituteOfAnotherClassIsReportedAndGiven) {
  Family family;
  const Ref<ZTSStylesheet> other = ZTSStylesheet::withHost();
  family.archiver->setEncoderForObject(other, family.scene.sheet);
  ZTUAssertionRecorder reports;
  EXPECT_EQ(family.scene.sheet->overrideDowngradeStylesheetWithArchiver(*family.archiver), other);
  EXPECT_EQ(reports.descriptions(), Log{"Bad class"});
}

}  // namespace zt::testing
