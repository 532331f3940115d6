// SPDX-License-Identifier: MIT
#include <tests/ztstyles/Archives.h>

namespace zt::testing {

namespace {

class ArchiveHost final : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return nullptr; }
  NSDocument* document() const override { return nullptr; }
  bool shouldArchiveUnusedStyle(const ZTSStyle& style) const override { return style.identifier().view() != "unused"; }
  bool shouldArchiveStyle(const ZTSStyle& style) const override { return style.identifier().view() != "secret"; }
};

struct Clinging : ZTSStyleOf<Clinging, TestStyle> {
  static constexpr const char* kClassName = "Clinging";
  void archivingSetStylesheet(ZTSStylesheet* sheet) override {
    if (sheet == nullptr) throw std::runtime_error("no");
    TestStyle::archivingSetStylesheet(sheet);
    last() = Ref<ZTSStyle>(this);
  }
  static Ref<ZTSStyle>& last() {
    static Ref<ZTSStyle> style;
    return style;
  }
};

}  // namespace

TEST(StylesheetPersistenceTest, AnEmptyStylesheetHasTwoEmptyContainers) {
  const Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  expectStored(archived(*sheet), "stylesheet-empty.xml");
  EXPECT_EQ(Loaded(archived(*sheet)).sheet->styles().count(), 0u);
}

TEST(StylesheetPersistenceTest, TheHostHoldsStylesBack) {
  ArchiveHost host;
  Scene scene;
  for (const char* identifier : {"unused", "secret", "kept"}) scene.style(identifier);
  scene.sheet->setHost(&host);
  const auto written = [&] { return Loaded(archived(*scene.sheet)).sheet->styles().count(); };
  EXPECT_EQ(written(), 1u);
  scene.sheet->styleWithIdentifier("unused")->incrementUsageCount();
  EXPECT_EQ(written(), 2u);
  scene.sheet->setHost(nullptr);
  EXPECT_EQ(written(), 3u);
}

TEST(StylesheetPersistenceTest, WhatCanBeKeptIsKeptAndSaid) {
  const Loaded loaded(sheetOf(
      element("zt:ident='a' zt:id='1'",
              "<zt:size><zt:integer>1</zt:integer></zt:size><zt:list><zt:ref zt:to='2'/></zt:list>", "TestAggregate") +
          element("zt:ident='a'", "<zt:size><zt:integer>2</zt:integer></zt:size>") + element("zt:name='none'") +
          "<zt:ref zt:to='1'/>" + element("zt:ident='loop1' zt:parent-ident='loop2'") +
          element("zt:ident='loop2' zt:parent-ident='loop1'") + element("zt:ident='self' zt:parent-ident='self'") +
          element("zt:ident='lost' zt:parent-ident='nobody'") + element("zt:ident='b' zt:id='2'") +
          "\n<zt:string>text</zt:string><zt:ref zt:to='0'/>",
      element("zt:ident='free'") + element("zt:ident='a' zt:parent-ident='b'") + "<zt:ref zt:to='2'/>"));
  EXPECT_EQ(loaded.findings(),
            (Log{"f:3: the identifier 'a' has been given before; this style replaces the earlier one",
                 "f:4: expected an identifier, found none; the style is kept as an anonymous one",
                 "f:4: the identifier 'a' has been given before; this style replaces the earlier one",
                 "f:10: expected a style, found an object of the class 'NSString'",
                 "f:10: expected a style, found an object of the class 'ZTSStylesheet'",
                 "f:11: expected no identifier, found 'free'; the style is kept as an identified one",
                 "f:12: expected no identifier, found 'a', which another style has; the style is kept without it"}));
  EXPECT_THAT(loaded.logs, ::testing::AllOf(::testing::SizeIs(6), ::testing::Each(::testing::StartsWith("1 Style"))));
  EXPECT_EQ(valueOf(loaded["a"], size), 1) << "the reference came last";
  EXPECT_EQ(loaded["b"].observers().countForObject(&loaded["a"]), 1u);
  EXPECT_EQ(loaded.sheet->anonymousStyles().count(), 2u);
  EXPECT_EQ(loaded.anonymous(1).parent(), &loaded["b"]);
  EXPECT_TRUE((loaded["loop1"].parent() == nullptr) != (loaded["loop2"].parent() == nullptr));
  EXPECT_EQ(loaded["self"].parent(), nullptr);
  EXPECT_EQ(reportsOf(*loaded.sheet), Log{});
}

TEST(StylesheetPersistenceTest, WhatIsHeldBackAndReferredToIsWrittenInItsContainer) {
  ArchiveHost host;
  Scene scene;
  auto& secret = scene.style("secret");
  auto& unused = scene.style<TestAggregate>("unused", {}, {{list, secret}});
  scene.style<TestAggregate>("kept", {}, {{list, unused}});
  scene.sheet->setHost(&host);
  const std::string text = archived(*scene.sheet);
  EXPECT_EQ(text.find("zt:objects"), std::string::npos) << text;
  const Loaded loaded(text);
  EXPECT_EQ(loaded["kept"].rawValueForProperty(list), &loaded["unused"]);
  EXPECT_EQ(loaded["unused"].rawValueForProperty(list), &loaded["secret"]);
  EXPECT_EQ(loaded.findings(), Log{});
}

