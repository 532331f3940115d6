// SPDX-License-Identifier: MIT

// Long random sequences over the public operations. After every step the model must be valid, its indexes right and
// its lookups, parents and counts what a slow reading of the links gives; undoing everything must bring back the first
// state, and redoing everything the last one. What it has become can be copied, and written and read.

#include <tests/ztstyles/Archives.h>

#include <algorithm>
#include <functional>
#include <map>
#include <random>

namespace zt::testing {
namespace {

/// Overrides what the library may otherwise skip, and adds nothing: the virtual paths.
template <class Base>
class Overriding : public ZTSStyleOf<Overriding<Base>, Base> {
 public:
  static inline const std::string kClassName = std::string("Overriding") + Base::kClassName;
  Ref<NSObject> valueForProperty(PropertyKey key) const override { return Base::valueForProperty(key); }
  bool definesProperty(PropertyKey key) const override { return Base::definesProperty(key); }
  Ref<PropertyMap> propertyMap() const override { return Base::propertyMap(); }
  Ref<const PropertyMap> overridePropertyMap() const override { return Base::overridePropertyMap(); }
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override { Base::stylePropertiesChanged(change); }
  void updateParent() override { Base::updateParent(); }
  void incrementUsageCount() override { Base::incrementUsageCount(); }
  void decrementUsageCount() override { Base::decrementUsageCount(); }
  void incrementOrphanCount() override { Base::incrementOrphanCount(); }
  void decrementOrphanCount() override { Base::decrementOrphanCount(); }
  bool isEqual(const NSObject* other) const override { return Base::isEqual(other); }
};

/// Refers to aggregates as well as to plain styles. Families never refer upward, so that no counts run in a circle.
struct TopAggregate : ZTSStyleOf<TopAggregate, TestAggregate> {
  static constexpr const char* kClassName = "TopAggregate";
};

class RandomHost : public TestHost {
 public:
  bool willRemoveUnusedStyle(ZTSStyle& style) override {
    if (undo->isUndoingOrRedoing() || style.isIdentified()) return false;
    const auto observers = style.observers().allObjects();
    return std::none_of(observers.begin(), observers.end(), [](ZTSStyleObserver* observer) {
      return dynamic_cast<ZTSAggregateStyle*>(observer) != nullptr;
    });
  }
};

class Watcher : public NSObject, public ZTSStyleObserver {};

class RandomModel {
 public:
  explicit RandomModel(unsigned seed) : mRandom(seed), mHasLoops(seed % 4 == 3) {
    mLower->setParent(mUpper);
    NSUndoManager& undo = *mHost.undo;
    undo.disableUndoRegistration();
    for (int count = 0; count < 40; ++count) addNew();
    for (ZTSStyle* style : attached()) {
      if (chance(3)) style->addObserver(mWatcher.get());
      if (chance(3)) count(*style, false);
    }
    undo.enableUndoRegistration();
    if (seed % 2 == 0) mLower->enableUnusedStyleCleanup();
    if (seed % 3 == 0) {
      mListener.emplace(ZTSStylePropertiesChangedNotification, nullptr, [this](const NSNotification&) { ++mPosts; });
    }
    check("the start");
  }
  ~RandomModel() {
    mHost.undo->removeAllActions();
    for (const Ref<ZTSStyle>& style : mPool) style->removeObserver(mWatcher.get());
  }

  void step() {
    NSUndoManager& undo = *mHost.undo;
    if (chance(8)) {
      const int times = 1 + below(4);
      for (int count = 0; count < times && undo.canUndo(); ++count) undo.undo();
      check("undo");
      for (int count = below(5); count > 0 && undo.canRedo(); --count) undo.redo();
      return check("redo");
    }
    const auto& [name, operation] = operations()[static_cast<std::size_t>(below(kOperations))];
    mTrace += name + std::string(", ");
    {
      ZTUAssertionRecorder refusals;  // an operation may refuse what makes no sense
      undo.performInGroup([&, &perform = operation] {
        for (int count = 1 + below(2); count > 0; --count) {
          if (ZTSStyle* style = any()) perform(*this, *style);
        }
      });
    }
    adopt();
    check(name);
  }

