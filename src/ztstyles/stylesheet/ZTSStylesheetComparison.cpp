// SPDX-License-Identifier: MIT
#include <platform/ZTFormat.h>
#include <platform/ZTHash.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTUPointerKeyDictionary.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/references/ZTSReferenceGroups.h>
#include <ztstyles/style/ZTSStyleFindings.h>

#include <algorithm>
#include <typeinfo>
#include <vector>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";

}  // namespace

/// One copying of a stylesheet. All copies are made, and refer to one another, before the first of them joins the
/// copied stylesheet: a copied aggregate then never observes or counts a style of the receiver, and the receiver's
/// styles do not hear of the copying at all.
class ZTSStylesheet::Copying {
 public:
  explicit Copying(const ZTSStylesheet& original) : mOriginal(original) {}

  void copyInto(ZTSStylesheet& copied) {
    copyIdentifiedStyles();
    for (const Ref<ZTSStyle>& style : mOriginal.mAnonymousStyles.retainedSnapshot()) copyStyle(*style);
    std::vector<Ref<ZTSStyle>> copies = mCopies->allValues();
    try {
      for (const Ref<ZTSStyle>& style : copies) relinkValues(*style);
      for (const Ref<ZTSStyle>& style : copies) join(copied, style);
      for (const Ref<ZTSStyle>& style : copies) retry(*style);
    } catch (...) {
      mCopies.reset();
      freeReferenceGroups(std::move(copies));  // those that have not joined
      throw;
    }
  }

 private:
  /// Parents before their children, so that each copy finds its parent among the copies when it joins.
  void copyIdentifiedStyles() {
    std::vector<Ref<ZTSStyle>> list;
    const ZTSStyleSet all = mOriginal.identifiedStyles();
    for (ZTSStyle* style : all) {
      if (style->parent() == nullptr || style->parent()->stylesheet() != &mOriginal) list.emplace_back(style);
    }
    ZTUMutablePointerSet<ZTSStyle> listed;
    for (const Ref<ZTSStyle>& root : list) listed.addObject(root.get());
    walk(list, listed, all);
    // What damaged links hide from the walk is copied all the same.
    for (ZTSStyle* style : all) {
      if (!listed.addObject(style)) continue;
      list.assign(1, Ref<ZTSStyle>(style));
      walk(list, listed, all);
    }
  }

  void walk(std::vector<Ref<ZTSStyle>>& list, ZTUMutablePointerSet<ZTSStyle>& listed, const ZTSStyleSet& all) {
    for (std::size_t index = 0; index < list.size(); ++index) {
      const Ref<ZTSStyle> style = list[index];
      copyStyle(*style);
      for (const Ref<ZTSStyle>& child : style->children().retainedSnapshot()) {
        if (all.containsObject(child.get()) && listed.addObject(child.get())) list.push_back(child);
      }
    }
  }

  void copyStyle(ZTSStyle& style) {
    const Ref<NSObject> made = style.copy();
    const Ref<ZTSStyle> copied(asStyle(made.get()));
    if (!copied) {
      ZT_REPORT_ABOUT(&style, "copyWithZone:", &mOriginal, kSourceFile,
                      "Style %@ gave no copy of itself; the copy of stylesheet <%p> goes without it.", style,
                      address(&mOriginal));
      return;
    }
    mCopies->setObjectForKey(copied, Ref<ZTSStyle>(&style));
  }

  /// Lets the values that are copied styles be the copies.
  void relinkValues(ZTSStyle& style) {
    if (!style.overridesAnyProperty()) return;
    std::vector<PropertyMap::Entry> relinked;
    for (const PropertyMap::Entry& entry : *style.p_ownEntries()) {
      const ZTSStyle* referenced = asStyle(entry.value.get());
      ZTSStyle* copied = referenced != nullptr ? mCopies->objectForKey(referenced) : nullptr;
      if (copied != nullptr) relinked.push_back({entry.key, Ref<NSObject>(copied)});
    }
    for (PropertyMap::Entry& entry : relinked) style.p_setValueForProperty(std::move(entry.value), entry.key);
  }

  static void join(ZTSStylesheet& copied, const Ref<ZTSStyle>& style) {
    Ref<ZTSStyle> displaced;
    if (style->isIdentified()) {
      displaced = copied.mIdentifiedStyles.set(style->identifier(), style);
    } else {
      copied.mAnonymousStyles.addObject(style.get());
    }
    style->setStylesheet(&copied);
    // Only where damage gave two styles one identifier.
    if (displaced) displaced->setStylesheet(nullptr);
  }

  /// A style whose parent would close a loop joins before that parent, and may first have found another one above.
  static void retry(ZTSStyle& style) {
    const ZTSStylesheet* reach = style.p_reachStylesheet();
    if (reach != nullptr && reach->cascadedStyleWithIdentifier(style.parentIdentifier()) != style.parent())
      style.updateParent();
  }

  const ZTSStylesheet& mOriginal;
  Ref<ZTSStyleMap> mCopies = make<ZTSStyleMap>();  // from original to copy, in the order of copying
};

