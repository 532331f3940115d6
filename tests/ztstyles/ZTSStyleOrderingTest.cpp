// SPDX-License-Identifier: MIT
#include <tests/ztstyles/Archives.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>

#include <random>

namespace zt::testing {

namespace {

Log identifiers(const std::vector<Ref<ZTSStyle>>& styles) {
  Log all;
  for (const Ref<ZTSStyle>& style : styles) all.push_back(style->identifier().text());
  return all;
}

/// The default order as it is defined, the slow way.
Log insertedOneByOne(const ZTSStylesheet& sheet) {
  std::vector<Ref<ZTSStyle>> waiting = sheet.identifiedStyles().retainedSnapshot();
  std::vector<Ref<ZTSStyle>> lists[2];
  while (!waiting.empty()) {
    const Ref<ZTSStyle> style = waiting.back();
    waiting.pop_back();
    auto& into = lists[dynamic_cast<ZTSAggregateStyle*>(style.get()) != nullptr ? 1 : 0];
    auto place = into.begin();
    for (const ZTSStyle* each = style->parent(); each != nullptr && each->stylesheet() == &sheet;
         each = each->parent()) {
      const auto found = std::find(into.begin(), into.end(), each);
      if (found == into.end()) continue;
      place = found + 1;
      break;
    }
    into.insert(place, style);
  }
  lists[0].insert(lists[0].end(), lists[1].begin(), lists[1].end());
  return identifiers(lists[0]);
}

}  // namespace

TEST(StyleOrderingTest, TheDefaultOrderIsTheOneOfInsertion) {
  ZTULogRecorder quiet;
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    Scene above;
    Scene scene(above.sheet.get());
    above.style("up", {}, {});
    const unsigned count = 1 + random() % 30;
    for (unsigned index = 0; index < count; ++index) {
      const auto parent = static_cast<unsigned>(random() % (count + 2));  // also itself, later ones, one above
      const StringRef name = parent == index ? StringRef() : parent == count ? "up" : "s" + std::to_string(parent);
      const std::string identifier = "s" + std::to_string(index);
      random() % 3 == 0 ? (void)scene.style<TestAggregate>(identifier, name) : (void)scene.style(identifier, name);
    }
    ASSERT_EQ(identifiers(scene.sheet->p_orderedIdentifiedStyles()), insertedOneByOne(*scene.sheet)) << round;
  }
}

TEST(StyleOrderingTest, DiffableArchivesKeepTheOrderOfTheirFile) {
  const ZTADiffableXmlScope diffable;
  Scene above;
  Scene scene(above.sheet.get());
  above.style("z");
  scene.style<TestAggregate>("b", "a");
  scene.style<TestAggregate>("a");
  scene.style("y", "z");
  scene.style("x", "y");
  scene.style("c");
  for (int index : {3, 1, 2}) scene.style({}, index == 2 ? "a" : "y", {{size, index}});
  scene.style({}, {}, {{size, 9}});
  const std::string text = archived(*scene.sheet);
  EXPECT_EQ(text, archived(*scene.sheet));
  expectStored(text, "stylesheet-diffable.xml");
  auto ordered = scene.sheet->identifiedStyles().retainedSnapshot();
  sortIdentifiedStylesForDiff(ordered);
  EXPECT_EQ(identifiers(ordered), (Log{"c", "y", "x", "a", "b"}));
  for (int left = 0; left < 5; ++left) {
    for (int right = 0; right < 5; ++right) {
      EXPECT_EQ(ZTSCompareIdentifiedStylesForDiff(*ordered[left], *ordered[right]), (left > right) - (left < right));
    }
  }

  // Taking one out and putting it back makes it the newest of its group.
  const Loaded loaded(text);
  const Ref<ZTSStyle> moved(&loaded.anonymous(2));
  ASSERT_EQ(valueOf(*moved, size), 3);
  loaded.sheet->removeStyle(moved);
  archived(*loaded.sheet);
  loaded.sheet->addStyle(moved);
  loaded.sheet->addStyle(make<TestStyle>({.parentIdentifier = "a"}));
  const Loaded again(archived(*loaded.sheet));
  std::vector<int> sizes;
  for (const ZTSStyle* style : again.sheet->anonymousStyles().allObjects()) sizes.push_back(valueOf(*style, size));
  EXPECT_EQ(sizes, (std::vector<int>{9, 2, -1, 1, 3}));
}

TEST(StyleOrderingTest, AnonymousStylesAreNumberedWhenTheyAreFirstSeen) {
  Scene scene;
  auto& a = scene.style({}, "p");
  auto& b = scene.style({}, "p");
  auto& c = scene.style({}, {});
  ZTSAnonymousStyleOrderingMap map;
  EXPECT_EQ(ZTSCompareAnonymousStylesForDiff(b, a, map), -1) << "b was asked first";
  EXPECT_EQ(ZTSCompareAnonymousStylesForDiff(a, a, map), 0);
  EXPECT_EQ(ZTSCompareAnonymousStylesForDiff(c, b, map), -1);
  map.valueForParentIdentifier("p").removeStyle(b);
  EXPECT_EQ(ZTSIndexOfAnonymousStyle(b, map), 3) << "an index is never handed out again";
}

}  // namespace zt::testing