  void goBackAndForth(const std::string& first, const std::string& last) {
    int undone = 0;
    for (; mHost.undo->canUndo(); ++undone) mHost.undo->undo();
    check("undo of everything");
    EXPECT_EQ(snapshot(), first);
    for (; undone > 0; --undone) mHost.undo->redo();
    check("redo of everything");
    EXPECT_EQ(snapshot(), last);
  }

  /// Everything that undo brings back, as text. Styles outside the stylesheets do not count.
  std::string snapshot() {
    adopt();
    std::string text;
    for (std::size_t index = 0; index < mPool.size(); ++index) {
      const ZTSStyle& style = *mPool[index];
      if (style.stylesheet() == nullptr) continue;
      text += format("%d in %d name=%@ id=%@ parent=%@ locked=%d", index, style.stylesheet() == mLower.get(),
                     style.name(), style.identifier(), style.parentIdentifier(), style.isLocked());
      std::map<std::string, std::string> values;
      if (const Ref<const PropertyMap> own = style.overridePropertyMap()) {
        for (const PropertyMap::Entry& entry : *own) values[std::string(entry.key.view())] = textOf(entry.value.get());
      }
      for (const auto& [key, value] : values) text += " " + key + "=" + value;
      std::vector<std::string> links{
          format(" parent %d uses=%d orphan=%d", numberOf(style.parent()), style.usageCount(), style.orphanCount())};
      for (const ZTSStyle* child : style.children()) links.push_back(format(" child %d", numberOf(child)));
      for (ZTSStyleObserver* observer : style.observers().allObjects()) {
        links.push_back(format(" observer %d times %d", numberOf(dynamic_cast<ZTSStyle*>(observer)),
                               style.observers().countForObject(observer)));
      }
      std::sort(links.begin(), links.end());
      for (const std::string& link : links) text += mHasLoops ? "" : link;
      text += '\n';
    }
    return text;
  }

  void copyBoth() {
    const std::string before = snapshot();
    for (const Ref<ZTSStylesheet>& sheet : {mUpper, mLower}) {
      const Ref<NSObject> copied = sheet->copy();
      auto* copy = dynamic_cast<ZTSStylesheet*>(copied.get());
      ASSERT_NE(copy, nullptr);
      EXPECT_EQ(reportsOf(*copy), Log{});
      EXPECT_EQ(copy->styles().count(), sheet->styles().count());
      if (!mHasRefusedParent) {
        EXPECT_TRUE(copy->isEqual(sheet.get()));
        EXPECT_TRUE(sheet->isEqual(copy));
        EXPECT_EQ(copy->hash(), sheet->hash());
      }
    }
    EXPECT_EQ(snapshot(), before);
    check("copy");
  }

  /// Both stylesheets as an archive, and back.
  void writeAndRead() {
    const std::string text = archived(*mLower);
    const Loaded loaded(text);
    EXPECT_EQ(loaded.findings(), Log{});
    EXPECT_TRUE(loaded.sheet->parent()->children().containsObject(loaded.sheet.get()));
    loaded.sheet->setHost(&mHost);
    loaded.sheet->parent()->setHost(&mHost);
    if (!mHasRefusedParent) {
      EXPECT_TRUE(loaded.sheet->isEqual(mLower.get()));
      EXPECT_TRUE(mLower->isEqual(loaded.sheet.get()));
      EXPECT_EQ(archived(*loaded.sheet), text);
    }
    EXPECT_EQ(reportsOf(*loaded.sheet), Log{});
  }

  [[nodiscard]] const std::string& trace() const { return mTrace; }

 private:
  using M = RandomModel;
  using S = ZTSStyle;
  struct Operation {
    const char* name;
    void (*perform)(M& model, S& style);  // on any style of the model
  };
  static constexpr int kOperations = 23;

