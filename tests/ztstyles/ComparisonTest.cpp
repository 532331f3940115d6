// SPDX-License-Identifier: MIT

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
  EXPECT_NE(copied, one);
  EXPECT_TRUE(one->isEqual(copied.get()));
  EXPECT_EQ(one->hash(), copied->hash());
  one->p_setValueForProperty(Value(2.0), size);
  EXPECT_TRUE(one->isEqual(copied.get())) << "numbers are compared as numbers, and the copy has a map of its own";

  using Vary = void (*)(ZTSStyleFields&);
  for (const Vary vary : std::initializer_list<Vary>{
           [](auto& f) { f.name = {}; }, [](auto& f) { f.identifier = ""; }, [](auto& f) { f.parentIdentifier = {}; },
           [](auto& f) { f.isLocked = true; }, [](auto& f) { f.overridePropertyMap = nullptr; }}) {
    ZTSStyleFields varied = fields;
    vary(varied);
    const Ref<TestStyle> two = make<TestStyle>(varied);
    EXPECT_FALSE(one->isEqual(two.get()));
    EXPECT_FALSE(two->isEqual(one.get()));
    EXPECT_EQ(one->isEqualCompareNames(two.get(), CompareNames::no), !two->isNamed());
  }
  EXPECT_FALSE(one->isEqual(make<TestAggregate>(fields).get()));
  EXPECT_FALSE(one->isEqual(nullptr));
  EXPECT_FALSE(one->isEqual(NSNull::null()));
  EXPECT_EQ(scene.style(nullptr).hash(), 0u);
  EXPECT_NE(one->hash(), base.hash()) << "their identifiers differ";
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

/// Takes the map in which it stands out of its style while it is compared.
struct Meddler : NSObject {
  bool isEqual(const NSObject*) const override {
    style->p_setPropertyMap({});
    heldMeanwhile = witness->referenceCount() > 1;
    return true;
  }
  ZTSStyle* style = nullptr;
  Ref<NSObject> witness = NSNumber::withReal(0.5);
  mutable bool heldMeanwhile = false;
};

TEST(ComparisonTest, HoldsTheMapsThatItCompares) {
  Scene scene;
  const Ref<Meddler> meddler(new Meddler);
  TestStyle& one = scene.detached({}, {}, {{size, Value(Ref<NSObject>(meddler))}, {weight, Value(meddler->witness)}});
  TestStyle& two = scene.detached({}, {}, {{size, 1}, {weight, 0.5}});
  meddler->style = &one;
  EXPECT_TRUE(one.isEqual(&two)) << "as they were";
  EXPECT_TRUE(meddler->heldMeanwhile);
}

struct Incomparable : NSObject {
  bool isEqual(const NSObject*) const override { throw NSGenericException("no comparison"); }
};

TEST(ComparisonTest, EndsOnCyclesAndSharedLayersAndForgetsWhatItAssumed) {
  Scene scene;
  const auto link = [](ZTSStyle& from, PropertyKey key, ZTSStyle& to) {
    from.p_setValueForProperty(Ref<NSObject>(&to), key);
  };
  TestStyle* a[2] = {&scene.detached(), &scene.detached()};
  TestStyle* b[2] = {&scene.detached(), &scene.detached()};
  for (int side : {0, 1}) link(*a[side], list, *b[side]), link(*b[side], list, *a[side]);
  EXPECT_TRUE(a[0]->isEqual(a[1]));
  EXPECT_TRUE(b[0]->isEqual(b[1]));
  // The pair of the b rests on that of the a, which differs after all: the finding must not outlive it.
  a[0]->p_setValueForProperty(Value(1), size);
  EXPECT_FALSE(a[0]->isEqual(a[1]));
  EXPECT_FALSE(b[0]->isEqual(b[1]));
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
  const std::vector<TestStyle*> one = scene.chain(50'000), two = other.chain(50'000);
  EXPECT_TRUE(one.back()->isEqual(two.back()));
  two.front()->setValueForProperty(Value(1), size);
  EXPECT_FALSE(one.back()->isEqual(two.back()));

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
  first->p_setValueForProperty(make<Incomparable>(), size);
  firstToo->p_setValueForProperty(Value(1), size);
  EXPECT_THROW(first->isEqual(firstToo), NSGenericException);
  EXPECT_EQ(ZTSStyle::comparisonsInProgress(), 0u);
  EXPECT_TRUE(tops[0]->isEqual(tops[1]));
}

TEST(ComparisonTest, ServesTwoThreadsAtOnce) {
  Scene scenes[2];
  const auto compareMany = [](Scene& scene) {
    const TestStyle* one = &scene.detached({}, {}, {{size, 1}});
    const Ref<NSObject> two = one->copy();
    for (int i = 0; i < 2000; ++i) scene.log.push_back(one->isEqual(two.get()) ? "equal" : "different");
  };
  std::thread thread([&] { compareMany(scenes[0]); });
  compareMany(scenes[1]);
  thread.join();
  for (const Scene& scene : scenes) EXPECT_EQ(scene.log, Log(2000, "equal"));
}

TEST(ComparisonTest, SortsNamelessStylesFirst) {
  const auto compare = [](StringRef left, StringRef right) {
    return make<TestStyle>({.name = left})->compareByName(make<TestStyle>({.name = right}).get());
  };
  EXPECT_EQ(compare({}, ""), 0);
  EXPECT_EQ(compare("", "A"), -1);
  EXPECT_EQ(compare("A", {}), 1);
  EXPECT_EQ(compare("A", "A"), 0);
  EXPECT_EQ(compare("A", "a"), -1) << "by bytes";
  EXPECT_EQ(compare("a", "\xc3\x84"), -1) << "by bytes";
  ZTUAssertionRecorder reports;
  EXPECT_EQ(make<TestStyle>({.name = "A"})->compareByName(nullptr), 1);
  EXPECT_EQ(make<TestStyle>()->compareByName(nullptr), 0);
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
  EXPECT_EQ(base.shortDescription(), "Anonymous unnamed parentless TestStyle " + parent);
  base.p_setIdentifier("base");
  EXPECT_EQ(base.shortDescription(), "TestStyle " + parent + " identified as \"base\"");
  base.p_setName("B");
  EXPECT_EQ(base.shortDescription(), "TestStyle " + parent + " identified as \"base\" and named \"B\"");
}

}  // namespace
}  // namespace zt::testing
