// SPDX-License-Identifier: MIT

// The indexed search answers the very style that a walk would give, whatever happened before.

#include "Scene.h"

#include <random>

namespace zt::testing {
namespace {

/// Shows one entry that it does not store, and which changes without anybody being told.
class Chameleon : public ZTSStyleOf<Chameleon, TestStyle> {
 public:
  static constexpr const char* kClassName = "Chameleon";
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
class Loose : public ZTSStyleOf<Loose, TestStyle> {
 public:
  static constexpr const char* kClassName = "Loose";
  bool isEqual(const NSObject* other) const override { return dynamic_cast<const Loose*>(other) != nullptr; }
};

/// The search as it is told, one candidate after the other. None where a style is to be made.
class Walk {
 public:
  explicit Walk(ZTSStylesheet& sheet) : mSheet(sheet) {}

  ZTSStyle* variationOf(ZTSStyle& style, const StyleVariationRequest& request) const {
    ZTSStyle* base = style.isIdentified() ? &style : style.parent();
    ZTSStyle* reachable = base != nullptr ? mSheet.cascadedStyleWithIdentifier(base->identifier()) : nullptr;
    const Ref<PropertyMap> wanted =
        style.overridePropertyMapWithPropertyMap(request.propertyMap, request.overridePropertyMap, request.canCollapse);
    const auto standsForBase = [&](ZTSStyle* each) {
      return each != nullptr && (each == base || each == reachable || (base != nullptr && each->isEqual(base)));
    };
    if (ZTSStyle* preferred = request.preferredStyle;
        preferred != nullptr && preferred->isLocked() == request.isLocked &&
        (preferred->isIdentified() ? standsForBase(preferred) && wanted->isEmpty()
                                   : standsForBase(preferred->parent()) && matches(*preferred, *wanted))) {
      return preferred;
    }
    const auto isHere = [&](ZTSStyle& each) { return each.stylesheet() == &mSheet; };
    if (base != nullptr && isHere(*base) && base->isLocked() == request.isLocked && wanted->isEmpty()) return base;
    std::vector<ZTSStyle*> candidates{&style};
    if (reachable != nullptr)
      for (ZTSStyle* child : reachable->children()) candidates.push_back(child);
    return first(candidates, *wanted, request.isLocked, [&](ZTSStyle& each) {
      return isHere(each) && (request.canReuseIdentifiedChildren || each.isAnonymous());
    });
  }
  ZTSStyle* childOf(ZTSStyle& style, const PropertyMap& map, bool locked) const {
    return first(style.children(), map, locked,
                 [&](ZTSStyle& child) { return child.stylesheet() == &mSheet && child.isAnonymous(); });
  }
  ZTSStyle* anonymousOf(const ZTSStyleClass& type, const StringRef& parent, const PropertyMap& map, bool locked) const {
    return first(mSheet.anonymousStyles(), map, locked, [&](ZTSStyle& style) {
      return &style.classObject() == &type && equalTexts(style.parentIdentifier(), parent);
    });
  }

 private:
  template <class Styles, class Question>
  static ZTSStyle* first(const Styles& styles, const PropertyMap& wanted, bool locked, Question mayAnswer) {
    for (ZTSStyle* style : styles)
      if (style->isLocked() == locked && mayAnswer(*style) && matches(*style, wanted)) return style;
    return nullptr;
  }
  static bool matches(const ZTSStyle& style, const PropertyMap& wanted) {
    const Ref<const PropertyMap> own = style.overridePropertyMap();
    return wanted.isEmpty() ? own == nullptr : own != nullptr && own->isEqual(wanted);
  }
  ZTSStylesheet& mSheet;
};

/// Some steps of a document's life.
class Play {
 public:
  explicit Play(unsigned seed) : random(seed) {
    lower->setParent(scene.sheet);
    for (const char* base : {"b0", "b1", "b2"}) pool.emplace_back(&scene.style(base, {}, {{size, 3}}));
    lower->addStyle(make<TestStyle>({.identifier = "b2"}));  // shadows
    for (int each = 0; each < 6; ++each) {
      const Ref<PropertyMap> map = mapOf({{size, each / 2}});
      values.emplace_back(make<Loose>());
      if (each < 4)
        values[static_cast<std::size_t>(each)] =
            make<TestStyle>({.name = each == 3 ? "named" : StringRef(), .overridePropertyMap = map.get()});
      if (each % 2 == 0) scene.sheet->addStyle(values.back());
    }
  }

