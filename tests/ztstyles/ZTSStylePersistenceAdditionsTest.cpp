// SPDX-License-Identifier: MIT
#include <platform/NSArray.h>
#include <tests/ztstyles/Archives.h>
#include <ztstyles/ZTSStyleError.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>

#include <chrono>

namespace zt::testing {

namespace {

/// Rebuilds "built-in" from its identifier, answers none for "broken"; has defaults.
class BuiltIn : public ZTSStyleOf<BuiltIn, TestStyle> {
 public:
  static constexpr const char* kClassName = "TestBuiltIn";
  struct Class final : ZTSStyleClassOf<BuiltIn> {
    using ZTSStyleClassOf::ZTSStyleClassOf;
    bool canConstructStyleFromIdentifier(const StringRef& identifier) const override {
      return identifier.view() != "plain";
    }
    StringRef localizationKeyPrefix() const override { return "BUILTIN_"; }
  };
  Ref<ZTSStyle> initWithIdentifier(const StringRef& identifier) override {
    if (identifier.view() == "broken") return {};
    if (identifier.view() == "unable") return ZTSStyle::initWithIdentifier(identifier);
    p_setIdentifier(identifier);
    p_setPropertyMap(mapOf({{size, 99}}));
    return Ref<ZTSStyle>(this);
  }
  bool hasDefaultValueForProp(PropertyKey key) const override { return key == size; }
  Ref<NSObject> defaultValueForProp(PropertyKey key) const override {
    return key == size ? NSNumber::withInteger(77) : Ref<NSNumber>();
  }
};

/// Writes a stylesheet and then styles one by one, as a pasteboard does.
class Pasteboard final : public ZTAXMLCoding {
 public:
  std::vector<NSObject*> objects;

  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t) override {
    for (NSObject* object : objects) archiver.encodeObject(object, node, CorvaleNamespace);
  }
  bool initWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*, std::uint64_t) override { return false; }
};

/// The identifiers of the styles that are written where an archiver saves on demand, in their order.
Log savedOnDemand(std::vector<NSObject*> objects, bool withNodes = true, bool withSet = true) {
  const auto board = make<Pasteboard>();
  board->objects = std::move(objects);
  const auto archiver = make<ZTVXMLArchiverForPB>(1);
  if (withNodes) archiver->setMetadataForKey(make<ZTUPointerKeyDictionary>(), kZTSStyleDelayedStyleSaveNodeDict);
  if (withSet) archiver->setMetadataForKey(make<ZTSSavedStyleSet>(), kZTSStyleDelayedStyleSavedSet);
  const std::string text = archived(*board, *archiver);
  Log found;
  for (std::size_t at = text.find(":ident=\""); at != std::string::npos; at = text.find(":ident=\"", at + 1))
    found.push_back(text.substr(at + 8, text.find('"', at + 8) - at - 8));
  return found;
}

}  // namespace

TEST(StylePersistenceTest, AStyleInFullIsWrittenAsStored) {
  const ClassSettingsScope settings;
  Scene scene;
  auto& body = scene.style(
      "body", {}, {{weight, 2.5}, {colour, Ref<NSObject>(NSColor::withComponents(1, 2, 3, 4))}, {size, NSNull::null()}},
      true);
  body.p_setName("Body & <text>");
  auto& aggregate = scene.style<TestAggregate>(
      "a", "body",
      {{list, body},
       {size, Ref<NSObject>(NSArray::withObjects({Ref<NSObject>(NSString::make(" x ")), Ref<NSObject>(&body)}))}});
  aggregate.p_setValueForProperty(Ref<NSObject>(&aggregate), label);
  scene.style({}, {}).p_setName("");
  expectStored(archived(*scene.sheet), "style-in-full.xml");
  ZTSStyle::setSortXMLPropertiesByKey(true);
  EXPECT_LT(archived(*scene.sheet).find("zt:colour"), archived(*scene.sheet).find("zt:weight"));

  const Loaded loaded(archived(*scene.sheet));
  EXPECT_EQ(loaded.findings(), Log{});
  EXPECT_EQ(loaded["a"].rawValueForProperty(label), &loaded["a"]);
  EXPECT_TRUE(loaded["body"].observers().containsObject(&loaded["a"]));
  EXPECT_EQ(reportsOf(*loaded.sheet), Log{});
  EXPECT_EQ(archived(*loaded.sheet), archived(*scene.sheet));
}

