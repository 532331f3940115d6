// SPDX-License-Identifier: MIT

// A stylesheet as an element of an archive.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSArray.h>
#include <platform/NSException.h>
#include <platform/NSValue.h>
#include <platform/ZTNesting.h>
#include <support/ZTUDynamicCast.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSArchiving.h>
#include <ztstyles/ZTSDerivingStyle.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/archive/ZTSArchivingSettings.h>
#include <ztstyles/archive/ZTSStyleOrdering.h>

#include <libxml/tree.h>

#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheetPersistenceAdditions";

/// The settings of all stylesheets of the process.
struct ClassSettings {
  bool sortXMLStyles = false;
  std::vector<Ref<ZTSStylesheetUpgrader>> upgraders;
  std::vector<Ref<ZTSStylesheetDowngrader>> downgraders;
};

ClassSettings& settings() {
  static auto* all = new ClassSettings;  // outlives every static
  return *all;
}

/// An element for a stylesheet's styles of one kind. Raises `NSGenericException`, after a log, where there is none.
xmlNode* newContainer(const ZTSStylesheet& stylesheet, xmlNode* node, const char* name, const char* kind) {
  xmlNode* made = xmlNewChild(node, &CorvaleNamespace, reinterpret_cast<const xmlChar*>(name), nullptr);
  if (made != nullptr) return made;
  const std::string failure =
      format("Couldn't get node to put %s styles on for stylesheet %@, out node %p", kind, &stylesheet, address(node));
  ZTULog_Fn(kZTULogFailure, kSourceFile, "%s", failure);
  throw NSGenericException(failure);
}

/// The objects among the value, or the elements of a list, that others have replaced.
void collectReplaced(const NSObject& value, const ZTAXMLUnarchiver& unarchiver,
                     std::vector<std::pair<Ref<NSObject>, Ref<NSObject>>>& found) {
  if (const NSArray* list = NSArray::from(&value)) {
    for (const Ref<NSObject>& element : list->objects()) collectReplaced(*element, unarchiver, found);
  } else if (NSObject* kept = unarchiver.replacementForObject(&value)) {
    found.emplace_back(const_cast<NSObject*>(&value), kept);
  }
}

/// Whether the host lets the style into an archive.
bool shouldArchive(const ZTSStyle& style, bool isUsed, const ZTSStylesheetHost* host) {
  if (host == nullptr) return true;
  if (!isUsed && !host->shouldArchiveUnusedStyle(style)) return false;
  return host->shouldArchiveStyle(style);
}

}  // namespace

void ZTSInitArchivingClassToElementNameMappings() {
  ztaxmlRegisterClassNamePair(ZTSStylesheet::stylesheetClass(), kElementName_StyleSheet);
  (void)ZTSDerivingStyle::styleClass();  // an archive that names it, or one of its bases, may be the first thing read
}

bool ZTSStylesheet::sortXMLStyles() { return settings().sortXMLStyles; }
void ZTSStylesheet::setSortXMLStyles(bool sort) { settings().sortXMLStyles = sort; }

void ZTSStylesheet::p_resetClassSettings() {
  settings() = ClassSettings();
  resetStyleArchivingSettings();
}

std::optional<std::vector<Ref<ZTSStyle>>> ZTSStylesheet::enumeratorForOrderedIdentifiedStyles() const { return {}; }
std::optional<std::vector<Ref<ZTSStyle>>> ZTSStylesheet::enumeratorForOrderedAnonymousStyles() const { return {}; }

const ZTAArchivedItems* ZTSStylesheet::archivedItems() const {
  static const auto* items = new ZTAArchivedItems{{}, {"styles", "anon-styles", "parent"}};
  return items;
}

// ---- Upgrading and downgrading

void ZTSStylesheet::registerUpgrader(Ref<ZTSStylesheetUpgrader> upgrader) {
  if (upgrader) settings().upgraders.push_back(std::move(upgrader));
}
void ZTSStylesheet::registerDowngrader(Ref<ZTSStylesheetDowngrader> downgrader) {
  if (downgrader) settings().downgraders.push_back(std::move(downgrader));
}

void ZTSStylesheet::postUnarchiveUpgradeForUnarchiver(ZTAXMLUnarchiver& unarchiver) {
  const std::vector<Ref<ZTSStylesheetUpgrader>> upgraders = settings().upgraders;
  for (const Ref<ZTSStylesheetUpgrader>& each : upgraders)
    each->postUnarchiveUpgradeStylesheetForUnarchiver(*this, unarchiver);
}

void ZTSStylesheet::preArchiveDowngradeForVersion(std::uint64_t version, ZTAXMLArchiver& archiver) {
  const Ref<ZTSStylesheet> self(this);
  if (const Ref<ZTSStylesheet> above = mParent) {
    const NestingGuard guard("preArchiveDowngradeForVersion:archiver:", Nesting::archive);
    above->preArchiveDowngradeForVersion(version, archiver);
  }
  const std::vector<Ref<ZTSStylesheetDowngrader>> downgraders = settings().downgraders;
  for (const Ref<ZTSStylesheetDowngrader>& each : downgraders) {
    each->preArchiveDowngradeStylesheetForVersionArchiver(*this, version, archiver);
  }
}

