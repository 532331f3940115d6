// A style as an element of an archive.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSArray.h>
#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <platform/NSUserDefaults.h>
#include <platform/NSValue.h>
#include <platform/ZTNesting.h>
#include <support/ZTUDynamicCast.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSArchiving.h>
#include <ztstyles/ZTSStyleError.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/archive/ZTSArchivingSettings.h>
#include <ztstyles/references/ZTSReferenceGroups.h>

#include <libxml/tree.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylePersistenceAdditions";

constexpr int kNotRead = -1;
std::atomic<int> sUsesIdentifiers = kNotRead;
std::atomic<bool> sSortsPropertiesByKey = false;

const xmlChar* chars(const char* text) { return reinterpret_cast<const xmlChar*>(text); }
const char* text(const xmlChar* chars) { return reinterpret_cast<const char*>(chars); }

/// A text of libxml2's, freed with it.
struct FreeText {
  void operator()(xmlChar* owned) const noexcept { xmlFree(owned); }
};
using XMLText = std::unique_ptr<xmlChar, FreeText>;

/// The attribute as a string, absent without one. Many styles name one parent: texts are shared.
StringRef attribute(ZTAXMLUnarchiver& unarchiver, xmlNode* node, const char* name) {
  const XMLText value(xmlGetNsProp(node, chars(name), CorvaleNamespace.href));
  return value ? unarchiver.sharedString(text(value.get())) : StringRef();
}

bool isElement(const xmlNode* node) { return node->type == XML_ELEMENT_NODE && node->name != nullptr; }

xmlNode* firstElementIn(xmlNode* node) {
  xmlNode* child = node->children;
  while (child != nullptr && !isElement(child)) child = child->next;
  return child;
}

/// The list with one element replaced, or left out, wherever it occurs; none where it does not.
Ref<NSObject> listWithout(const NSArray& list, NSObject& dropped, NSObject* kept) {
  std::vector<Ref<NSObject>> elements = list.objects();
  bool isFound = false;
  std::erase_if(elements, [&](Ref<NSObject>& element) {
    Ref<NSObject> changed;
    if (element.get() == &dropped) {
      changed = kept;
    } else if (const NSArray* inner = NSArray::from(element.get())) {
      changed = listWithout(*inner, dropped, kept);
      if (!changed) return false;
    } else {
      return false;
    }
    isFound = true;
    element = std::move(changed);
    return !element;
  });
  return isFound ? NSArray::withObjects(std::move(elements)) : Ref<NSArray>();
}

}  // namespace

bool checkUsingIdentifiers() {
  int uses = sUsesIdentifiers.load();
  if (uses == kNotRead) {
    const int read = NSUserDefaults::standardUserDefaults().boolForKey("UseStyleIdentifierShortcuts") ? 1 : 0;
    uses = sUsesIdentifiers.compare_exchange_strong(uses, read) ? read : uses;
  }
  return uses == 1;
}

void resetStyleArchivingSettings() {
  sUsesIdentifiers = kNotRead;
  sSortsPropertiesByKey = false;
}

bool ZTSStyle::sortXMLPropertiesByKey() { return sSortsPropertiesByKey; }
void ZTSStyle::setSortXMLPropertiesByKey(bool sort) { sSortsPropertiesByKey = sort; }

// ---- Hooks

Ref<const PropertyMap> ZTSStyle::archivedPropertiesForVersion(std::uint64_t, ZTAXMLArchiver&) const {
  return mLocalPropertyMap;
}
bool ZTSStyle::hasDefaultValueForProp(PropertyKey) const { return false; }
Ref<NSObject> ZTSStyle::defaultValueForProp(PropertyKey) const { return {}; }
const ZTClass* ZTSStyle::ztClassAncestor() const { return nullptr; }
bool ZTSStyle::canBeReconstructedFromIdentifier() const {
  return classObject().canConstructStyleFromIdentifier(identifier());
}

