// SPDX-License-Identifier: MIT
#include <tests/ztstyles/Scene.h>

namespace zt::testing {
namespace {

using ::testing::ElementsAre;

struct Heading : ZTSStyleOf<Heading, TestStyle> {
  static constexpr const char* kClassName = "Heading";
  static Ref<const PropertySet> classKeys() { return PropertySet::with({size}); }
  struct Class : ZTSStyleClassOf<Heading> {
    using ZTSStyleClassOf::ZTSStyleClassOf;
    StringRef localizationKeyPrefix() const override { return "HEADING_"; }
  };
};
struct Subheading : ZTSStyleOf<Subheading, Heading> {
  static constexpr const char* kClassName = "Subheading";
};

TEST(StyleClassTest, GivesAClassItsNameItsKeysAndItsPlaceAmongTheClasses) {
  const ZTSStyleClass& sub = Subheading::styleClass();
  EXPECT_EQ(ZTClass::named("Subheading"), &sub);
  EXPECT_EQ(sub.base(), &Heading::styleClass());
  EXPECT_EQ(Heading::styleClass().base(), &TestStyle::styleClass());
  EXPECT_TRUE(sub.properties().isEqual(*PropertySet::with({size}))) << "its base's";
  EXPECT_EQ(Heading::styleClass().localizationKeyPrefix().view(), "HEADING_");
  EXPECT_EQ(sub.localizationKeyPrefix().view(), "STYLE_") << "a base's class object makes styles of the base";
  const Ref<NSObject> copy = make<Subheading>()->copy();
  EXPECT_EQ(&copy->classObject(), &sub);
  EXPECT_NE(dynamic_cast<Subheading*>(copy.get()), nullptr);
}

struct NoStyleClass : Heading {};
struct NoClassObject : Heading {
  static const ZTSStyleClass& styleClass() {
    static const auto* object = new ZTSStyleClassOf<NoClassObject>("NoClassObject", Heading::styleClass());
    return *object;
  }
};

TEST(StyleClassTest, RefusesAClassThatWouldPassForItsBase) {
  ZTUAssertionRecorder reports;
  EXPECT_EQ(make<NoStyleClass>(), nullptr);
  EXPECT_EQ(make<NoClassObject>(), nullptr);
  EXPECT_EQ(NoClassObject::styleClass().allocate(), nullptr) << "nor from an archive";
  constexpr const char* noClassObject =
      "The style class NoClassObject has no classObject() of its own: its styles say that they are of class Heading.";
  EXPECT_THAT(reports.descriptions(),
              ElementsAre(::testing::AllOf(::testing::HasSubstr("NoStyleClass has no styleClass() of its own"),
                                           ::testing::HasSubstr("makes styles of class Heading.")),
                          noClassObject, noClassObject));
}

// ---- What the compiler finds

template <class Self, class Base>
struct Named : ZTSStyleOf<Self, Base> {
  static constexpr const char* kClassName = "Named";
};
struct Reads : Named<Reads, TestStyle> {
  bool definesProperty(PropertyKey key) const override { return TestStyle::definesProperty(key); }
};
struct Shows : Named<Shows, TestStyle> {
  Ref<const PropertyMap> overridePropertyMap() const override { return TestStyle::overridePropertyMap(); }
};
struct Counts : Named<Counts, TestStyle> {
  void decrementOrphanCount() override { TestStyle::decrementOrphanCount(); }
};
struct Resolves : Named<Resolves, TestStyle> {
  void updateParent() override { TestStyle::updateParent(); }
};
struct Compares : Named<Compares, TestStyle> {
  bool isEqual(const NSObject* other) const override { return TestStyle::isEqual(other); }
};
struct BelowCompares : Named<BelowCompares, Compares> {};
struct StandsIn : Named<StandsIn, TestAggregate> {
  Ref<NSObject> defaultValueForNilStyleProperty(PropertyKey) const override { return {}; }
};
struct CountsReferences : Named<CountsReferences, TestAggregate> {
  void incrementUsageCount() override { TestAggregate::incrementUsageCount(); }
};
struct DerivesNothing : Named<DerivesNothing, ZTSDerivingStyle> {};
struct Derives : Named<Derives, ZTSDerivingStyle> {
  bool isSourceProperty(PropertyKey) const override { return false; }
};
/// Its overload hides the operation: what it would answer is not known.
struct Hides : Named<Hides, TestStyle> {
  using TestStyle::updateParent;
  void updateParent(int) {}
};

TEST(StyleClassTest, KnowsWhichOperationsAClassLeavesAlone) {
  using Class = ZTSStyleClass;
  constexpr int all = 255;
  constexpr int aggregate = all - Class::plainCounting;
  // What a deriving style shows differs as soon as it derives something; how it looks values up differs always.
  constexpr int deriving = Class::plainResolving | Class::plainComparing | Class::libraryCounting;
  const std::pair<const ZTSStyleClass*, int> expected[] = {
      {&TestStyle::styleClass(), all},
      {&Subheading::styleClass(), all},
      {&Reads::styleClass(), all - Class::plainReading - Class::libraryReading},
      {&Shows::styleClass(), all - Class::plainTelling - Class::plainMatching},
      {&Counts::styleClass(), all - Class::plainCounting - Class::libraryCounting},
      {&Resolves::styleClass(), all - Class::plainResolving},
      {&Hides::styleClass(), all - Class::plainResolving},
      {&Compares::styleClass(), all - Class::plainComparing},
      {&BelowCompares::styleClass(), all - Class::plainComparing},
      {&TestAggregate::styleClass(), aggregate},
      {&StandsIn::styleClass(), aggregate - Class::plainReading},
      {&CountsReferences::styleClass(), aggregate - Class::libraryCounting},
      {&DerivesNothing::styleClass(), deriving | Class::plainTelling | Class::plainMatching},
      {&Derives::styleClass(), deriving}};
  for (std::size_t at = 0; at < std::size(expected); ++at) {
    EXPECT_EQ(expected[at].first->plainGroups(), expected[at].second) << "in row " << at;
  }
  EXPECT_TRUE(DerivesNothing::styleClass().isPlainVarying());
  EXPECT_FALSE(Derives::styleClass().isPlainVarying());
}

}  // namespace
}  // namespace zt::testing
