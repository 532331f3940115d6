// SPDX-License-Identifier: MIT
#include <platform/NSNumber.h>
#include <platform/ZTFormat.h>
#include <tests/Files.h>
#include <tests/archiving/Things.h>

namespace zt::test {

namespace {

std::string readError(const std::string& bytes, ZTAUnarchiverOptions options = {}) {
  options.fileName = "f";
  return errorOf([&] { ZTAXMLUnarchiver::unarchiverForBytes(bytes, options)->unarchiveRootObject(); });
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int index = 0; index < count; ++index) all += text;
  return all;
}

/// Elements named "pin" need no other word of their class.
class Pin final : public Thing {
 public:
  static const ZTClass& pinClass() {
    static const auto* object = new ZTClassOf<Pin>("TestPin", thingClass());
    return *object;
  }
  const ZTClass& classObject() const override { return pinClass(); }
};

const std::string kOpen = "<zt:object zt:class='TestBox' zt:label='root'>";

}  // namespace

TEST(ZTAXMLUnarchiverTest, WhatIsNoArchiveIsOneErrorWithItsLine) {
  const std::string good = archive(kOpen + "</zt:object>");
  const std::string packed = archived(*box("x"), ZTACompression::gzip);
  const std::string root = "<zt:archive xmlns:zt='urn:ztstyles:archive'";
  const struct {
    std::string bytes;
    const char* error;
  } cases[] = {
      {"", "f: the file is empty"},
      {"\x01\x02\x03 random", "f:1: this is no good XML: Start tag expected, '<' not found"},
      {good.substr(0, good.size() - 20), "f:2: "},
      {"<a/>", "f:1: expected the root element 'archive' of the namespace 'urn:ztstyles:archive', found 'a'"},
      {"<zt:archive xmlns:zt='urn:other' zt:version='3'/>", "f:1: expected the root element 'archive'"},
      {"<zt:archive zt:version='3'/>", "f:1: this is no good XML: Namespace prefix zt"},
      {root + "/>", "f:1: expected a version number in the archive's 'version', found ''"},
      {root + " zt:version='18446744073709551616'/>", "f:1: expected a version number in the archive's 'version'"},
      {root + " zt:version='9'/>", "f:1: expected an archive of version 1 to 3, found version 9"},
      {archive(""), "f:1: expected an object in the archive, found none"},
      {archive("\n<zt:object zt:class='NoSuch'/>"),
       "f:3: the archive's object cannot be made: no class is named 'NoSuch'"},
      {archive("<zt:object zt:class='NSObject'/>"),
       "f:2: the archive's object cannot be made: objects of the class 'NSObject' cannot be read"},
      {archive("<zt:ref zt:to='1' zt:id='1'/>"),
       "f:2: the archive's object cannot be made: refers to '1', which is itself a reference"},
      {archive("<zt:string>\xff\xfe</zt:string>"), "f:2: this is no good XML: Input is not proper UTF-8"},
      {archive(repeated("<zt:list>", 100'000)), "f:2: elements nest deeper than 200 levels"},
      {"<!DOCTYPE a [<!ENTITY x 'y'>]>" + good, "f:1: a document type (DOCTYPE) has no place in an archive"},
      {"<!DOCTYPE a SYSTEM 'http://127.0.0.1:9/a.dtd'>" + good, "f:1: a document type (DOCTYPE) has no place in an"},
      {archive("<zt:string>&x;</zt:string>"), "f:2: this is no good XML: Entity 'x' not defined"},
      {"<?xml version='1.0' encoding='no-such'?>" + good, "f:1: this is no good XML: Unsupported encoding no-such"},
      {"<?xml version='1.0' encoding='EUC-JP'?><a>" + std::string(5'000, ' ') + "\xdf\xff\xff\xff</a>",
       "f:1: this is no good XML: Premature end"},
      {good + good, "f:2: this is no good XML: Extra content at the end of the document"},
      {packed.substr(0, 60), "f: the compressed file is broken or cut off"},
      {packed + "x", "f: something follows the end of the compressed file"},
      {std::string("\x1f\x8b", 2), "f: the compressed file is broken or cut off"},
  };
  ::testing::internal::CaptureStderr();
  for (const auto& each : cases) {
    const std::string error = readError(each.bytes, {.newestVersion = 3});
    EXPECT_EQ(error.substr(0, std::string(each.error).size()), each.error) << error;
    EXPECT_EQ(error.find('\n'), std::string::npos) << error;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << "libxml2 is silent";
  EXPECT_FALSE(ZTAXMLUnarchiver::looksLikeArchive("<a/>"));
  EXPECT_TRUE(ZTAXMLUnarchiver::looksLikeArchive(good));
  EXPECT_TRUE(ZTAXMLUnarchiver::looksLikeArchive(packed));
}

TEST(ZTAXMLUnarchiverTest, WhatCannotBeReadIsPassedOverAndSaid) {
  auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(
      archive(
          kOpen +
          "\n<zt:integer>12x</zt:integer>\n<zt:real>1,5</zt:real>\n<zt:boolean>YES</zt:boolean>\n"
          "<zt:color>#12</zt:color>\n<zt:string>a<zt:null/></zt:string>\n<zt:unheard/>\n<other xmlns='urn:x'/>\n"
          "<zt:integer>99999999999999999999</zt:integer>\n<zt:list zt:id='1'><zt:ref zt:to='1'/><zt:null/></zt:list>\n"
          "<zt:object zt:class='TestThing' zt:label='t'>\n<zt:ref zt:to='nowhere'/></zt:object>\n"
          "<zt:integer zt:id='1'>5</zt:integer>stray text<!-- remark --><?do this?>\n</zt:object><zt:string/>"),
      {.fileName = "f"});
  Ref<NSObject> root = unarchiver->unarchiveRootObject();
  EXPECT_EQ(descriptions(unarchiver->findings()),
            (std::vector<std::string>{
                "f:14: the id '1' has been given before; the first element keeps it",
                "f:15: expected the end of the archive, found 'string'", "f:3: in root: '12x' is no integer",
                "f:4: in root: '1,5' is no real", "f:5: in root: 'YES' is no boolean",
                "f:6: in root: '#12' is no color", "f:7: in root: expected a text in 'string', found elements",
                "f:8: in root: expected an object or a value, found 'unheard'",
                "f:9: in root: expected an element of the namespace 'urn:ztstyles:archive', found 'other'",
                "f:10: in root: '99999999999999999999' is no integer",
                "f:11: in root: refers to an object that could not be read",
                "f:13: in t: refers to 'nowhere', and no element has this id"}));
  std::string kept;
  for (const Ref<NSObject>& link : asThing(root).links) kept += link->description() + ";";
  EXPECT_EQ(kept.substr(0, 10), ";(<null>);");
  EXPECT_EQ(asThing(root).links.size(), 4u);
  EXPECT_EQ(unarchiver->findingCount(), 12u);
}

TEST(ZTAXMLUnarchiverTest, LimitsEndTheReadingAndAreNamed) {
  ZTAArchiveLimits limits;
  limits.bytes = 2'000'000;
  limits.treeBytes = 1'000'000;
  limits.text = 1000;
  const auto expectError = [&](const std::string& bytes, const char* error) {
    EXPECT_EQ(readError(bytes, {.limits = limits}), error);
  };
  const std::string packed = archived(*box("x", {NSString::make(std::string(9'000'000, 'x'))}), ZTACompression::gzip);
  const std::string longText(1001, 'x');
  expectError(std::string(2'000'001, ' '), "f: the archive is longer than the 2000000 bytes that are read");
  expectError(packed, "f: the compressed file holds more than the 2000000 bytes that are read");
  expectError(archive(repeated("<zt:null/>", 100'000)),
              "f:2: the archive's tree is larger than the 1000000 bytes that are used");
  expectError(archive("<zt:string>" + longText), "f:2: a text is longer than the 1000 bytes that are read");
  expectError(archive("<zt:string zt:a='" + longText + "'/>"),
              "f:2: an attribute is longer than the 1000 bytes that are read");
  EXPECT_NE(readError(archive("<zt:string zt:a='" + std::string(11'000'000, 'x') + "'/>")), "");
  limits.findings = 3;
  auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(archive(kOpen + repeated("<zt:real/>", 50) + "</zt:object>"),
                                                         {.limits = limits});
  unarchiver->unarchiveRootObject();
  EXPECT_EQ(unarchiver->findings().size(), 3u);
  EXPECT_EQ(unarchiver->findingCount(), 50u);
}

TEST(ZTAXMLUnarchiverTest, ReferencesDoNotNestReadingWithoutBound) {
  // Lists and boxes that reach one another through references only: nothing in the file is deep.
  const int length = kIsSanitized ? 5'000 : 30'000;
  for (const auto& [open, close] :
       {std::pair{"<zt:list", "</zt:list>"}, {"<zt:object zt:class='TestBox'", "</zt:object>"}}) {
    std::string inside = kOpen + "<zt:ref zt:to='0'/></zt:object><zt:objects>";
    for (int index = 0; index < length; ++index)
      inside += format("%s zt:id='%d'><zt:ref zt:to='%d'/>%s", open, index, index + 1, close);
    EXPECT_THAT(readError(archive(inside + "</zt:objects>")),
                testing::EndsWith(": objects nest deeper than 200 levels"));
  }
  // Chains of references do not nest at all.
  ztaxmlRegisterClassNamePair(Pin::pinClass(), "pin");
  std::string chain = kOpen;
  for (int index = 0; index < length; ++index)
    chain += format("<zt:pin zt:id='%d' zt:label=' \"&#10;'><zt:ref zt:to='%d'/></zt:pin>", index, index + 1);
  chain = archive(chain + format("<zt:pin zt:id='%d'/></zt:object>", length));
  for (int round = 0; round < 2; ++round) {
    const Ref<NSObject> root = ZTAXMLUnarchiver::unarchiverForBytes(chain)->unarchiveRootObject();
    const auto& links = asThing(root).links;
    ASSERT_EQ(links.size(), static_cast<std::size_t>(length) + 1);
    for (int index = 0; index < length; ++index) ASSERT_EQ(asThing(links[index]).links.at(0), links[index + 1]);
    EXPECT_EQ(asThing(links[0]).label, " \"\n");
    chain = archived(*root);
  }
}

TEST(ZTAXMLUnarchiverTest, NamesAreLookedUpForDisplay) {
  const auto localize = [](std::string_view key) { return key == "STYLE_a" ? StringRef("A") : StringRef(); };
  auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(archive(kOpen + "</zt:object>"), {.localize = localize});
  EXPECT_EQ(unarchiver->localizedStringForKey("a", "STYLE_"), "A");
  EXPECT_EQ(unarchiver->localizedStringForKey("b", "STYLE_"), "b");
  EXPECT_EQ(unarchiver->sharedString("x").object(), unarchiver->sharedString("x").object());
}

TEST(ZTAXMLUnarchiverTest, AClassStandsInForOneThatIsUnknown) {
  auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(
      archive(std::string(70'000, '\n') + "<zt:object zt:class='NoSuch' zt:ancestor='TestBox'><zt:real/></zt:object>"));
  EXPECT_EQ(&unarchiver->unarchiveRootObject()->classObject(), &Box::boxClass());
  EXPECT_EQ(descriptions(unarchiver->findings()),
            (std::vector<std::string>{
                "line 70002: no class is named 'NoSuch'; 'TestBox', which it is derived from, stands in for it",
                "line 70002: in : '' is no real"}))
      << "a line beyond what a node can hold";
  EXPECT_EQ(unarchiver->createObjectFromNode(nullptr), nullptr);
}

}  // namespace zt::test