Ref<ZTSStyle> ZTSStyle::initWithIdentifier(const StringRef& identifier) {
  throw NSGenericException(
      format("Could not initialize style of class '%@' from identifier '%@'", classObject().name(), identifier));
}

Ref<ZTAError> ZTSStyle::handleError(Ref<ZTAError> error) {
  return ZTSStyleError::withRootErrorStyle(std::move(error), Ref<ZTSStyle>(this));
}

// ---- Writing

void ZTSStyle::encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) {
  archiver.setErrorHandler(Ref<ZTAErrorHandler>(this));
  ztaxmlSetZTClassOnNodeOrRaise(node, *this);
  const bool isShort = checkUsingIdentifiers() && canBeReconstructedFromIdentifier();
  if (!isShort && name()) ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "name", name());
  if (identifier()) ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "ident", identifier());
  if (isShort) return;
  if (parentIdentifier()) ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "parent-ident", parentIdentifier());
  ztaxmlSetBoolNsPropDefaultOrRaise(node, CorvaleNamespace, "locked", isLocked(), false);

  // A copy of the entries: values are written by classes of the application, which may change the style.
  boost::container::small_vector<PropertyMap::Entry, 8> entries;
  if (const Ref<const PropertyMap> map = archivedPropertiesForVersion(version, archiver))
    entries.assign(map->begin(), map->end());
  xmlNode* properties = xmlNewChild(node, &CorvaleNamespace, chars("property-map"), nullptr);
  if (properties == nullptr) throw std::bad_alloc();
  if (sortXMLPropertiesByKey()) {
    std::sort(entries.begin(), entries.end(),
              [](const auto& left, const auto& right) { return left.key.view() < right.key.view(); });
  }
  for (const PropertyMap::Entry& entry : entries) {
    xmlNode* property = ztaxmlNewNsChildNodeOrRaise(properties, CorvaleNamespace, entry.key.string());
    if (!hasDefaultValueForProp(entry.key)) archiver.encodeObject(entry.value.get(), property, CorvaleNamespace);
  }
}

// ---- Reading

bool ZTSStyle::initWithXMLUnarchiver(ZTAXMLUnarchiver&, _xmlNode*, std::uint64_t) { return true; }

Ref<NSObject> ZTSStyle::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) {
  unarchiver.setErrorHandler(Ref<ZTAErrorHandler>(this));
  if (StringRef identifier = attribute(unarchiver, node, "ident")) {
    if (checkUsingIdentifiers() && classObject().canConstructStyleFromIdentifier(identifier)) {
      Ref<ZTSStyle> rebuilt = initWithIdentifier(identifier);
      if (!rebuilt) {
        ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't rebuild style of class '%@' from identifier '%@', skipping",
                  classObject().name(), identifier);
        unarchiver.report(node, "no style can be made from this identifier");
      }
      return rebuilt;
    }
    p_setIdentifier(std::move(identifier));
  }
  if (const StringRef stored = attribute(unarchiver, node, "name")) {
    p_setName(unarchiver.localizedStringForKey(stored, classObject().localizationKeyPrefix()));
  }
  if (StringRef parent = attribute(unarchiver, node, "parent-ident")) p_setParentIdentifier(std::move(parent));
  p_setIsLocked(ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "locked", false));

  xmlNode* properties = ztaxmlFirstChildNsNamed(node, CorvaleNamespace, "property-map");
  if (properties == nullptr) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "No property list for %@ (%p) ident: %@ named %@ on node %p",
              classObject().name(), address(this), identifier(), name(), address(node));
    unarchiver.report(node, "expected an element 'property-map' in a style, found none");
    return {};
  }
  std::size_t count = 0;
  for (xmlNode* each = properties->children; each != nullptr; each = each->next) count += isElement(each) ? 1 : 0;
  const Ref<PropertyMap> map = PropertyMap::make(count);
  for (xmlNode* each = properties->children; each != nullptr; each = each->next) {
    if (!isElement(each)) continue;
    const PropertyKey key = unarchiver.propertyKeyForNode(each);
    Ref<NSObject> value;
    if (xmlNode* element = firstElementIn(each)) {
      value = unarchiver.createObjectFromNode(element);
      if (!value && !ztaxmlOkToSkipNode(element)) {
        ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't create property from node %s, using default",
                  text(element->name));
      }
    }
    if (!value) value = defaultValueForProp(key);
    if (value) {
      map->set(key, std::move(value));
    } else if (classObject().isValidProperty(key)) {
      ZTULog_Fn(kZTULogNotice, kSourceFile, "Couldn't get value for %@ from node or defaults, skipping", key);
    }
  }
  p_setPropertyMap(map);
  p_setChildren({});
  p_setObservers({});
  return Ref<NSObject>(static_cast<ZTAXMLCoding*>(this));
}