TEST(StylePersistenceTest, ShortcutsWriteTheIdentifierAlone) {
  const ClassSettingsScope settings;
  Scene scene;
  scene.style<BuiltIn>("one", "parent", {{size, 3}});
  scene.style<BuiltIn>("plain", {}, {{weight, 3}, {size, 4}});
  scene.style<BuiltIn>({}, "one", {{weight, 5}});
  const std::string full = archived(*scene.sheet);
  EXPECT_NE(full.find("parent-ident"), std::string::npos);
  EXPECT_NE(full.find("<zt:size/>"), std::string::npos) << "a default is written empty";
  EXPECT_EQ(valueOf(Loaded(full)["one"], size), 77);

  ZTSStylesheet::p_resetClassSettings();
  NSUserDefaults::standardUserDefaults().setBoolForKey(true, "UseStyleIdentifierShortcuts");
  EXPECT_TRUE(checkUsingIdentifiers());
  NSUserDefaults::standardUserDefaults().setBoolForKey(false, "UseStyleIdentifierShortcuts");
  EXPECT_TRUE(checkUsingIdentifiers()) << "read once";
  const std::string brief = archived(*scene.sheet);
  EXPECT_NE(brief.find("<zt:object zt:class=\"TestBuiltIn\" zt:ident=\"one\"/>"), std::string::npos) << brief;
  EXPECT_NE(brief.find("zt:ident=\"plain\" zt:locked=\"false\""), std::string::npos);
  EXPECT_EQ(valueOf(Loaded(brief)["one"], size), 99);
  EXPECT_EQ(valueOf(Loaded(brief).anonymous(0), weight), 5) << "without an identifier nothing is short";

  const Loaded broken(sheetOf(element("zt:ident='broken'", "", "TestBuiltIn") + element("zt:ident='ok'")));
  EXPECT_EQ(broken.sheet->styles().count(), 1u);
  EXPECT_THAT(broken.logs, ::testing::ElementsAre(
                               "1 Couldn't rebuild style of class 'TestBuiltIn' from identifier 'broken', skipping",
                               ::testing::HasSubstr("couldn't create child from node")));
  EXPECT_EQ(reasonOf([] { Loaded(sheetOf(element("zt:ident='unable'", "", "TestBuiltIn"))); }),
            "Could not initialize style of class 'TestBuiltIn' from identifier 'unable'");
}

TEST(StylePersistenceTest, WhatIsMissingIsDefaultedLoggedOrDropped) {
  const std::string styles =
      element("zt:ident='a'",
              "<zt:size/><zt:weight><zt:integer>x</zt:integer></zt:weight><zt:colour><zt:null "
              "zt:optional='true'/></zt:colour>"
              "<zt:unknown/><zt:other><zt:integer>1</zt:integer></zt:other>\n<zt:label><zt:noise "
              "zt:optional='true'/></zt:label>",
              "TestBuiltIn") +
      "\n<zt:object zt:class='TestStyle' zt:ident='c' zt:name='n'/>" +
      element("zt:ident='d'", "<zt:list><zt:integer>3</zt:integer></zt:list><zt:label><zt:null/></zt:label>",
              "TestAggregate");
  BuiltIn::styleClass();
  const Loaded loaded(sheetOf(styles));
  EXPECT_EQ(valueOf(loaded["a"], size), 77);
  EXPECT_TRUE(isNull(loaded["a"].rawValueForProperty(colour)));
  EXPECT_EQ(loaded["a"].overridePropertyMap()->count(), 2u) << "what the class does not accept is gone";
  EXPECT_EQ(loaded["d"].rawValueForProperty(list), nullptr);
  EXPECT_TRUE(isNull(loaded["d"].rawValueForProperty(label)));
  EXPECT_THAT(loaded.logs,
              ::testing::ElementsAre(
                  "1 Couldn't create property from node integer, using default",
                  "10 Couldn't get value for weight from node or defaults, skipping",
                  "10 Couldn't get value for label from node or defaults, skipping",
                  ::testing::MatchesRegex(
                      "1 No property list for TestStyle \\(0x[0-9a-f]+\\) ident: c named n on node 0x[0-9a-f]+"),
                  ::testing::HasSubstr("couldn't create child from node")));
  EXPECT_EQ(loaded.findings(),
            (Log{"f:2: 'x' is no integer (in the style with identifier 'a')",
                 "f:3: expected an object or a value, found 'noise' (in the style with identifier 'a')",
                 "f:4: expected an element 'property-map' in a style, found none (in the style with identifier 'c')",
                 "f:5: expected a style as value of 'list', found one of the class 'NSNumber' (in the style with "
                 "identifier 'd')",
                 "f: the class 'TestBuiltIn' has no property 'other'; not kept (in the style with identifier 'a')"}));
}