  static const Operation* operations() {
    static const Operation all[kOperations] = {
        {"add", [](M& m, S&) { m.addNew(); }},
        {"add again", [](M& m, S&) { m.addAgain(); }},
        {"remove", [](M&, S& s) { remove(s); }},
        {"identify", [](M& m, S& s) { m.identify(s); }},
        {"anonymize", [](M&, S& s) { s.stylesheet()->anonymizeStyle(Ref<S>(&s)); }},
        {"parent", [](M& m, S& s) { s.setParentIdentifier(m.parentFor(familyOf(s), s.identifier())); }},
        {"name", [](M& m, S& s) { s.setName(format("name %d", ++m.mNames)); }},
        {"lock", [](M&, S& s) { s.setIsLocked(!s.isLocked()); }},
        {"set value", [](M& m, S& s) { m.setOne(s); }},
        {"set values", [](M& m, S& s) { s.setValuesForProperties(*m.valuesFor(s)); }},
        {"remove value", [](M& m, S& s) { s.removeValueForProperty(m.key()); }},
        {"remove values", [](M& m, S& s) { s.removeValuesForProperties(*m.keys()); }},
        {"locked set", [](M& m, S& s) { s.lockedStyleSetValuesForProperties(*m.valuesFor(s), m.below(8)); }},
        {"locked remove", [](M& m, S& s) { s.lockedStyleRemoveValuesForProperties(*m.keys(), m.below(8)); }},
        {"collapse", [](M&, S& s) { s.collapseOverriddenPropertyValues(); }},
        {"clear", [](M&, S& s) { s.clearOverriddenPropertyValues(); }},
        {"replace", [](M& m, S& s) { m.replace(s); }},
        {"vary", [](M& m, S& s) { m.vary(s); }},
        {"use", [](M& m, S& s) { m.count(s, false); }},
        {"unuse", [](M& m, S&) { m.uncount(false); }},
        {"orphan", [](M& m, S& s) { m.count(s, true); }},
        {"unorphan", [](M& m, S&) { m.uncount(true); }},
        {"quiet", [](M& m, S& s) { m.quietly(s); }},
    };
    return all;
  }

  int below(int limit) { return static_cast<int>(mRandom() % static_cast<unsigned>(limit)); }
  bool chance(int oneIn) { return below(oneIn) == 0; }

  std::vector<ZTSStyle*> attached() const {
    std::vector<ZTSStyle*> found;
    for (const Ref<ZTSStyle>& style : mPool) {
      if (style->stylesheet() != nullptr) found.push_back(style.get());
    }
    return found;
  }
  ZTSStyle* anyOf(const std::function<bool(ZTSStyle&)>& fits) {
    std::vector<ZTSStyle*> found = attached();
    std::erase_if(found, [&](ZTSStyle* style) { return !fits(*style); });
    return found.empty() ? nullptr : found[static_cast<std::size_t>(below(static_cast<int>(found.size())))];
  }
  ZTSStyle* any() {
    return anyOf([](ZTSStyle&) { return true; });
  }
  /// Removing a style that others refer to leaves a reference out of the stylesheet, which validation tells.
  static bool isReferenced(ZTSStyle& style) {
    const auto observers = style.observers().allObjects();
    return std::any_of(observers.begin(), observers.end(),
                       [](auto* each) { return dynamic_cast<ZTSAggregateStyle*>(each) != nullptr; });
  }
  static void remove(ZTSStyle& style) {
    if (!isReferenced(style)) style.stylesheet()->removeStyle(Ref<ZTSStyle>(&style));
  }

