// Damaged models, one for each check, made with the private operations.

#include "Scene.h"

#include <functional>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

/// A stylesheet whose registry can be damaged.
class OpenSheet : public ZTSStylesheet {
 public:
  using ZTSStylesheet::p_anonymousStyles;
  using ZTSStylesheet::p_identifiedStyles;
  void appSpecificValidate() const override { ++hookCalls; }
  mutable int hookCalls = 0;
};

/// Notes what had been reported when its own checks began.
class CheckingStyle : public TestStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<CheckingStyle>("CheckingStyle", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  void appSpecificValidate() const override { ZT_REPORT("appSpecificValidate", this, "app", "hook"); }
  std::optional<ZTSStyleSet> referencedStyles() const override {
    ZTSStyleSet set;
    for (ZTSStyle* style : references) set.addObject(style);
    return set;
  }
  std::vector<ZTSStyle*> references;
};

/// Says that it equals whatever it is compared with.
class LooseStyle : public TestStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<LooseStyle>("LooseStyle", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  bool isEqual(const NSObject* other) const override { return other != nullptr; }
};

ZTUMutablePointerSet<ZTSStyle> childrenOf(std::initializer_list<ZTSStyle*> styles) {
  ZTUMutablePointerSet<ZTSStyle> set;
  for (ZTSStyle* style : styles) set.addObject(style);
  return set;
}

ZTUCountedPointerSet<ZTSStyleObserver> observersOf(std::initializer_list<ZTSStyleObserver*> observers) {
  ZTUCountedPointerSet<ZTSStyleObserver> set;
  for (ZTSStyleObserver* observer : observers) set.addObject(observer);
  return set;
}

/// A sound model: `p` with the children `c` (identified) and `a` (anonymous), and `up` with `low` over two sheets.
struct Model {
  ~Model() {
    for (ZTSStyle* style : {&p, &c, &a}) style->p_setParent({});  // a style that is its own parent would stay
  }
  Scene scene;
  Ref<OpenSheet> sheet = make<OpenSheet>();
  bool isReady = sheet->initWithHost(&scene.host) && (scene.sheet = sheet) != nullptr;
  TestStyle& p = scene.style("p");
  TestStyle& c = scene.style("c", "p", {{size, 2}});
  TestStyle& a = scene.style({}, "p", {{size, 3}});
};

/// The reports from the unit, each without the description of its style: "p: message".
std::vector<std::string> told(const ZTUAssertionRecorder& recorder, std::string_view unit, const Model& model) {
  std::vector<std::string> lines;
  for (const AssertionReport& report : recorder.reports()) {
    if (!unit.empty() && !report.sourceFile.ends_with(unit)) continue;
    std::string line = report.description;
    for (const auto& [name, style] : {std::pair{"p", &model.p}, {"c", &model.c}, {"a", &model.a}}) {
      const std::string text = style->shortDescription();
      if (line.starts_with(text)) line = name + line.substr(text.size());
      if (line.size() > text.size() + 1 && line.ends_with(text + "!"))
        line = line.substr(0, line.size() - text.size() - 1) + name + "!";
    }
    lines.push_back(line);
  }
  return lines;
}

struct StyleCase {
  const char* name;
  std::function<void(Model&)> damage;
  std::function<ZTSStyle&(Model&)> subject;
  std::vector<std::string> messages;
};

ZTSStyle& pOf(Model& m) { return m.p; }
ZTSStyle& cOf(Model& m) { return m.c; }
ZTSStyle& aOf(Model& m) { return m.a; }

