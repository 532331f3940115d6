#include "Scene.h"

namespace zt::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Ref<ZTSStylesheet> copyOf(const ZTSStylesheet& sheet) {
  const Ref<NSObject> copied = sheet.copy();
  return Ref<ZTSStylesheet>(dynamic_cast<ZTSStylesheet*>(copied.get()));
}

/// A parent stylesheet with `base`; below it `h1` on `base`, `h2` on `h1`, an anonymous style on `h2`, `lone`, an
/// orphan and an aggregate that refers to styles of both and to itself.
struct Family {
  Scene above;
  TestStyle& base = above.style("base");
  Scene scene{above.sheet.get()};
  TestStyle& h2 = scene.style("h2", "h1", {{size, 2}});
  TestStyle& lone = scene.style("lone");
  TestStyle& h1 = scene.style("h1", "base", {{size, 1}});
  TestStyle& orphan = scene.style("orphan", "nowhere");
  TestStyle& anonymous = scene.style({}, "h2", {{weight, 3}}, true);
  TestAggregate& aggregate = scene.style<TestAggregate>({}, {}, {{list, anonymous}, {label, base}});
};

TEST(StylesheetCopyTest, HoldsCopiesThatFindTheirParentsAmongTheCopies) {
  Family family;
  ZTSStylesheet& sheet = *family.scene.sheet;
  family.aggregate.incrementUsageCount();
  family.lone.setName("Lone");
  sheet.enableUnusedStyleCleanup();
  SheetRecorder recorder(family.scene.log);
  sheet.addObserver(&recorder);
  Log log;
  NotificationListener added(ZTSStylesheetStyleAddedNotification, nullptr,
                             [&](const NSNotification&) { log.push_back("added"); });
  NotificationListener moved(ZTSStylesheetParentChangedNotification, nullptr,
                             [&](const NSNotification&) { log.push_back("parent"); });
  const std::size_t undoGroups = family.scene.host.undo->undoGroupCount();

  const Ref<ZTSStylesheet> copy = copyOf(sheet);
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->parent(), family.above.sheet.get());
  EXPECT_TRUE(family.above.sheet->children().containsObject(copy.get()));
  EXPECT_EQ(copy->host(), &family.scene.host);
  EXPECT_TRUE(copy->isChangeCommunicationEnabled());
  EXPECT_FALSE(copy->isUnusedStyleCleanupEnabled());
  EXPECT_TRUE(copy->observers().isEmpty());
  EXPECT_THAT(log, ElementsAre("parent"));
  EXPECT_EQ(family.scene.host.undo->undoGroupCount(), undoGroups);

  // Parents before children, roots first.
  std::vector<std::string> order;
  for (const auto& entry : copy->identifiedStyleEnumerator()) order.push_back(entry.key.text());
  EXPECT_THAT(order, ElementsAre("lone", "h1", "orphan", "h2"));
  ZTSStyle* h1 = copy->styleWithIdentifier("h1");
  ZTSStyle* h2 = copy->styleWithIdentifier("h2");
  EXPECT_NE(h1, &family.h1);
  EXPECT_EQ(h1->parent(), &family.base);
  EXPECT_EQ(h2->parent(), h1);
  EXPECT_EQ(copy->styleWithIdentifier("lone")->name(), "Lone");

  const std::vector<ZTSStyle*> anonymous = copy->anonymousStyles().allObjects();
  ASSERT_EQ(anonymous.size(), 2u);
  EXPECT_EQ(anonymous[0]->parent(), h2);
  EXPECT_TRUE(anonymous[0]->isLocked());
  EXPECT_EQ(anonymous[1]->overrideValueForProperty(list), anonymous[0]);
  EXPECT_EQ(anonymous[1]->overrideValueForProperty(label), &family.base);
  EXPECT_TRUE(anonymous[0]->observers().containsObject(anonymous[1]));
  for (ZTSStyle* style : copy->styles()) {
    EXPECT_EQ(style->stylesheet(), copy.get());
    EXPECT_EQ(style->usageCount(), 0u);
  }

  // The receiver is as it was, and hears nothing of the copy's life.
  EXPECT_EQ(family.anonymous.observers().count(), 1u);
  EXPECT_EQ(family.anonymous.usageCount(), 1u);
  EXPECT_EQ(family.h1.children().count(), 1u);
  ZTUAssertionRecorder reports;
  ZTULogRecorder notices;
  sheet.validate();
  copy->validate();
  EXPECT_THAT(reports.descriptions(), IsEmpty());
  EXPECT_TRUE(sheet.indexesAreRight() && copy->indexesAreRight());
  copy->styleWithIdentifier("h1")->setValueForProperty(NSNumber::withInteger(9), weight);
  EXPECT_EQ(valueOf(family.h2, weight), -1);
  sheet.removeObserver(&recorder);
}