TEST(StylePersistenceTest, WhatIsNotUnderstoodIsTold) {
  const auto told = [](const std::string& attributes, const std::string& properties, const std::string& more = {}) {
    return Loaded(sheetOf("<zt:object zt:class='TestStyle' zt:ident='s' " + attributes + "><zt:property-map>" +
                          properties + "</zt:property-map>" + more + "</zt:object>"))
        .findings();
  };
  const auto saying = [](const char* text) { return ::testing::ElementsAre(::testing::HasSubstr(text)); };
  const std::string one = "<zt:integer>1</zt:integer>";
  EXPECT_EQ(told("zt:locked='true'", "<zt:size>" + one + "</zt:size>"), Log{});
  EXPECT_THAT(told("zt:locked='maybe'", ""), saying("expected 'true' or 'false' in 'locked', found 'maybe'"));
  EXPECT_THAT(told("zt:colour='red'", ""), saying("expected no attribute 'colour' in 'object'"));
  EXPECT_THAT(told("ident='t'", ""), saying("expected no attribute 'ident' in 'object'"));
  EXPECT_THAT(told("", "", "<zt:property-map/>"), saying("the element 'property-map' has been given before"));
  EXPECT_THAT(told("", "", "<zt:extra/>"), saying("expected no element 'extra' in 'object'"));
  EXPECT_EQ(told("", "", "<zt:extra zt:optional='true'/>"), Log{});
  EXPECT_THAT(told("", "12"), saying("expected no text in 'property-map', found '12'"));
  EXPECT_THAT(told("", "<zt:size>12</zt:size>"), saying("expected no text in 'size', found '12'"));
  EXPECT_THAT(told("", "<zt:size>" + one + one + "</zt:size>"), saying("expected one value of 'size', found more"));
  EXPECT_THAT(told("", "<zt:size>" + one + "</zt:size><zt:size/><zt:size>" + one + "</zt:size>"),
              ::testing::Each(::testing::HasSubstr("'size' has been set before")));
  EXPECT_THAT(told("", "<size xmlns='urn:other'>" + one + "</size>"), saying("an element of another namespace"));
  EXPECT_THAT(told("", "<zt:size><zt:integer zt:unit='cm'>1</zt:integer></zt:size>"), saying("no attribute 'unit'"));
  EXPECT_THAT(told("", "<zt:size><zt:null>1</zt:null></zt:size>"), saying("expected no text in 'null'"));
  EXPECT_THAT(told("", "<zt:size><zt:integer>-1</zt:integer></zt:size>"), saying("refuses the value of 'size'"));
  EXPECT_THAT(told("", "<zt:girth>" + one + "</zt:girth>"), saying("has no property 'girth'"));
  const std::string shelf = sheetOf(element("zt:ident='s'"));
  const std::string end = "</zt:archive>";
  EXPECT_THAT(
      Loaded(shelf.substr(0, shelf.size() - end.size()) + "<zt:objects>" + element("zt:id='9'") + "</zt:objects>" + end)
          .findings(),
      saying("nothing refers to this 'object'"));
}

