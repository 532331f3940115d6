// SPDX-License-Identifier: MIT

// Damaged models, one for each check, made with the private operations.

#include "Scene.h"

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

/// A stylesheet whose registry can be damaged.
class OpenSheet : public ZTSStylesheet {
 public:
  using ZTSStylesheet::p_anonymousStyles;
  using ZTSStylesheet::p_identifiedStyles;
  void appSpecificValidate() const override { ++hookCalls; }
  mutable int hookCalls = 0;
};

/// Notes what had been reported when its own checks began.
struct CheckingStyle : ZTSStyleOf<CheckingStyle, TestStyle> {
  static constexpr const char* kClassName = "CheckingStyle";
  void appSpecificValidate() const override { ZT_REPORT("appSpecificValidate", this, "app", "hook"); }
  std::optional<ZTSStyleSet> referencedStyles() const override {
    ZTSStyleSet set;
    for (ZTSStyle* style : references) set.addObject(style);
    return set;
  }
  std::vector<ZTSStyle*> references;
};

/// Says that it equals whatever it is compared with.
struct LooseStyle : ZTSStyleOf<LooseStyle, TestStyle> {
  static constexpr const char* kClassName = "LooseStyle";
  bool isEqual(const NSObject* other) const override { return other != nullptr; }
};

/// A sound model: `p` with the children `c` (identified) and `a` (anonymous).
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

void giveChild(ZTSStyle& style, ZTSStyle& child) {
  ZTUMutablePointerSet<ZTSStyle> set;
  set.addObject(&child);
  style.p_setChildren(set);
}

void giveObservers(ZTSStyle& style, std::initializer_list<ZTSStyleObserver*> observers) {
  ZTUCountedPointerSet<ZTSStyleObserver> set;
  for (ZTSStyleObserver* observer : observers) set.addObject(observer);
  style.p_setObservers(set);
}

/// The reports from the unit, with the styles' letters for their descriptions: "p -- message".
Log told(const ZTUAssertionRecorder& recorder, std::string_view unit, const Model& model) {
  Log lines;
  for (const AssertionReport& report : recorder.reports()) {
    if (!report.sourceFile.ends_with(unit)) continue;
    std::string line = report.description;
    if (line != "hook") {
      EXPECT_EQ(report.operation, "validate") << line;
      const auto* subject = dynamic_cast<const ZTSStyle*>(report.subject.get());
      EXPECT_NE(subject, nullptr) << line;
      if (subject != nullptr && !line.starts_with("--")) {
        EXPECT_TRUE(line.starts_with(subject->shortDescription())) << line;
      }
    }
    for (const auto& [name, style] : {std::pair{"p", &model.p}, {"c", &model.c}, {"a", &model.a}}) {
      const std::string text = style->shortDescription();
      for (auto at = line.find(text); at != std::string::npos; at = line.find(text))
        line.replace(at, text.size(), name);
    }
    lines.push_back(line);
  }
  return lines;
}

using Damage = void (*)(Model&);

void expectOfStyle(TestStyle& (*subject)(Model&), Damage damage, const Log& messages) {
  Model model;
  damage(model);
  ZTUAssertionRecorder recorder;
  subject(model).validate();
  EXPECT_EQ(told(recorder, "src/ztstyles/ZTSStyle", model), messages);
  EXPECT_EQ(recorder.reports().size(), messages.size());
}

TestStyle& ofP(Model& m) { return m.p; }
TestStyle& ofC(Model& m) { return m.c; }
TestStyle& ofA(Model& m) { return m.a; }