TEST(StyleValidationTest, ReportsEachBrokenInvariantInOrder) {
  const StyleCase cases[] = {
      {"own parent",
       [](Model& m) { m.c.p_setParent(Ref<ZTSStyle>(&m.c)); },
       cOf,
       {"c -- Style is its own parent!", "c -- Style's parent identifier does not match identifier of parent!",
        "c -- Style is not the child of it's parent!",
        "c -- Style's parent is not reachable from style's stylesheet!"}},
      {"anonymous parent",
       [](Model& m) { m.c.p_setParent(Ref<ZTSStyle>(&m.a)); },
       cOf,
       {"c -- Style has anonymous parent!", "c -- Style's parent identifier does not match identifier of parent!",
        "c -- Style is not the child of it's parent!",
        "c -- Style's parent is not reachable from style's stylesheet!"}},
      {"other parent identifier",
       [](Model& m) { m.c.p_setParentIdentifier("q"); },
       cOf,
       {"c -- Style's parent identifier does not match identifier of parent!",
        "c -- Style's parent is not reachable from style's stylesheet!"}},
      {"no identifiers at all",
       [](Model& m) {
         m.p.p_setIdentifier({});
         m.a.p_setParentIdentifier({});
       },
       aOf,
       {"a -- Style has anonymous parent!", "a -- Style's parent identifier does not match identifier of parent!",
        "a -- Style's parent is not reachable from style's stylesheet!"}},
      {"parent does not know",
       [](Model& m) { m.p.p_setChildren({}); },
       cOf,
       {"c -- Style is not the child of it's parent!"}},
      {"no stylesheet",
       [](Model& m) { m.c.p_setStylesheet(nullptr); },
       cOf,
       {"c -- Parented style is not contained in a stylesheet!",
        "c -- Style's parent is not reachable from style's stylesheet!"}},
      {"own identifier as parent's, in the same sheet",
       [](Model& m) { m.c.p_setIdentifier("p"); },
       cOf,
       {"c -- Style's parent is not reachable from style's stylesheet!"}},
      {"anonymous with children",
       [](Model& m) { m.a.p_setChildren(childrenOf({&m.c})); },
       aOf,
       {"a -- Anonymous style has children!", "a -- Style's identifier does not match parent identifier of child!",
        "a -- Style is not the parent of it's child!", "a -- Style not reachable from child's stylesheet!"}},
      {"parent without stylesheet",
       [](Model& m) { m.p.p_setStylesheet(nullptr); },
       pOf,
       {"p -- Parent style is not contained in a stylesheet!"}},
      {"own child",
       [](Model& m) { m.p.p_setChildren(childrenOf({&m.p})); },
       pOf,
       {"p -- Style is its own child!", "p -- Style's identifier does not match parent identifier of child!",
        "p -- Style is not the parent of it's child!", "p -- Style not reachable from child's stylesheet!"}},
      {"child with other parent",
       [](Model& m) { m.c.p_setParent({}); },
       pOf,
       {"p -- Style is not the parent of it's child!"}},
      {"child without stylesheet",
       [](Model& m) { m.c.p_setStylesheet(nullptr); },
       pOf,
       {"p -- Child style is not contained in a stylesheet!", "p -- Style not reachable from child's stylesheet!"}},
      {"not registered",
       [](Model& m) { m.sheet->p_identifiedStyles().remove("p"); },
       pOf,
       {"p -- Style not reachable from child's stylesheet!", "p -- Style not reachable from child's stylesheet!"}},
      {"own observer",
       [](Model& m) {
         m.p.p_setObservers(observersOf({&m.p, &m.c}));
       },
       pOf,
       {"-- Style is observing itself!"}},
      {"sound", [](Model&) {}, pOf, {}},
  };
  for (const StyleCase& each : cases) {
    SCOPED_TRACE(each.name);
    Model model;
    each.damage(model);
    ZTUAssertionRecorder recorder;
    each.subject(model).validate();
    EXPECT_THAT(told(recorder, "", model), ElementsAreArray(each.messages));
    for (const AssertionReport& report : recorder.reports()) {
      EXPECT_EQ(report.operation, "validate");
      EXPECT_EQ(report.sourceFile, "src/ztstyles/ZTSStyle");
      EXPECT_EQ(report.object, &each.subject(model));
    }
  }
}

