// SPDX-License-Identifier: MIT

// Deep copies, and references that move from one style to another.

#include <platform/ZTFirstFailure.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSAggregateStyle";

Ref<ZTSStyle> copyOf(const ZTSStyle& style) { return style.copyWithoutSettingStylesheet(); }

}  // namespace

ZTSStyleCopies::ZTSStyleCopies(ZTSStyleSet given, std::vector<Ref<ZTSStyle>> all) noexcept
    : mStyles(std::move(given)), mAll(std::move(all)) {}

ZTSStyleCopies& ZTSStyleCopies::operator=(ZTSStyleCopies&& other) noexcept {
  std::swap(mStyles, other.mStyles);
  std::swap(mAll, other.mAll);
  return *this;
}

ZTSStyleCopies::~ZTSStyleCopies() {
  mStyles.removeAllObjects();
  ZTFirstFailure passedOver;  // without memory, circles stay
  passedOver.attempt([&] { freeReferenceGroups(std::move(mAll)); });
}

/// What a deep copy knows: which style has which copy.
class ZTSDeepCopy {
 public:
  /// Copies the style anew, and everything that it reaches unless that has a copy already.
  Ref<ZTSStyle> copyGiven(const Ref<ZTSStyle>& style) {
    Ref<ZTSStyle> copy = copyOf(*style);
    mCopies->setObjectForKey(copy, style);
    if (!style->isPlain(ZTSStyleClass::libraryReading)) {
      if (const auto reached = style->recursivelyReferencedStyles()) {
        for (const Ref<ZTSStyle>& one : reached->retainedSnapshot()) copyReached(one);
      }
    } else if (mReached.addObject(style.get())) {
      // The same styles in the same order, but what was reached before is not walked through once more: a
      // collection that holds every style of a long chain would cost the square of its length.
      std::vector<Ref<ZTSStyle>> waiting{style};
      for (std::size_t next = 0; next < waiting.size(); ++next) {
        const auto referenced = Ref<ZTSStyle>(waiting[next])->referencedStyles();
        if (!referenced) continue;
        for (const Ref<ZTSStyle>& one : referenced->retainedSnapshot()) {
          if (one == style) continue;
          copyReached(one);
          if (mReached.addObject(one.get())) waiting.push_back(one);
        }
      }
    }
    return copy;
  }

  [[nodiscard]] std::vector<Ref<ZTSStyle>> all() const { return mCopies->allValues(); }

  /// Makes the copies refer to copies.
  void relink() const {
    for (const Ref<ZTSStyle>& copy : mCopies->allValues()) {
      if (ZTSAggregateStyle* aggregate = asAggregateStyle(copy.get()))
        aggregate->replaceReferencedStylesUsingStyleMap(*mCopies);
    }
  }

 private:
  void copyReached(const Ref<ZTSStyle>& style) {
    if (mCopies->objectForKey(style.get()) == nullptr) mCopies->setObjectForKey(copyOf(*style), style);
  }

  Ref<ZTSStyleMap> mCopies = make<ZTSStyleMap>();
  ZTSStyleSet mReached;  // styles whose references, and theirs in turn, all have copies
};

ZTSStyleCopies ZTSAggregateStyle::deepCopyStyles(const std::vector<Ref<ZTSStyle>>& styles) {
  ZTSStyleCopies result({}, {});
  ZTSDeepCopy copies;
  ZTSStyleSet given;
  for (const Ref<ZTSStyle>& style : styles) {
    if (style) given.addObject(copies.copyGiven(style).get());
  }
  // Before they refer to one another: what is thrown from here on leaves no circle behind.
  result = ZTSStyleCopies(std::move(given), copies.all());
  copies.relink();
  return result;
}

void ZTSAggregateStyle::replaceReferencedStylesUsingStyleMap(const ZTSStyleMap& map) {
  for (PropertyKey key : referencedStyleProperties()) {
    const Ref<ZTSStyle> original = p_referencedStyleForProperty(key);
    if (!original) continue;
    Ref<ZTSStyle> replacement(map.objectForKey(original.get()));
    if (!replacement) {
      ZT_REPORT("replaceReferencedStylesUsingStyleMap:", this, kSourceFile,
                "Failed to find mapped style for original style <%p>.", address(original.get()));
    }
    setValueForProperty(replacement, key);
  }
}

void ZTSAggregateStyle::didReplaceStyleWithStyle(ZTSStyle* replaced, ZTSStyle* replacement) {
  if (replaced == nullptr || replacement == nullptr) return;
  const Ref<ZTSAggregateStyle> self(this);
  const Ref<ZTSStyle> old(replaced);
  const Ref<ZTSStyle> next(replacement);
  for (PropertyKey key : referencedStyleProperties()) {
    if (p_referencedStyleForProperty(key) == old) setValueForProperty(next, key);
  }
}

bool ZTSAggregateStyle::overridesAnyNonReferencedStyleProperty() const {
  ZTUMutablePointerSet<ZTSStyle> ignored;
  const auto referenced = referencedStyles();
  if (referenced) ignored.unionSet(*referenced);
  return overridesAnyNonReferencedStylePropertyIgnoringStyles(ignored);
}

bool ZTSAggregateStyle::overridesAnyNonReferencedStylePropertyIgnoringStyles(
    const ZTUMutablePointerSet<ZTSStyle>& ignored) const {
  // What was looked at once without a finding needs no second look, whichever way leads there: one set of
  // visited styles for the whole walk, and a list in place of calls.
  struct Examined {
    Ref<const ZTSAggregateStyle> style;
    std::vector<PropertyKey> keys;
    std::size_t next = 0;
  };
  std::vector<Examined> path;
  const auto examine = [&](const ZTSAggregateStyle& style) {
    path.push_back(Examined{Ref<const ZTSAggregateStyle>(&style), {}});
    const Ref<const PropertyMap> own = style.overridePropertyMap();
    if (!own) return;
    for (const PropertyMap::Entry& entry : *own) path.back().keys.push_back(entry.key);
  };
  auto visited = ZTUMutablePointerSet<ZTSStyle>::setWithSet(ignored);
  std::vector<Ref<ZTSStyle>> held;  // a default style may be a fresh one: its address must not be used again

  examine(*this);
  while (!path.empty()) {
    Examined& examined = path.back();
    if (examined.next == examined.keys.size()) {
      path.pop_back();
      continue;
    }
    const PropertyKey key = examined.keys[examined.next++];
    const Ref<NSObject> value = examined.style->valueForProperty(key);
    ZTSStyle* style = asStyle(value.get());
    if (style == nullptr) return true;
    if (!visited.addObject(style)) continue;
    held.emplace_back(style);
    const auto* aggregate = asAggregateStyle(style);
    if (aggregate == nullptr) {
      if (style->overridesAnyProperty()) return true;
    } else if (style->isPlain(ZTSStyleClass::libraryReading)) {
      examine(*aggregate);
    } else {
      NestingGuard guard("overridesAnyNonReferencedStylePropertyIgnoringStyles:", Nesting::lookup);
      if (aggregate->overridesAnyNonReferencedStylePropertyIgnoringStyles(visited)) return true;
    }
  }
  return false;
}

}  // namespace zt
