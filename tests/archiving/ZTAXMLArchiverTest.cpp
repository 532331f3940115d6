// SPDX-License-Identifier: MIT
#include <archiving/ZTAValueCoder.h>
#include <archiving/ZTAXMLNodesInternal.h>
#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSValue.h>
#include <tests/AllocationFailures.h>
#include <tests/Files.h>
#include <tests/archiving/Things.h>

#include <bit>
#include <cmath>
#include <random>

namespace zt::test {

namespace {

std::vector<Ref<NSObject>> linksOf(const std::string& bytes) {
  return asThing(ZTAXMLUnarchiver::unarchiverForBytes(bytes)->unarchiveRootObject()).links;
}

/// A value of an application's own: all that there are, are alike.
class Dial final : public NSObject {
 public:
  static const ZTClass& dialClass() {
    static const auto* object = new ZTClass("TestDial", &nsObjectClass(), &typeid(Dial));
    return *object;
  }
  const ZTClass& classObject() const override { return dialClass(); }
  bool isEqual(const NSObject* other) const override { return dynamic_cast<const Dial*>(other) != nullptr; }
};

/// An object with a name of a property for each key.
class Sheet final : public Thing {
 public:
  std::vector<PropertyKey> keys;

  static const ZTClass& sheetClass() {
    static const auto* object = new ZTClassOf<Sheet>("TestSheet", thingClass());
    return *object;
  }
  const ZTClass& classObject() const override { return sheetClass(); }
  void encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) override {
    Thing::encodeWithXMLArchiver(archiver, node, version);
    for (PropertyKey key : keys) (void)archiver.newNodeForPropertyKey(node, key);
  }
  bool initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t) override {
    label = xml::attribute(node, "label");
    for (const xmlNode* each = xml::firstElement(node); each != nullptr; each = xml::nextElement(each))
      keys.push_back(unarchiver.propertyKeyForNode(each));
    return true;
  }
};

}  // namespace

TEST(ZTAXMLArchiverTest, EveryKindOfValueComesBackAsItWas) {
  ztaxmlRegisterTextCoding(
      Dial::dialClass(), "dial", [](const NSObject&) { return std::string("7"); },
      [](std::string_view text) -> Ref<NSObject> { return text == "7" ? make<Dial>() : Ref<Dial>(); });
  std::vector<Ref<NSObject>> values = {NSNull::null(), make<Dial>(), NSArray::withObjects({})};
  for (bool boolean : {true, false}) values.push_back(NSNumber::withBool(boolean));
  for (std::int64_t integer : {std::numeric_limits<std::int64_t>::min(), std::int64_t{7}})
    values.push_back(NSNumber::withInteger(integer));
  for (const char* text : {"", "  ", "\"' \r\n\t]]> & &amp; <x/> \xf0\x9f\x98\x80"})
    values.push_back(NSString::make(text));
  for (int alpha : {255, 9}) values.push_back(NSColor::withComponents(1, 254, 0, static_cast<std::uint8_t>(alpha)));
  values.push_back(NSArray::withObjects({NSArray::withObjects({NSNull::null()}), NSString::make("x")}));
  for (double real : {0.1, -0.0, 2.0, double(INFINITY), double(-INFINITY), double(NAN)})
    values.push_back(NSNumber::withReal(real));
  for (ZTACompression compression : {ZTACompression::none, ZTACompression::gzip}) {
    const std::vector<Ref<NSObject>> read = linksOf(archived(*box("values", values), compression));
    ASSERT_EQ(read.size(), values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
      EXPECT_TRUE(read[index]->isEqual(values[index].get())) << index;
      const NSNumber* number = NSNumber::from(values[index].get());
      if (number == nullptr) continue;
      EXPECT_EQ(number->isReal(), NSNumber::from(read[index].get())->isReal());
      EXPECT_EQ(number->description(), read[index]->description());
    }
  }
  std::mt19937_64 random(5);
  std::vector<Ref<NSObject>> reals;
  while (reals.size() < 1000) {
    const double real = std::bit_cast<double>(random());
    if (!std::isnan(real)) reals.push_back(NSNumber::withReal(real));
  }
  const std::vector<Ref<NSObject>> read = linksOf(archived(*box("", reals)));
  const auto bits = [](const Ref<NSObject>& real) {
    return std::bit_cast<std::uint64_t>(NSNumber::from(real.get())->realValue());
  };
  for (std::size_t index = 0; index < reals.size(); ++index) EXPECT_EQ(bits(read.at(index)), bits(reals[index]));
}

