// The indexed search answers the very style that a walk would give, whatever happened before.

#include "Scene.h"

#include <random>

namespace zt::testing {
namespace {

/// Shows one entry that it does not store, and which changes without anybody being told.
class Chameleon : public TestStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<Chameleon>("Chameleon", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  Ref<const PropertyMap> overridePropertyMap() const override {
    const Ref<const PropertyMap> own = ZTSStyle::overridePropertyMap();
    if (sShown == 0) return own;
    const Ref<PropertyMap> shown = own ? own->copy(1) : PropertyMap::make(1);
    shown->set(weight, NSNumber::withInteger(sShown));
    return shown;
  }
  static inline int sShown = 0;
};

/// As a value equal to every other of its class.
class Loose : public TestStyle {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<Loose>("Loose", TestStyle::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  bool isEqual(const NSObject* other) const override { return dynamic_cast<const Loose*>(other) != nullptr; }
};

/// The search as it is told, one candidate after the other. None where a style is to be made.
class Walk {
 public:
  explicit Walk(ZTSStylesheet& sheet) : mSheet(sheet) {}

  ZTSStyle* variationOf(ZTSStyle& style, const StyleVariationRequest& request) const {
    ZTSStyle* base = style.isIdentified() ? &style : style.parent();
    ZTSStyle* reachable = base != nullptr ? mSheet.cascadedStyleWithIdentifier(base->identifier()) : nullptr;
    const Ref<PropertyMap> computed =
        style.overridePropertyMapWithPropertyMap(request.propertyMap, request.overridePropertyMap, request.canCollapse);
    const PropertyMap* wanted = computed->isEmpty() ? nullptr : computed.get();
    const auto standsForBase = [&](ZTSStyle* each) {
      return each != nullptr && (each == base || each == reachable || (base != nullptr && each->isEqual(base)));
    };
    const auto isHere = [&](ZTSStyle& each) {
      return each.stylesheet() == &mSheet && each.isLocked() == request.isLocked;
    };
    if (ZTSStyle* preferred = request.preferredStyle;
        preferred != nullptr && preferred->isLocked() == request.isLocked) {
      if (preferred->isIdentified() && standsForBase(preferred) && wanted == nullptr) return preferred;
      if (preferred->isAnonymous() && standsForBase(preferred->parent()) && matches(*preferred, wanted))
        return preferred;
    }
    if (base != nullptr && isHere(*base) && wanted == nullptr) return base;
    const auto mayAnswer = [&](ZTSStyle& each) { return request.canReuseIdentifiedChildren || each.isAnonymous(); };
    if (isHere(style) && mayAnswer(style) && matches(style, wanted)) return &style;
    if (reachable == nullptr) return nullptr;
    for (ZTSStyle* child : reachable->children()) {
      if (isHere(*child) && mayAnswer(*child) && matches(*child, wanted)) return child;
    }
    return nullptr;
  }

  ZTSStyle* childOf(ZTSStyle& style, const PropertyMap& map, bool locked) const {
    for (ZTSStyle* child : style.children()) {
      if (child->stylesheet() == &mSheet && child->isAnonymous() && child->isLocked() == locked &&
          matches(*child, noneIfEmpty(map)))
        return child;
    }
    return nullptr;
  }

  ZTSStyle* anonymousOf(const ZTSStyleClass& type, const StringRef& parent, const PropertyMap& map, bool locked) const {
    for (ZTSStyle* style : mSheet.anonymousStyles()) {
      if (&style->classObject() == &type && style->isLocked() == locked &&
          equalTexts(style->parentIdentifier(), parent) && matches(*style, noneIfEmpty(map))) {
        return style;
      }
    }
    return nullptr;
  }

 private:
  static const PropertyMap* noneIfEmpty(const PropertyMap& map) { return map.isEmpty() ? nullptr : &map; }
  static bool matches(const ZTSStyle& style, const PropertyMap* wanted) {
    const Ref<const PropertyMap> own = style.overridePropertyMap();
    return wanted == nullptr ? own == nullptr : own != nullptr && own->isEqual(*wanted);
  }
  ZTSStylesheet& mSheet;
};

class VariationIndexTest : public ::testing::Test {
 protected:
  VariationIndexTest() {
    lower->setParent(scene.sheet);
    scene.host.undo->setLevelsOfUndo(40);
    for (const char* base : {"b0", "b1", "b2"}) pool.emplace_back(&scene.style(base, {}, {{size, 3}}));
    lower->addStyle(make<TestStyle>({.identifier = "b2"}));  // shadows
    for (int each = 0; each < 6; ++each) {
      Ref<ZTSStyle> value;
      if (each < 4) {
        value = make<TestStyle>(
            {.name = each == 3 ? "named" : StringRef(), .overridePropertyMap = mapOf({{size, each / 2}}).get()});
      } else {
        value = make<Loose>();
      }
      if (each % 2 == 0) scene.sheet->addStyle(value);
      values.push_back(value);
    }
  }

