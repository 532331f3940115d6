// Styles that only keep one another alive.

#include "Scene.h"

#include <platform/NSArray.h>

#include <random>

namespace zt::testing {
namespace {

/// Knows how many of its kind live.
class CensusStyle : public TestAggregate {
 public:
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new TestClassOf<CensusStyle>("CensusStyle", TestAggregate::styleClass());
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }
  CensusStyle() { ++living; }
  ~CensusStyle() override { --living; }
  static inline int living = 0;
};

/// Styles of one stylesheet that nobody but the stylesheet and the test holds.
struct Group {
  Ref<CensusStyle> add(const char* identifier = nullptr, const char* parent = nullptr) {
    auto style = make<CensusStyle>({.identifier = identifier != nullptr ? StringRef(identifier) : StringRef(),
                                    .parentIdentifier = parent != nullptr ? StringRef(parent) : StringRef()});
    sheet->addStyle(style);
    return style;
  }
  Ref<ZTSStylesheet> sheet = ZTSStylesheet::withHost();
};

TEST(ReferenceGroupsTest, FreesCyclesAndKeepsWhatIsHeldFromOutside) {
  struct Case {
    const char* name;
    int remaining;                               // after the stylesheet is gone
    std::function<Ref<NSObject>(Group&)> build;  // answers what the test goes on holding
  };
  const auto refer = [](const Ref<CensusStyle>& from, const Ref<CensusStyle>& to, PropertyKey key = list) {
    from->setValueForProperty(to, key);
  };
  const Case cases[] = {
      {"two", 0,
       [&](Group& group) {
         auto a = group.add(), b = group.add();
         refer(a, b);
         refer(b, a);
         return Ref<NSObject>();
       }},
      {"itself, twice", 0,
       [&](Group& group) {
         auto a = group.add();
         refer(a, a);
         refer(a, a, label);
         return Ref<NSObject>();
       }},
      {"through a parent", 0,
       [&](Group& group) {
         auto a = group.add("a"), b = group.add("b", "a");
         refer(a, b);
         return Ref<NSObject>();
       }},
      {"with children outside of the cycle", 0,
       [&](Group& group) {
         auto a = group.add("a"), b = group.add();
         refer(a, b), refer(b, a);
         group.add(nullptr, "a");
         return Ref<NSObject>();
       }},
      {"through a list", 0,
       [&](Group& group) {
         auto a = group.add(), b = group.add();
         refer(a, b);
         b->p_setValueForProperty(NSArray::withObjects({a, b}), colour);
         return Ref<NSObject>();
       }},
      {"through a style that had left", 0,
       [&](Group& group) {
         auto a = group.add(), b = group.add();
         refer(a, b), refer(b, a);
         group.sheet->removeStyle(b);
         return Ref<NSObject>();
       }},
      {"of styles that have all left, one of them for another place", 0,
       [&](Group& group) {
         auto a = group.add(), b = group.add(), c = group.add();
         refer(a, b), refer(b, a), refer(c, c);
         for (auto* style : {&a, &b, &c}) group.sheet->removeStyle(*style);
         Group other;
         other.sheet->addStyle(std::exchange(c, nullptr));
         return Ref<NSObject>();
       }},
      {"held, with what it reaches", 3,
       [&](Group& group) {
         auto a = group.add(), b = group.add(), c = group.add(), d = group.add();
         refer(a, b), refer(b, a), refer(b, c, label), refer(d, d), refer(d, a, label);
         return Ref<NSObject>(b);
       }},
      {"held child", 3,
       [&](Group& group) {
         auto a = group.add("a"), b = group.add(), child = group.add(nullptr, "a");
         refer(a, b), refer(b, a);
         return Ref<NSObject>(child);
       }},
      {"held list", 2,
       [&](Group& group) {
         auto a = group.add(), b = group.add();
         const Ref<NSArray> array = NSArray::withObjects({a});
         refer(a, b);
         b->p_setValueForProperty(array, colour);
         return Ref<NSObject>(array);
       }},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    Group group;
    Ref<NSObject> held = each.build(group);
    group.sheet.reset();
    EXPECT_EQ(CensusStyle::living, each.remaining);
    // What was held keeps its values; letting go of the rest is its holder's affair.
    std::vector<NSObject*> objects{held.get()};
    if (const NSArray* array = NSArray::from(held.get())) objects = {array->objectAtIndex(0)};
    if (auto* aggregate = asAggregateStyle(objects[0])) {
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
    std::vector<Ref<CensusStyle>> styles;
    for (std::size_t i = 0; i < kStyles; ++i) styles.push_back(group.add());
    std::vector<std::vector<std::size_t>> leadsTo(kStyles);
    for (std::size_t i = 0; i < kStyles; ++i) {
      for (PropertyKey key : {list, label}) {
        if (random() % 3 == 0) continue;
        const std::size_t to = random() % kStyles;
        styles[i]->setValueForProperty(styles[to], key);
        leadsTo[i].push_back(to);
      }
    }
    std::vector<Ref<CensusStyle>> held{styles[random() % kStyles], styles[random() % kStyles]};
    std::vector<std::size_t> reached;
    for (const Ref<CensusStyle>& style : held)
      reached.push_back(static_cast<std::size_t>(std::find(styles.begin(), styles.end(), style) - styles.begin()));
    std::vector<bool> isAlive(kStyles);
    std::vector<ZTSStyle*> addresses;
    for (const Ref<CensusStyle>& style : styles) addresses.push_back(style.get());
    while (!reached.empty()) {
      const std::size_t i = reached.back();
      reached.pop_back();
      if (isAlive[i]) continue;
      isAlive[i] = true;
      reached.insert(reached.end(), leadsTo[i].begin(), leadsTo[i].end());
    }
    styles.clear();
    group.sheet.reset();
    ASSERT_EQ(CensusStyle::living, std::count(isAlive.begin(), isAlive.end(), true));
    for (std::size_t i = 0; i < kStyles; ++i) {
      if (isAlive[i]) held.emplace_back(static_cast<CensusStyle*>(addresses[i]));
    }
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
    next->setValueForProperty(last, list);
    last = next;
  }
  first->setValueForProperty(last, list);
  first.reset();
  last.reset();
  group.sheet.reset();
  EXPECT_EQ(CensusStyle::living, 0);
}

}  // namespace
}  // namespace zt::testing
