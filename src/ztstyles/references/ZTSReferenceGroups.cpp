// SPDX-License-Identifier: MIT

// Freeing styles that only keep one another alive, by trial counting: from the number of references that each
// style of a closed neighbourhood has, those that the neighbourhood itself holds are taken away. Where some
// remain, somebody outside holds the style, so that it and all that it reaches must stay. The rest is garbage.

#include <platform/NSArray.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <algorithm>

namespace zt {

class ZTSReferenceGroups {
 public:
  /// `held` are references of the caller's, which count as none from outside.
  explicit ZTSReferenceGroups(const std::vector<Ref<ZTSStyle>>& held) {
    for (const Ref<ZTSStyle>& style : held) ++mMembers[enter(*style)].inside;
    for (std::size_t place = 0; place < mMembers.size(); ++place) {
      forEachHeldBy(mMembers[place], [&](NSObject& object) { ++mMembers[enter(object)].inside; });
    }
  }

  /// Marks what is held from outside, and everything that it reaches.
  void markReachable() {
    std::vector<std::size_t> waiting;
    for (std::size_t place = 0; place < mMembers.size(); ++place) {
      Member& member = mMembers[place];
      if (member.object->referenceCount() > member.inside) {
        member.isReachable = true;
        waiting.push_back(place);
      }
    }
    while (!waiting.empty()) {
      const Member member = mMembers[waiting.back()];
      waiting.pop_back();
      forEachHeldBy(member, [&](NSObject& object) {
        const std::size_t place = enter(object);
        if (std::exchange(mMembers[place].isReachable, true)) return;
        waiting.push_back(place);
      });
    }
  }

  /// The styles that nothing outside reaches.
  [[nodiscard]] std::vector<Ref<ZTSStyle>> unreachable() const {
    std::vector<Ref<ZTSStyle>> styles;
    for (const Member& member : mMembers) {
      if (!member.isReachable && member.style != nullptr) styles.emplace_back(member.style);
    }
    return styles;
  }

  /// Whether values of the style may be part of a cycle.
  static bool hasReferences(const ZTSStyle& style) {
    const PropertyMap* own = style.p_ownEntries();
    return own != nullptr &&
           std::any_of(own->begin(), own->end(), [](const PropertyMap::Entry& entry) { return canHold(*entry.value); });
  }

 private:
  /// A style, or a list among whose elements there are styles.
  struct Member {
    NSObject* object;
    ZTSStyle* style;           // none for a list
    std::uint32_t inside = 0;  // references to it that members and the caller hold
    bool isReachable = false;
  };

  static bool canHold(NSObject& object) {
    if (!object.isPlainValue()) return asStyle(&object) != nullptr;
    const NSArray* list = NSArray::from(&object);
    // Lists in lists are left alone: what they hold counts as held from outside.
    return list != nullptr &&
           std::any_of(list->objects().begin(), list->objects().end(),
                       [](const Ref<NSObject>& element) { return asStyle(element.get()) != nullptr; });
  }

  /// The object's place among the members, where it is put on first sight.
  std::size_t enter(NSObject& object) {
    const auto [entry, isNew] = mPlaces.try_emplace(&object, mMembers.size());
    if (isNew) mMembers.push_back(Member{&object, asStyle(&object)});
    return entry->second;
  }

  /// Calls with each style, and each list of styles, to which the member holds a reference, once a reference.
  template <class Visit>
  static void forEachHeldBy(const Member& member, Visit visit) {
    if (member.style == nullptr) {
      for (const Ref<NSObject>& element : NSArray::from(member.object)->objects()) {
        if (asStyle(element.get()) != nullptr) visit(*element);
      }
      return;
    }
    ZTSStyle& style = *member.style;
    if (style.stylesheet() != nullptr) return;  // alive, with all that it holds
    if (style.parent() != nullptr) visit(*style.parent());
    // What is in a map that somebody else holds too is held from outside.
    const PropertyMap* own = style.p_ownEntries();
    if (own == nullptr || own->referenceCount() != 1) return;
    for (const PropertyMap::Entry& entry : *own) {
      if (canHold(*entry.value)) visit(*entry.value);
    }
  }

  std::vector<Member> mMembers;
  boost::unordered_flat_map<const NSObject*, std::size_t> mPlaces;
};

void freeReferenceGroups(std::vector<Ref<ZTSStyle>>&& styles) {
  // Every cycle goes through a value. What has none goes first, so that a child no longer counts as an outside
  // holder of its parent.
  std::vector<Ref<ZTSStyle>> suspects;
  for (Ref<ZTSStyle>& style : styles) {
    if (ZTSReferenceGroups::hasReferences(*style)) suspects.push_back(std::move(style));
  }
  styles.clear();
  if (suspects.empty()) return;

  std::vector<Ref<ZTSStyle>> garbage;
  {
    ZTSReferenceGroups groups(suspects);
    groups.markReachable();
    garbage = groups.unreachable();
  }
  suspects.clear();
  // All are held while the cycles are cut, so that each is destroyed whole.
  for (const Ref<ZTSStyle>& style : garbage) {
    if (ZTSReferenceGroups::hasReferences(*style)) style->p_setPropertyMap({});
  }
}

}  // namespace zt