  int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }
  const Ref<ZTSStyle>& anyOf(const std::vector<Ref<ZTSStyle>>& styles, std::size_t count) {
    return styles[static_cast<std::size_t>(below(static_cast<int>(count)))];
  }
  ZTSStyle& anyStyle() { return *anyOf(pool, pool.size()); }
  ZTSStylesheet& anySheet() { return below(3) == 0 ? *lower : *scene.sheet; }
  StringRef anyBase() { return StringRef("b" + std::to_string(below(40) == 0 ? 3 : below(3))); }
  const ZTSStyleClass& anyClass() {
    const int kind = below(10);
    return kind == 0 ? Chameleon::styleClass() : kind < 4 ? TestAggregate::styleClass() : TestStyle::styleClass();
  }
  Ref<PropertyMap> anyMap() {
    Ref<PropertyMap> map = PropertyMap::make();
    for (int entries = below(3); entries > 0; --entries) {
      if (const int kind = below(7); kind < 2) {
        map->set(kind == 0 ? list : label,
                 below(8) == 0 ? Ref<NSObject>(NSNull::null()) : Ref<NSObject>(anyOf(values, 6)));
      } else {
        map->set(kind < 5 ? size : weight, Value(below(3)).object);
      }
    }
    return map;
  }

  /// One search, in both ways.
  void compareSearches() {
    ZTSStylesheet& sheet = anySheet();
    const Walk walk(sheet);
    const Ref<PropertyMap> map = anyMap();
    const bool locked = below(5) == 0;
    const std::size_t before = sheet.styles().count();
    const int kind = below(6);
    Ref<ZTSStyle> expected;
    Ref<ZTSStyle> found;
    if (kind == 0) {
      ZTSStyle& style = *anyOf(pool, 3);
      expected = walk.childOf(style, *map, locked);
      found = sheet.anonymousChildOfStyle(&style, map.get(), locked);
    } else if (kind == 1) {
      const ZTSStyleClass& type = anyClass();
      const StringRef parent = anyBase();
      expected = walk.anonymousOf(type, parent, *map, locked);
      found = sheet.anonymousStyleOfClass(type, parent, map.get(), locked);
    } else {
      const Ref<PropertyMap> overrides = below(4) == 0 ? anyMap() : Ref<PropertyMap>();
      Ref<ZTSStyle> style(&anyStyle());
      if (below(3) == 0 || (style->isAnonymous() && style->parent() == nullptr && below(10) != 0))
        style = anyOf(pool, 3);
      const StyleVariationRequest request{.preferredStyle = below(4) == 0 ? &anyStyle() : nullptr,
                                          .propertyMap = map.get(),
                                          .overridePropertyMap = overrides.get(),
                                          .isLocked = locked,
                                          .canCollapse = below(4) != 0,
                                          .canReuseIdentifiedChildren = below(3) != 0};
      expected = walk.variationOf(*style, request);
      found = sheet.variationOfStyle(style.get(), request);
    }
    const bool isMade = !expected && kind != 0;
    EXPECT_EQ(sheet.styles().count(), before + (isMade ? 1 : 0));
    hits += expected ? 1 : 0;
    if (!isMade) {
      EXPECT_EQ(found, expected);
      return;
    }
    ASSERT_TRUE(found);
    ASSERT_EQ(found->stylesheet(), &sheet);
    pool.push_back(found);
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
        ZTSStyle& value = *anyOf(values, 6);
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
  std::mt19937 random;
  int hits = 0;
};

TEST(VariationIndexTest, AnswersTheVeryStyleThatAWalkWouldFind) {
  int hits = 0;
  int crowded = 0;
  for (unsigned round = 0; round < 20 && !::testing::Test::HasFailure(); ++round) {
    SCOPED_TRACE(round);
    ZTUAssertionRecorder reports;
    ZTULogRecorder logs;
    Play play(round);
    for (int step = 0; step < 1200 && !::testing::Test::HasFailure(); ++step) {
      SCOPED_TRACE(step);
      play.below(2) == 0 ? play.changeSomething() : play.compareSearches();
      if (step % 50 != 0) continue;
      ASSERT_TRUE(play.scene.sheet->indexesAreRight());
      ASSERT_TRUE(play.lower->indexesAreRight());
      for (int base : {0, 1, 2}) crowded += play.pool[static_cast<std::size_t>(base)]->children().count() > 20 ? 1 : 0;
    }
    hits += play.hits;
  }
  EXPECT_GT(hits, 4000);
  EXPECT_GT(crowded, 700) << "of 1440: mostly the bases had enough children for an index";
}

TEST(VariationIndexTest, OutlivesItsBaseItsStylesheetAndTheStylesThatAreValues) {
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
  const Ref<ZTSStyle> bases[] = {make<TestStyle>({.identifier = "base"}), make<TestStyle>({.identifier = "base"})};
  sheet->addStyle(bases[0]);
  const auto request = [&](const Ref<ZTSStyle>& base, int number, const Ref<ZTSStyle>& value) {
    const Ref<PropertyMap> map = mapOf({{size, number}});
    if (value) map->set(list, value);
    return sheet->variationOfStyle(base.get(), {.propertyMap = map.get()});
  };
  Ref<ZTSStyle> value = make<TestStyle>();
  for (int number = 0; number < 40; ++number) request(bases[0], number, value);
  const Ref<ZTSStyle> some = request(bases[0], 7, value);
  // A base that leaves and comes back finds its children again, and so does one of the same identifier.
  sheet->removeStyle(bases[0]);
  sheet->addStyle(bases[0]);
  EXPECT_EQ(request(bases[0], 7, value), some);
  sheet->addStyle(bases[1]);
  EXPECT_EQ(request(bases[1], 7, value), some);
  // The value changes without being in any stylesheet, dies, and another takes its place.
  value->setValueForProperty(Value(1), size);
  EXPECT_EQ(request(bases[1], 7, make<TestStyle>({.overridePropertyMap = mapOf({{size, 1}}).get()})), some);
  for (const Ref<ZTSStyle>& style : sheet->anonymousStyles().retainedSnapshot()) style->removeValueForProperty(list);
  value.reset();
  EXPECT_EQ(request(bases[1], 7, {}), some);
  EXPECT_TRUE(sheet->indexesAreRight());
  sheet.reset();
  some->setValueForProperty(Value(8), size);
  EXPECT_EQ(valueOf(*some, size), 8);
}

TEST(VariationIndexTest, FollowsWhatOnlyStores) {
  Scene scene;
  TestStyle& base = scene.style("base");
  const auto request = [&](int number) {
    const Ref<PropertyMap> map = mapOf({{size, number}});
    return scene.sheet->variationOfStyle(&base, {.propertyMap = map.get()});
  };
  std::vector<Ref<ZTSStyle>> all;
  for (int number = 0; number < 40; ++number) all.push_back(request(number));
  ZTUMutablePointerSet<ZTSStyle> turned;
  for (auto style = all.rbegin(); style != all.rend(); ++style) turned.addObject(style->get());
  base.p_setChildren(turned);
  EXPECT_EQ(request(7), all[7]);
  // While the link is another one the style changes into what is asked for next.
  all[7]->p_setParent({});
  all[7]->p_setValueForProperty(Value(99), size);
  all[7]->p_setParent(Ref<ZTSStyle>(&base));
  EXPECT_EQ(request(99), all[7]);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(VariationIndexTest, FindsAnonymousStylesWhoseLinkDoesNotFollowTheirPlace) {
  Scene scene;
  scene.style("b0");
  const auto find = [&](int each) {
    return scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), "b0", mapOf({{size, each}}).get(), false);
  };
  for (int each = 0; each < 40; ++each) find(each);
  // Linked before it is added, so that adding does not change the link.
  TestStyle& style = scene.detached({}, "b0", {{size, 50}});
  style.p_setStylesheet(scene.sheet.get());
  scene.sheet->addStyle(Ref<ZTSStyle>(&style));
  EXPECT_EQ(find(50), &style);
  // Held while its link is gone: its changes reach nobody.
  style.p_setStylesheet(nullptr);
  style.p_setValueForProperty(Value(51), size);
  EXPECT_EQ(find(51), &style);
  style.p_setStylesheet(scene.sheet.get());
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

/// Counts how often it is compared and hashed.
class CountingValue : public NSObject {
 public:
  explicit CountingValue(int number) : mNumber(number) {}
  bool isEqual(const NSObject* other) const override {
    ++sComparisons;
    const auto* value = dynamic_cast<const CountingValue*>(other);
    return value != nullptr && value->mNumber == mNumber;
  }
  std::size_t hash() const override { return static_cast<std::size_t>(mNumber) * 77; }
  std::size_t stableHash() const override { return ++sHashes, hash(); }
  static inline std::size_t sComparisons = 0;
  static inline std::size_t sHashes = 0;

