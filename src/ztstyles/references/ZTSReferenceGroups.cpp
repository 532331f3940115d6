// SPDX-License-Identifier: MIT

// Freeing styles that only keep one another alive, by trial counting.
//
// A circle of counted references is never freed by counting, so circles have to be found. Take the given styles and
// everything that they lead to: the neighbourhood. Count for each member how many references to it the neighbourhood
// holds itself. One that has more references than that is held by somebody outside, and stays with all that it leads
// to. The rest is held by nobody but the rest: it is garbage, and every circle of it goes through a value, since
// parents form no circles. So the own values of all of it are dropped, while all of it is held, and it falls apart.
//
// Nothing is freed that somebody needs, because a reference counts as the neighbourhood's own only where the whole way
// to it is known. The references of three holders are therefore never followed, and count as held from outside: those
// of a style that belongs to a stylesheet, of a map that more than one style holds, and of an application's own value.

#include <platform/NSArray.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>
#include <utility>

namespace zt {

namespace {

/// Whether the value is a member of the neighbourhood of who holds it: a style, or a list that leads on to some.
bool leadsOn(NSObject& value) {
  if (asStyle(&value) != nullptr) return true;
  const NSArray* list = NSArray::from(&value);
  return list != nullptr && std::any_of(list->objects().begin(), list->objects().end(), [](const Ref<NSObject>& each) {
           return asStyle(each.get()) != nullptr || NSArray::from(each.get()) != nullptr;
         });
}

/// Calls with each member to which the style or list holds a reference that may be followed, once a reference.
template <class Visit>
void forEachHeldBy(NSObject& holder, Visit visit) {
  if (const NSArray* list = NSArray::from(&holder)) {
    for (const Ref<NSObject>& element : list->objects()) {
      if (leadsOn(*element)) visit(*element);
    }
    return;
  }
  const ZTSStyle& style = *asStyle(&holder);
  if (style.stylesheet() != nullptr) return;
  if (style.parent() != nullptr) visit(*style.parent());
  const PropertyMap* own = style.p_ownEntries();
  if (own == nullptr || own->referenceCount() != 1) return;
  for (const PropertyMap::Entry& entry : *own) {
    if (leadsOn(*entry.value)) visit(*entry.value);
  }
}

class Neighbourhood {
 public:
  /// The given references count as the neighbourhood's own.
  explicit Neighbourhood(const std::vector<Ref<ZTSStyle>>& given) {
    for (const Ref<ZTSStyle>& style : given) ++mMembers[placeOf(*style)].inside;
    for (std::size_t place = 0; place < mMembers.size(); ++place) {  // grows on the way
      forEachHeldBy(*mMembers[place].object, [&](NSObject& held) { ++mMembers[placeOf(held)].inside; });
    }
  }

  /// The styles that nobody outside leads to.
  std::vector<Ref<ZTSStyle>> garbage() {
    for (std::size_t place = 0; place < mMembers.size(); ++place) {
      if (mMembers[place].object->referenceCount() > mMembers[place].inside) keep(place);
    }
    while (!mToFollow.empty()) {
      NSObject& kept = *mMembers[mToFollow.back()].object;
      mToFollow.pop_back();
      forEachHeldBy(kept, [&](NSObject& held) { keep(placeOf(held)); });
    }
    std::vector<Ref<ZTSStyle>> styles;
    for (const Member& member : mMembers) {
      if (ZTSStyle* style = asStyle(member.object); style != nullptr && !member.isKept) styles.emplace_back(style);
    }
    return styles;
  }

 private:
  struct Member {
    NSObject* object;          // a style or a list
    std::uint32_t inside = 0;  // references to it that members hold, or that were given
    bool isKept = false;
  };

  /// The place of the object, which becomes a member on first sight.
  std::size_t placeOf(NSObject& object) {
    const auto [entry, isNew] = mPlaces.try_emplace(&object, mMembers.size());
    if (isNew) mMembers.push_back(Member{&object});
    return entry->second;
  }

  void keep(std::size_t place) {
    if (!std::exchange(mMembers[place].isKept, true)) mToFollow.push_back(place);
  }

  std::vector<Member> mMembers;
  boost::unordered_flat_map<const NSObject*, std::size_t> mPlaces;
  std::vector<std::size_t> mToFollow;  // kept, and what they lead to is not yet
};

}  // namespace

bool holdsStylesAsValues(const ZTSStyle& style) {
  const PropertyMap* own = style.p_ownEntries();
  return own != nullptr &&
         std::any_of(own->begin(), own->end(), [](const PropertyMap::Entry& entry) { return leadsOn(*entry.value); });
}

void freeReferenceGroups(std::vector<Ref<ZTSStyle>>&& styles) {
  // Most styles are held by nobody else and hold none themselves. From the last to the first, since children come after
  // their parents.
  for (auto each = styles.rbegin(); each != styles.rend(); ++each) {
    if ((*each)->referenceCount() == 1 && !holdsStylesAsValues(**each)) each->reset();
  }
  std::erase_if(styles, [](const Ref<ZTSStyle>& style) { return !style; });
  if (styles.empty()) return;
  const std::vector<Ref<ZTSStyle>> garbage = Neighbourhood(styles).garbage();
  styles.clear();
  for (const Ref<ZTSStyle>& style : garbage) {
    if (holdsStylesAsValues(*style)) style->p_setPropertyMap({});
  }
}

}  // namespace zt
