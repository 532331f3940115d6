// Copies, structural equality, order by name and descriptions.

#include "Scene.h"

#include <platform/NSArray.h>
#include <platform/NSException.h>

#include <thread>

namespace zt::testing {
namespace {

TEST(ComparisonTest, ComparesStructureNotIdentity) {
  Scene scene;
  TestStyle& base = scene.style("base", {}, {{size, 1}});
  const Ref<PropertyMap> map = mapOf({{size, 2}, {colour, NSNull::null()}});
  const ZTSStyleFields fields{
      .name = "Name", .identifier = "id", .parentIdentifier = "p", .overridePropertyMap = map.get()};
  const Ref<TestStyle> one = make<TestStyle>(fields);
  const Ref<NSObject> copied = one->copy();
  EXPECT_TRUE(copied != one && one->isEqual(copied.get()) && one->hash() == copied->hash());
  one->p_setValueForProperty(Value(2.0), size);
  EXPECT_TRUE(one->isEqual(copied.get())) << "numbers are compared as numbers, and the copy has a map of its own";

  using Vary = void (*)(ZTSStyleFields&);
  const Ref<PropertyMap> other = mapOf({{size, 3}, {colour, NSNull::null()}});
  for (const Vary vary : std::initializer_list<Vary>{
           [](auto& f) { f.name = {}; }, [](auto& f) { f.identifier = ""; }, [](auto& f) { f.parentIdentifier = {}; },
           [](auto& f) { f.isLocked = true; }, [](auto& f) { f.overridePropertyMap = nullptr; }}) {
    ZTSStyleFields varied = fields;
    vary(varied);
    const Ref<TestStyle> two = make<TestStyle>(varied);
    EXPECT_FALSE(one->isEqual(two.get()) || two->isEqual(one.get()));
    EXPECT_EQ(one->isEqualCompareNames(two.get(), CompareNames::no), !two->isNamed());
  }
  EXPECT_FALSE(one->isEqual(make<TestAggregate>(fields).get()) || one->isEqual(nullptr) ||
               one->isEqual(NSNull::null()));
  EXPECT_EQ(scene.style(nullptr).hash(), 0u);
  EXPECT_EQ(one->stableHash(), base.stableHash());

  // A copy is detached: it has no parent, and so does not equal an original that has one.
  TestStyle& child = scene.style("child", "base");
  EXPECT_FALSE(child.isEqual(child.copy().get()));
  TestStyle& twin = scene.style("twin", "base");
  twin.p_setIdentifier("child");
  EXPECT_TRUE(child.isEqual(&twin)) << "one parent";
  EXPECT_TRUE(base.isEqual(base.copy().get()));
  EXPECT_EQ(ZTSStyle::comparisonsInProgress(), 0u);
}

/// A value that is never equal to another and throws if it is told to.
class Different : public NSObject {
 public:
  explicit Different(bool throws) : mThrows(throws) {}
  bool isEqual(const NSObject* other) const override {
    if (mThrows) throw NSGenericException("no comparison");
    return other == this;
  }

