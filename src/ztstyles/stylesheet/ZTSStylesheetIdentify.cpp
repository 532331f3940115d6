// SPDX-License-Identifier: MIT

// Giving held styles an identifier, another one, or none.

#include <platform/NSUndoManager.h>
#include <platform/ZTFirstFailure.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/reuse/ZTSUnusedStyles.h>
#include <ztstyles/reuse/ZTSVariationIndex.h>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";
constexpr const char* kIdentify = "identifyStyle:withIdentifier:keepChildren:";

StringRef nameOfClassOf(const ZTSStyle* style) { return style != nullptr ? style->classObject().name() : StringRef(); }

/// Without a style, whether there are none.
bool areChildrenOf(const ZTSStyle* style, const ZTUMutablePointerSet<ZTSStyle>& styles) {
  return style != nullptr ? styles.isSubsetOfSet(style->children()) : styles.isEmpty();
}

}  // namespace

/// Reports no style, and a style of elsewhere; false where there is no style.
bool ZTSStylesheet::mayIdentify(const char* operation, const ZTSStyle* style) const {
  if (style == nullptr) {
    ZT_REPORT(operation, this, kSourceFile, "Stylesheet <%p> can't identify a nil style.", address(this));
    return false;
  }
  if (style->stylesheet() != this) {
    ZT_REPORT(operation, this, kSourceFile, "Stylesheet <%p> can't identify style <%@ %p> in stylesheet <%p>.",
              address(this), style->classObject().name(), address(style), address(style->stylesheet()));
  }
  return true;
}

void ZTSStylesheet::identifyStyle(Ref<ZTSStyle> style, StringRef identifier) {
  identifyStyleKeepingChildren(std::move(style), std::move(identifier), nullptr);
}

void ZTSStylesheet::identifyStyleKeepingAllChildren(Ref<ZTSStyle> style, StringRef identifier, bool keepAllChildren) {
  const ZTUMutablePointerSet<ZTSStyle>* kept = style && keepAllChildren ? &style->children() : nullptr;
  identifyStyleKeepingChildren(std::move(style), std::move(identifier), kept);
}

/// Whether nothing here has the identifier, and no kept child would find another style under it than the one that is to
/// take it; reports where not.
bool ZTSStylesheet::mayTakeIdentifier(const StringRef& identifier, const ZTSStyleSet& kept) const {
  const auto report = [&](const ZTSStyle& holder, const ZTSStylesheet* stylesheet) {
    ZT_REPORT(kIdentify, this, kSourceFile,
              "Style <%@ %p> in stylesheet <%p> is already identified with identifier %@.", holder.classObject().name(),
              address(&holder), address(stylesheet), identifier);
    return false;
  };
  if (const ZTSStyle* holder = mIdentifiedStyles.find(identifier)) return report(*holder, this);
  ZTUMutablePointerSet<ZTSStylesheet> searched;
  for (const ZTSStyle* child : kept) {
    // A child that carries the identifier itself looks for its parent above its own stylesheet.
    ZTSStylesheet* start = child->stylesheet();
    if (start != nullptr && equalTexts(child->identifier(), identifier)) start = start->parent();
    if (start == nullptr || start == this || !searched.addObject(start)) continue;
    ZTSStyle* found = start->cascadedStyleWithIdentifier(identifier);
    if (found != nullptr && found->stylesheet() != nullptr && found->stylesheet()->isDescendantOfStylesheet(this)) {
      return report(*found, child->stylesheet());
    }
  }
  return true;
}

