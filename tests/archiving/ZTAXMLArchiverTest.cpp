#include <archiving/ZTAValueCoder.h>
#include <platform/NSArray.h>
#include <platform/NSColor.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSValue.h>
#include <rapidcheck.h>
#include <tests/archiving/Things.h>

#include <bit>
#include <cmath>

namespace zt::test {

namespace {

Ref<NSObject> readBack(const std::string& bytes) {
  return ZTAXMLUnarchiver::unarchiverForBytes(bytes)->unarchiveRootObject();
}

std::vector<Ref<NSObject>> linksOf(const std::string& bytes) { return asThing(readBack(bytes)).links; }

/// A value of an application's own: a text of digits.
class Dial final : public NSObject {
 public:
  explicit Dial(int setting) : mSetting(setting) {}
  static const ZTClass& dialClass() {
    static const auto* object = new ZTClass("TestDial", &nsObjectClass(), &typeid(Dial));
    return *object;
  }
  const ZTClass& classObject() const override { return dialClass(); }
  static std::string textOf(const NSObject& dial) { return std::to_string(static_cast<const Dial&>(dial).mSetting); }
  static Ref<NSObject> from(std::string_view text) { return text == "7" ? make<Dial>(7) : Ref<Dial>(); }
  bool isEqual(const NSObject* other) const override {
    const auto* dial = dynamic_cast<const Dial*>(other);
    return dial != nullptr && dial->mSetting == mSetting;
  }

 private:
  int mSetting;
};

}  // namespace

TEST(ZTAXMLArchiverTest, WritesTheFormThatIsPromised) {
  auto shared = thing("a \"b\" <c> \n\xc3\xa9");
  shared->links = {shared};
  auto root = box("root", {shared, thing("b", {shared, NSNumber::withReal(2.5)}), shared});
  EXPECT_EQ(archived(*root),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<zt:archive xmlns:zt=\"urn:ztstyles:archive\" zt:version=\"3\">\n"
            "  <zt:object zt:class=\"TestBox\" zt:label=\"root\">\n"
            "    <zt:object zt:class=\"TestThing\" zt:label=\"a &quot;b&quot; &lt;c&gt; &#10;\xc3\xa9\" zt:id=\"1\">\n"
            "      <zt:ref zt:to=\"1\"/>\n"
            "    </zt:object>\n"
            "    <zt:object zt:class=\"TestThing\" zt:label=\"b\">\n"
            "      <zt:ref zt:to=\"1\"/>\n"
            "      <zt:real>2.5</zt:real>\n"
            "    </zt:object>\n"
            "    <zt:ref zt:to=\"1\"/>\n"
            "  </zt:object>\n"
            "</zt:archive>\n");
  EXPECT_EQ(shared->calls, std::vector<std::string>{"before"});
  shared->links.clear();
}

TEST(ZTAXMLArchiverTest, EveryKindOfValueComesBackAsItWas) {
  ztaxmlRegisterTextCoding(Dial::dialClass(), "dial", Dial::textOf, Dial::from);
  std::vector<Ref<NSObject>> values = {
      NSNull::null(),
      NSNumber::withBool(true),
      NSNumber::withBool(false),
      NSNumber::withInteger(std::numeric_limits<std::int64_t>::min()),
      NSNumber::withInteger(7),
      NSString::make(""),
      NSString::make("  "),
      NSString::make(" \r\n\t]]> & &amp; <x/> \xf0\x9f\x98\x80"),
      NSColor::withComponents(1, 2, 3),
      NSColor::withComponents(255, 254, 0, 9),
      make<Dial>(7),
      NSArray::withObjects({}),
      NSArray::withObjects({NSArray::withObjects({NSNull::null()}), NSString::make("x")})};
  for (double real : {0.1, -0.0, 1e300, 5e-324, 2.0, double(INFINITY), double(-INFINITY), double(NAN)})
    values.push_back(NSNumber::withReal(real));
  for (ZTACompression compression : {ZTACompression::none, ZTACompression::gzip}) {
    const std::vector<Ref<NSObject>> read = linksOf(archived(*box("values", values), compression));
    ASSERT_EQ(read.size(), values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
      EXPECT_TRUE(read[index]->isEqual(values[index].get()))
          << values[index]->description() << " " << read[index]->description();
      const NSNumber* number = NSNumber::from(values[index].get());
      if (number == nullptr) continue;
      EXPECT_EQ(number->isReal(), NSNumber::from(read[index].get())->isReal());
      EXPECT_EQ(std::signbit(number->realValue()), std::signbit(NSNumber::from(read[index].get())->realValue()));
    }
  }
  rc::check("reals keep every bit", [](std::uint64_t bits) {
    const double real = std::bit_cast<double>(bits);
    auto number = NSNumber::withReal(real);
    const std::vector<Ref<NSObject>> read = linksOf(archived(*box("", {number})));
    RC_ASSERT(std::isnan(real) || std::bit_cast<std::uint64_t>(NSNumber::from(read.at(0).get())->realValue()) == bits);
  });
}

TEST(ZTAXMLArchiverTest, ReferencesLeadForwardInCirclesAndToWhatNobodyOwns) {
  auto homeless = thing("homeless");
  auto a = thing("a");
  auto b = thing("b", {a, homeless});
  a->links = {b, a, NSArray::withObjects({homeless})};
  homeless->links = {a};
  const std::string bytes = archived(*box("root", {a, b}));
  const auto read = linksOf(bytes);
  ASSERT_EQ(read.size(), 2u);
  Thing& readA = asThing(read[0]);
  Thing& readB = asThing(read[1]);
  EXPECT_EQ(readA.label + readB.label, "ab");
  EXPECT_EQ(readA.links[0], read[1]);
  EXPECT_EQ(readA.links[1], read[0]);
  EXPECT_EQ(readB.links[0], read[0]);
  EXPECT_EQ(asThing(readB.links[1]).label, "homeless");
  EXPECT_EQ(NSArray::from(readA.links[2].get())->objectAtIndex(0), readB.links[1].get());
  for (Thing* each : {a.get(), homeless.get(), &readA, &asThing(readB.links[1])}) each->links.clear();
}

TEST(ZTAXMLArchiverTest, AChainOfAHundredThousandReferencesIsWrittenAndReadInALoop) {
  constexpr int kLength = 100'000;
  std::vector<Ref<NSObject>> all;
  for (int index = 0; index < kLength; ++index) {
    all.push_back(index == 0 ? thing("0") : thing(std::to_string(index), {all.back()}));
  }
  std::reverse(all.begin(), all.end());  // every reference leads forward
  const auto read = linksOf(archived(*box("", all)));
  ASSERT_EQ(read.size(), all.size());
  for (int index = 0; index + 1 < kLength; ++index) ASSERT_EQ(asThing(read[index]).links.at(0), read[index + 1]);
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
    ASSERT_EQ(read.size(), label == "twin" ? 2u : 1u) << label;
    Thing& b = asThing(read.back());
    EXPECT_EQ(b.label, "b");
    if (label == "twin") {
      EXPECT_EQ(asThing(read[0]).label, "the other twin");
      EXPECT_EQ(b.links, std::vector<Ref<NSObject>>{read[0]});
    } else {
      EXPECT_TRUE(b.links.empty());
    }
  }
}

