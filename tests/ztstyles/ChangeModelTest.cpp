// SPDX-License-Identifier: MIT

// Random sequences of changes, undo and redo, compared step by step with a model that follows the rules of
// telling as plainly as possible: every call is made, every record is built, nothing is skipped.

#include "Scene.h"

#include <map>
#include <random>

namespace zt::testing {
namespace {

using Values = std::map<int, int>;  // by number of the key; 0 stands for explicitly no value
constexpr int kKeys = 4;
const PropertyKey kAll[kKeys] = {size, weight, colour, label};
constexpr int kStyles = 14;

struct Model {
  struct Style {
    int parent = -1;
    Values own;
    bool locked = false;
    bool observed = false;
    std::vector<int> children;
  };
  struct Record {
    int from, original;
    std::vector<int> keys;
    Values old;
  };
  enum Phase { kChange = 1, kUndo = 2, kRedo = 4 };
  using Actions = std::vector<std::function<void()>>;

  std::vector<Style> styles = std::vector<Style>(kStyles);
  bool telling = true;
  Phase phase = kChange;
  Log log;
  std::vector<Actions> undos, redos;
  Actions* open = nullptr;

  int raw(int style, int key, int none = -1) const {
    for (; style >= 0; style = styles[style].parent) {
      if (const auto found = styles[style].own.find(key); found != styles[style].own.end()) return found->second;
    }
    return none;
  }
  void inGroup(Phase now, std::vector<Actions>& into, const std::function<void()>& work) {
    Actions actions;
    open = &actions;
    phase = now;
    work();
    open = nullptr;
    phase = kChange;
    if (!actions.empty()) into.push_back(actions);
  }
  void replay(Phase now, std::vector<Actions>& from, std::vector<Actions>& into) {
    const Actions actions = from.back();
    from.pop_back();
    inGroup(now, into, [&] {
      for (auto each = actions.rbegin(); each != actions.rend(); ++each) (*each)();
    });
  }

  void setOne(int style, int key, int value) {
    Style& s = styles[style];
    Record record{style, style, {key}, {}};
    if (s.own.contains(key)) {
      record.old[key] = s.own[key];
      open->push_back([=, this, before = s.own[key]] { setOne(style, key, before); });
    } else {
      open->push_back([=, this] { removeOne(style, key); });
      if (const int old = raw(s.parent, key, 0); old != 0) record.old[key] = old;
    }
    s.own[key] = value;
    tell(style, record);
  }
  void removeOne(int style, int key) {
    const auto own = styles[style].own.find(key);
    if (own == styles[style].own.end()) return;
    const int old = own->second;
    open->push_back([=, this] { setOne(style, key, old); });
    styles[style].own.erase(own);
    tell(style, {style, style, {key}, {{key, old}}});
  }
  void setAll(int style, const Values& values, int flags) {
    Style& s = styles[style];
    Values old;
    std::vector<int> added, keys;
    for (const auto& [key, value] : values) {
      keys.push_back(key);
      s.own.contains(key) ? void(old[key] = s.own[key]) : added.push_back(key);
    }
    if (!old.empty()) open->push_back([=, this] { setAll(style, old, flags); });
    if (!added.empty()) open->push_back([=, this] { removeAll(style, added, flags); });
    for (int key : added) {
      if (const int inherited = raw(s.parent, key); inherited >= 0) old[key] = inherited;
    }
    for (const auto& [key, value] : values) s.own[key] = value;
    if ((flags & phase) != 0) tell(style, {style, style, keys, old});
  }
  void removeAll(int style, const std::vector<int>& keys, int flags) {
    Values& own = styles[style].own;
    Values old;
    std::vector<int> removed;
    for (int key : keys) {
      if (!own.contains(key)) continue;
      old[key] = own[key];
      removed.push_back(key);
      own.erase(key);
    }
    if (removed.empty()) return;
    open->push_back([=, this] { setAll(style, old, flags); });
    if ((flags & phase) != 0) tell(style, {style, style, removed, old});
  }