void ZTSStylesheet::identifyStyleKeepingChildren(Ref<ZTSStyle> style, StringRef identifier,
                                                 const ZTUMutablePointerSet<ZTSStyle>* keptChildren) {
  const bool hasStyle = mayIdentify(kIdentify, style.get());
  const StringRef className = nameOfClassOf(style.get());
  if (!identifier) {
    ZT_REPORT(kIdentify, this, kSourceFile, "Stylesheet <%p> can't identify style <%@ %p> with a nil identifier.",
              address(this), className, address(style.get()));
  }
  if (keptChildren != nullptr && !areChildrenOf(style.get(), *keptChildren)) {
    ZT_REPORT(kIdentify, this, kSourceFile, "Children to keep are not a subset of the children of style <%@ %p>",
              className, address(style.get()));
  }
  if (!hasStyle || !identifier) return;  // nothing could be stored

  // The live children change on the way; and the undo action needs the kept ones alive.
  ZTSStyleSet kept;
  if (keptChildren != nullptr) {
    for (const Ref<ZTSStyle>& child : keptChildren->retainedSnapshot()) kept.addObject(child.get());
  }
  if (!mayTakeIdentifier(identifier, kept)) return;

  const Ref<ZTSStylesheet> self(this);
  const StringRef old = style->identifier();
  std::vector<Ref<ZTSStyle>> named;  // kept ones that have another parent
  for (ZTSStyle* child : kept) {
    if (child->parent() != style) named.emplace_back(child);
  }
  if (mUnused) mUnused->willStore();
  mIdentifiedStyles.makeRoom();
  if (NSUndoManager* undo = undoManager()) {
    if (old) {
      undo->registerUndo(kIdentify, self,
                         [style, old, kept, keeps = keptChildren != nullptr](ZTSStylesheet& stylesheet) {
                           ZTUMutablePointerSet<ZTSStyle> children;
                           children.unionSet(kept);
                           stylesheet.identifyStyleKeepingChildren(style, old, keeps ? &children : nullptr);
                         });
    } else {
      undo->registerUndo("anonymizeStyle:", self,
                         [style](ZTSStylesheet& stylesheet) { stylesheet.anonymizeStyle(style); });
    }
  }

  // The new entry is made first, so that the style stays held throughout.
  mIdentifiedStyles.set(identifier, style);
  if (!old) {
    mAnonymousStyles.removeObject(style.get());
  } else if (mIdentifiedStyles.find(old) == style) {
    mIdentifiedStyles.remove(old);
  }
  style->p_setIdentifier(identifier);
  for (ZTSStyle* child : kept) child->p_setParentIdentifier(identifier);

  ZTFirstFailure failure;
  if (old) resolveParentsOfChildrenOf(*style, failure);
  // One that is no child, or not any more where this takes an identifying back, has another parent or none.
  for (const Ref<ZTSStyle>& child : named) resolveParentOf(*child, failure);
  if (old) failure.attempt([&] { style->p_retryRefused(); });
  resolveParentsAfterIdentifying(identifier, failure);
  finishResolving(failure);
  failure.rethrow();
}

void ZTSStylesheet::anonymizeStyle(Ref<ZTSStyle> style) {
  if (!mayIdentify("anonymizeStyle:", style.get())) return;
  if (style->isAnonymous()) {
    ZT_REPORT("anonymizeStyle:", this, kSourceFile, "Style <%@ %p> in stylesheet <%p> is already anonymous.",
              style->classObject().name(), address(style.get()), address(this));
    return;
  }
  const Ref<ZTSStylesheet> self(this);
  const StringRef identifier = style->identifier();
  if (mUnused) mUnused->willStore();
  mAnonymousStyles.makeRoom();
  if (NSUndoManager* undo = undoManager()) {
    undo->registerUndo(kIdentify, self, [style, identifier](ZTSStylesheet& stylesheet) {
      stylesheet.identifyStyleKeepingChildren(style, identifier, nullptr);
    });
  }
  mAnonymousStyles.addObject(style.get());
  if (mIdentifiedStyles.find(identifier) == style) mIdentifiedStyles.remove(identifier);
  style->p_setIdentifier({});
  if (mVariations) mVariations->anonymousStyleChanged(*style);
  ZTFirstFailure failure;
  resolveParentsOfChildrenOf(*style, failure);
  failure.attempt([&] { style->p_retryRefused(); });
  finishResolving(failure);
  failure.rethrow();
}

}  // namespace zt