// ---- Writing

bool ZTSStylesheet::isUsedInArchive(const ZTSStyle& style) const { return style.usageCount() != 0; }

void ZTSStylesheet::encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t) {
  xmlNode* identifiedNode = newContainer(*this, node, "styles", "identified");
  xmlNode* anonymousNode = newContainer(*this, node, "anon-styles", "anonymous");
  if (mParent) archiver.encodeObjectWithName(Ref<NSObject>(parent()).get(), node, "parent", CorvaleNamespace);

  const Ref<ZTUPair> containers =
      ZTUPair::pairWithFirstSecond(NSValue::withPointer(identifiedNode), NSValue::withPointer(anonymousNode));
  if (auto* nodes =
          ZTUDynamicCast<ZTUPointerKeyDictionary>(archiver.metadataForKey(kZTSStyleDelayedStyleSaveNodeDict))) {
    nodes->setObjectForKey(containers, Ref<NSObject>(this));
    return;
  }
  // For styles that are held back below and then turn out to be referred to.
  if (archiver.metadataForKey(kStylesheetContainers) == nullptr)
    archiver.setMetadataForKey(make<ZTUPointerKeyDictionary>(), kStylesheetContainers);
  ZTUDynamicCast<ZTUPointerKeyDictionary>(archiver.metadataForKey(kStylesheetContainers))
      ->setObjectForKey(containers, Ref<NSObject>(this));

  const bool isDiffable = ztaShouldGenerateDiffableXml();
  const auto write = [&](const std::vector<Ref<ZTSStyle>>& styles, xmlNode* container) {
    for (const Ref<ZTSStyle>& style : styles) {
      if (shouldArchive(*style, isUsedInArchive(*style), mHost))
        archiver.encodeObject(style.get(), container, CorvaleNamespace);
    }
  };

  std::optional<std::vector<Ref<ZTSStyle>>> ordered;
  if (sortXMLStyles()) ordered = enumeratorForOrderedIdentifiedStyles();
  if (!ordered && isDiffable) {
    ordered = identifiedStyles().retainedSnapshot();
    sortIdentifiedStylesForDiff(*ordered);
  }
  write(ordered ? *ordered : p_orderedIdentifiedStyles(), identifiedNode);

  ordered.reset();
  if (sortXMLStyles()) ordered = enumeratorForOrderedAnonymousStyles();
  if (!ordered) {
    if (isDiffable) p_cleanupAnonymousStyleOrderingMap();
    ordered = mAnonymousStyles.retainedSnapshot();
    if (isDiffable) sortAnonymousStylesForDiff(*ordered, *mAnonymousStyleOrderingMap);
  }
  write(*ordered, anonymousNode);
}

// ---- Reading

bool ZTSStylesheet::initWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node, std::uint64_t version) {
  if (!initWithHost(nullptr)) return false;
  readParent(unarchiver, node);
  if (xmlNode* container = ztaxmlFirstChildNsNamed(node, CorvaleNamespace, "styles")) {
    readStyles(unarchiver, container,
               [&](Ref<ZTSStyle> style, _xmlNode* child) { takeFromIdentified(unarchiver, std::move(style), child); });
  }

  const bool isDiffable = ztaShouldGenerateDiffableXml();
  mAnonymousStyleOrderingMap.reset();
  if (isDiffable) mAnonymousStyleOrderingMap = std::make_unique<ZTSAnonymousStyleOrderingMap>();
  xmlNode* container = ztaxmlFirstChildNsNamed(node, CorvaleNamespace, "anon-styles");
  if (container == nullptr) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "Stylesheet %p couldn't create anonymous children.", address(this));
    throw NSGenericException(format("Stylesheet %p couldn't create anonymous children.", address(this)));
  }
  readStyles(unarchiver, container,
             [&](Ref<ZTSStyle> style, _xmlNode* child) { takeFromAnonymous(unarchiver, std::move(style), child); });

  if (unarchiver.hasReplacements()) relinkReplaced(unarchiver);
  const std::vector<Ref<ZTSStyle>> all = retainedStyles();
  for (const Ref<ZTSStyle>& style : all) style->archivingUpdateParent();
  for (const Ref<ZTSStyle>& style : all) style->upgradeStyleWithUnarchiver(unarchiver, version);
  if (isDiffable) p_cleanupAnonymousStyleOrderingMap();
  mIsChangeCommunicationEnabled = true;
  return true;
}

void ZTSStylesheet::readParent(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) {
  Ref<ZTSStylesheet> parent;
  if (xmlNode* parentNode = ztaxmlFirstChildNsNamed(node, CorvaleNamespace, "parent")) {
    parent = ZTUDynamicCast<ZTSStylesheet>(unarchiver.createObjectOfClass(stylesheetClass(), parentNode));
    if (parent == this || (parent && isAncestorOfStylesheet(parent.get()))) {
      unarchiver.raise(parentNode, "a stylesheet cannot be among its own ancestors");
    }
    if (parent) parent->p_addChild(*this);
  }
  p_setParent(std::move(parent));
}