  void tell(int style, const Record& record) {
    Style& s = styles[style];
    if (!telling || (record.from != style && record.from != s.parent)) return;
    Record passed = record;
    if (record.from != style) {
      std::erase_if(passed.keys, [&](int key) { return s.own.contains(key); });
      passed.from = style;
    }
    if (passed.keys.empty()) return;
    if (record.from != style && s.locked && phase == kChange) {
      Values kept;
      for (int key : passed.keys) {
        const auto old = record.old.find(key);
        if (old != record.old.end() && old->second != raw(record.original, key)) kept[key] = old->second;
      }
      if (!kept.empty()) setAll(style, kept, kRedo);
    }
    for (int child : std::vector<int>(s.children)) tell(child, passed);
    if (!s.observed) return;
    std::string text = std::to_string(style) + ":";
    for (int key : passed.keys) {
      const auto old = passed.old.find(key);
      const std::string was = old == passed.old.end() ? "" : old->second == 0 ? "<null>" : std::to_string(old->second);
      text += " " + kAll[key].string().text() + "<" + was;
    }
    log.push_back(text);
  }
};

/// Overrides the handling of changes: called for each, where the others are worked off in a loop or skipped.
struct Overriding : ZTSStyleOf<Overriding, TestStyle> {
  static constexpr const char* kClassName = "Overriding";
  void stylePropertiesChanged(const ZTSStyleChangeInfo& change) override { TestStyle::stylePropertiesChanged(change); }
};

void compareOneSequence(unsigned seed) {
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);
  const auto below = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  Scene scene;
  Model model;
  StyleRecorder recorder(scene.log);
  std::vector<TestStyle*> styles;
  for (int i = 0; i < kStyles; ++i) {
    Model::Style& style = model.styles[i];
    style.parent = i > 0 && below(8) > 0 ? below(i) : -1;
    style.locked = below(4) == 0;
    const StringRef parent = style.parent >= 0 ? StringRef(std::to_string(style.parent)) : StringRef();
    styles.push_back(below(3) == 0 ? &scene.style<Overriding>(std::to_string(i), parent, {}, style.locked)
                                   : &scene.style(std::to_string(i), parent, {}, style.locked));
    if (style.parent >= 0) model.styles[style.parent].children.push_back(i);
  }
  const auto asObject = [](int value) {
    return value == 0 ? Ref<NSObject>(NSNull::null()) : Ref<NSObject>(NSNumber::withInteger(value));
  };
  for (int step = 0; step < 40; ++step) {
    const int at = below(kStyles);
    TestStyle& style = *styles[at];
    Values values;
    Ref<PropertyMap> map = PropertyMap::make();
    Ref<PropertySet> keys = PropertySet::make();
    std::vector<int> numbers;
    for (int key = 0; key < kKeys; ++key) {
      if (below(2) == 0) continue;
      numbers.push_back(key);
      keys->add(kAll[key]);
      map->set(kAll[key], asObject(values[key] = below(4)));
    }
    const int key = below(kKeys), value = below(4), flags = below(8), kind = below(12);
    const auto both = [&](const std::function<void()>& real, const std::function<void()>& modelled) {
      scene.host.undo->performInGroup(real);
      model.redos.clear();
      model.inGroup(Model::kChange, model.undos, modelled);
    };
    if (kind <= 2) {
      both([&] { style.setValueForProperty(value == 0 ? Ref<NSObject>() : asObject(value), kAll[key]); },
           [&] { model.setOne(at, key, value); });
    } else if (kind == 3 && !values.empty()) {
      both([&] { style.setValuesForProperties(*map); }, [&] { model.setAll(at, values, 7); });
    } else if (kind == 4 && model.styles[at].own.contains(key)) {
      both([&] { style.removeValueForProperty(kAll[key]); }, [&] { model.removeOne(at, key); });
    } else if (kind == 5 && std::any_of(numbers.begin(), numbers.end(),
                                        [&](int each) { return model.styles[at].own.contains(each); })) {
      both([&] { style.removeValuesForProperties(*keys); }, [&] { model.removeAll(at, numbers, 7); });
    } else if (kind == 6 && !values.empty()) {
      both([&] { style.lockedStyleSetValuesForProperties(*map, flags); }, [&] { model.setAll(at, values, flags); });
    } else if (kind <= 8 && !model.undos.empty()) {
      scene.undo();
      model.replay(Model::kUndo, model.undos, model.redos);
    } else if (kind == 9 && !model.redos.empty()) {
      scene.redo();
      model.replay(Model::kRedo, model.redos, model.undos);
    } else if (kind == 10) {
      model.styles[at].observed ? style.removeObserver(&recorder) : style.addObserver(&recorder);
      model.styles[at].observed = !model.styles[at].observed;
    } else if (below(3) == 0) {
      scene.sheet->setIsChangeCommunicationEnabled(model.telling = !model.telling);
    } else {
      style.p_setIsLocked(model.styles[at].locked = !model.styles[at].locked);
    }
    ASSERT_EQ(scene.log, model.log) << "kind " << kind << " step " << step;
    for (int i = 0; i < kStyles; ++i) {
      const Ref<PropertyMap> wanted = PropertyMap::make();
      for (const auto& [each, own] : model.styles[i].own) wanted->set(kAll[each], asObject(own));
      const Ref<const PropertyMap> real = styles[i]->overridePropertyMap();
      ASSERT_TRUE(real ? real->isEqual(*wanted) : wanted->isEmpty())
          << "style " << i << " kind " << kind << " step " << step;
    }
    ASSERT_EQ(scene.host.undo->canUndo(), !model.undos.empty());
  }
}

TEST(ChangeModelTest, ThousandsOfSequencesTellWhatThePlainRulesTell) {
  for (unsigned seed = 0; seed < 2000 && !::testing::Test::HasFailure(); ++seed) compareOneSequence(seed);
}

}  // namespace
}  // namespace zt::testing