  /// 0 plain styles, 1 aggregates of these, 2 aggregates of both. Parents are of one's own family.
  static int familyOf(const ZTSStyleClass& each) {
    return each.isKindOf(TopAggregate::styleClass()) ? 2 : each.isKindOf(TestAggregate::styleClass()) ? 1 : 0;
  }
  static int familyOf(const ZTSStyle& style) { return familyOf(style.classObject()); }
  StringRef identifierOf(int family) {
    return format("%s%d", std::string_view("agt").substr(static_cast<std::size_t>(family), 1), below(14));
  }
  StringRef parentFor(int family, const StringRef& identifier) {
    const StringRef parent = chance(8) ? StringRef() : identifierOf(family);
    return mayInherit(identifier, parent) ? parent : StringRef();
  }
  /// Parents come later in the alphabet of identifiers; a style may specialise its namesake above.
  bool mayInherit(const StringRef& identifier, const StringRef& parent) const {
    const auto rank = [](const StringRef& text) { return std::stoi(text.text().substr(1)); };
    return mHasLoops || !identifier || !parent || rank(identifier) <= rank(parent);
  }
  bool mayBeParentOf(const StringRef& identifier, const ZTUMutablePointerSet<ZTSStyle>& children) const {
    return std::all_of(children.begin(), children.end(),
                       [&](ZTSStyle* child) { return mayInherit(child->identifier(), identifier); });
  }

  PropertyKey key() {
    const PropertyKey all[] = {size, weight, colour, list, label};
    return all[below(5)];
  }
  Ref<PropertySet> keys() {
    const Ref<PropertySet> set = PropertySet::make();
    for (int count = 1 + below(3); count > 0; --count) set->add(key());
    return set;
  }
  Ref<NSObject> valueFor(ZTSStyle& style, PropertyKey key) {
    if (key != list && key != label) {
      if (chance(6)) return Ref<NSObject>(NSNull::null());
      return NSNumber::withInteger(below(4));
    }
    const int family = familyOf(style);
    const ZTSStylesheet* sheet = style.stylesheet();
    ZTSStyle* referenced = family == 0 || sheet == nullptr ? nullptr : anyOf([&](ZTSStyle& each) {
      return familyOf(each) < family && (each.stylesheet() == sheet || each.stylesheet() == sheet->parent());
    });
    return referenced != nullptr ? Ref<NSObject>(referenced) : Ref<NSObject>(NSNull::null());
  }
  Ref<PropertyMap> valuesFor(ZTSStyle& style) {
    const Ref<PropertyMap> map = PropertyMap::make();
    for (const PropertyKey each : keys()->keys()) map->set(each, valueFor(style, each));
    return map;
  }