  int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
  ZTSStylesheet& anySheet() { return below(3) == 0 ? *lower : *scene.sheet; }
  /// Where a base has gone, another comes; and of the anonymous styles the oldest go when there are many.
  void tidy() {
    for (std::size_t base = 0; base < 3; ++base) {
      const StringRef identifier("b" + std::to_string(base));
      if (scene.sheet->styleWithIdentifier(identifier) == nullptr)
        scene.sheet->addStyle(make<TestStyle>({.identifier = identifier}));
      pool[base] = scene.sheet->styleWithIdentifier(identifier);
    }
    for (ZTSStylesheet* sheet : {scene.sheet.get(), lower.get()}) {
      std::vector<Ref<ZTSStyle>> styles = sheet->anonymousStyles().retainedSnapshot();
      for (std::size_t each = 0; each + 200 < styles.size(); ++each) sheet->removeStyle(styles[each]);
    }
  }
  ZTSStyle& anyStyle() { return *pool[static_cast<std::size_t>(below(static_cast<int>(pool.size())))]; }
  StringRef anyBase() { return StringRef("b" + std::to_string(below(40) == 0 ? 3 : below(3))); }
  const ZTSStyleClass& anyClass() {
    const int kind = below(10);
    return kind == 0 ? Chameleon::styleClass() : kind < 4 ? TestAggregate::styleClass() : TestStyle::styleClass();
  }
  Ref<PropertyMap> anyMap() {
    Ref<PropertyMap> map = PropertyMap::make();
    for (int entries = below(3); entries > 0; --entries) {
      if (const int kind = below(7); kind < 2) {
        map->set(kind == 0 ? list : label, below(8) == 0 ? Ref<NSObject>(NSNull::null())
                                                         : Ref<NSObject>(values[static_cast<std::size_t>(below(6))]));
      } else {
        map->set(kind < 5 ? size : weight, Value(below(3)).object);
      }
    }
    return map;
  }
  void keep(const Ref<ZTSStyle>& style) {
    if (!style) return;
    if (pool.size() < 150)
      pool.push_back(style);
    else
      pool[static_cast<std::size_t>(3 + below(147))] = style;
  }

  /// One search, in both ways.
  void compareSearches() {
    ZTSStylesheet& sheet = anySheet();
    const Walk walk(sheet);
    const Ref<PropertyMap> map = anyMap();
    const bool locked = below(5) == 0;
    Ref<ZTSStyle> expected;
    Ref<ZTSStyle> found;
    if (const int kind = below(6); kind == 0) {
      ZTSStyle& style = *pool[static_cast<std::size_t>(below(3))];
      expected = walk.childOf(style, *map, locked);
      found = sheet.anonymousChildOfStyle(&style, map.get(), locked);
      EXPECT_EQ(found, expected);
      hits += expected ? 1 : 0;
      return;
    } else if (kind == 1) {
      const ZTSStyleClass& type = anyClass();
      const StringRef parent = anyBase();
      expected = walk.anonymousOf(type, parent, *map, locked);
      found = sheet.anonymousStyleOfClass(type, parent, map.get(), locked);
    } else {
      const Ref<PropertyMap> overrides = below(4) == 0 ? anyMap() : Ref<PropertyMap>();
      Ref<ZTSStyle> style(&anyStyle());
      if (below(3) == 0 || (style->isAnonymous() && style->parent() == nullptr && below(10) != 0))
        style = pool[static_cast<std::size_t>(below(3))];
      const StyleVariationRequest request{.preferredStyle = below(4) == 0 ? &anyStyle() : nullptr,
                                          .propertyMap = map.get(),
                                          .overridePropertyMap = overrides.get(),
                                          .isLocked = locked,
                                          .canCollapse = below(4) != 0,
                                          .canReuseIdentifiedChildren = below(3) != 0};
      expected = walk.variationOf(*style, request);
      const std::size_t before = sheet.styles().count();
      found = sheet.variationOfStyle(style.get(), request);
      EXPECT_EQ(sheet.styles().count(), before + (expected ? 0 : 1));
    }
    if (expected) {
      ++hits;
      EXPECT_EQ(found, expected);
    } else {
      ASSERT_NE(found, nullptr);
      EXPECT_EQ(found->stylesheet(), &sheet);
      keep(found);
    }
  }