TEST(ZTAXMLArchiverTest, SubstitutesAreWrittenInPlaceOfObjects) {
  auto original = thing("original");
  auto substitute = thing("substitute", {original});
  auto archiver = make<ZTAXMLArchiver>(1, 2);
  archiver->setEncoderForObject(substitute, original);
  EXPECT_EQ(archiver->encoderForObject(original.get()), substitute.get());
  archiver->setMetadataForKey(original, "key");
  EXPECT_EQ(archiver->metadataForKey("key"), original.get());
  EXPECT_EQ(archiver->metadataForKey("another"), nullptr);
  auto root = box("root", {original});
  archiver->encodeRootObject(*root);
  EXPECT_EQ(root->calls.front(), "downgrade to 1");
  auto read = readBack(archiver->bytes());
  Thing& kept = asThing(asThing(read).links.at(0));
  EXPECT_EQ(kept.label, "substitute");
  EXPECT_EQ(kept.links.at(0).get(), &kept);
  EXPECT_EQ(asThing(read).calls, std::vector<std::string>{"upgrade from 1"});
  kept.links.clear();
  archiver->removeEncoderForObject(original.get());
  EXPECT_EQ(archiver->encoderForObject(original.get()), nullptr);
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

TEST(ZTAXMLArchiverTest, BooleansAndScopesReadAsTheyWereSet) {
  xmlNode* node = xmlNewNode(nullptr, reinterpret_cast<const xmlChar*>("x"));
  EXPECT_TRUE(ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "flag", true));
  for (bool value : {true, false}) {
    ztaxmlSetBoolNsPropDefaultOrRaise(node, CorvaleNamespace, "flag", value, value);
    EXPECT_EQ(ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "flag", !value), value);
  }
  EXPECT_FALSE(ztaxmlOkToSkipNode(node));
  ztaxmlSetBoolNsPropDefaultOrRaise(node, CorvaleNamespace, "optional", true, false);
  EXPECT_TRUE(ztaxmlOkToSkipNode(node));
  xmlFreeNode(node);
  {
    const ZTADiffableXmlScope outer;
    const ZTADiffableXmlScope inner(false);
    EXPECT_FALSE(ztaShouldGenerateDiffableXml());
  }
  EXPECT_FALSE(ztaShouldGenerateDiffableXml());
}

}  // namespace zt::test