/// Makes the styles of a container, one after the other, and hands over those that may be kept.
void ZTSStylesheet::readStyles(ZTAXMLUnarchiver& unarchiver, _xmlNode* container,
                               const std::function<void(Ref<ZTSStyle>, _xmlNode*)>& take) {
  unarchiver.reportUnknown(container);
  for (xmlNode* child = container->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE || child->name == nullptr) continue;
    const Ref<NSObject> object = unarchiver.createObjectFromNode(child);
    Ref<ZTSStyle> style(asStyle(object.get()));
    if (object && !style)
      unarchiver.report(child,
                        format("expected a style, found an object of the class '%@'", object->classObject().name()));
    if (style && style->stylesheet() != nullptr && style->stylesheet() != this) {
      unarchiver.report(child, "expected a style of this stylesheet, found one of another");
      style.reset();
    }
    if (style) {
      take(std::move(style), child);
    } else if (!ztaxmlOkToSkipNode(child)) {
      ZTULog_Fn(kZTULogFailure, kSourceFile, "Stylesheet %p couldn't create child from node %p, skipping",
                address(this), address(child));
    }
  }
}

void ZTSStylesheet::takeFromIdentified(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child) {
  if (style->isIdentified()) return takeIdentified(unarchiver, std::move(style), child);
  ZTULog_Fn(kZTULogFailure, kSourceFile,
            "Stylesheet %p found style %p without identifier among the identified styles, keeping it as anonymous",
            address(this), address(style.get()));
  unarchiver.report(child, "expected an identifier, found none; the style is kept as an anonymous one");
  takeAnonymous(std::move(style));
}

void ZTSStylesheet::takeFromAnonymous(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child) {
  if (style->isIdentified()) {
    if (styleWithIdentifier(style->identifier()) == style.get()) return;
    ZTULog_Fn(kZTULogFailure, kSourceFile,
              "Stylesheet %p found style %p with identifier '%@' among the anonymous styles", address(this),
              address(style.get()), style->identifier());
    if (styleWithIdentifier(style->identifier()) == nullptr) {
      unarchiver.report(child, format("expected no identifier, found '%@'; the style is kept as an identified one",
                                      style->identifier()));
      return takeIdentified(unarchiver, std::move(style), child);
    }
    unarchiver.report(
        child, format("expected no identifier, found '%@', which another style has; the style is kept without it",
                      style->identifier()));
    style->p_setIdentifier({});
  }
  takeAnonymous(style);
  if (mAnonymousStyleOrderingMap) ZTSIndexOfAnonymousStyle(*style, *mAnonymousStyleOrderingMap);
}

void ZTSStylesheet::takeIdentified(ZTAXMLUnarchiver& unarchiver, Ref<ZTSStyle> style, _xmlNode* child) {
  const Ref<ZTSStyle> earlier = mIdentifiedStyles.set(style->identifier(), style);
  if (earlier == style) return;
  if (earlier) {
    // It is held here no more: whatever is said and thrown from now on, its link must be gone.
    try {
      earlier->archivingSetStylesheet(nullptr);
    } catch (...) {
      earlier->p_setStylesheet(nullptr);
      throw;
    }
  }
  style->archivingSetStylesheet(this);
  if (!earlier) return;
  unarchiver.setReplacementForObject(Ref<NSObject>(static_cast<ZTAXMLCoding*>(style.get())),
                                     Ref<NSObject>(static_cast<ZTAXMLCoding*>(earlier.get())));
  unarchiver.report(child, format("the identifier '%s' has been given before; this style replaces the earlier one",
                                  style->identifier()));
}

/// What refers to a style whose identifier another has taken refers to that other, here and above.
void ZTSStylesheet::relinkReplaced(ZTAXMLUnarchiver& unarchiver) {
  for (ZTSStylesheet* each = this; each != nullptr; each = each->parent()) {
    for (const Ref<ZTSStyle>& style : each->retainedStyles()) {
      std::vector<std::pair<Ref<NSObject>, Ref<NSObject>>> changes;
      if (const PropertyMap* map = style->p_ownEntries()) {
        for (const PropertyMap::Entry& entry : *map) collectReplaced(*entry.value, unarchiver, changes);
      }
      if (changes.empty()) continue;
      style->archivingSetStylesheet(nullptr);  // an aggregate does not observe while its values change
      for (const auto& [dropped, kept] : changes) style->replaceUnarchivedObject(*dropped, kept.get());
      style->archivingSetStylesheet(each);
    }
  }
}

void ZTSStylesheet::takeAnonymous(Ref<ZTSStyle> style) {
  if (mAnonymousStyles.addObject(style.get())) style->archivingSetStylesheet(this);
}

}  // namespace zt