  void addNew() {
    static const ZTSStyleClass* const classes[] = {
        &TestStyle::styleClass(),     &TestStyle::styleClass(),    &Overriding<TestStyle>::styleClass(),
        &TestAggregate::styleClass(), &TopAggregate::styleClass(), &Overriding<TopAggregate>::styleClass()};
    const ZTSStyleClass& styleClass = *classes[below(6)];
    const int family = familyOf(styleClass);
    const Ref<PropertyMap> values = mapOf({{size, below(4)}, {weight, below(4)}});
    const StringRef identifier = chance(2) ? identifierOf(family) : StringRef();
    const Ref<ZTSStyle> style = styleClass.makeStyle({.identifier = identifier,
                                                      .parentIdentifier = parentFor(family, identifier),
                                                      .overridePropertyMap = chance(3) ? nullptr : values.get(),
                                                      .isLocked = chance(4)});
    mPool.push_back(style);
    put(style, chance(2) ? *mUpper : *mLower);
  }
  /// Not where it would displace a style that others refer to.
  void put(const Ref<ZTSStyle>& style, ZTSStylesheet& sheet) {
    ZTSStyle* displaced = sheet.styleWithIdentifier(style->identifier());
    if (displaced == nullptr || !isReferenced(*displaced)) sheet.addStyle(style);
  }
  void addAgain() {
    const Ref<ZTSStyle>& style = mPool[static_cast<std::size_t>(below(static_cast<int>(mPool.size())))];
    // References that it had may have left their stylesheets meanwhile.
    if (style->stylesheet() == nullptr && familyOf(*style) == 0) put(style, chance(2) ? *mUpper : *mLower);
  }
  void identify(ZTSStyle& style) {
    const StringRef identifier = identifierOf(familyOf(style));
    if (!mayInherit(identifier, style.parentIdentifier()) || !mayBeParentOf(identifier, style.children())) return;
    const Ref<ZTSStyle> held(&style);
    const int way = below(3);
    if (way == 0) return style.stylesheet()->identifyStyle(held, identifier);
    if (way == 1) return style.stylesheet()->identifyStyleKeepingAllChildren(held, identifier, chance(2));
    ZTUMutablePointerSet<ZTSStyle> kept;
    for (ZTSStyle* child : style.children()) {
      if (chance(2)) kept.addObject(child);
    }
    style.stylesheet()->identifyStyleKeepingChildren(held, identifier, &kept);
  }
  void setOne(ZTSStyle& style) {
    const PropertyKey changed = key();
    const Ref<NSObject> value = valueFor(style, changed);
    style.setValueForProperty(isNull(value.get()) ? Ref<NSObject>() : value, changed);
  }
  void replace(ZTSStyle& style) {
    if (familyOf(style) != 0) return;
    ZTSStyle* other = anyOf([&](ZTSStyle& each) {
      return each.stylesheet() == style.stylesheet() && &each.classObject() == &style.classObject();
    });
    if (other == nullptr || mayBeParentOf(other->identifier(), style.children())) style.replaceWithStyle(other);
  }
  void vary(ZTSStyle& style) {
    if (style.isAnonymous() && style.parent() == nullptr) return;
    const Ref<PropertyMap> values = valuesFor(style);
    const StyleVariationRequest request{.propertyMap = values.get(),
                                        .isLocked = chance(4),
                                        .canCollapse = !chance(3),
                                        .canReuseIdentifiedChildren = chance(2)};
    const Ref<ZTSStyle> first = style.stylesheet()->variationOfStyle(&style, request);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(style.stylesheet()->variationOfStyle(&style, request), first);
    EXPECT_EQ(first->isLocked(), request.isLocked);
  }
  void quietly(ZTSStyle& style) {
    ZTSStylesheet& sheet = *style.stylesheet();
    sheet.setIsChangeCommunicationEnabled(false);
    setOne(style);
    sheet.setIsChangeCommunicationEnabled(true);
  }

  // What a document does whose content uses styles: it counts, undoably.
  struct Use {
    Ref<ZTSStyle> style;
    bool isOrphan;
    bool operator==(const Use&) const = default;
  };
  void count(ZTSStyle& style, bool isOrphan) { changeCount({Ref<ZTSStyle>(&style), isOrphan}, true); }
  void uncount(bool isOrphan) {
    std::vector<Use> found = mUses;
    std::erase_if(found, [&](const Use& use) { return use.isOrphan != isOrphan; });
    if (!found.empty()) changeCount(found[static_cast<std::size_t>(below(static_cast<int>(found.size())))], false);
  }
  void changeCount(Use changed, bool isAdded) {
    if (mHost.undo->isUndoRegistrationEnabled()) {
      mHost.undo->registerUndo("count", changed.style,
                               [this, changed, isAdded](ZTSStyle&) { changeCount(changed, !isAdded); });
    }
    ZTSStyle& style = *changed.style;
    if (isAdded) {
      mUses.push_back(changed);
      return changed.isOrphan ? style.incrementOrphanCount() : style.incrementUsageCount();
    }
    mUses.erase(std::find(mUses.begin(), mUses.end(), changed));
    changed.isOrphan ? style.decrementOrphanCount() : style.decrementUsageCount();
  }

  /// Styles that variations have made join the pool.
  void adopt() {
    for (const Ref<ZTSStylesheet>& sheet : {mUpper, mLower}) {
      for (ZTSStyle* style : sheet->styles()) {
        if (numberOf(style) < 0) mPool.emplace_back(style);
      }
    }
  }
  int numberOf(const ZTSStyle* style) const {
    const auto found = std::find(mPool.begin(), mPool.end(), style);
    return style == nullptr || found == mPool.end() ? -1 : static_cast<int>(found - mPool.begin());
  }
  std::string textOf(NSObject* value) const {
    const ZTSStyle* style = asStyle(value);
    return style != nullptr ? format("style %d", numberOf(style)) : value->description();
  }