TEST(ZTAXMLArchiverTest, ReferencesLeadForwardInCirclesAndToWhatNobodyOwns) {
  auto homeless = thing("homeless");
  auto a = thing("a");
  auto b = thing("b", {a, homeless});
  a->links = {b, a, NSArray::withObjects({homeless})};
  homeless->links = {a};
  const auto read = linksOf(archived(*box("root", {a, b})));
  ASSERT_EQ(read.size(), 2u);
  Thing& readA = asThing(read[0]);
  Thing& readB = asThing(read[1]);
  EXPECT_EQ(readA.label + readB.label + asThing(readB.links[1]).label, "abhomeless");
  EXPECT_EQ(readA.links[0], read[1]);
  EXPECT_EQ(readA.links[1], read[0]);
  EXPECT_EQ(readB.links[0], read[0]);
  EXPECT_EQ(NSArray::from(readA.links[2].get())->objectAtIndex(0), readB.links[1].get());
  for (Thing* each : {a.get(), homeless.get(), &readA, &asThing(readB.links[1])}) each->links.clear();
}

TEST(ZTAXMLArchiverTest, ObjectsThatAnswerAnotherOrNoneLeaveNoReferenceBehind) {
  const std::string inside =
      "<zt:object zt:class='TestBox' zt:label='root'>"
      "<zt:object zt:id='1' zt:class='TestThing' zt:label='LABEL'><zt:ref zt:to='2'/><zt:ref zt:to='1'/></zt:object>"
      "<zt:object zt:id='2' zt:class='TestThing' zt:label='b'><zt:ref zt:to='1'/></zt:object></zt:object>";
  for (const std::string label : {"twin", "none", "refused"}) {
    std::string text = inside;
    text.replace(text.find("LABEL"), 5, label);
    const auto read = linksOf(archive(text));
    const bool isTwin = label == "twin";
    ASSERT_EQ(read.size(), isTwin ? 2u : 1u) << label;
    EXPECT_EQ(asThing(read[0]).label, isTwin ? "the other twin" : "b");
    EXPECT_EQ(asThing(read.back()).links, isTwin ? std::vector{read[0]} : std::vector<Ref<NSObject>>());
  }
}

TEST(ZTAXMLArchiverTest, WhatCannotBeWrittenIsRefusedAndNamesTheObject) {
  Ref<NSObject> deep = NSArray::withObjects({});
  for (int level = 0; level < 100'000; ++level) deep = NSArray::withObjects({deep});
  const auto expectRefused = [](const std::string& label, Ref<NSObject> link, const std::string& message) {
    EXPECT_EQ(errorOf([&] { archived(*box("root", {thing(label, {link})})); }), "in " + label + ": " + message);
  };
  const std::string noUtf8 = "cannot be written: it is no UTF-8, or holds a character that XML cannot hold";
  const std::string control = "cannot be written: XML cannot hold a control character in it";
  expectRefused("a\x01", {}, "the text of 'label' " + control);
  expectRefused("a\xff", {}, "the text of 'label' " + noUtf8);
  expectRefused("s", NSString::make("\xed\xa0\x80"), "the text of a 'string' element " + noUtf8);
  expectRefused("z", NSString::make(std::string_view("a\0b", 3)), "the text of a 'string' element " + control);
  expectRefused("v", NSValue::withPointer(nullptr), "objects of the class 'NSValue' cannot be written");
  expectRefused("deep", deep, "elements would nest deeper than 200 levels");
  xmlNode* node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("x"));
  for (const char* name : {"", "a b", "1a", "a:b", "\xff", "a\n"}) {
    EXPECT_NE(errorOf([&] { ztaxmlNewNsChildNodeOrRaise(node, CorvaleNamespace, name); }), "");
    EXPECT_NE(errorOf([&] { make<ZTAXMLArchiver>()->encodeObjectWithName(nullptr, node, name, CorvaleNamespace); }),
              "");
  }
  EXPECT_EQ(node->children, nullptr);
  xmlFreeNode(node);
  EXPECT_NE(errorOf([] { ztaxmlRegisterClassNamePair(Box::boxClass(), "string"); }), "");
}

