// SPDX-License-Identifier: MIT
#include <document/ZTDocument.h>
#include <document/styles/FamilyStyles.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <support/ZTUAssertionHandler.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zt {
namespace {

Ref<NSObject> percent(int value) { return make<PercentageValue>(Percentage{value * Percentage::kPerPercent}); }
std::string text(const Ref<NSObject>& value) { return valueText(value.get()); }

/// A style that is 30% transparent, and a child of it, in a document of its own; for each family of shapes.
class TransparencyTest : public ::testing::TestWithParam<StyleFamily> {
 protected:
  const std::string identifier = styleIdentifier(familyName(GetParam()), "Glass");
  const Ref<PropertyMap> map = PropertyMap::with({{keys::transparency(), percent(30)}});
  const Ref<OdfStyle> glass =
      makeFamilyStyle(GetParam(), {.identifier = StringRef(identifier), .overridePropertyMap = map.get()});
  const Ref<OdfStyle> child = makeFamilyStyle(GetParam(), {.parentIdentifier = StringRef(identifier)});
  const Ref<ZTDocument> document = ZTDocument::create();

  void SetUp() override {
    ASSERT_NE(glass, nullptr);
    ASSERT_NE(child, nullptr);
    document->stylesheet().addStyle(glass);
    document->stylesheet().addStyle(child);
  }
  void TearDown() override {
    ZTUAssertionRecorder reports;
    document->stylesheet().validate();
    EXPECT_THAT(reports.descriptions(), ::testing::IsEmpty());
  }
};
INSTANTIATE_TEST_SUITE_P(Shapes, TransparencyTest,
                         ::testing::Values(StyleFamily::graphic, StyleFamily::presentation, StyleFamily::chart),
                         [](const auto& each) { return std::string(familyName(each.param)); });

TEST_P(TransparencyTest, IsStoredAsOpacityAndInherited) {
  EXPECT_EQ(text(Ref<NSObject>(glass->p_overrideValueForProperty(keys::opacity()))), "70%");
  EXPECT_EQ(glass->p_overrideValueForProperty(keys::transparency()), nullptr);
  EXPECT_EQ(text(child->valueForProperty(keys::transparency())), "30%");
  EXPECT_EQ(valueText(child->propertyMap()->find(keys::transparency())), "30%");
  EXPECT_TRUE(child->definesProperty(keys::transparency()));
  EXPECT_FALSE(child->overridesProperty(keys::transparency()));
}

TEST_P(TransparencyTest, IsSetAndRemovedUndoably) {
  NSUndoManager& undo = *document->undoManager();
  undo.performInGroup([&] { child->setValueForProperty(percent(45), keys::transparency()); });
  EXPECT_EQ(text(child->valueForProperty(keys::opacity())), "55%");
  EXPECT_EQ(text(child->overrideValueForProperty(keys::transparency())), "45%");
  undo.performInGroup([&] { child->removeValueForProperty(keys::transparency()); });
  EXPECT_FALSE(child->overridesAnyProperty());
  undo.undo();
  EXPECT_EQ(text(child->valueForProperty(keys::transparency())), "45%");
}

TEST_P(TransparencyTest, IsAPercentageOrExplicitlyNone) {
  child->setValueForProperty({}, keys::transparency());
  EXPECT_EQ(child->p_overrideValueForProperty(keys::opacity()), NSNull::null());
  EXPECT_EQ(child->valueForProperty(keys::transparency()), nullptr);
  EXPECT_THROW(child->setValueForProperty(NSString::make("glassy"), keys::transparency()),
               NSInternalInconsistencyException);
}

TEST(ShapeStyleTest, OtherFamiliesHaveNeitherThePropertyNorTheTranslation) {
  const Ref<OdfStyle> paragraph = makeFamilyStyle(StyleFamily::paragraph, {});
  EXPECT_FALSE(paragraph->isDerivedProperty(keys::transparency()));
  EXPECT_FALSE(paragraph->classObject().isKindOf(familyStyleClass(StyleFamily::graphic)));
  EXPECT_NE(dynamic_cast<const ZTSStyleClass&>(paragraph->classObject()).plainGroups() & ZTSStyleClass::plainMatching,
            0);
}

TEST(ShapeStyleTest, AnswersTheSameVariationForTransparencyAndOpacity) {
  const Ref<ZTDocument> document = ZTDocument::create();
  const Ref<PropertyMap> own = PropertyMap::with({{keys::opacity(), percent(50)}});
  const Ref<OdfStyle> base =
      makeFamilyStyle(StyleFamily::graphic,
                      {.identifier = StringRef(styleIdentifier("graphic", "Half")), .overridePropertyMap = own.get()});
  document->stylesheet().addStyle(base);
  const auto variation = [&](PropertyKey key, int value) {
    const Ref<PropertyMap> wanted = PropertyMap::with({{key, percent(value)}});
    return document->stylesheet().variationOfStyle(base.get(), {.propertyMap = wanted.get()});
  };
  const Ref<ZTSStyle> glass = variation(keys::transparency(), 80);
  ASSERT_NE(glass, nullptr);
  EXPECT_EQ(text(glass->valueForProperty(keys::opacity())), "20%");
  EXPECT_EQ(variation(keys::transparency(), 80), glass);
  EXPECT_EQ(variation(keys::opacity(), 20), glass);
  EXPECT_EQ(variation(keys::transparency(), 50), base);
}

}  // namespace
}  // namespace zt