 private:
  const int mNumber;
};

TEST(VariationIndexTest, ComparesOneMapPerRequestAmongManyAlikeOrNot) {
  Scene scene;
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
  EXPECT_LE(CountingValue::sComparisons, 2500u);  // one with the base's value, one with the style found
  CountingValue::sComparisons = 0;
  EXPECT_EQ(request(5000, true), first);
  EXPECT_LE(CountingValue::sComparisons, 3u);
  // The alike are changed one after the other: what is stale is tested once and not again.
  for (const Ref<ZTSStyle>& style : base.children().retainedSnapshot()) style->setValueForProperty(Value(1), weight);
  EXPECT_NE(request(5000, true), first);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

TEST(VariationIndexTest, TestsAndEntersNoMoreThanWhatMayFitAndWhatHasChanged) {
  Scene scene;
  scene.style("base");
  scene.host.undo->disableUndoRegistration();
  const auto find = [&](int number) {
    const Ref<PropertyMap> map = PropertyMap::with({{colour, make<CountingValue>(1)}, {size, Value(number).object}});
    return scene.sheet->anonymousStyleOfClass(TestStyle::styleClass(), "base", map.get(), false);
  };
  constexpr int kStyles = 200;
  std::vector<Ref<ZTSStyle>> styles;
  for (int number = 0; number < kStyles; ++number) styles.push_back(find(number));
  const auto workOfSearches = [&] {
    CountingValue::sComparisons = CountingValue::sHashes = 0;
    for (int number = 0; number < kStyles; ++number) {
      EXPECT_EQ(find(number), styles[static_cast<std::size_t>(number)]);
    }
    return std::max(CountingValue::sComparisons, CountingValue::sHashes);
  };
  EXPECT_LE(workOfSearches(), 2u * kStyles) << "a plain value is part of what is looked up";
  // Each change enters a style once more, until it is better to begin anew; then that is done once.
  CountingValue::sHashes = 0;
  for (int round = 0; round < 6; ++round) {
    for (int number = 0; number < kStyles; ++number) {
      styles[static_cast<std::size_t>(number)]->p_setValueForProperty(Value(number).object, size);
    }
  }
  EXPECT_LE(CountingValue::sHashes, 6u * kStyles);
  EXPECT_LE(workOfSearches(), 4u * kStyles);
  EXPECT_LE(workOfSearches(), 2u * kStyles);
  EXPECT_TRUE(scene.sheet->indexesAreRight());
}

}  // namespace
}  // namespace zt::testing