  /// Anything that may happen to a style, and then perhaps be undone.
  void changeSomething() {
    const Ref<ZTSStyle> style(&anyStyle());
    const Ref<ZTSStylesheet> sheet(style->stylesheet());
    const bool isBase = style == pool[0] || style == pool[1] || style == pool[2];
    switch (isBase && below(30) != 0 ? below(3) : below(14)) {
      case 0: style->setValuesForProperties(*anyMap()); break;
      case 1: style->removeValueForProperty(below(2) == 0 ? size : weight); break;
      case 2: style->setValueForProperty(Value(below(4)), size); break;
      case 3: style->setIsLocked(below(5) == 0); break;
      case 4: style->setParentIdentifier(anyBase()); break;
      case 5:
      case 6:
        if (sheet && (style->isAnonymous() || below(4) == 0))
          sheet->removeStyle(style);
        else if (!sheet)
          anySheet().addStyle(style);
        break;
      case 7:
        if (sheet)
          sheet->identifyStyleKeepingAllChildren(
              style, below(3) == 0 ? anyBase() : StringRef("i" + std::to_string(below(30))), below(2) == 0);
        break;
      case 8:
        if (sheet && style->isIdentified()) sheet->anonymizeStyle(style);
        break;
      case 9: Chameleon::sShown = below(3); break;
      case 10: {  // a style that others hold as a value
        ZTSStyle& value = *values[static_cast<std::size_t>(below(6))];
        if (below(3) == 0)
          value.setIsLocked(below(2) == 0);
        else if (value.stylesheet() != nullptr && below(3) == 0) {
          if (value.isIdentified())
            value.stylesheet()->anonymizeStyle(Ref<ZTSStyle>(&value));
          else
            value.stylesheet()->identifyStyle(Ref<ZTSStyle>(&value), "v" + std::to_string(below(9)));
        } else
          value.setValueForProperty(Value(below(2)), size);
        break;
      }
      case 11:
      case 12:
        if (scene.host.undo->canUndo()) scene.undo();
        break;
      case 13:
        if (scene.host.undo->canRedo()) scene.redo();
        break;
    }
  }