Ref<NSObject> ZTSStylesheet::copy() const {
  const Ref<const ZTSStylesheet> self = retainIfAlive(this);
  const Ref<NSObject> allocated = classObject().allocate();
  auto* const bare = dynamic_cast<ZTSStylesheet*>(allocated.get());
  const Ref<ZTSStylesheet> copied(bare);
  if (bare != nullptr && typeid(*bare) != typeid(*this) && classObject().type() != typeid(*this)) {
    ZT_REPORT("copyWithZone:", this, kSourceFile,
              "Stylesheet <%p> cannot be copied: its class has no class object of its own, the one of %@ would make a "
              "stylesheet of another class.",
              address(this), classObject().name());
    return {};
  }
  if (!copied || !copied->initWithHost(nullptr)) return {};
  copied->setParent(mParent);
  Copying(*this).copyInto(*copied);
  copied->p_setHost(mHost);
  return copied;
}

bool ZTSStylesheet::comparesPlainly(const ZTSStyle& style) noexcept {
  return style.isPlain(ZTSStyleClass::plainComparing);
}

std::size_t ZTSStylesheet::shapeOf(const ZTSStyle& style) {
  std::size_t shape = reinterpret_cast<std::uintptr_t>(&style.classObject());
  shape = combineHashes(shape, style.identifier().hash());
  shape = combineHashes(shape, style.parentIdentifier().hash());
  shape = combineHashes(shape, style.name().hash());
  return combineHashes(shape, style.isLocked() ? 2 : 1) | 1;
}

std::optional<std::size_t> ZTSStylesheet::shapeWithValuesOf(const ZTSStyle& style) {
  if (!comparesPlainly(style)) return {};
  std::size_t shape = shapeOf(style);
  if (!style.overridesAnyProperty()) return shape;
  for (const PropertyMap::Entry& entry : *style.p_ownEntries()) {
    // A style's own stable hash tells nothing, since its equality follows its state; no state changes here.
    const ZTSStyle* referenced = asStyle(entry.value.get());
    if (referenced != nullptr && !comparesPlainly(*referenced)) return {};
    shape +=
        combineHashes(entry.key.ordinal(), referenced != nullptr ? shapeOf(*referenced) : entry.value->stableHash());
  }
  return shape;
}

bool ZTSStylesheet::isEqualApartFromParents(const ZTSStylesheet& other) const {
  if (&classObject() != &other.classObject() || mHost != other.mHost) return false;
  if (mIdentifiedStyles.count() != other.mIdentifiedStyles.count()) return false;
  const bool sameIdentified = std::all_of(mIdentifiedStyles.begin(), mIdentifiedStyles.end(), [&](const auto& entry) {
    const ZTSStyle* theirs = other.mIdentifiedStyles.find(entry.key);
    return theirs != nullptr && (entry.style.get() == theirs || entry.style->isEqual(theirs));
  });
  if (!sameIdentified) return false;

  const auto hasShape = [](const ZTSStyle* style) { return shapeWithValuesOf(*style).has_value(); };
  const bool shaped = std::all_of(mAnonymousStyles.begin(), mAnonymousStyles.end(), hasShape) &&
                      std::all_of(other.mAnonymousStyles.begin(), other.mAnonymousStyles.end(), hasShape);
  return mAnonymousStyles.isEqualToContentsOfSet(
      other.mAnonymousStyles, [&](const ZTSStyle& style) { return shaped ? shapeWithValuesOf(style).value_or(0) : 0; });
}

bool ZTSStylesheet::isEqual(const NSObject* other) const {
  if (this == other) return true;
  const NestingGuard nesting("isEqual:", Nesting::equality);
  const ZTSStyleFindings findings;
  const auto* theirs = dynamic_cast<const ZTSStylesheet*>(other);
  const auto* mine = this;
  while (theirs != nullptr && mine->isEqualApartFromParents(*theirs)) {
    mine = mine->parent();
    theirs = theirs->parent();
    if (mine == theirs) return true;
    if (mine == nullptr || theirs == nullptr) return false;
    // A long line of stylesheets is walked; a class that may compare in a way of its own is asked.
    if (typeid(*mine) != typeid(ZTSStylesheet)) return mine->isEqual(theirs);
  }
  return false;
}

std::size_t ZTSStylesheet::hash() const {
  // As a dictionary of the platform: order plays no part, and a swap of two styles does not cancel out.
  std::size_t result = mIdentifiedStyles.count();
  for (const ZTSStyleDictionary::Entry& entry : mIdentifiedStyles) {
    result += (entry.key.hash() ^ 0x9e3779b97f4a7c15ull) * (entry.style->hash() | 1u);
  }
  return result;
}

std::string ZTSStylesheet::description() const {
  std::string text = format("ZTSStylesheet: %#x\nIdentified Styles: %d\n", this, mIdentifiedStyles.count());
  for (const ZTSStyleDictionary::Entry& entry : mIdentifiedStyles) {
    const ZTSStyle& style = *entry.style;
    text += format("\t%#x   %@    %@    id: %@    parent id:%@    usage:%d\n", &style, style.classObject().name(),
                   style.name(), style.identifier(), style.parentIdentifier(), style.usageCount());
  }
  text += format("Anonymous Styles: %d\n", mAnonymousStyles.count());
  for (const ZTSStyle* style : mAnonymousStyles) {
    text += format("\t%#x   %@    %@    id: %@    parent id:%@    usage :%d\n", style, style->classObject().name(),
                   style->name(), style->identifier(), style->parentIdentifier(), style->usageCount());
  }
  return text;
}

}  // namespace zt