TEST(StyleValidationTest, ReportsEachBrokenInvariantInOrder) {
  const std::string otherParent = " -- Style's parent identifier does not match identifier of parent!";
  const std::string notChild = " -- Style is not the child of it's parent!";
  const std::string unreachable = " -- Style's parent is not reachable from style's stylesheet!";
  const std::string otherChild = " -- Style's identifier does not match parent identifier of child!";
  const std::string notParent = " -- Style is not the parent of it's child!";
  const std::string cannotReach = " -- Style not reachable from child's stylesheet!";

  expectOfStyle(ofP, [](Model&) {}, {});
  expectOfStyle(ofC, [](Model& m) { m.c.p_setParent(Ref<ZTSStyle>(&m.c)); },
                {"c -- Style is its own parent!", "c" + otherParent, "c" + notChild, "c" + unreachable});
  expectOfStyle(ofC, [](Model& m) { m.c.p_setParent(Ref<ZTSStyle>(&m.a)); },
                {"c -- Style has anonymous parent!", "c" + otherParent, "c" + notChild, "c" + unreachable});
  expectOfStyle(ofC, [](Model& m) { m.c.p_setParentIdentifier("q"); }, {"c" + otherParent, "c" + unreachable});
  // Two identifiers that are missing do not match.
  expectOfStyle(ofA, [](Model& m) { m.p.p_setIdentifier({}), m.a.p_setParentIdentifier({}); },
                {"a -- Style has anonymous parent!", "a" + otherParent, "a" + unreachable});
  expectOfStyle(ofC, [](Model& m) { m.p.p_setChildren({}); }, {"c" + notChild});
  expectOfStyle(ofC, [](Model& m) { m.c.p_setStylesheet(nullptr); },
                {"c -- Parented style is not contained in a stylesheet!", "c" + unreachable});
  expectOfStyle(ofC, [](Model& m) { m.c.p_setIdentifier("p"); }, {"c" + unreachable});
  expectOfStyle(ofA, [](Model& m) { giveChild(m.a, m.c); },
                {"a -- Anonymous style has children!", "a" + otherChild, "a" + notParent, "a" + cannotReach});
  expectOfStyle(ofP, [](Model& m) { m.p.p_setStylesheet(nullptr); },
                {"p -- Parent style is not contained in a stylesheet!"});
  expectOfStyle(ofP, [](Model& m) { giveChild(m.p, m.p); },
                {"p -- Style is its own child!", "p" + otherChild, "p" + notParent, "p" + cannotReach});
  expectOfStyle(ofP, [](Model& m) { m.c.p_setParent({}); }, {"p" + notParent});
  expectOfStyle(ofP, [](Model& m) { m.c.p_setStylesheet(nullptr); },
                {"p -- Child style is not contained in a stylesheet!", "p" + cannotReach});
  expectOfStyle(ofP, [](Model& m) { m.sheet->p_identifiedStyles().remove("p"); },
                {"p" + cannotReach, "p" + cannotReach});
}

TEST(StyleValidationTest, NamesAnObserverThatIsNoObjectAndEndsWithTheClassesOwnChecks) {
  struct Stray : ZTSStyleObserver {
  } stray;
  Model model;
  CheckingStyle& style = model.scene.style<CheckingStyle>("s");
  giveObservers(style, {&stray, &model.c, &style});
  ZTUAssertionRecorder recorder;
  style.validate();
  EXPECT_THAT(recorder.descriptions(), ElementsAre(format("%@ -- Style's observer %#x is not an NSObject!",
                                                          style.shortDescription(), address(&stray)),
                                                   "-- Style is observing itself!", "hook"));
}

/// One identifier, one name, no parents: `c` differs from `p` in its values alone.
void alike(Model& m) {
  for (ZTSStyle* style : {&m.p, &m.c}) style->p_setName("N");
  m.c.p_setParent({});
  m.c.p_setParentIdentifier({});
  m.c.p_setIdentifier("p");
}

void expectOfSheet(Damage damage, const Log& messages, const char* unit = "src/ztstyles/ZTSStylesheet") {
  Model model;
  damage(model);
  ZTUAssertionRecorder recorder;
  model.sheet->validate();
  EXPECT_EQ(told(recorder, unit, model), messages);
  EXPECT_EQ(model.sheet->hookCalls, 1);
}

