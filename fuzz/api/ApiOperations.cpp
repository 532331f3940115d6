// SPDX-License-Identifier: MIT
// What the bytes may ask for.

#include "ApiModel.h"

#include <platform/NSNull.h>
#include <platform/NSNumber.h>

#include <algorithm>

namespace zt::fuzzing {

namespace {

PropertyKey keyAt(std::size_t index) {
  const PropertyKey all[] = {size, weight, list, label};
  return all[index];
}

/// One that is about to leave is linked still, and what happens to it then nobody can take back.
bool isHeld(const ZTSStyle& style) {
  const ZTSStylesheet* sheet = style.stylesheet();
  if (sheet == nullptr) return false;
  return style.isIdentified() ? sheet->styleWithIdentifier(style.identifier()) == &style
                              : sheet->anonymousStyles().containsObject(&style);
}

}  // namespace

struct ApiModel::Operation {
  const char* name;
  void (*perform)(ApiModel& model);
};

Ref<ZTSStyle> ApiModel::any() { return mPool[mBytes.below(mPool.size())]; }

Ref<ZTSStyle> ApiModel::anyHeld() {
  const std::size_t start = mBytes.below(mPool.size());
  for (std::size_t step = 0; step < mPool.size(); ++step) {
    const Ref<ZTSStyle>& style = mPool[(start + step) % mPool.size()];
    if (isHeld(*style)) return style;
  }
  addNew();
  return mPool.back();
}

StringRef ApiModel::identifier() {
  const std::size_t which = mBytes.below(8);
  return which == 7 ? StringRef() : StringRef(std::string(1, static_cast<char>('a' + which)));
}

PropertyKey ApiModel::key() { return keyAt(mBytes.below(4)); }

Ref<PropertySet> ApiModel::keys() {
  const Ref<PropertySet> set = PropertySet::make();
  const std::uint8_t which = mBytes.take();
  for (std::size_t bit = 0; bit < 4; ++bit) {
    if ((which >> bit & 1) != 0) set->add(keyAt(bit));
  }
  return set;
}

Ref<NSObject> ApiModel::value(PropertyKey which) {
  const std::size_t what = mBytes.below(6);
  if (what == 0) return Ref<NSObject>(NSNull::null());
  if (which == list || which == label) {
    const Ref<ZTSStyle> style = anyHeld();
    return Ref<NSObject>(static_cast<ZTAXMLCoding*>(style.get()));
  }
  return NSNumber::withInteger(static_cast<std::int64_t>(what) * 10);
}

Ref<PropertyMap> ApiModel::values() {
  const Ref<PropertyMap> map = PropertyMap::make();
  for (const PropertyKey each : keys()->keys()) map->set(each, value(each));
  return map;
}

ZTSStylesheet& ApiModel::sheet() { return mBytes.chance(2) ? *mUpper : *mLower; }

void ApiModel::addNew() {
  static const ZTSStyleClass* const classes[] = {
      &Plain::styleClass(),         &Aggregate::styleClass(),         &Deriving::styleClass(),
      &Hooked<Plain>::styleClass(), &Hooked<Aggregate>::styleClass(), &Hooked<Deriving>::styleClass()};
  const ZTSStyleClass& styleClass = *classes[mBytes.below(6)];
  const Ref<PropertyMap> map = PropertyMap::with({{size, NSNumber::withInteger(10 * (1 + mBytes.below(3)))}});
  const StringRef name = identifier();
  const StringRef parent = identifier();
  const Ref<ZTSStyle> style = styleClass.makeStyle(
      {.identifier = name, .parentIdentifier = parent, .overridePropertyMap = map.get(), .isLocked = mBytes.chance(4)});
  mPool.push_back(style);
  sheet().addStyle(style);
}

void ApiModel::performOne() {
  const auto& all = operations();
  const Operation& operation = all[mBytes.below(all.size())];
  trace(operation.name);
  operation.perform(*this);
}

/// Below another stylesheet and back: nobody undoes that.
void ApiModel::visitOther() {
  struct Away {
    bool& flag;
    explicit Away(bool& isAway) : flag(isAway) { flag = true; }
    ~Away() { flag = false; }
  } const away(mIsAway);
  try {
    mLower->setParent(mOther);
  } catch (...) {
    mLower->setParent(mUpper);
    throw;
  }
  mLower->setParent(mUpper);
}

const std::vector<ApiModel::Operation>& ApiModel::operations() {
  using M = ApiModel;
  static const std::vector<Operation> all = {
      {"add a new style", [](M& m) { m.addNew(); }},
      {"add",
       [](M& m) {
         const Ref<ZTSStyle> style = m.any();
         if (style->stylesheet() == nullptr) m.sheet().addStyle(style);
       }},
      {"remove",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         style->stylesheet()->removeStyle(style);
       }},
      {"identify",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         if (const StringRef name = m.identifier()) style->stylesheet()->identifyStyle(style, name);
       }},
      {"identify keeping all children",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         const StringRef name = m.identifier();
         if (name) style->stylesheet()->identifyStyleKeepingAllChildren(style, name, m.mBytes.chance(2));
       }},
      {"anonymize",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         style->stylesheet()->anonymizeStyle(style);
       }},
      {"set parent identifier", [](M& m) { m.anyHeld()->setParentIdentifier(m.identifier()); }},
      {"set name", [](M& m) { m.anyHeld()->setName(m.identifier()); }},
      {"lock",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         style->setIsLocked(!style->isLocked());
       }},
      {"set value",
       [](M& m) {
         const PropertyKey which = m.key();
         m.anyHeld()->setValueForProperty(m.value(which), which);
       }},
      {"set values", [](M& m) { m.anyHeld()->setValuesForProperties(*m.values()); }},
      {"remove value", [](M& m) { m.anyHeld()->removeValueForProperty(m.key()); }},
      {"remove values", [](M& m) { m.anyHeld()->removeValuesForProperties(*m.keys()); }},
      {"locked set", [](M& m) { m.anyHeld()->lockedStyleSetValuesForProperties(*m.values(), m.mBytes.take() & 7); }},
      {"locked remove",
       [](M& m) { m.anyHeld()->lockedStyleRemoveValuesForProperties(*m.keys(), m.mBytes.take() & 7); }},
      {"collapse", [](M& m) { m.anyHeld()->collapseOverriddenPropertyValues(); }},
      {"clear", [](M& m) { m.anyHeld()->clearOverriddenPropertyValues(); }},
      {"vary",
       [](M& m) {
         const Ref<ZTSStyle> style = m.anyHeld();
         if (style->isAnonymous() && style->parent() == nullptr) return;
         const Ref<PropertyMap> wanted = m.values();
         style->stylesheet()->variationOfStyle(style.get(),
                                               {.propertyMap = wanted.get(), .isLocked = m.mBytes.chance(3)});
       }},
      {"use",
       [](M& m) {
         m.mUses.push_back(m.anyHeld());
         m.mUses.back()->incrementUsageCount();
       }},
      {"end use",
       [](M& m) {
         if (m.mUses.empty()) return;
         const std::size_t which = m.mBytes.below(m.mUses.size());
         const Ref<ZTSStyle> style = m.mUses[which];
         m.mUses.erase(m.mUses.begin() + static_cast<std::ptrdiff_t>(which));
         style->decrementUsageCount();
       }},
      {"observe", [](M& m) { m.anyHeld()->addObserver(m.mWatcher.get()); }},
      {"set parent of stylesheet", [](M& m) { m.visitOther(); }},
      {"set value untold",
       [](M& m) {
         m.mLower->setIsChangeCommunicationEnabled(false);
         const PropertyKey which = m.key();
         const Ref<NSObject> wanted = m.value(which);
         m.anyHeld()->setValueForProperty(wanted, which);
         m.mLower->setIsChangeCommunicationEnabled(true);
       }},
  };
  return all;
}

}  // namespace zt::fuzzing