TEST(StyleValidationTest, NamesAnObserverThatIsNoObjectAndEndsWithTheClassesOwnChecks) {
  struct Stray : ZTSStyleObserver {
  } stray;
  Model model;
  CheckingStyle& style = model.scene.style<CheckingStyle>("s");
  style.p_setObservers(observersOf({&stray, &style}));
  ZTUAssertionRecorder recorder;
  style.validate();
  EXPECT_THAT(recorder.descriptions(), ElementsAre(format("%@ -- Style's observer %#x is not an NSObject!",
                                                          style.shortDescription(), address(&stray)),
                                                   "-- Style is observing itself!", "hook"));
}

TEST(StyleValidationTest, AcceptsAStyleThatSpecialisesOneOfTheSameIdentifier) {
  Model above;
  Scene below(above.sheet.get());
  TestStyle& style = below.style("p", "p");
  ASSERT_EQ(style.parent(), &above.p);
  ZTUAssertionRecorder recorder;
  below.sheet->validate();
  above.sheet->validate();
  EXPECT_THAT(recorder.reports(), IsEmpty());
}

struct SheetCase {
  const char* name;
  std::function<void(Model&)> damage;
  std::vector<std::string> messages;
};

TEST(StylesheetValidationTest, ReportsEachBrokenInvariantInOrder) {
  const SheetCase cases[] = {
      {"sound", [](Model&) {}, {}},
      {"other stylesheet", [](Model& m) { m.c.p_setStylesheet(nullptr); }, {"c -- Style with incorrect stylesheet!"}},
      {"identified style without identifier",
       [](Model& m) { m.c.p_setIdentifier({}); },
       {"c -- Anonymous style missing from mAnonymousStyles!", "c -- Anonymous style in mIdentifiedStyles!"}},
      {"anonymous style registered too",
       [](Model& m) { m.sheet->p_identifiedStyles().set("x", Ref<ZTSStyle>(&m.a)); },
       {"a -- Anonymous style in mIdentifiedStyles!"}},
      {"anonymous style with identifier",
       [](Model& m) { m.a.p_setIdentifier("a"); },
       {"a -- Identified style missing from mIdentifiedStyles.", "a -- Identified style in mAnonymousStyles!"}},
      {"registered twice",
       [](Model& m) { m.sheet->p_identifiedStyles().set("c2", Ref<ZTSStyle>(&m.c)); },
       {"c -- Style in mIdentifiedStyles more than once!"}},
      {"other key",
       [](Model& m) {
         m.sheet->p_identifiedStyles().remove("c");
         m.sheet->p_identifiedStyles().set("k", Ref<ZTSStyle>(&m.c));
       },
       {"c -- Style identifier differs from key \"k\" in mIdentifiedStyles!"}},
      {"identified style among the anonymous",
       [](Model& m) { m.sheet->p_anonymousStyles().addObject(&m.c); },
       {"c -- Identified style in mAnonymousStyles!"}},
      {"one identifier, unequal styles",
       [](Model& m) { m.c.p_setIdentifier("p"); },
       {"p -- Style has same identifer as c!", "c -- Style identifier differs from key \"c\" in mIdentifiedStyles!",
        "c -- Style has same identifer as p!"}},
      {"one identifier, equal styles",
       [](Model& m) {
         m.c.p_setParent({});
         m.c.p_setParentIdentifier({});
         m.c.p_setPropertyMap({});
         m.c.p_setIdentifier("p");
       },
       {"p -- Style in mIdentifiedStyles more than once!", "p -- Style has same identifer as c!",
        "c -- Style in mIdentifiedStyles more than once!", "c -- Style has same identifer as p!"}},
      {"one name",
       [](Model& m) {
         m.c.p_setName("N");
         m.p.p_setName("N");
         m.a.p_setName("N");
         m.scene.style<CheckingStyle>("other class").p_setName("N");
       },
       {"p -- Style has the same name as c!", "c -- Style has the same name as p!"}},
      {"one identifier and name, differing in values alone",
       [](Model& m) {
         for (ZTSStyle* style : {&m.p, &m.c}) style->p_setName("N");
         m.c.p_setParent({});
         m.c.p_setParentIdentifier({});
         m.c.p_setIdentifier("p");
       },
       {"p -- Style has same identifer as c!", "p -- Style has the same name as c!",
        "c -- Style identifier differs from key \"c\" in mIdentifiedStyles!", "c -- Style has same identifer as p!",
        "c -- Style has the same name as p!"}},
      {"a class with an equality of its own",
       [](Model& m) { m.scene.style<LooseStyle>("loose"); },
       {"p -- Style in mIdentifiedStyles more than once!", "c -- Style in mIdentifiedStyles more than once!",
        "a -- Anonymous style in mIdentifiedStyles!"}},
  };
  for (const SheetCase& each : cases) {
    SCOPED_TRACE(each.name);
    Model model;
    each.damage(model);
    ZTUAssertionRecorder recorder;
    model.sheet->validate();
    EXPECT_THAT(told(recorder, "/ZTSStylesheet", model), ElementsAreArray(each.messages));
    EXPECT_EQ(model.sheet->hookCalls, 1);
  }
}

