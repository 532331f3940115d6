// SPDX-License-Identifier: MIT

// Finding or creating a style with wanted overrides, and adding and removing styles with what they refer to.
//
// A request is answered by the first candidate that fits: the preferred style, the base, the style itself, the
// children of the base in their order. What the style's class computes, and what values call equal, is code of the
// application's that may run on the way; so every style of the request is held.

#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";
constexpr const char* kVariation =
    "variationOfStyle:preferredStyle:identifier:propertyMap:overridePropertyMap:isLocked:canReuse:canCollapse:"
    "canReuseIdentifiedChildren:";

/// A map without entries counts as none.
const PropertyMap* noneIfEmpty(const PropertyMap* map) noexcept {
  return map != nullptr && !map->isEmpty() ? map : nullptr;
}

/// The list style whose default may differ between stylesheets without being a mistake: the application's, if any.
bool isDefaultListStyle(const ZTSStyle& style) {
  const auto* listClass = dynamic_cast<const ZTSStyleClass*>(ZTClass::named("ZTWPListStyle"));
  return listClass != nullptr && equalTexts(listClass->defaultStyleIdentifier(), style.identifier());
}

/// The base of a style and what the searching stylesheet finds under its identifier, normally the same.
struct Base {
  Ref<ZTSStyle> style;
  Ref<ZTSStyle> reachable;

  [[nodiscard]] bool isStoodForBy(const ZTSStyle* candidate) const {
    if (candidate == nullptr) return false;
    return candidate == style || candidate == reachable || (style && candidate->isEqual(style.get()));
  }
};

/// Whether the style that the caller prefers has the wanted values already.
bool fitsPreferred(const Base& base, const ZTSStyle* preferred, bool isLocked, const PropertyMap* wanted) {
  if (preferred == nullptr || preferred->isLocked() != isLocked) return false;
  if (preferred->isIdentified()) return wanted == nullptr && base.isStoodForBy(preferred);
  return base.isStoodForBy(preferred->parent()) && ZTSVariationIndexes::overridesMatch(*preferred, wanted);
}

/// Reports a base that means something else here than where it comes from.
void reportDifferentBases(const ZTSStylesheet& stylesheet, const ZTSStyle& style, const Base& base) {
  if (base.style == base.reachable) return;
  if (base.style && base.style->isEqualCompareNames(base.reachable.get(), CompareNames::no)) return;
  constexpr const char* differs =
      "In creating variation of style <%p> in stylesheet <%p>; base style <%p> and reachable base style <%p> are not "
      "equivalent.";
  if (base.style && isDefaultListStyle(*base.style)) {
    ZTULog_Fn(kZTULogNotice, kSourceFile, differs, address(&style), address(style.stylesheet()),
              address(base.style.get()), address(base.reachable.get()));
  } else {
    ZT_REPORT(kVariation, &stylesheet, kSourceFile, differs, address(&style), address(style.stylesheet()),
              address(base.style.get()), address(base.reachable.get()));
  }
}

}  // namespace

Ref<ZTSStyle> ZTSStylesheet::variationOfStyle(ZTSStyle* style, const StyleVariationRequest& request) {
  if (style == nullptr)
    ZT_REPORT(kVariation, this, kSourceFile, "Cannot create variation of nil style <%p>.", address(nullptr));
  if (request.canReuse && request.identifier) {
    ZT_REPORT(kVariation, this, kSourceFile, " Cannot specify non-nil identifier if variation may be reused.");
  }
  if (style == nullptr) return {};
  const Ref<ZTSStylesheet> self(this);
  const Ref<ZTSStyle> held(style);
  const Ref<ZTSStyle> preferred(request.preferredStyle);

  Base base{Ref<ZTSStyle>(style->isIdentified() ? style : style->parent()), {}};
  if (!base.style) {
    ZT_REPORT(kVariation, this, kSourceFile, "Cannot create variation of anonymous style <%p> with no parent.",
              address(style));
  } else {
    base.reachable = cascadedStyleWithIdentifier(base.style->identifier());
  }
  reportDifferentBases(*this, *style, base);

  // A style that carries no bit at all may be of a class that has no class object of its own.
  if (!style->isPlain(ZTSStyleClass::plainMatching) || !style->classObject().isPlainVarying()) {
    const Ref<const PropertyMap> wanted = style->overridePropertyMapWithPropertyMap(
        request.propertyMap, request.overridePropertyMap, request.canCollapse);
    return variationOfStyleWithOverrides(*style, base.style, base.reachable, request, noneIfEmpty(wanted.get()));
  }
  const ZTSVariationIndexes::Scratch scratch(*this);
  style->p_collectOverrides(scratch.map(), request.propertyMap, request.overridePropertyMap, request.canCollapse);
  return variationOfStyleWithOverrides(*style, base.style, base.reachable, request, noneIfEmpty(&scratch.map()));
}