void ZTSStyle::replaceUnarchivedObject(NSObject& dropped, NSObject* kept) {
  const Ref<ZTSStyle> self(this);
  const Ref<const PropertyMap> map = mLocalPropertyMap ? mLocalPropertyMap->copy() : Ref<PropertyMap>();
  if (!map) return;
  for (const PropertyMap::Entry& entry : *map) {
    Ref<NSObject> changed;
    if (entry.value.get() == &dropped) {
      changed = kept;
    } else if (const NSArray* list = NSArray::from(entry.value.get())) {
      changed = listWithout(*list, dropped, kept);
      if (!changed) continue;
    } else {
      continue;
    }
    if (changed) {
      p_setValueForProperty(std::move(changed), entry.key);
    } else {
      p_removeValueForProperty(entry.key);
    }
  }
}

Ref<NSObject> ZTSAggregateStyle::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) {
  Ref<NSObject> kept = ZTSStyle::initMoreWithXMLUnarchiver(unarchiver, node);
  if (kept != this) return kept;
  for (PropertyKey key : referencedStyleProperties()) {
    const NSObject* value = rawValueForProperty(key);
    if (value == nullptr || isNull(value) || asStyle(value) != nullptr) continue;
    unarchiver.report(node, format("expected a style as value of '%@', found one of the class '%@'", key,
                                   value->classObject().name()));
    p_removeValueForProperty(key);
  }
  return kept;
}

void ZTSStyle::releaseArchivedObjects(std::vector<Ref<NSObject>>&& objects) const {
  std::vector<Ref<NSObject>> others;
  std::vector<Ref<ZTSStyle>> styles;
  for (Ref<NSObject>& object : objects) {
    if (ZTSStyle* style = asStyle(object.get())) {
      styles.emplace_back(style);
      object.reset();
    } else {
      others.push_back(std::move(object));
    }
  }
  objects.clear();
  freeReferenceGroups(std::move(styles));
}

void ZTSStyle::archivingSetStylesheet(ZTSStylesheet* stylesheet) { p_setStylesheet(stylesheet); }
void ZTSStyle::archivingUpdateParent() { p_updateParent(); }

void ZTSStyle::upgradeStyleWithUnarchiver(ZTAXMLUnarchiver&, std::uint64_t) {
  if (!mLocalPropertyMap) return;
  const ZTSStyleClass& mine = classObject();
  std::vector<PropertyKey> refused;
  for (const PropertyMap::Entry& entry : *mLocalPropertyMap) {
    if (!mine.isValidProperty(entry.key)) refused.push_back(entry.key);
  }
  for (PropertyKey key : refused) unconditionalRemoveValueForProperty(key);
}

// ---- Saving on demand

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
  const NSValue* wrapped = NSValue::from(style.isIdentified() ? pair->first() : pair->second());
  auto* node = wrapped != nullptr ? static_cast<xmlNode*>(wrapped->pointerValue()) : nullptr;
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
