// SPDX-License-Identifier: MIT
#include <document/styles/FamilyStyles.h>

#include <document/ZTDocument.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

#include <thread>

namespace {

using namespace zt;

const PropertyKey kSize("text.fo.font-size");

Ref<NSObject> read(PropertyKey key, const char* text) {
  return *text == '\0' ? Ref<NSObject>(NSNull::null()) : readValue(propertyRule(key), text);
}

// A chain of styles from the top down, each with a font size; "-" sets nothing, "" explicitly none.
std::string effectiveSize(const std::vector<const char*>& sizes) {
  const Ref<ZTDocument> document = ZTDocument::create();
  std::string parent = "text";
  for (std::size_t level = 0; level < sizes.size(); ++level) {
    const std::string identifier = "text:" + std::to_string(level);
    const auto map = PropertyMap::make();
    if (std::string(sizes[level]) != "-") map->set(kSize, read(kSize, sizes[level]));
    document->stylesheet().addStyle(
        make<TextStyle>({.identifier = identifier, .parentIdentifier = parent, .overridePropertyMap = map.get()}));
    parent = identifier;
  }
  return valueText(document->stylesheet().styleWithIdentifier(parent)->valueForProperty(kSize).get(), true);
}

TEST(OdfStyleTest, EveryKindOfValueReadsWhatItWrites) {
  const std::pair<ValueKinds, const char*> texts[] = {
      {kLength, "0.5cm"}, {kPercentage, "33.3%"}, {kColour, "#0a0b0c"}, {kBoolean, "true"},      {kInteger, "12"},
      {kNumber, "1.5"},   {kText, "any text"},    {kElement, "<a/>"},   {kColour, "transparent"}};
  for (const auto& [bit, text] : texts) {
    const PropertyRule rule{.key = PropertyKey("x.y"), .kinds = bit, .keywords = {}};
    const Ref<NSObject> value = readValue(&rule, text);
    ASSERT_NE(value, nullptr) << text;
    EXPECT_TRUE(takesValue(&rule, *value)) << text;
    EXPECT_EQ(valueText(value.get()), text);
  }
  // The narrowest kind is tried first, and a word of the property's own before all.
  const PropertyRule any{.key = PropertyKey("x.y"), .kinds = kLength | kInteger | kNumber | kText, .keywords = "12pt"};
  const std::pair<const char*, const char*> kinds[] = {
      {"12", "number"}, {"1.5", "number"}, {"1.5pt", "length"}, {"12pt", "text"}, {"true", "text"}};
  for (const auto& [text, kind] : kinds) EXPECT_EQ(valueKind(readValue(&any, text).get()), kind) << text;
}

TEST(OdfStyleTest, SharesOfTheParentAreResolvedOverAnyNumberOfLevels) {
  const std::pair<std::vector<const char*>, const char*> cases[] = {
      {{"12pt"}, "12pt"},
      {{"12pt", "-", "50%"}, "6pt"},
      {{"12pt", "50%", "-", "50%", "-"}, "3pt"},
      {{"10pt", "12pt", "115%"}, "13.8pt"},
      {{"50%", "80%"}, "40%"},       // nobody gives a length
      {{"12pt", "", "50%"}, "50%"},  // explicitly none above
      {{"12pt", "50%", ""}, ""},
      {{"12pt", "33.3333%"}, "4pt"},
      {{"-", "-"}, ""}};
  for (const auto& [sizes, expected] : cases) {
    if (std::string(expected) == "4pt") {
      EXPECT_EQ(effectiveSize(sizes).substr(0, 5), "3.999") << "exact to the unit, not rounded to look nice";
    } else {
      EXPECT_EQ(effectiveSize(sizes), expected) << testing::PrintToString(sizes);
    }
  }
}

TEST(OdfStyleTest, AChainMayBeLongerThanCallsCanNest) {
  const Ref<ZTDocument> document = ZTDocument::create();
  StringRef parent("graphic");
  const PropertyKey opacity = keys::opacity();
  for (int level = 0; level < 12'000; ++level) {
    const StringRef identifier("graphic:" + std::to_string(level));
    const auto map = PropertyMap::make();
    if (level % 1000 == 0) map->set(opacity, read(opacity, level < 11'000 ? "60%" : "30%"));
    document->stylesheet().addStyle(
        makeFamilyStyle(StyleFamily::graphic,
                        {.identifier = identifier, .parentIdentifier = parent, .overridePropertyMap = map.get()}));
    parent = identifier;
  }
  const ZTSStyle& last = *document->stylesheet().styleWithIdentifier(parent);
  const Ref<PropertyMap> all = last.propertyMap();
  ASSERT_TRUE(all);
  ASSERT_NE(last.parent(), nullptr);
  EXPECT_EQ(valueText(all->find(opacity), true), "30%");
  EXPECT_EQ(valueText(all->find(keys::transparency()), true), "70%");
  EXPECT_EQ(valueText(last.valueForProperty(opacity).get(), true), "30%");
}

TEST(OdfStyleTest, ChangesOfABaseReachTheSharesAndCanBeUndone) {
  const Ref<ZTDocument> document = ZTDocument::create();
  ZTSStylesheet& sheet = document->stylesheet();
  const auto half = PropertyMap::with({{kSize, read(kSize, "50%")}});
  sheet.addStyle(
      make<TextStyle>({.identifier = "text:half", .parentIdentifier = "text", .overridePropertyMap = half.get()}));
  ZTSStyle& root = *document->defaults().styleWithIdentifier("text");
  document->undoManager()->performInGroup([&] { root.setValueForProperty(read(kSize, "20pt"), kSize); });
  const ZTSStyle& style = *sheet.styleWithIdentifier("text:half");
  EXPECT_EQ(valueText(style.valueForProperty(kSize).get(), true), "10pt");
  document->undoManager()->undo();
  EXPECT_EQ(valueText(style.valueForProperty(kSize).get(), true), "50%");
}

TEST(OdfStyleTest, TakesOnlyWhatThePropertyIsFor) {
  const Ref<ParagraphStyle> style = make<ParagraphStyle>();
  const auto accepts = [&](const char* key, Ref<NSObject> value) {
    return style->validateValueForProperty(value.get(), key);
  };
  const Ref<NSObject> length = make<LengthValue>(*parseLength("1cm"));
  const Ref<NSObject> share = make<PercentageValue>(*parsePercentage("10%"));
  EXPECT_TRUE(accepts("text.fo.font-size", length));
  EXPECT_TRUE(accepts("text.fo.font-size", share));
  EXPECT_TRUE(accepts("paragraph.fo.padding", length));
  EXPECT_TRUE(accepts("paragraph.fo.padding", {}));
  EXPECT_FALSE(accepts("paragraph.fo.padding", share));
  EXPECT_FALSE(accepts("text.fo.font-size", NSString::make("big")));
  EXPECT_TRUE(accepts("paragraph.fo.text-align", NSString::make("end")));
  for (const char* word : {"en", "nd", "end left", "", " ", "End"})
    EXPECT_FALSE(accepts("paragraph.fo.text-align", NSString::make(word))) << word;
  EXPECT_FALSE(accepts("table.style.width", length)) << "no property of paragraphs";
  EXPECT_TRUE(accepts("style.style.list-style-name", make<ListStyle>()));
  EXPECT_FALSE(accepts("style.style.list-style-name", NSString::make("L1")));
}

TEST(OdfStyleTest, ARegistryGrowsWhileOthersReadIt) {
  const ZTSStyleClass& ruby = familyStyleClass(StyleFamily::ruby);
  const PropertySet& before = ruby.properties();
  EXPECT_FALSE(before.contains("ruby.x.new-0"));
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([&, thread] {
      for (int index = thread; index < 100; index += 4) {
        const PropertyKey key("ruby.x.new-" + std::to_string(index));
        FamilyRegistry::of(StyleFamily::ruby).extend({key});
        EXPECT_TRUE(ruby.isValidProperty(key));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_TRUE(ruby.isValidProperty("ruby.x.new-0"));
  EXPECT_TRUE(ruby.isValidProperty("ruby.x.new-99"));
  EXPECT_FALSE(before.contains("ruby.x.new-0"));
}

}  // namespace