TEST(StylesheetCopyTest, LetsGoOfEverythingWhenItIsDropped) {
  Family family;
  Ref<ZTSStylesheet> copy = copyOf(*family.scene.sheet);
  EXPECT_EQ(family.base.children().count(), 2u);
  EXPECT_EQ(family.base.observers().count(), 2u);
  copy.reset();
  EXPECT_EQ(family.base.children().count(), 1u);
  EXPECT_EQ(family.base.observers().count(), 1u);
  EXPECT_EQ(family.above.sheet->children().count(), 1u);

  Log log;
  NotificationListener moved(ZTSStylesheetParentChangedNotification, nullptr,
                             [&](const NSNotification&) { log.push_back("parent"); });
  EXPECT_EQ(copyOf(*family.above.sheet)->parent(), nullptr);
  EXPECT_THAT(log, IsEmpty());
}

TEST(StylesheetEqualityTest, ComparesHostsStylesAndParents) {
  Family family;
  ZTSStylesheet& sheet = *family.scene.sheet;
  const struct {
    const char* name;
    void (*change)(ZTSStylesheet&);
    bool isEqual;
  } cases[] = {
      {"a copy", [](ZTSStylesheet&) {}, true},
      {"other host", [](ZTSStylesheet& copy) { copy.setHost(nullptr); }, false},
      {"other name", [](ZTSStylesheet& copy) { copy.styleWithIdentifier("h1")->setName("n"); }, false},
      {"one style less", [](ZTSStylesheet& copy) { copy.removeStyle(Ref<ZTSStyle>(copy.styleWithIdentifier("lone"))); },
       false},
      {"one anonymous style less",
       [](ZTSStylesheet& copy) { copy.removeStyle(Ref<ZTSStyle>(copy.anonymousStyles().allObjects()[1])); }, false},
      {"other anonymous value",
       [](ZTSStylesheet& copy) {
         copy.anonymousStyles().anyObject()->p_setValueForProperty(NSNumber::withInteger(4), weight);
       },
       false},
      {"equal values of another kind",
       [](ZTSStylesheet& copy) {
         copy.anonymousStyles().anyObject()->p_setValueForProperty(NSNumber::withReal(3.0), weight);
       },
       true},
      {"no parent", [](ZTSStylesheet& copy) { copy.setParent({}); }, false},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const Ref<ZTSStylesheet> copy = copyOf(sheet);
    const std::size_t hash = copy->hash();
    EXPECT_EQ(hash, sheet.hash());
    each.change(*copy);
    EXPECT_EQ(sheet.isEqual(copy.get()), each.isEqual);
    EXPECT_EQ(copy->isEqual(&sheet), each.isEqual);
  }
  EXPECT_FALSE(sheet.isEqual(nullptr));
  EXPECT_FALSE(sheet.isEqual(&family.h1));

  // Parents that are equal and not the same; a long line of them.
  Ref<ZTSStylesheet> left = ZTSStylesheet::withHost();
  Ref<ZTSStylesheet> right = ZTSStylesheet::withHost();
  const Ref<ZTSStylesheet> leftRoot = left;
  for (int depth = 0; depth < 50'000; ++depth) {
    for (Ref<ZTSStylesheet>* sheetOfLine : {&left, &right}) {
      const Ref<ZTSStylesheet> next = ZTSStylesheet::withHost();
      next->p_setParent(*sheetOfLine);
      *sheetOfLine = next;
    }
  }
  EXPECT_TRUE(left->isEqual(right.get()));
  leftRoot->addStyle(make<TestStyle>());
  EXPECT_FALSE(left->isEqual(right.get()));
}

TEST(StylesheetEqualityTest, AsksAClassThatComparesInAWayOfItsOwn) {
  class Loose : public TestStyle {
   public:
    static const ZTSStyleClass& styleClass() {
      static const auto* object = new TestClassOf<Loose>("LooseComparison", TestStyle::styleClass());
      return *object;
    }
    const ZTSStyleClass& classObject() const override { return styleClass(); }
    bool isEqual(const NSObject* other) const override { return asStyle(other) != nullptr; }
  };
  Ref<ZTSStylesheet> left = ZTSStylesheet::withHost();
  Ref<ZTSStylesheet> right = ZTSStylesheet::withHost();
  const Ref<PropertyMap> one = mapOf({{size, 1}});
  const Ref<PropertyMap> two = mapOf({{size, 2}});
  left->addStyle(make<Loose>({.overridePropertyMap = one.get()}));
  right->addStyle(make<Loose>({.overridePropertyMap = two.get()}));
  EXPECT_TRUE(left->isEqual(right.get()));
}

TEST(StylesheetDescriptionTest, ListsEveryStyle) {
  Scene scene;
  const auto shown = [&] { return scene.sheet->description(); };
  EXPECT_EQ(shown(), format("ZTSStylesheet: %#x\nIdentified Styles: 0\nAnonymous Styles: 0\n", scene.sheet));
  TestStyle& body = scene.style("body");
  body.setName("Body");
  TestStyle& anonymous = scene.style({}, "body");
  anonymous.incrementUsageCount();
  EXPECT_EQ(shown(), format("ZTSStylesheet: %#x\nIdentified Styles: 1\n"
                            "\t%#x   TestStyle    Body    id: body    parent id:(null)    usage:1\n"
                            "Anonymous Styles: 1\n"
                            "\t%#x   TestStyle    (null)    id: (null)    parent id:body    usage :1\n",
                            scene.sheet, address(&body), address(&anonymous)));
}

}  // namespace
}  // namespace zt::testing