 private:
  bool mThrows;
};

TEST(ComparisonTest, EndsOnCyclesAndSharedLayersAndForgetsWhatItAssumed) {
  Scene scene;
  const auto link = [](ZTSStyle& from, PropertyKey key, ZTSStyle& to) {
    from.p_setValueForProperty(Ref<NSObject>(&to), key);
  };
  TestStyle* a[2] = {&scene.detached(), &scene.detached()};
  TestStyle* b[2] = {&scene.detached(), &scene.detached()};
  for (int side : {0, 1}) {
    link(*a[side], list, *b[side]);
    link(*b[side], list, *a[side]);
  }
  EXPECT_TRUE(a[0]->isEqual(a[1]) && b[0]->isEqual(b[1]));
  // The pair of the b rests on that of the a, which differs after all: the finding must not outlive it.
  a[0]->p_setValueForProperty(Value(1), size);
  EXPECT_FALSE(a[0]->isEqual(a[1]) || b[0]->isEqual(b[1]));
  const auto listOf = [](TestStyle* x, TestStyle* y) {
    return NSArray::withObjects({Ref<NSObject>(x), Ref<NSObject>(y)});
  };
  EXPECT_FALSE(listOf(b[0], a[0])->isEqual(listOf(b[1], a[1]).get()));
  for (TestStyle* style : a) style->p_removeValueForProperty(list);  // nobody else ends a cycle outside of stylesheets

  // Forty layers, each of two styles that both refer to both of the next: 2^40 paths.
  TestStyle* tops[2];
  for (int side : {0, 1}) {
    TestStyle *left = &scene.detached("bottom"), *right = &scene.detached("bottom2");
    for (int layer = 0; layer < 40; ++layer) {
      TestStyle &l = scene.detached(), &r = scene.detached("r");
      for (TestStyle* style : {&l, &r}) link(*style, list, *left), link(*style, label, *right);
      left = &l;
      right = &r;
    }
    tops[side] = left;
  }
  EXPECT_TRUE(tops[0]->isEqual(tops[1]));
  EXPECT_TRUE(tops[0]->isEqualCompareNames(tops[1], CompareNames::no));

  // A chain of a length that no stack would hold, compared from the root down.
  Scene other;
  for (Scene* each : {&scene, &other}) {
    for (int i = 0; i < 50'000; ++i)
      each->style(std::to_string(i), i > 0 ? StringRef(std::to_string(i - 1)) : StringRef());
  }
  ZTSStyle* leaf = scene.sheet->styleWithIdentifier("49999");
  EXPECT_TRUE(leaf->isEqual(other.sheet->styleWithIdentifier("49999")));
  other.sheet->styleWithIdentifier("0")->setValueForProperty(Value(1), size);
  EXPECT_FALSE(leaf->isEqual(other.sheet->styleWithIdentifier("49999")));

  // Chains of references are calls: they end in an exception, after which everything is as before.
  TestStyle *deep = &scene.detached(), *deepToo = &scene.detached();
  TestStyle *first = deep, *firstToo = deepToo;
  for (int i = 0; i < 10'001; ++i) {
    TestStyle &next = scene.detached(), &nextToo = scene.detached();
    link(next, list, *deep), link(nextToo, list, *deepToo);
    deep = &next, deepToo = &nextToo;
  }
  EXPECT_THROW(deep->isEqual(deepToo), NSInternalInconsistencyException);
  EXPECT_EQ(ZTSStyle::comparisonsInProgress(), 0u);
  first->p_setValueForProperty(make<Different>(true), size);
  firstToo->p_setValueForProperty(Value(1), size);
  EXPECT_THROW(first->isEqual(firstToo), NSGenericException);
  EXPECT_EQ(ZTSStyle::comparisonsInProgress(), 0u);
  EXPECT_TRUE(tops[0]->isEqual(tops[1]));
}

TEST(ComparisonTest, ServesTwoThreadsAtOnce) {
  Scene scenes[2];
  const auto compareMany = [](Scene& scene) {
    const Ref<PropertyMap> map = mapOf({{size, 1}});
    const Ref<TestStyle> one = make<TestStyle>({.overridePropertyMap = map.get()});
    const Ref<NSObject> two = one->copy();
    for (int i = 0; i < 2000; ++i) scene.log.push_back(one->isEqual(two.get()) ? "equal" : "different");
  };
  std::thread thread([&] { compareMany(scenes[0]); });
  compareMany(scenes[1]);
  thread.join();
  EXPECT_EQ(scenes[0].log, Log(2000, "equal"));
  EXPECT_EQ(scenes[1].log, scenes[0].log);
}

TEST(ComparisonTest, SortsNamelessStylesFirst) {
  const Ref<TestStyle> none = make<TestStyle>(), empty = make<TestStyle>({.name = ""}),
                       a = make<TestStyle>({.name = "A"}), b = make<TestStyle>({.name = "a"}),
                       accent = make<TestStyle>({.name = "\xc3\x84"});
  EXPECT_EQ(none->compareByName(empty.get()), 0);
  EXPECT_EQ(empty->compareByName(a.get()), -1);
  EXPECT_EQ(a->compareByName(none.get()), 1);
  EXPECT_EQ(a->compareByName(b.get()), -1);
  EXPECT_EQ(b->compareByName(accent.get()), -1) << "by bytes";
  EXPECT_EQ(a->compareByName(a.get()), 0);
  ZTUAssertionRecorder reports;
  EXPECT_EQ(a->compareByName(nullptr), 1);
  EXPECT_EQ(none->compareByName(nullptr), 0);
  EXPECT_EQ(reports.descriptions(), Log(2, "invalid nil value for variable/parameter style"));
}

TEST(ComparisonTest, DescribesStyles) {
  Scene scene;
  TestStyle& base = scene.style("base");
  TestStyle& child = scene.style({}, "base", {}, true);
  child.incrementUsageCount();
  EXPECT_EQ(child.description(),
            format("\n<TestStyle %p name=(null) identifier=(null) parentIdentifier=base parent=%p stylesheet=%p "
                   "usageCount=1 debugUsageCount=0 isLocked=YES>",
                   address(&child), address(&base), scene.sheet));
  const std::string self = format("%#x", address(&child)), parent = format("%#x", address(&base));
  const auto expect = [&](StringRef name, StringRef parentName, StringRef parentIdentifier, const std::string& text) {
    child.p_setName(name);
    base.p_setName(parentName);
    base.p_setIdentifier(parentIdentifier);
    EXPECT_EQ(child.shortDescription(), text);
  };
  const std::string start = "Anonymous unnamed TestStyle " + self + " with ";
  expect("N", "P", "p", "TestStyle " + self + " with named \"N\"");
  expect({}, "P", "p", start + "parent " + parent + " identified as \"p\" and named \"P\"");
  expect({}, "", {}, start + "parent " + parent + " named \"\"");
  expect({}, {}, "p", start + "parent " + parent + " identified as \"p\"");
  expect({}, {}, {}, start + "anonymouse unnamed parent " + parent);
  base.p_setIdentifier("base");
  const std::string it = "TestStyle " + parent;
  EXPECT_EQ(base.shortDescription(), it + " identified as \"base\"");
  base.p_setName("B");
  EXPECT_EQ(base.shortDescription(), it + " identified as \"base\" and named \"B\"");
  TestStyle& alone = scene.detached();
  EXPECT_EQ(alone.shortDescription(), format("Anonymous unnamed parentless TestStyle %#x", address(&alone)));
}

}  // namespace
}  // namespace zt::testing