  Scene scene;
  Ref<ZTSStylesheet> lower = ZTSStylesheet::withHost(&scene.host);
  std::vector<Ref<ZTSStyle>> pool;    // the first three are bases of the upper stylesheet
  std::vector<Ref<ZTSStyle>> values;  // of referenced-style properties; every second is in the stylesheet
  std::mt19937 random{20260101};
  int hits = 0;
  int crowded = 0;
};

TEST_F(VariationIndexTest, AnswersTheVeryStyleThatAWalkWouldFind) {
  ZTUAssertionRecorder reports;
  ZTULogRecorder logs;
  for (int step = 0; step < 24000 && !HasFailure(); ++step) {
    SCOPED_TRACE(step);
    if (below(2) == 0)
      changeSomething();
    else
      compareSearches();
    if (step % 50 == 0) {
      ASSERT_TRUE(scene.sheet->indexesAreRight() && lower->indexesAreRight());
      reports.takeReports();
      logs.takeEntries();
      for (std::size_t base = 0; base < 3; ++base) crowded += pool[base]->children().count() > 30 ? 1 : 0;
      tidy();
    }
  }
  EXPECT_GT(hits, 4000);
  EXPECT_GT(crowded, 700) << "of 1440: mostly the bases had enough children for an index";
}

TEST_F(VariationIndexTest, OutlivesItsBaseItsStylesheetAndTheStylesThatAreValues) {
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  Ref<ZTSStyle> base = make<TestStyle>({.identifier = "base"});
  sheet->addStyle(base);
  const auto request = [&](int each, ZTSStyle* value) {
    const Ref<PropertyMap> map = mapOf({{size, each}});
    if (value != nullptr) map->set(list, Ref<NSObject>(value));
    return sheet->variationOfStyle(base.get(), {.propertyMap = map.get()});
  };
  Ref<ZTSStyle> value = make<TestStyle>();
  for (int each = 0; each < 40; ++each) request(each, value.get());
  const Ref<ZTSStyle> some = request(7, value.get());

  // A base that leaves and comes back finds its children again, and so does one of the same identifier.
  sheet->removeStyle(base);
  sheet->addStyle(base);
  EXPECT_EQ(request(7, value.get()), some);
  const Ref<ZTSStyle> other = make<TestStyle>({.identifier = "base"});
  sheet->addStyle(other);
  EXPECT_EQ(sheet->variationOfStyle(other.get(), {.propertyMap = some->overridePropertyMap().get()}), some);

  // The value changes without being in any stylesheet, dies, and another takes its place.
  const Ref<ZTSStyle> equal = make<TestStyle>({.overridePropertyMap = mapOf({{size, 1}}).get()});
  value->setValueForProperty(Value(1), size);
  EXPECT_EQ(sheet->variationOfStyle(other.get(), {.propertyMap = mapOf({{size, 7}, {list, *equal}}).get()}), some);
  for (const Ref<ZTSStyle>& style : sheet->anonymousStyles().retainedSnapshot()) style->removeValueForProperty(list);
  value.reset();
  EXPECT_EQ(sheet->variationOfStyle(other.get(), {.propertyMap = mapOf({{size, 7}}).get()}), some);
  EXPECT_TRUE(sheet->indexesAreRight());
  sheet.reset();
  some->setValueForProperty(Value(8), size);
  EXPECT_EQ(valueOf(*some, size), 8);
}

TEST_F(VariationIndexTest, FindsAnonymousStylesWhoseLinkDoesNotFollowTheirPlace) {
  const auto find = [&](int each) {
    return scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), "b0", mapOf({{size, each}}).get(), false);
  };
  for (int each = 0; each < 40; ++each) find(each);
  // Linked before it is added, so that adding does not change the link.
  const Ref<ZTSStyle> style =
      make<TestStyle>({.parentIdentifier = "b0", .overridePropertyMap = mapOf({{size, 50}}).get()});
  style->p_setStylesheet(scene.sheet.get());
  scene.sheet->addStyle(style);
  EXPECT_EQ(find(50), style);
  // Held while its link is gone: its changes reach nobody.
  style->p_setStylesheet(nullptr);
  style->p_setValueForProperty(Value(51), size);
  EXPECT_EQ(find(51), style);
  style->p_setStylesheet(scene.sheet.get());
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

/// Counts how often it is compared.
class CountingValue : public NSObject {
 public:
  explicit CountingValue(int number) : mNumber(number) {}
  bool isEqual(const NSObject* other) const override {
    ++sComparisons;
    const auto* value = dynamic_cast<const CountingValue*>(other);
    return value != nullptr && value->mNumber == mNumber;
  }
  std::size_t hash() const override { return static_cast<std::size_t>(mNumber) * 77; }
  std::size_t stableHash() const override { return hash(); }
  static inline std::size_t sComparisons = 0;

 private:
  const int mNumber;
};

TEST_F(VariationIndexTest, ComparesOneMapPerRequestAmongManyAlikeOrNot) {
  TestStyle& base = scene.style("base");
  scene.host.undo->disableUndoRegistration();
  const auto request = [&](int number, bool canReuse) {
    const Ref<PropertyMap> map = PropertyMap::with({{size, make<CountingValue>(number)}});
    return scene.sheet->variationOfStyle(&base, {.propertyMap = map.get(), .canReuse = canReuse});
  };
  // Dense values, and two hundred of one kind.
  for (int number = 0; number < 1000; ++number) request(number, true);
  const Ref<ZTSStyle> first = request(5000, false);
  for (int copies = 0; copies < 200; ++copies) request(5000, false);

  CountingValue::sComparisons = 0;
  for (int number = 0; number < 1000; ++number) request(number, true);
  // One with the base's value, one with the style found.
  EXPECT_LE(CountingValue::sComparisons, 2500u);
  CountingValue::sComparisons = 0;
  EXPECT_EQ(request(5000, true), first);
  EXPECT_LE(CountingValue::sComparisons, 3u);

  // The alike are changed one after the other: what is stale is tested once and not again.
  for (const Ref<ZTSStyle>& style : base.children().retainedSnapshot()) style->setValueForProperty(Value(1), weight);
  EXPECT_NE(request(5000, true), first);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

}  // namespace
}  // namespace zt::testing