Ref<ZTSStyle> ZTSStylesheet::variationOfStyleWithOverrides(ZTSStyle& style, const Ref<ZTSStyle>& baseStyle,
                                                           const Ref<ZTSStyle>& reachable,
                                                           const StyleVariationRequest& request,
                                                           const PropertyMap* wanted) {
  const Base base{baseStyle, reachable};
  const auto isHeldWithLock = [&](const ZTSStyle& candidate) {
    return candidate.stylesheet() == this && candidate.isLocked() == request.isLocked;
  };
  if (request.canReuse) {
    if (fitsPreferred(base, request.preferredStyle, request.isLocked, wanted)) {
      return Ref<ZTSStyle>(request.preferredStyle);
    }
    if (base.style && wanted == nullptr && isHeldWithLock(*base.style)) return base.style;
    if (isHeldWithLock(style) && (request.canReuseIdentifiedChildren || style.isAnonymous()) &&
        ZTSVariationIndexes::overridesMatch(style, wanted)) {
      return Ref<ZTSStyle>(&style);
    }
    if (reachable) {
      const ZTSVariationQuery query{
          .map = wanted, .isLocked = request.isLocked, .includesIdentified = request.canReuseIdentifiedChildren};
      if (Ref<ZTSStyle> child = ZTSVariationIndexes::firstChildOf(*reachable, *this, query)) return child;
    }
  }
  return createStyleOfClass(style.classObject(), {.identifier = request.identifier,
                                                  .parentIdentifier = reachable ? reachable->identifier() : StringRef(),
                                                  .overridePropertyMap = wanted,
                                                  .isLocked = request.isLocked});
}

Ref<ZTSStyle> ZTSStylesheet::anonymousChildOfStyle(ZTSStyle* style, const PropertyMap* overridePropertyMap,
                                                   bool isLocked) {
  if (style == nullptr) return {};
  return ZTSVariationIndexes::firstChildOf(*style, *this,
                                           {.map = noneIfEmpty(overridePropertyMap), .isLocked = isLocked});
}

Ref<ZTSStyle> ZTSStylesheet::anonymousStyleOfClass(const ZTSStyleClass& styleClass, const StringRef& parentIdentifier,
                                                   const PropertyMap* overridePropertyMap, bool isLocked) {
  const PropertyMap* map = noneIfEmpty(overridePropertyMap);
  Ref<ZTSStyle> found = ZTSVariationIndexes::firstAnonymousStyleOf(
      *this, {.map = map, .isLocked = isLocked, .styleClass = &styleClass, .parentIdentifier = &parentIdentifier});
  if (found) return found;
  return createStyleOfClass(styleClass,
                            {.parentIdentifier = parentIdentifier, .overridePropertyMap = map, .isLocked = isLocked});
}

Ref<ZTSStyle> ZTSStylesheet::createStyleOfClass(const ZTSStyleClass& styleClass, const ZTSStyleFields& fields) {
  Ref<ZTSStyle> style = styleClass.makeStyle(fields);
  if (style) addStyle(style);
  return style;
}

// ---- Together with what they refer to

// Both walks go over a list that grows at its end while entries drop out where the walk stands. What drops out is
// never passed on to the list of those to add or remove, instead of being cut out of the one that is walked.

void ZTSStylesheet::addStyleAndReferencedStyles(Ref<ZTSStyle> style) {
  addStyleAndReferencedStylesWithContext(std::move(style), nullptr);
}

void ZTSStylesheet::addStyleAndReferencedStylesWithContext(Ref<ZTSStyle> style, NSObject* context) {
  if (!style) return addStyleWithContext({}, context);
  const Ref<ZTSStylesheet> self(this);
  const Ref<NSObject> heldContext(context);
  std::vector<Ref<ZTSStyle>> walked{std::move(style)};
  std::vector<Ref<ZTSStyle>> kept;
  ZTUMutablePointerSet<ZTSStyle> visited;
  for (std::size_t index = 0; index < walked.size(); ++index) {
    const Ref<ZTSStyle> entry = walked[index];
    if (entry->stylesheet() == this) {
      visited.addObject(entry.get());
      continue;
    }
    if (entry->stylesheet() != nullptr) {
      ZT_REPORT("addStyleAndReferencedStyles:context:", this, kSourceFile,
                "Attempt to add a style <%@ %p> with stylesheet <%p> to stylesheet <%p>.", entry->classObject().name(),
                address(entry.get()), address(entry->stylesheet()), address(this));
    } else {
      if (!visited.addObject(entry.get())) continue;
      if (const auto referenced = entry->referencedStyles()) {
        for (ZTSStyle* each : *referenced) walked.emplace_back(each);
      }
    }
    kept.push_back(entry);
  }
  for (auto entry = kept.rbegin(); entry != kept.rend(); ++entry) addStyleWithContext(*entry, context);
}

void ZTSStylesheet::removeStyleAndReferencedStyles(Ref<ZTSStyle> style) {
  if (!style) return removeStyle({});
  const Ref<ZTSStylesheet> self(this);
  std::vector<Ref<ZTSStyle>> walked{std::move(style)};
  std::vector<Ref<ZTSStyle>> kept;
  ZTUMutablePointerSet<ZTSStyle> visited;
  for (std::size_t index = 0; index < walked.size(); ++index) {
    const Ref<ZTSStyle> entry = walked[index];
    if (entry->stylesheet() != this) {
      ZT_REPORT("removeStyleAndReferencedStyles:", this, kSourceFile,
                "Attempt to remove a style <%@ %p> with stylesheet <%p> from stylesheet <%p>.",
                entry->classObject().name(), address(entry.get()), address(entry->stylesheet()), address(this));
    } else {
      if (!visited.addObject(entry.get())) continue;
      if (const auto referenced = entry->referencedStyles()) {
        for (ZTSStyle* each : *referenced) walked.emplace_back(each);
      }
    }
    kept.push_back(entry);
  }
  for (auto entry = kept.rbegin(); entry != kept.rend(); ++entry) removeStyle(*entry);
}

}  // namespace zt
