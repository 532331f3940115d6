// SPDX-License-Identifier: MIT

// Styles that only keep one another alive.

#include <tests/ztstyles/Archives.h>

#include <platform/NSArray.h>
#include <platform/NSException.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <random>

namespace zt::testing {
namespace {

/// Knows how many of its kind live.
class CensusStyle : public ZTSStyleOf<CensusStyle, TestAggregate> {
 public:
  static constexpr const char* kClassName = "CensusStyle";
  CensusStyle() { ++living; }
  ~CensusStyle() override { --living; }
  void setValueForProperty(Ref<NSObject> value, PropertyKey key) override {
    if (fails) throw NSGenericException("no");
    ZTSStyleOf<CensusStyle, TestAggregate>::setValueForProperty(std::move(value), key);
  }
  void setStylesheet(ZTSStylesheet* stylesheet) override {
    if (linking > 0 && --linking == 0) throw NSGenericException("no");
    ZTSStyleOf<CensusStyle, TestAggregate>::setStylesheet(stylesheet);
  }
  static inline int living = 0;
  static inline int linking = 0;  // the next links that are set until one throws; none where it is 0
  static inline bool fails = false;
};
/// The same of a class that refers to nothing, but may hold anything as a value.
class PlainCensusStyle : public ZTSStyleOf<PlainCensusStyle, TestStyle> {
 public:
  static constexpr const char* kClassName = "PlainCensusStyle";
  PlainCensusStyle() { ++CensusStyle::living; }
  ~PlainCensusStyle() override { --CensusStyle::living; }
};
using Styles = std::vector<Ref<CensusStyle>>;

/// Styles of one stylesheet that nobody but the stylesheet and the test holds.
struct Group {
  Ref<CensusStyle> add(StringRef identifier = {}, StringRef parent = {}) {
    auto style = make<CensusStyle>({.identifier = std::move(identifier), .parentIdentifier = std::move(parent)});
    sheet->addStyle(style);
    return style;
  }
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
};

TEST(ReferenceGroupsTest, FreesCyclesAndKeepsWhatIsHeldFromOutside) {
  struct Case {
    const char* name;
    std::vector<std::pair<const char*, const char*>> styles;  // identifier and parent
    std::vector<std::pair<std::size_t, std::size_t>> links;   // who refers to whom
    std::function<Ref<NSObject>(Group&, Styles&)> then;       // answers what the test goes on holding
    int remaining;                                            // after the stylesheet is gone
  };
  const auto nothing = [](Group&, Styles&) { return Ref<NSObject>(); };
  const auto hold = [](std::size_t which) { return [which](Group&, Styles& s) { return Ref<NSObject>(s[which]); }; };
  const auto list0 = [](Styles& s, std::vector<Ref<NSObject>> members) {
    const Ref<NSArray> array = NSArray::withObjects(std::move(members));
    s[1]->p_setValueForProperty(array, colour);
    return array;
  };
  const Case cases[] = {
      {"itself, twice", {{}}, {{0, 0}, {0, 0}}, nothing, 0},
      {"through a parent", {{"a", {}}, {"b", "a"}}, {{0, 1}}, nothing, 0},
      {"with children outside of the cycle", {{"a", {}}, {}, {nullptr, "a"}}, {{0, 1}, {1, 0}}, nothing, 0},
      {"through a list",
       {{}, {}},
       {{0, 1}},
       [&](Group&, Styles& s) {
         return list0(s, {s[0], s[1]}), nullptr;
       },
       0},
      {"through a style that had left",
       {{}, {}},
       {{0, 1}, {1, 0}},
       [](Group& group, Styles& s) { return group.sheet->removeStyle(s[1]), nullptr; },
       0},
      {"of styles that have all left, one of them for another place",
       {{}, {}, {}},
       {{0, 1}, {1, 0}, {2, 2}},
       [](Group& group, Styles& s) {
         for (const Ref<CensusStyle>& style : s) group.sheet->removeStyle(style);
         Group other;
         other.sheet->addStyle(s.back());
         s.clear();
         return nullptr;
       },
       0},
      {"held, with what it reaches", {{}, {}, {}, {}}, {{0, 1}, {1, 0}, {1, 2}, {3, 3}, {3, 0}}, hold(1), 3},
      {"held child", {{"a", {}}, {}, {nullptr, "a"}}, {{0, 1}, {1, 0}}, hold(2), 3},
      {"held list", {{}, {}}, {{0, 1}}, [&](Group&, Styles& s) { return list0(s, {s[0]}); }, 2},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    Group group;
    Styles styles;
    for (const auto& [identifier, parent] : each.styles)
      styles.push_back(group.add(identifier != nullptr ? StringRef(identifier) : StringRef(),
                                 parent != nullptr ? StringRef(parent) : StringRef()));
    for (const auto& [from, to] : each.links)
      styles[from]->setValueForProperty(styles[to], styles[from]->overridesProperty(list) ? label : list);
    Ref<NSObject> held = each.then(group, styles);
    styles.clear();
    group.sheet.reset();
    EXPECT_EQ(CensusStyle::living, each.remaining);
    // What was held keeps its values; letting go of the rest is its holder's affair.
    const NSArray* array = NSArray::from(held.get());
    if (auto* aggregate = asAggregateStyle(array != nullptr ? array->objectAtIndex(0) : held.get())) {
      std::vector<Ref<ZTSStyle>> reached = aggregate->recursivelyReferencedStyles()->retainedSnapshot();
      reached.emplace_back(aggregate->parent() != nullptr ? aggregate->parent() : aggregate);
      EXPECT_TRUE(reached.back()->overridesAnyProperty());
      for (const Ref<ZTSStyle>& style : reached) style->p_setPropertyMap({});
    }
    held.reset();
    EXPECT_EQ(CensusStyle::living, 0);
  }
}

TEST(ReferenceGroupsTest, FreesRandomGroupsExactlyAsReachabilitySays) {
  std::mt19937 random(7);
  for (int round = 0; round < 60; ++round) {
    constexpr std::size_t kStyles = 30;
    Group group;
    Styles styles(kStyles);
    for (Ref<CensusStyle>& style : styles) style = group.add();
    std::vector<std::vector<std::size_t>> leadsTo(kStyles);
    for (std::size_t i = 0; i < kStyles; ++i) {
      for (PropertyKey key : {list, label}) {
        if (random() % 3 == 0) continue;
        leadsTo[i].push_back(random() % kStyles);
        styles[i]->setValueForProperty(styles[leadsTo[i].back()], key);
      }
    }
    std::vector<std::size_t> reached{random() % kStyles, random() % kStyles};
    Styles held{styles[reached[0]], styles[reached[1]]};
    std::vector<ZTSStyle*> alive(kStyles);
    while (!reached.empty()) {
      const std::size_t i = reached.back();
      reached.pop_back();
      if (std::exchange(alive[i], styles[i].get()) != nullptr) continue;
      reached.insert(reached.end(), leadsTo[i].begin(), leadsTo[i].end());
    }
    styles.clear();
    group.sheet.reset();
    ASSERT_EQ(CensusStyle::living, std::count_if(alive.begin(), alive.end(), [](auto* style) { return style; }));
    for (ZTSStyle* style : alive)
      if (style != nullptr) held.emplace_back(static_cast<CensusStyle*>(style));
    for (const Ref<CensusStyle>& style : held) style->p_setPropertyMap({});
    held.clear();
    ASSERT_EQ(CensusStyle::living, 0);
  }
}

TEST(ReferenceGroupsTest, FreesALongRing) {
  Group group;
  Ref<CensusStyle> first = group.add();
  Ref<CensusStyle> last = first;
  for (int i = 0; i < 100'000; ++i) {
    Ref<CensusStyle> next = group.add();
    next->setValueForProperty(std::exchange(last, next), list);
  }
  first->setValueForProperty(std::exchange(last, nullptr), list);
  first.reset();
  group.sheet.reset();
  EXPECT_EQ(CensusStyle::living, 0);
}

TEST(ReferenceGroupsTest, FreesPlainStylesThatHoldOneAnother) {
  for (const bool haveLeft : {false, true}) {
    Group group;
    {
      auto a = make<PlainCensusStyle>({.identifier = "a"});
      auto b = make<PlainCensusStyle>();
      for (const Ref<PlainCensusStyle>& style : {a, b}) group.sheet->addStyle(style);
      a->setValueForProperty(b, size);
      b->setValueForProperty(NSArray::withObjects({NSArray::withObjects({a})}), size);
      for (const Ref<PlainCensusStyle>& style : {a, b})
        if (haveLeft) group.sheet->removeStyle(style);
    }
    EXPECT_EQ(CensusStyle::living, 2);
    group.sheet.reset();
    EXPECT_EQ(CensusStyle::living, 0);
  }
}

TEST(ReferenceGroupsTest, FollowsTheParentsOfStylesWithoutReferences) {
  auto child = make<CensusStyle>();
  {
    auto parent = make<CensusStyle>();
    child->p_setParent(parent);
    parent->p_addChild(*child);
    parent->p_setValueForProperty(child, list);
  }
  std::vector<Ref<ZTSStyle>> given{std::move(child)};
  freeReferenceGroups(std::move(given));
  EXPECT_EQ(CensusStyle::living, 0);
}

TEST(ReferenceGroupsTest, FreesAnonymousStylesWhoseOrderWasRemembered) {
  const ZTADiffableXmlScope diffable;
  {
    Group group;
    const Ref<CensusStyle> style = group.add();
    style->setValueForProperty(style, list);
    archived(*group.sheet);
  }
  EXPECT_EQ(CensusStyle::living, 0);
}

TEST(ReferenceGroupsTest, FreesCopiesThatAreNeverAdded) {
  Group group;
  Styles originals{group.add(), group.add()};
  originals[0]->setValueForProperty(originals[1], list);
  originals[1]->setValueForProperty(originals[0], list);
  {
    const ZTSStyleCopies copies = ZTSAggregateStyle::deepCopyStyles({originals[0]});
    EXPECT_EQ(copies.count(), 1u);
    EXPECT_EQ(CensusStyle::living, 4);
  }
  EXPECT_EQ(CensusStyle::living, 2);
  CensusStyle::fails = true;
  EXPECT_THROW(ZTSAggregateStyle::deepCopyStyles({originals[0]}), NSGenericException);
  CensusStyle::fails = false;
  EXPECT_EQ(CensusStyle::living, 2);

  // What has been added stays, whole.
  Group other;
  other.sheet->addStyleAndReferencedStyles(Ref<ZTSStyle>(*ZTSAggregateStyle::deepCopyStyles({originals[0]}).begin()));
  EXPECT_EQ(other.sheet->styles().count(), 2u);
  EXPECT_TRUE((*other.sheet->styles().begin())->overridesProperty(list));
  other.sheet.reset();
  EXPECT_EQ(CensusStyle::living, 2);
}

TEST(ReferenceGroupsTest, FreesTheCopiesOfAStylesheetThatCouldNotBeCopied) {
  Group group;
  {
    Styles styles{group.add(), group.add(), group.add(), group.add()};
    for (const std::size_t i : {0u, 1u, 2u, 3u}) styles[i]->setValueForProperty(styles[i ^ 1u], list);
  }
  for (int linking = 1; linking <= 4; ++linking) {
    CensusStyle::linking = linking;
    EXPECT_THROW((void)group.sheet->copy(), NSGenericException);
    EXPECT_EQ(CensusStyle::living, 4);
  }
  EXPECT_EQ(CensusStyle::linking, 0);
}

TEST(ReferenceGroupsTest, FreesWhatABrokenFileHeld) {
  CensusStyle::styleClass();
  const auto circle = [](const char* first, const char* second) {
    const auto one = [](std::string id, std::string to) {
      return element("zt:id='" + id + "' zt:ident='" + id + "'", "<zt:list><zt:object zt:to='" + to + "'/></zt:list>",
                     "CensusStyle");
    };
    return one(first, second) + one(second, first) +
           element("zt:parent-ident='" + std::string(first) + "'", {}, "CensusStyle");
  };
  const std::string good = "<zt:parent zt:class='ZTSStylesheet'><zt:styles>" + circle("a", "b") +
                           "</zt:styles><zt:anon-styles/></zt:parent>";
  std::string broken = sheetOf(circle("c", "d"), {}, good);
  const std::string container = "<zt:anon-styles></zt:anon-styles>";
  broken.erase(broken.find(container), container.size());
  for (int attempt = 0; attempt < 2; ++attempt) {
    EXPECT_EQ(reasonOf([&] { Loaded loaded(broken); }).substr(0, 10), "Stylesheet");
    EXPECT_EQ(CensusStyle::living, 0);
  }
}

}  // namespace
}  // namespace zt::testing