TEST(StylesheetValidationTest, ValidatesEachStyleAfterItsRegistration) {
  Model model;
  CheckingStyle& style = model.scene.style<CheckingStyle>("s");
  model.c.p_setStylesheet(nullptr);
  model.p.p_setChildren({});
  ZTUAssertionRecorder recorder;
  model.sheet->validate();
  EXPECT_THAT(told(recorder, "", model),
              ElementsAre("c -- Style with incorrect stylesheet!", "c -- Style is not the child of it's parent!",
                          "c -- Parented style is not contained in a stylesheet!",
                          "c -- Style's parent is not reachable from style's stylesheet!", "hook",
                          "a -- Style is not the child of it's parent!"));
  EXPECT_EQ(style.children().count(), 0u);
}

TEST(StylesheetValidationTest, JudgesReferencesByWhereTheReferencedStyleLives) {
  Model above;
  Scene scene(above.sheet.get());
  Scene elsewhere;
  CheckingStyle& referencing = scene.style<CheckingStyle>("referencing");
  CheckingStyle& second = scene.style<CheckingStyle>("second");
  TestStyle& stray = elsewhere.style("stray");
  const std::string report =
      stray.shortDescription() + " -- Referenced style not contained in stylesheet of referencing style!";

  struct Case {
    const char* name;
    std::function<void()> prepare;
    bool isReported;
  };
  const Case cases[] = {
      {"not observed", [] {}, true},
      {"observed by the unused style that goes", [&] { stray.addObserver(&referencing); }, false},
      {"observed twice by it", [&] { stray.addObserver(&referencing); }, false},
      {"the host keeps it", [&] { scene.host.removesUnused = false; }, true},
      {"it is used",
       [&] {
         scene.host.removesUnused = true;
         referencing.p_setUsageCount(1);
       },
       true},
      {"a second observer",
       [&] {
         referencing.p_setUsageCount(0);
         stray.addObserver(&second);
       },
       true},
      {"no host",
       [&] {
         stray.removeObserver(&second);
         scene.sheet->setHost(nullptr);
       },
       true},
  };
  referencing.references = {&stray, &referencing, &second};
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    each.prepare();
    ZTUAssertionRecorder recorder;
    scene.sheet->validate();
    std::vector<std::string> expected{"hook", "hook"};
    if (each.isReported) expected.push_back(report);
    EXPECT_THAT(recorder.descriptions(), ElementsAreArray(expected));
  }
  stray.p_setObservers({});

  referencing.references = {&above.p};
  ZTUAssertionRecorder recorder;
  ZTULogRecorder log;
  scene.sheet->validate();
  EXPECT_THAT(recorder.descriptions(), ElementsAre("hook", "hook"));
  ASSERT_EQ(log.entries().size(), 1u);
  EXPECT_EQ(log.entries()[0].level, 10);
  EXPECT_EQ(
      log.entries()[0].message,
      above.p.shortDescription() + " -- Referenced style is contained in ancestor stylesheet of referencing style!");
}

}  // namespace
}  // namespace zt::testing
