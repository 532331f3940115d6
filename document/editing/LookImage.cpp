// SPDX-License-Identifier: MIT
#include <document/editing/LookImage.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace zt {

bool isLook(PropertyKey key) {
  const std::string_view name = key.view();
  if (name.ends_with("rsid")) return false;  // marks of revisions
  if (!name.starts_with("style.")) return true;
  return name == keys::listStyle().view() || name == keys::masterPage().view() || name.ends_with("data-style-name") ||
         name == "style.style.default-outline-level" || name == "style.style.list-level";
}

LookImage::LookImage(const ZTDocument& document) {
  for (const StyleUse& use : document.styleUses()) {
    const StyleLook* look = use.style ? lookOf(document, *use.style) : nullptr;
    const std::string label = use.style ? document.labelOf(*use.style) : std::string();
    mUses.push_back({use.part, use.family, use.count, use.style, label, look});
  }
  for (const StyleFamily family : kStyleFamilies) {
    OdfStyle* root = document.rootStyle(familyName(family));
    if (root != nullptr && family != StyleFamily::other)
      mRoots.push_back({0, std::string(familyName(family)), 0, Ref<OdfStyle>(root), document.labelOf(*root),
                        lookOf(document, *root)});
  }
}

namespace {

// An undeclared font says nothing, so that what it hides shows through.
Ref<NSObject> fontOf(const ZTDocument& document, const OdfStyle& style, PropertyKey key) {
  for (const ZTSStyle* at = &style; at != nullptr; at = at->parent()) {
    NSObject* own = at->p_overrideValueForProperty(key);
    if (own != nullptr && document.isDeclaredFont(*at, own)) return isNull(own) ? Ref<NSObject>() : Ref<NSObject>(own);
  }
  return {};
}

}  // namespace

const StyleLook* LookImage::lookOf(const ZTDocument& document, const OdfStyle& style) {
  auto [found, isNew] = mLooks.try_emplace(&style);
  if (!isNew) return found->second.get();
  found->second = std::make_unique<StyleLook>();
  StyleLook* look = found->second.get();
  look->values = PropertyMap::make();
  const Ref<PropertyMap> all = style.propertyMap();
  if (!all) return look;
  for (const PropertyMap::Entry& entry : *all) {
    if (!isLook(entry.key)) continue;
    const bool isFont = entry.key.view().starts_with("text.style.font-name");
    const Ref<NSObject> value = isFont ? fontOf(document, style, entry.key) : style.valueForProperty(entry.key);
    if (!value) continue;
    if (const OdfStyle* reference = asOdfStyle(static_cast<const NSObject*>(value.get()))) {
      look->references.emplace_back(entry.key, lookOf(document, *reference));
    } else {
      look->values->set(entry.key, value);
    }
  }
  return look;
}

struct LookImage::Comparing {
  std::set<Pair>& equal;            // for sure, from comparisons before
  std::map<Pair, bool> found = {};  // whether two are equal, or being compared

  /// None where that is not known.
  [[nodiscard]] std::optional<bool> answerFor(const Pair& pair) const {
    if (equal.contains(pair)) return true;
    const auto known = found.find(pair);
    return known != found.end() ? std::optional(known->second) : std::nullopt;
  }
  /// Without any difference, nothing that was taken for equal has been so wrongly.
  void keepWhatIsEqual() {
    if (!std::all_of(found.begin(), found.end(), [](const auto& each) { return each.second; })) return;
    for (const auto& [pair, isEqual] : found) equal.insert(pair);
  }
};

// Styles refer to each other in circles: two that are being compared are taken for equal further down. Where a
// difference is found after that, it is found on the way up, too.
std::vector<LookImage::Difference> LookImage::compare(const StyleLook& before, const StyleLook& after,
                                                      Comparing& comparing) {
  comparing.found[{&before, &after}] = true;
  std::vector<Difference> differences;
  const auto text = [](const NSObject* value) { return value == nullptr ? std::string("(none)") : valueText(value); };
  for (const PropertyMap::Entry& entry : *before.values) {
    const NSObject* now = after.values->find(entry.key);
    if (!sameOrEqual(entry.value.get(), now))
      differences.push_back({{}, entry.key, text(entry.value.get()), text(now)});
  }
  for (const PropertyMap::Entry& entry : *after.values) {
    if (!before.values->contains(entry.key)) differences.push_back({{}, entry.key, "(none)", text(entry.value.get())});
  }
  const auto referenceIn = [](const StyleLook& look, PropertyKey key) -> const StyleLook* {
    const auto found = std::find_if(look.references.begin(), look.references.end(),
                                    [key](const auto& reference) { return reference.first == key; });
    return found == look.references.end() ? nullptr : found->second;
  };
  std::set<std::string_view> keys;
  for (const StyleLook* look : {&before, &after}) {
    for (const auto& reference : look->references) {
      if (!keys.insert(reference.first.view()).second) continue;
      const StyleLook* first = referenceIn(before, reference.first);
      const StyleLook* second = referenceIn(after, reference.first);
      const auto isEqual = [&] {
        const std::optional<bool> known = comparing.answerFor({first, second});
        return known ? *known : compare(*first, *second, comparing).empty();
      };
      if (first == nullptr || second == nullptr || !isEqual())
        differences.push_back({{},
                               reference.first,
                               first != nullptr ? "a style" : "(none)",
                               second == nullptr  ? "(none)"
                               : first == nullptr ? "a style"
                                                  : "another look"});
    }
  }
  comparing.found[{&before, &after}] = differences.empty();
  return differences;
}

std::vector<LookImage::Difference> LookImage::differencesTo(const ZTDocument& after,
                                                            const std::function<const OdfStyle*(std::size_t)>& styleOf,
                                                            const IsMeant& isMeant, std::size_t most) const {
  LookImage now(after);
  std::vector<Difference> told;
  std::set<Pair> compared;
  std::set<Pair> equal;
  const auto compareUse = [&](const Use& use, const OdfStyle* style) {
    if (style == nullptr) {
      told.push_back({use.label, {}, "used", "missing"});
      return;
    }
    const StyleLook* look = now.lookOf(after, *style);
    if (!compared.insert({use.look, look}).second || equal.contains({use.look, look})) return;
    Comparing comparing{equal};
    std::vector<Difference> differences = compare(*use.look, *look, comparing);
    comparing.keepWhatIsEqual();
    for (Difference& difference : differences) {
      if (told.size() >= most || isMeant(*use.style, difference.key)) continue;
      difference.style = use.label;
      told.push_back(std::move(difference));
    }
  };
  std::size_t countBefore = 0;
  std::size_t countAfter = 0;
  for (std::size_t index = 0; index < mUses.size() && told.size() < most; ++index) {
    const Use& use = mUses[index];
    countBefore += use.count;
    if (use.look != nullptr) compareUse(use, styleOf(index));
  }
  for (const Use& root : mRoots) compareUse(root, after.rootStyle(root.family));
  for (const StyleUse& use : after.styleUses()) countAfter += use.count;
  if (told.empty() && countBefore != countAfter)
    told.push_back({"the text", {}, std::to_string(countBefore) + " uses", std::to_string(countAfter) + " uses"});
  return told;
}

}  // namespace zt
