// SPDX-License-Identifier: MIT
// Parents that would close a loop: refused, and tried again when the loop is gone, whatever opened it.

#include <tests/ztstyles/Scene.h>

#include <platform/NSException.h>

#include <random>

namespace zt::testing {
namespace {

/// "c" above; below it `a`, which inherits from `b`, which inherits from "c".
struct Two {
  Scene upper, lower{upper.sheet.get()};
  TestStyle& c = upper.style("c", {}, {{size, 5}});
  TestStyle& b = lower.style("b", "c");
  TestStyle& a = lower.style("a", "b");
  ZTULogRecorder logs;  // each refusal is logged

  void identify(TestStyle& style, const char* identifier) {
    lower.sheet->identifyStyle(Ref<ZTSStyle>(&style), identifier);
  }
};

TEST(LoopTest, TriesARefusedStyleAgainWhenTheOneRefusedGivesItsIdentifierUp) {
  using Open = void (*)(Two&);
  for (const Open open : std::initializer_list<Open>{
           [](Two& two) { two.lower.undo(); }, [](Two& two) { two.identify(two.a, "other"); },
           [](Two& two) { two.lower.sheet->anonymizeStyle(Ref<ZTSStyle>(&two.a)); },
           [](Two& two) { two.lower.remove(two.a); }, [](Two& two) { two.a.setParentIdentifier({}); },
           [](Two& two) { two.identify(two.b, "other"); }, [](Two& two) { two.lower.add(two.lower.detached("c")); }}) {
    Two two;
    two.identify(two.a, "c");
    EXPECT_EQ(two.b.parent(), nullptr) << "a is the nearest c, and inherits from b";
    EXPECT_EQ(two.logs.takeEntries().size(), 1u);
    open(two);
    EXPECT_EQ(two.b.parent(), two.lower.sheet->cascadedStyleWithIdentifier("c"));
    EXPECT_TRUE(two.logs.entries().empty()) << "and nothing is refused on the way";
    EXPECT_TRUE(two.lower.sheet->indexesAreRight());
  }
}

/// Every style has the parent that it finds, unless that one inherits from it.
void expectParents(const ZTSStylesheet& sheet) {
  for (const ZTSStyle* style : sheet.styles()) {
    const ZTSStylesheet* reach = style->p_reachStylesheet();
    const ZTSStyle* found = reach != nullptr ? reach->cascadedStyleWithIdentifier(style->parentIdentifier()) : nullptr;
    if (style->parent() == found) continue;
    EXPECT_EQ(style->parent(), nullptr) << style->shortDescription();
    const ZTSStyle* above = found;
    while (above != nullptr && above != style) above = above->parent();
    EXPECT_EQ(above, style) << style->shortDescription() << " was refused " << found->shortDescription();
  }
}

TEST(LoopTest, RefusesNobodyLongerThanTheLoopLasts) {
  const char* names[] = {"a", "b", "c", "d", "e"};
  for (unsigned seed = 0; seed < 60; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto any = [&](std::size_t count) { return random() % count; };
    ZTUAssertionRecorder reports;
    ZTULogRecorder logs;
    Scene upper, lower{upper.sheet.get()};
    std::vector<Scene*> undoable;
    for (int step = 0; step < 60; ++step) {
      Scene& scene = any(3) == 0 ? upper : lower;
      const std::vector<Ref<ZTSStyle>> held = scene.sheet->styles().retainedSnapshot();
      const Ref<ZTSStyle> style = held.empty() ? Ref<ZTSStyle>() : held[any(held.size())];
      const char* name = names[any(5)];
      const std::size_t before = scene.host.undo->undoGroupCount();
      switch (any(7)) {
        case 0:
        case 1: scene.add(scene.detached(name, names[any(5)])); break;
        case 2:
          if (style) scene.remove(*style);
          break;
        case 3:
          if (style) scene.sheet->identifyStyle(style, name);
          break;
        case 4:
          if (style && style->isIdentified()) scene.sheet->anonymizeStyle(style);
          break;
        case 5:
          if (style) style->setParentIdentifier(name);
          break;
        default:
          if (undoable.empty()) break;
          undoable.back()->undo();
          undoable.pop_back();
      }
      if (scene.host.undo->undoGroupCount() > before) undoable.push_back(&scene);
      expectParents(*upper.sheet);
      expectParents(*lower.sheet);
      if (::testing::Test::HasFailure()) return;
    }
  }
}

struct Reading : ZTSStyleOf<Reading, TestStyle> {
  static constexpr const char* kClassName = "Reading";
  Ref<PropertyMap> propertyMap() const override { return ++asked, TestStyle::propertyMap(); }
  static inline int asked = 0;
};
struct Told : ZTSStyleOf<Told, TestStyle> {
  static constexpr const char* kClassName = "Told";
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override {
    ++calls, TestStyle::stylePropertiesChanged(change);
  }
  void updateParent() override { ++resolved, TestStyle::updateParent(); }
  static inline int calls = 0, resolved = 0;
};

TEST(LinkTest, AsksTheOldChainAndTellsTheStyleWhereAClassCouldNotice) {
  Scene scene;
  scene.style("other");
  scene.style<Reading>("top");
  scene.style("middle", "top");
  TestStyle& leaf = scene.style("leaf", "middle");
  TestStyle& plain = scene.style("plain", "other");
  const auto askedWhen = [](auto change) {
    Reading::asked = 0;
    change();
    return Reading::asked;
  };
  EXPECT_EQ(askedWhen([&] { plain.setParentIdentifier({}); }), 0);
  EXPECT_EQ(askedWhen([&] { leaf.setParentIdentifier("other"); }), 1) << "it reads by itself, two levels above";
  EXPECT_EQ(askedWhen([&] { leaf.setParentIdentifier({}); }), 0);

  // What is remembered of a chain follows when the chain is hung under another one.
  TestStyle& a = scene.style("a");
  scene.style("b", "a");
  TestStyle& c = scene.style("c", "b");
  EXPECT_EQ(askedWhen([&] { c.setParentIdentifier({}), c.setParentIdentifier("b"); }), 0);
  a.setParentIdentifier("top");
  EXPECT_EQ(askedWhen([&] { c.setParentIdentifier({}); }), 1);

  Told& told = scene.style<Told>("told", "a");
  Told::calls = Told::resolved = 0;
  told.setParentIdentifier("b");
  EXPECT_EQ(Told::calls, 1) << "though nobody listens";
  EXPECT_EQ(Told::resolved, 1);
  told.p_setParentIdentifier("elsewhere");
  told.setParentIdentifier("b");
  EXPECT_EQ(Told::resolved, 1) << "the parent has that identifier already";
}

// Going up from every leaf, as once, takes 20 billion steps.
TEST(LinkTest, TakesALongChainDownFromItsLeaf) {
  Scene scene;
  scene.style("a", "b"), scene.style("x");
  ZTULogRecorder logs;
  scene.style("b", "a");  // a loop elsewhere, which is nobody's business here
  const std::vector<TestStyle*> chain = scene.chain(200'000);
  for (auto style = chain.rbegin(); style != chain.rend(); ++style) scene.sheet->removeStyle(Ref<ZTSStyle>(*style));
  EXPECT_EQ(scene.sheet->styles().count(), 3u);
}

struct Throwing : ZTSStyleOf<Throwing, TestStyle> {
  static constexpr const char* kClassName = "Throwing";
  void stylePropertiesChanged(const ZTSStyleChangeInfo&) override {
    if (isThrowing) throw NSGenericException("override");
  }
  bool isThrowing = false;
};

TEST(LoopTest, TriesAgainThoughTheStyleThatOpenedTheLoopThrows) {
  Scene scene;
  ZTULogRecorder logs;
  TestStyle& a = scene.style("a");
  Throwing& b = scene.style<Throwing>("b", "a");
  TestStyle& above = scene.style("above");
  a.setParentIdentifier("b");
  EXPECT_EQ(a.parent(), nullptr);
  b.isThrowing = true;
  EXPECT_THROW(b.setParentIdentifier("above"), NSException);
  EXPECT_EQ(b.parent(), &above);
  EXPECT_EQ(a.parent(), &b);
}

}  // namespace
}  // namespace zt::testing