TEST(StylesheetValidationTest, ReportsEachBrokenInvariantInOrder) {
  const Log sameIdentifier{"p -- Style has same identifer as c!",
                           "c -- Style identifier differs from key \"c\" in mIdentifiedStyles!",
                           "c -- Style has same identifer as p!"};
  expectOfSheet([](Model&) {}, {});
  // From every unit: each style is validated after what concerns its registration.
  expectOfSheet(
      [](Model& m) {
        giveObservers(m.c, {&m.c}), m.c.p_setStylesheet(nullptr), m.c.p_setParent({}), m.p.p_setChildren({}),
            giveObservers(m.a, {&m.a});
      },
      {"c -- Style with incorrect stylesheet!", "-- Style is observing itself!",
       "a -- Style is not the child of it's parent!", "-- Style is observing itself!"},
      "");
  expectOfSheet([](Model& m) { m.c.p_setIdentifier({}); },
                {"c -- Anonymous style missing from mAnonymousStyles!", "c -- Anonymous style in mIdentifiedStyles!"});
  expectOfSheet([](Model& m) { m.sheet->p_identifiedStyles().set("x", Ref<ZTSStyle>(&m.a)); },
                {"a -- Anonymous style in mIdentifiedStyles!"});
  expectOfSheet([](Model& m) { m.a.p_setIdentifier("a"); }, {"a -- Identified style missing from mIdentifiedStyles.",
                                                             "a -- Identified style in mAnonymousStyles!"});
  expectOfSheet([](Model& m) { m.sheet->p_identifiedStyles().set("c2", Ref<ZTSStyle>(&m.c)); },
                {"c -- Style in mIdentifiedStyles more than once!"});
  expectOfSheet([](Model& m) { m.sheet->p_identifiedStyles().set("k", m.sheet->p_identifiedStyles().remove("c")); },
                {"c -- Style identifier differs from key \"k\" in mIdentifiedStyles!"});
  expectOfSheet([](Model& m) { m.sheet->p_anonymousStyles().addObject(&m.c); },
                {"c -- Identified style in mAnonymousStyles!"});
  expectOfSheet([](Model& m) { m.c.p_setIdentifier("p"); }, sameIdentifier);
  // Equal styles of one identifier: the search for keys goes by equality. What differs in values alone is not equal.
  expectOfSheet(alike, {sameIdentifier[0], "p -- Style has the same name as c!", sameIdentifier[1], sameIdentifier[2],
                        "c -- Style has the same name as p!"});
  expectOfSheet(
      [](Model& m) { alike(m), m.c.p_setPropertyMap({}); },
      {"p -- Style in mIdentifiedStyles more than once!", sameIdentifier[0], "p -- Style has the same name as c!",
       "c -- Style in mIdentifiedStyles more than once!", sameIdentifier[2], "c -- Style has the same name as p!"});
  expectOfSheet(
      [](Model& m) {
        for (ZTSStyle* style : {&m.p, &m.c, &m.a}) style->p_setName("N");
        m.scene.style<CheckingStyle>("other class").p_setName("N");
      },
      {"p -- Style has the same name as c!", "c -- Style has the same name as p!"});
  expectOfSheet([](Model& m) { m.scene.style<LooseStyle>("loose"); },
                {"p -- Style in mIdentifiedStyles more than once!", "c -- Style in mIdentifiedStyles more than once!",
                 "a -- Anonymous style in mIdentifiedStyles!"});
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

  referencing.references = {&stray, &referencing, &second};
  const auto expectReported = [&](bool isReported, const char* when) {
    ZTUAssertionRecorder recorder;
    scene.sheet->validate();
    EXPECT_EQ(recorder.descriptions(), isReported ? (Log{"hook", "hook", report}) : (Log{"hook", "hook"})) << when;
  };
  expectReported(true, "nobody observes it");
  stray.addObserver(&referencing);
  expectReported(false, "the unused style that goes observes it");
  stray.addObserver(&referencing);
  expectReported(false, "the same twice");
  scene.host.removesUnused = false;
  expectReported(true, "the host keeps that style");
  scene.host.removesUnused = true;
  referencing.p_setUsageCount(1);
  expectReported(true, "it is used");
  referencing.p_setUsageCount(0);
  stray.addObserver(&second);
  expectReported(true, "another observes it too");
  stray.removeObserver(&second);
  scene.sheet->setHost(nullptr);
  expectReported(true, "no host");
  stray.p_setObservers({});

  referencing.references = {&above.p};
  ZTUAssertionRecorder recorder;
  ZTULogRecorder log;
  scene.sheet->validate();
  EXPECT_THAT(recorder.descriptions(), ElementsAre("hook", "hook"));
  ASSERT_EQ(log.entries().size(), 1u);
  EXPECT_EQ(log.entries()[0].level, 10);
  EXPECT_EQ(log.entries()[0].subject.get(), &above.p);
  EXPECT_EQ(
      log.entries()[0].message,
      above.p.shortDescription() + " -- Referenced style is contained in ancestor stylesheet of referencing style!");
}

}  // namespace
}  // namespace zt::testing
