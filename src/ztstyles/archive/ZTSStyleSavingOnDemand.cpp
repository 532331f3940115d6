// SPDX-License-Identifier: MIT

// Saving on demand: a style that an archiver is about to write is saved into the container of its stylesheet, after
// everything that it needs.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <platform/NSException.h>
#include <platform/NSValue.h>
#include <platform/ZTNesting.h>
#include <support/ZTUDynamicCast.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSArchiving.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/archive/ZTSArchivingSettings.h>

#include <libxml/tree.h>

#include <optional>
#include <utility>
#include <vector>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylePersistenceAdditions";

/// The node that the pair keeps for such a style, or none.
xmlNode* nodeIn(const ZTUPair& pair, const ZTSStyle& style) {
  const NSValue* wrapped = NSValue::from(style.isIdentified() ? pair.first() : pair.second());
  return wrapped != nullptr ? static_cast<xmlNode*>(wrapped->pointerValue()) : nullptr;
}

}  // namespace

_xmlNode* ZTSStyle::containerInArchive(const ZTAXMLArchiver& archiver) const {
  const auto* nodes = ZTUDynamicCast<ZTUPointerKeyDictionary>(archiver.metadataForKey(kStylesheetContainers));
  const auto* pair = nodes != nullptr ? ZTUDynamicCast<ZTUPair>(nodes->objectForKey(stylesheet())) : nullptr;
  return pair != nullptr ? nodeIn(*pair, *this) : nullptr;
}

void ZTSStyle::preencodeHookWithXMLArchiver(ZTAXMLArchiver& archiver) { ensureSavedWithXMLArchiver(archiver); }

void ZTSStyle::ensureSavedWithXMLArchiver(ZTAXMLArchiver& archiver) {
  if (dynamic_cast<ZTVXMLArchiverForPB*>(&archiver) != nullptr) p_archiveStyleAndRelatedWithArchiver(archiver);
}

namespace {

/// The container that a style is saved into. Raises where there is none.
xmlNode* containerFor(const ZTSStyle& style, const ZTUPointerKeyDictionary& nodes) {
  const ZTSStylesheet* stylesheet = style.stylesheet();
  const auto* pair = ZTUDynamicCast<ZTUPair>(nodes.objectForKey(stylesheet));
  if (pair == nullptr) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't get ident/anon styles node pair for style %p, stylesheet %p",
              address(&style), address(stylesheet));
    throw NSGenericException(format("Couldn't get ident/anon styles node pair for %@ %p, stylesheet %p",
                                    style.classObject().name(), address(&style), address(stylesheet)));
  }
  xmlNode* node = nodeIn(*pair, style);
  if (node == nullptr) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't get dest element node for style %p, stylesheet %p",
              address(&style), address(stylesheet));
    throw NSGenericException(format("Couldn't get dest element node for %@ %p, stylesheet %p",
                                    style.classObject().name(), address(&style), address(stylesheet)));
  }
  return node;
}

/// A style whose needs are being saved: its parent first, then what it refers to.
struct Saving {
  Ref<ZTSStyle> style;
  xmlNode* container;
  int stage = 0;
  std::vector<Ref<ZTSStyle>> needs = {};
  std::size_t nextNeed = 0;

  /// The next style to save before this one; none when only the style itself is left.
  ZTSStyle* next() {
    while (true) {
      if (nextNeed < needs.size()) return needs[nextNeed++].get();
      std::optional<ZTSStyleSet> more;
      switch (stage++) {
        case 0:
          if (style->parent() != nullptr) return style->parent();
          continue;
        case 1: more = style->referencedStyles(); break;
        case 2: more = style->implicitlyReferencedStyles(); break;
        default: return nullptr;
      }
      needs = more ? more->retainedSnapshot() : std::vector<Ref<ZTSStyle>>();
      nextNeed = 0;
    }
  }
};

}  // namespace

void ZTSStyle::p_archiveStyleAndRelatedWithArchiver(ZTAXMLArchiver& archiver) {
  const Ref<ZTUPointerKeyDictionary> nodes(
      ZTUDynamicCast<ZTUPointerKeyDictionary>(archiver.metadataForKey(kZTSStyleDelayedStyleSaveNodeDict)));
  if (!nodes) return;
  const Ref<ZTSSavedStyleSet> saved(
      ZTUDynamicCast<ZTSSavedStyleSet>(archiver.metadataForKey(kZTSStyleDelayedStyleSavedSet)));
  if (!saved) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't get archived styles set");
    throw NSGenericException("Couldn't get archived styles set");
  }
  const NestingGuard guard("p_archiveStyleAndRelatedWithArchiver:", Nesting::archive);
  // Parents and references lead on over chains of any length: they are worked off from a stack. A style
  // counts as saved before anything is written for it, so that circles end.
  std::vector<Saving> waiting;
  const auto begin = [&](ZTSStyle& style) {
    if (saved->value.containsObject(&style)) return;
    xmlNode* container = containerFor(style, *nodes);
    saved->value.addObject(&style);
    waiting.push_back({Ref<ZTSStyle>(&style), container});
  };
  begin(*this);
  while (!waiting.empty()) {
    if (ZTSStyle* need = waiting.back().next()) {
      begin(*need);
      continue;
    }
    const Saving done = std::move(waiting.back());
    waiting.pop_back();
    archiver.encodeObject(static_cast<ZTAXMLCoding*>(done.style.get()), done.container, CorvaleNamespace);
  }
}

}  // namespace zt