TEST(ZTAXMLArchiverTest, WhatIsWithinTheLimitsIsReadAndNothingElseIsWritten) {
  const auto sheet = make<Sheet>();
  const auto written = [&](const ZTAArchiveLimits& limits = {}) {
    auto archiver = make<ZTAXMLArchiver>(3);
    archiver->setLimits(limits);
    archiver->encodeRootObject(*sheet);
    return archiver->bytes();
  };
  const auto read = [&](const std::string& bytes, const ZTAArchiveLimits& limits = {}) {
    return ZTAXMLUnarchiver::unarchiverForBytes(bytes, {.limits = limits})->unarchiveRootObject();
  };
  // Both sides draw the line at the same place.
  const auto expectLimit = [&](std::size_t ZTAArchiveLimits::*limit, std::size_t most) {
    const std::string bytes = written();
    ZTAArchiveLimits limits;
    limits.*limit = most;
    EXPECT_NO_THROW(written(limits)) << most;
    EXPECT_NO_THROW(read(bytes, limits)) << most;
    limits.*limit = most - 1;
    EXPECT_THROW(written(limits), ZTAArchiveException) << most;
    EXPECT_THROW(read(bytes, limits), ZTAArchiveException) << most;
  };
  sheet->label = std::string(1234, '&');
  sheet->keys = {"a", "b", std::string(ZTAArchiveLimits::name, 'n'), "a"};
  expectLimit(&ZTAArchiveLimits::propertyNames, 3);
  expectLimit(&ZTAArchiveLimits::bytes, written().size());
  const std::string bytes = written();
  ZTAArchiveLimits tree{.treeBytes = 0};
  for (std::size_t step = 1 << 20; step != 0; step /= 2) {
    tree.treeBytes += step;
    try {
      read(bytes, tree);
      tree.treeBytes -= step;
    } catch (const ZTAArchiveException&) {
    }
  }
  expectLimit(&ZTAArchiveLimits::treeBytes, tree.treeBytes + 1);

  // A start tag of more than the ten million bytes where libxml2 stops by itself, for the escapes alone.
  sheet->label = std::string(4'000'000, '"');
  const Ref<NSObject> again = read(written());
  EXPECT_EQ(asThing(again).label, sheet->label);
  EXPECT_EQ(dynamic_cast<Sheet&>(*again).keys, sheet->keys);

  sheet->label.clear();
  sheet->keys = {std::string(ZTAArchiveLimits::name + 1, 'n')};
  EXPECT_THAT(errorOf([&] { written(); }), testing::EndsWith("': the name is longer than 50000 bytes"));
  for (const std::string& element : {"<zt:" + std::string(50'001, 'n'), "<zt:null " + std::string(50'001, 'n') + "=''"})
    EXPECT_EQ(errorOf([&] { read(archive(element + "/>")); }),
              "line 2: a name is longer than the 50000 bytes that are read");
}

TEST(ZTAXMLArchiverTest, AnArchiveThatWasNotWrittenToItsEndHasNoBytes) {
  auto archiver = make<ZTAXMLArchiver>();
  auto bad = thing(std::string("zero\0", 5));
  EXPECT_THROW(archiver->encodeRootObject(*box("root", {thing("good"), bad})), ZTAArchiveException);
  EXPECT_THROW(static_cast<void>(archiver->bytes()), ZTAArchiveException);
  EXPECT_THROW(archiver->writeToFile("/nowhere/at-all"), ZTAArchiveException);
}

TEST(ZTAXMLArchiverTest, LetsGoOfWhatItHoldsWithoutMemory) {
  // Nobody else holds the substitutes, the homeless and what was read.
  auto root = box("root", {thing("a", {thing("homeless")}), thing("b")});
  auto archiver = make<ZTAXMLArchiver>();
  for (int index = 0; index < 20; ++index) archiver->setEncoderForObject(thing("instead"), thing("unused"));
  archiver->encodeRootObject(*root);
  auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(archiver->bytes());
  Ref<NSObject> read = unarchiver->unarchiveRootObject();
  const zt::test::FailingAllocations none;
  archiver.reset();
  unarchiver.reset();
}

TEST(ZTAXMLUnarchiverMemoryTest, ReadingThatRunsOutOfMemoryLeaksNothing) {
  if (kIsSanitized) GTEST_SKIP() << "the parser loses texts of its own where its memory runs out";
  std::vector<Ref<NSObject>> links;
  for (int index = 0; index < 150; ++index) links.push_back(thing("a label that is longer than a short text"));
  const std::string bytes = archived(*box("root", links));
  const auto read = [&] { return ZTAXMLUnarchiver::unarchiverForBytes(bytes)->unarchiveRootObject(); };
  read();  // what is made once and kept
  std::uint64_t good = 0;
  for (bool failed = true; failed; good += good < 40 ? 1 : 97) {
    const std::int64_t before = zt::test::liveAllocations();
    {
      const zt::test::FailingAllocations later(good);
      try {
        read();
      } catch (const std::bad_alloc&) {
      } catch (const ZTAArchiveException&) {
      }
      failed = later.hasFailed();
    }
    EXPECT_EQ(zt::test::liveAllocations(), before) << "after " << good << " allocations";
  }
  EXPECT_GT(good, 100u);
}

TEST(ZTAXMLArchiverTest, BooleansReadAsTheyWereWrittenAndScopesEnd) {
  xmlNode* node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("x"));
  EXPECT_TRUE(ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "flag", true));
  for (bool value : {true, false}) {
    ztaxmlSetBoolNsPropDefaultOrRaise(node, CorvaleNamespace, "flag", value, value);
    EXPECT_EQ(ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "flag", !value), value);
  }
  xmlFreeNode(node);
  {
    const ZTADiffableXmlScope outer;
    const ZTADiffableXmlScope inner(false);
    EXPECT_FALSE(ztaShouldGenerateDiffableXml());
  }
  EXPECT_FALSE(ztaShouldGenerateDiffableXml());
}

}  // namespace zt::test