TEST(StylesheetPersistenceTest, ReferencesToAStyleWhoseIdentifierIsGivenAgainLeadToTheLaterOne) {
  const auto refersTo = [](const char* id) { return "<zt:list><zt:ref zt:to='" + std::string(id) + "'/></zt:list>"; };
  const std::string above = "<zt:parent><zt:styles>" + element("zt:ident='a' zt:id='1'") +
                            element("zt:ident='early'", refersTo("1"), "TestAggregate") +
                            element("zt:ident='a' zt:id='2'") + element("zt:ident='a' zt:id='3'") +
                            "</zt:styles><zt:anon-styles/></zt:parent>";
  const Loaded loaded(sheetOf(element("zt:ident='late'", refersTo("2"), "TestAggregate"), {}, above));
  ZTSStyle* later = loaded.sheet->parent()->styleWithIdentifier("a");
  EXPECT_EQ(loaded["late"].rawValueForProperty(list), later);
  EXPECT_EQ(loaded.sheet->parent()->styleWithIdentifier("early")->rawValueForProperty(list), later);
  EXPECT_EQ(later->observers().allObjects().size(), 2u);
  EXPECT_EQ(reportsOf(*loaded.sheet), Log{});
}

TEST(StylesheetPersistenceTest, AStyleThatIsReplacedIsUnlinkedWhateverItThrows) {
  Clinging::styleClass();
  EXPECT_THROW(Loaded(sheetOf(element("zt:ident='a'", {}, "Clinging") + element("zt:ident='a'"))), std::runtime_error);
  EXPECT_EQ(Clinging::last()->stylesheet(), nullptr);
  EXPECT_EQ(Clinging::last()->document(), nullptr);
  Clinging::last().reset();
}

TEST(StylesheetPersistenceTest, WhatCannotBeKeptEndsTheReading) {
  const std::string open = "<zt:archive xmlns:zt='urn:ztstyles:archive' zt:version='1'>\n<zt:stylesheet zt:id='1'>";
  const std::string close = "<zt:anon-styles/></zt:stylesheet></zt:archive>";
  const auto errorOf = [](const std::string& bytes) { return reasonOf([&] { Loaded loaded(bytes); }); };
  EXPECT_THAT(errorOf(open + "</zt:stylesheet></zt:archive>"),
              ::testing::MatchesRegex("Stylesheet 0x[0-9a-f]+ couldn't create anonymous children."));
  EXPECT_EQ(errorOf(open + close), "no error") << "identified styles may be missing";
  EXPECT_EQ(errorOf(open + "<zt:parent zt:to='1'/>" + close), "f:2: a stylesheet cannot be among its own ancestors");
  EXPECT_EQ(errorOf(open + "<zt:parent><zt:parent zt:to='1'/><zt:anon-styles/></zt:parent>" + close),
            "f:2: a stylesheet cannot be among its own ancestors");
  EXPECT_THAT(errorOf(open + "<zt:parent><zt:styles>" +
                      element("zt:ident='a' zt:id='2'", "<zt:list><zt:ref zt:to='3'/></zt:list>", "TestAggregate") +
                      element("zt:ident='b' zt:id='3'", "<zt:list><zt:ref zt:to='2'/></zt:list>", "TestAggregate") +
                      "</zt:styles><zt:anon-styles/></zt:parent></zt:stylesheet></zt:archive>"),
              ::testing::HasSubstr("couldn't create anonymous children"))
      << "and what was read is freed";
  EXPECT_EQ(errorOf(open + "<zt:parent><zt:anon-styles><zt:ref zt:to='1'/></zt:anon-styles></zt:parent>" + close),
            "no error");
  std::string deep;
  for (int level = 0; level < 100'000; ++level) deep += "<zt:parent>";
  EXPECT_EQ(errorOf(open + deep), "f:2: elements nest deeper than 200 levels");
}

TEST(StylesheetPersistenceTest, UpgradersAndDowngradersRunInTheirOrder) {
  const ClassSettingsScope settings;
  struct Up final : ZTSStylesheetUpgrader {
    Log& log;
    const char* name;
    Up(Log& all, const char* text) : log(all), name(text) {}
    void postUnarchiveUpgradeStylesheetForUnarchiver(ZTSStylesheet& sheet, ZTAXMLUnarchiver& unarchiver) override {
      log.push_back(format("%s up from %d%s", name, unarchiver.version(), sheet.parent() != nullptr ? " child" : ""));
    }
  };
  struct Down final : ZTSStylesheetDowngrader {
    Log& log;
    explicit Down(Log& all) : log(all) {}
    void preArchiveDowngradeStylesheetForVersionArchiver(ZTSStylesheet& sheet, std::uint64_t version,
                                                         ZTAXMLArchiver&) override {
      log.push_back(format("down to %d%s", version, sheet.parent() != nullptr ? " child" : ""));
    }
  };
  Scene parent;
  Scene scene(parent.sheet.get());
  archived(*scene.sheet, *make<ZTAXMLArchiver>(1, 2));  // nobody is registered
  ZTSStylesheet::registerUpgrader(make<Up>(scene.log, "first"));
  ZTSStylesheet::registerUpgrader(make<Up>(scene.log, "second"));
  ZTSStylesheet::registerDowngrader(make<Down>(scene.log));
  archived(*scene.sheet, *make<ZTAXMLArchiver>(2, 2));
  Loaded(archived(*scene.sheet, *make<ZTAXMLArchiver>(1, 2)));
  EXPECT_EQ(scene.log, (Log{"down to 1", "down to 1 child", "first up from 1", "second up from 1",
                            "first up from 1 child", "second up from 1 child"}));
}

}  // namespace zt::testing
