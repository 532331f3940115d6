// SPDX-License-Identifier: MIT

// What an aggregate answers: values, references, its description.

#include <platform/NSAssertionHandler.h>
#include <platform/NSNull.h>
#include <platform/ZTFormat.h>
#include <platform/ZTNesting.h>
#include <ztstyles/ZTSStyleClassOf.h>

#include <boost/container/small_vector.hpp>

#include <algorithm>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSAggregateStyle";

const std::vector<PropertyKey>& noProperties() {
  static const std::vector<PropertyKey> none;
  return none;
}

/// What `%@` prints for a list of properties: the class without one has none.
std::string describeProperties(const std::vector<PropertyKey>& keys) {
  if (keys.empty()) return "(null)";
  std::string text;
  for (PropertyKey key : keys) text += (text.empty() ? "(" : ", ") + describe(key);
  return text + ")";
}

/// A style whose description is being built on this thread, in the list of all of them.
class DescriptionInProgress {
 public:
  explicit DescriptionInProgress(const ZTSStyle& style) noexcept : mStyle(style), mOuter(tInnermost) {
    tInnermost = this;
  }
  ~DescriptionInProgress() { tInnermost = mOuter; }
  DescriptionInProgress(const DescriptionInProgress&) = delete;
  DescriptionInProgress& operator=(const DescriptionInProgress&) = delete;

  /// Whether the description of an equal style is being built.
  static bool concerns(const ZTSStyle& style) {
    for (const DescriptionInProgress* one = tInnermost; one != nullptr; one = one->mOuter) {
      if (&one->mStyle == &style || (one->mStyle.hash() == style.hash() && one->mStyle.isEqual(&style))) return true;
    }
    return false;
  }

 private:
  static thread_local DescriptionInProgress* tInnermost;

  const ZTSStyle& mStyle;
  DescriptionInProgress* mOuter;
};

thread_local DescriptionInProgress* DescriptionInProgress::tInnermost = nullptr;

}  // namespace

const ZTSStyleClass& ZTSAggregateStyle::styleClass() {
  static const auto* object = new ZTSStyleClassOf<ZTSAggregateStyle>("ZTSAggregateStyle", ZTSStyle::styleClass());
  return *object;
}

const ZTSStyleClass& ZTSAggregateStyle::classObject() const { return styleClass(); }

// ---- Hooks

const std::vector<PropertyKey>& ZTSAggregateStyle::referencedStyleProperties() const { return noProperties(); }
const std::vector<PropertyKey>& ZTSAggregateStyle::strongReferencedStyleProperties() const {
  return referencedStyleProperties();
}
const std::vector<PropertyKey>& ZTSAggregateStyle::weakReferencedStyleProperties() const { return noProperties(); }
Ref<NSObject> ZTSAggregateStyle::defaultValueForNilStyleProperty(PropertyKey) const { return {}; }

bool ZTSAggregateStyle::isReferencedStyleProperty(PropertyKey key) const {
  const std::vector<PropertyKey>& keys = referencedStyleProperties();
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

// ---- Lookup

Ref<NSObject> ZTSAggregateStyle::valueForProperty(PropertyKey key) const {
  // The chain in a loop, as far as the classes leave the lookup alone. The default of each level is asked for
  // only where the levels above have no value, the highest first.
  boost::container::small_vector<const ZTSAggregateStyle*, 16> askable;  // nearest first
  const ZTSStyle* level = this;
  Ref<NSObject> value;
  for (;;) {
    if (!level->isPlain(ZTSStyleClass::plainReading)) askable.push_back(static_cast<const ZTSAggregateStyle*>(level));
    if (NSObject* own = level->p_overrideValueForProperty(key)) {
      if (!isNull(own)) value.reset(own);
      break;
    }
    level = level->parent();
    if (level == nullptr) break;
    if (!level->isPlain(ZTSStyleClass::plainReading) && !level->isPlain(ZTSStyleClass::libraryReading)) {
      NestingGuard guard("valueForProperty:", Nesting::lookup);
      value = level->valueForProperty(key);
      break;
    }
  }
  for (; !value && !askable.empty(); askable.pop_back()) value = askable.back()->defaultValueForNilStyleProperty(key);
  return value;
}

Ref<ZTSStyle> ZTSAggregateStyle::p_referencedStyleForProperty(PropertyKey key) const {
  if (!isReferencedStyleProperty(key)) return {};
  const Ref<NSObject> value = overrideValueForProperty(key);
  if (!value) return {};
  Ref<ZTSStyle> style(asStyle(value.get()));
  if (!style && !isNull(value.get())) ZT_RAISE("p_referencedStyleForProperty:", this, kSourceFile, "not a style");
  return style;
}

std::optional<ZTSStyleSet> ZTSAggregateStyle::referencedStyles() const {
  ZTSStyleSet styles;
  for (PropertyKey key : referencedStyleProperties()) {
    const Ref<ZTSStyle> referenced = p_referencedStyleForProperty(key);
    if (referenced != this) styles.addObject(referenced.get());
  }
  return styles;
}

std::optional<ZTSStyleSet> ZTSAggregateStyle::implicitlyReferencedStyles() const {
  std::optional<ZTSStyleSet> styles;
  for (PropertyKey key : referencedStyleProperties()) {
    if (ZTSStyle::valueForProperty(key)) continue;
    const Ref<NSObject> standIn = defaultValueForNilStyleProperty(key);
    ZTSStyle* style = asStyle(standIn.get());
    if (style == nullptr || style == this) continue;
    if (!styles) styles.emplace();
    styles->addObject(style);
  }
  return styles;
}

std::optional<ZTSStyleSet> ZTSAggregateStyle::recursivelyReferencedStyles() const {
  ZTSStyleSet found;
  std::vector<Ref<ZTSStyle>> waiting;  // found, and what they refer to not yet looked at from `next` on
  std::size_t next = 0;
  const auto add = [&](const std::optional<ZTSStyleSet>& styles) {
    if (!styles) return;
    for (ZTSStyle* style : *styles) {
      if (style != this && found.addObject(style)) waiting.emplace_back(style);
    }
  };
  add(referencedStyles());
  while (next < waiting.size()) {
    const Ref<ZTSStyle> style = waiting[next++];
    add(style->referencedStyles());
  }
  return found;
}

// ---- Description

std::string ZTSAggregateStyle::description() const {
  if (DescriptionInProgress::concerns(*this)) return format("<%s %p>", classObject().name(), address(this));
  NestingGuard guard("description", Nesting::description);
  const DescriptionInProgress inProgress(*this);
  std::string text = ZTSStyle::description();
  text.insert(text.size() - 1, format("; referencedStyles=%@", describeProperties(referencedStyleProperties())));
  return text;
}

}  // namespace zt
