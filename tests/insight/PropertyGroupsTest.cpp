// SPDX-License-Identifier: MIT
#include <insight/explain/Explanation.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSString.h>

#include <gtest/gtest.h>

namespace {

using namespace zt;

// A paragraph style with another below it, each with values as texts of a file.
using Values = std::vector<std::pair<const char*, const char*>>;

struct Two {
  Two(const Values& above, const Values& below) {
    add("paragraph:Above", "paragraph", above);
    add("paragraph:Below", "paragraph:Above", below);
  }

  void add(const std::string& identifier, const std::string& parent, const Values& values) {
    const Ref<PropertyMap> map = PropertyMap::make();
    for (const auto& [key, text] : values) map->set(PropertyKey(key), readValue(propertyRule(PropertyKey(key)), text));
    const Ref<OdfStyle> style =
        makeFamilyStyle(StyleFamily::paragraph,
                        {.identifier = identifier, .parentIdentifier = parent, .overridePropertyMap = map.get()});
    document->stylesheet().addStyle(style);
    document->recordOrigin(style, {.kind = StyleOrigin::Kind::named, .name = identifier});
  }

  /// What the lower style is told to have, or by which property it is decided.
  [[nodiscard]] std::string told(std::string_view key) const {
    const StyleExplanation explanation = Explainer(*document).explain(*document->readStyles().back());
    for (const ExplainedProperty& property : explanation.properties) {
      if (property.key.view() != key) continue;
      if (property.decidedBy) return "by " + std::string(property.decidedBy.view());
      return property.effective ? valueText(property.effective.get()) : "none";
    }
    return "not set";
  }

  Ref<ZTDocument> document = ZTDocument::create();
};

TEST(PropertyGroupsTest, TheNearerOfColourAndWindowColourCounts) {
  EXPECT_EQ(Two({{"text.fo.color", "#ff0000"}}, {{"text.style.use-window-font-color", "true"}}).told("text.fo.color"),
            "by text.style.use-window-font-color");
  EXPECT_EQ(Two({{"text.fo.color", "#ff0000"}}, {{"text.style.use-window-font-color", "false"}}).told("text.fo.color"),
            "#ff0000");
  const Two colour({{"text.style.use-window-font-color", "true"}}, {{"text.fo.color", "#ff0000"}});
  EXPECT_EQ(colour.told("text.fo.color"), "#ff0000");
  EXPECT_EQ(colour.told("text.style.use-window-font-color"), "by text.fo.color");
  EXPECT_EQ(Two({}, {{"text.style.use-window-font-color", "true"}, {"text.fo.color", "#ff0000"}}).told("text.fo.color"),
            "by text.style.use-window-font-color");
}

TEST(PropertyGroupsTest, AGroupIsDecidedByTheNearestStyleThatSetsAnyOfIt) {
  const Two language({{"text.fo.language", "en"}, {"text.fo.country", "US"}}, {{"text.fo.language", "de"}});
  EXPECT_EQ(language.told("text.fo.country"), "by text.fo.language");
  EXPECT_EQ(language.told("text.fo.language"), "de");
  EXPECT_EQ(Two({{"paragraph.fo.line-height", "120%"}}, {{"paragraph.style.line-height-at-least", "1cm"}})
                .told("paragraph.fo.line-height"),
            "by paragraph.style.line-height-at-least");
  EXPECT_EQ(Two({}, {{"text.fo.language", "en"}, {"text.fo.country", "US"}}).told("text.fo.country"), "US");
}

TEST(PropertyGroupsTest, AFontThatIsNotDeclaredSaysNothing) {
  const Two fonts({{"text.style.font-name", "Known"}}, {{"text.style.font-name", "Unknown"}});
  EXPECT_EQ(fonts.told("text.style.font-name"), "Unknown");  // nothing is known of fonts here
  fonts.document->recordFont(0, "Known", "Family");
  EXPECT_EQ(fonts.told("text.style.font-name"), "Known");
}

}  // namespace