  void check(const char* after) {
    SCOPED_TRACE(after);
    ZTULogRecorder notices;
    EXPECT_EQ(reportsOf(*mLower), Log{});
    mHasRefusedParent = false;
    for (const ZTSStyle* style : attached()) checkAgainstSlowModel(*style);
  }

  void checkAgainstSlowModel(const ZTSStyle& style) {
    const ZTSStyle* setter = &style;
    while (setter != nullptr && !setter->overridesProperty(size)) setter = setter->parent();
    const Ref<NSObject> own = setter != nullptr ? setter->overrideValueForProperty(size) : Ref<NSObject>();
    EXPECT_EQ(style.valueForProperty(size), isNull(own.get()) ? Ref<NSObject>() : own);

    const ZTSStylesheet* reach = style.p_reachStylesheet();
    const ZTSStyle* named = reach != nullptr ? reach->cascadedStyleWithIdentifier(style.parentIdentifier()) : nullptr;
    if (style.parent() != named) {
      const ZTSStyle* ancestor = named;
      while (ancestor != nullptr && ancestor != &style) ancestor = ancestor->parent();
      EXPECT_EQ(style.parent(), nullptr) << "only a parent that closes a loop is left out";
      EXPECT_EQ(ancestor, &style) << "only a parent that closes a loop is left out";
      mHasRefusedParent = true;
    }

    std::uint32_t uses = 0;
    std::uint32_t orphans = 0;
    for (const Use& use : mUses) {
      if (use.style == &style) ++(use.isOrphan ? orphans : uses);
    }
    const auto add = [&](const ZTSStyle& user, std::uint32_t times) {
      if (user.usageCount() != 0) uses += times;
      if (user.orphanCount() != 0) orphans += times;
    };
    for (const ZTSStyle* child : style.children()) add(*child, 1);
    for (ZTSStyleObserver* observer : style.observers().allObjects()) {
      const auto* aggregate = dynamic_cast<ZTSAggregateStyle*>(observer);
      if (aggregate != nullptr) add(*aggregate, static_cast<std::uint32_t>(style.observers().countForObject(observer)));
    }
    EXPECT_EQ(style.usageCount(), uses);
    EXPECT_EQ(style.orphanCount(), orphans);
  }

  std::mt19937 mRandom;
  bool mHasLoops;  // parents that close loops are named; which style of a loop is refused then depends on the past
  RandomHost mHost;
  Ref<ZTSStylesheet> mUpper = ZTSStylesheet::withHost(&mHost);
  Ref<ZTSStylesheet> mLower = ZTSStylesheet::withHost(&mHost);
  std::vector<Ref<ZTSStyle>> mPool;
  std::vector<Use> mUses;
  Ref<Watcher> mWatcher = make<Watcher>();
  std::optional<NotificationListener> mListener;
  std::string mTrace;
  int mPosts = 0;
  int mNames = 0;
  bool mHasRefusedParent = false;
};

class RandomModelTest : public ::testing::TestWithParam<unsigned> {};

TEST_P(RandomModelTest, StaysValidAndGoesBackToItsFirstState) {
  ZTULogRecorder notices;
  RandomModel model(GetParam());
  const std::string first = model.snapshot();
  for (int step = 0; step < 250 && !HasFailure(); ++step) model.step();
  const std::string last = model.snapshot();
  if (!HasFailure()) {
    model.copyBoth();
    model.writeAndRead();
    model.goBackAndForth(first, last);
  }
  if (HasFailure()) std::cerr << "seed " << GetParam() << ": " << model.trace() << '\n';
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomModelTest, ::testing::Range(1u, 25u));

}  // namespace
}  // namespace zt::testing