TEST(StylePersistenceTest, SavingKeepsTheNameOfAClassThatIsNotKnown) {
  const std::string text =
      sheetOf("<zt:object zt:class='Foreign' zt:ancestor='TestStyle' zt:ident='s'><zt:property-map/></zt:object>");
  const Loaded loaded(text);
  EXPECT_THAT(loaded.findings(),
              ::testing::ElementsAre(::testing::HasSubstr("no class is named 'Foreign'; 'TestStyle'")));
  const std::string again = archived(*loaded.sheet);
  EXPECT_NE(again.find("zt:class=\"Foreign\" zt:ancestor=\"TestStyle\""), std::string::npos) << again;
  const Ref<ZTSStyle> kept(&loaded["s"]);
  loaded.sheet->removeStyle(kept);
  loaded.sheet->addStyle(make<TestStyle>({.identifier = "s"}));
  EXPECT_EQ(archived(*loaded.sheet).find("Foreign"), std::string::npos) << "it is the style's, not the identifier's";
}

TEST(StylePersistenceTest, ErrorsNameTheStyleAndNeverNest) {
  Scene scene;
  auto& bad = scene.style("bad", {}, {{size, "\x01"}});
  try {
    archived(*scene.sheet);
    ADD_FAILURE();
  } catch (const ZTAArchiveException& exception) {
    const auto& error = dynamic_cast<const ZTSStyleError&>(*exception.error());
    EXPECT_EQ(error.style(), &bad);
    EXPECT_THAT(exception.reason(), ::testing::EndsWith("(in the style with identifier 'bad')"));
    auto again = ZTSStyleError::withRootErrorStyle(exception.error(), Ref<ZTSStyle>(&scene.style("other")));
    EXPECT_EQ(&again->rootError(), &error.rootError());
    EXPECT_EQ(again->style()->identifier(), "other");
    EXPECT_EQ(bad.handleError({})->message(), "nothing is known of this error");
  }
}

TEST(StylePersistenceTest, OnDemandStylesWriteWhatTheyNeedFirstAndOnce) {
  Scene parent;
  Scene scene(parent.sheet.get());
  parent.style("base");
  auto& body = scene.style("body", "base");
  auto& a = scene.style<TestAggregate>("a", "body");
  auto& b = scene.style<TestAggregate>("b", {}, {{list, a}});
  a.p_setValueForProperty(Ref<NSObject>(&b), label);  // a circle
  auto& anonymous = scene.style<TestAggregate>({}, "body", {{list, a}, {label, b}});
  scene.style("unneeded");
  EXPECT_EQ(savedOnDemand({scene.sheet.get(), &anonymous, &body}), (Log{"body", "b", "a", "base"}));
  EXPECT_EQ(savedOnDemand({scene.sheet.get(), &anonymous, &body}, false, false),
            (Log{"body", "unneeded", "a", "b", "base"}));

  ZTULogRecorder log;
  EXPECT_EQ(reasonOf([&] {
              savedOnDemand({scene.sheet.get(), &anonymous}, true, false);
            }),
            "Couldn't get archived styles set");
  EXPECT_EQ(reasonOf([&] { savedOnDemand({&anonymous}); }),
            format("Couldn't get ident/anon styles node pair for TestAggregate %p, stylesheet %p", address(&anonymous),
                   address(scene.sheet.get())));
  ASSERT_EQ(log.entries().size(), 2u);
  EXPECT_EQ(log.entries()[1].message, format("Couldn't get ident/anon styles node pair for style %p, stylesheet %p",
                                             address(&anonymous), address(scene.sheet.get())));
}

TEST(StylePersistenceTest, DeepAndFlatFamiliesAreSavedInLinearTime) {
  const int count = test::kIsSanitized ? 10'000 : 100'000;
  for (const bool deep : {false, true}) {
    Scene scene;
    scene.style("0");
    for (int index = 1; index < count; ++index)
      scene.style(std::to_string(index), std::to_string(deep ? index - 1 : 0));
    const std::string last = std::to_string(count - 1);
    const auto start = std::chrono::steady_clock::now();
    auto ordered = scene.sheet->p_orderedIdentifiedStyles();
    EXPECT_EQ(ordered.front()->identifier(), "0");
    sortIdentifiedStylesForDiff(ordered);
    EXPECT_EQ(ordered.back()->identifier().text(), last);
    const Log written = savedOnDemand({scene.sheet.get(), scene.sheet->styleWithIdentifier(last)});
    EXPECT_EQ(written.size(), deep ? static_cast<std::size_t>(count) : 2u);
    EXPECT_EQ(written.front() + " " + written.back(), "0 " + last);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(40)) << "a quadratic way takes minutes";
  }
}

}  // namespace zt::testing
