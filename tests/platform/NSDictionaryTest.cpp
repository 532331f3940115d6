// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSDictionary.h>
#include <platform/NSException.h>
#include <platform/NSUserDefaults.h>

namespace zt {
namespace {

Ref<NSObject> text(const char* value) { return NSString::make(value); }

TEST(DictionaryTest, KeepsTheOrderOfTheKeysAndTheLastValueOfEach) {
  const auto dictionary = NSDictionary::make({{"b", text("1")}, {"a", text("2")}, {"b", text("3")}, {"", text("4")}});
  EXPECT_EQ(dictionary->description(), "{b = 3; a = 2;  = 4}");  // an empty key is a key
  EXPECT_EQ(dictionary->count(), 3u);
  EXPECT_EQ(dictionary->objectForKey("c"), nullptr);
  EXPECT_EQ(dictionary->copy(), dictionary);
  EXPECT_THROW(NSDictionary::make(StringRef(), text("1")), NSInvalidArgumentException);
  EXPECT_THROW(NSDictionary::make("a", nullptr), NSInvalidArgumentException);
}

TEST(DictionaryTest, EqualityAndHashIgnoreTheOrderAndNothingElse) {
  const auto one = NSDictionary::make({{"a", text("1")}, {"b", text("2")}});
  const auto same = NSDictionary::make({{"b", text("2")}, {"a", text("1")}});
  EXPECT_TRUE(one->isEqual(same.get()));
  EXPECT_EQ(one->hash(), same->hash());
  for (const auto& other : {NSDictionary::make({}), NSDictionary::make("a", text("1")),
                            NSDictionary::make({{"a", text("2")}, {"b", text("1")}}),
                            NSDictionary::make({{"a", text("1")}, {"c", text("2")}})}) {
    EXPECT_FALSE(one->isEqual(other.get())) << other->description();
    EXPECT_NE(one->hash(), other->hash()) << other->description();
  }
  EXPECT_FALSE(one->isEqual(nullptr));
  EXPECT_FALSE(one->isEqual(text("a").get()));
}

TEST(DictionaryTest, ADeepNestIsReleasedAndOtherwiseRefused) {
  Ref<NSDictionary> deep = NSDictionary::make({}), twin = NSDictionary::make({});
  for (int level = 0; level < 100'000; ++level) {
    deep = NSDictionary::make("x", deep);
    twin = NSDictionary::make("x", twin);
  }
  EXPECT_THROW((void)deep->isEqual(twin.get()), NSInternalInconsistencyException);
  EXPECT_THROW((void)deep->hash(), NSInternalInconsistencyException);
  EXPECT_THROW((void)deep->description(), NSInternalInconsistencyException);
}

TEST(UserDefaultsTest, AnswersFalseUntilASettingIsMade) {
  NSUserDefaults defaults;
  EXPECT_FALSE(defaults.boolForKey("Shortcuts"));
  defaults.setBoolForKey(true, "Shortcuts");
  EXPECT_TRUE(defaults.boolForKey("Shortcuts"));
  defaults.removeObjectForKey("Shortcuts");
  EXPECT_FALSE(defaults.boolForKey("Shortcuts"));
}

}  // namespace
}  // namespace zt
