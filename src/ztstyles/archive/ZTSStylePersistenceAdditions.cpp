// SPDX-License-Identifier: MIT

// A style as an element of an archive.

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSArray.h>
#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <platform/NSUserDefaults.h>
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
#include <mutex>
#include <new>
#include <unordered_map>
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

xmlNode* firstElementFrom(xmlNode* node) {
  while (node != nullptr && !isElement(node)) node = node->next;
  return node;
}

bool isOurs(const xmlNode* node) {
  return node->ns == &CorvaleNamespace ||
         (node->ns != nullptr && xmlStrEqual(node->ns->href, CorvaleNamespace.href) != 0);
}

/// The styles that stand in for one of a class that was unknown when they were read, and that class's name. Each is
/// here until it dies. Shared by all threads; while there are none, which is as good as always, nobody waits.
class StandIns {
 public:
  static void set(const ZTSStyle& style, const StringRef& className) {
    const std::lock_guard lock(mutex());
    names().insert_or_assign(&style, className);
    sCount = names().size();
  }
  static StringRef classOf(const ZTSStyle& style) {
    if (sCount.load(std::memory_order_relaxed) == 0) return {};
    const std::lock_guard lock(mutex());
    auto found = names().find(&style);
    return found != names().end() ? found->second : StringRef();
  }
  static void remove(const ZTSStyle& style) noexcept {
    if (sCount.load(std::memory_order_relaxed) == 0) return;
    const std::lock_guard lock(mutex());
    names().erase(&style);
    sCount = names().size();
  }

 private:
  static std::mutex& mutex() noexcept {
    static auto* all = new std::mutex;  // outlives every static
    return *all;
  }
  static std::unordered_map<const ZTSStyle*, StringRef>& names() {
    static auto* all = new std::unordered_map<const ZTSStyle*, StringRef>;
    return *all;
  }
  static std::atomic<std::size_t> sCount;
};
std::atomic<std::size_t> StandIns::sCount = 0;

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
  if (const StringRef unknown = StandIns::classOf(*this)) {
    ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "class", unknown);
    ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, "ancestor", classObject().name());
  }
  const bool isShort = isIdentified() && checkUsingIdentifiers() && canBeReconstructedFromIdentifier();
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
    xmlNode* property = archiver.newNodeForPropertyKey(properties, entry.key);
    if (!hasDefaultValueForProp(entry.key)) archiver.encodeObject(entry.value.get(), property, CorvaleNamespace);
  }
}

// ---- Reading

namespace {

/// The value in the property's element, else the default. None where there is neither.
Ref<NSObject> archivedValue(const ZTSStyle& style, ZTAXMLUnarchiver& unarchiver, xmlNode* property, PropertyKey key) {
  unarchiver.reportUnknown(property);
  Ref<NSObject> value;
  if (xmlNode* element = firstElementFrom(property->children)) {
    value = unarchiver.createObjectFromNode(element);
    if (!value && !ztaxmlOkToSkipNode(element)) {
      ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't create property from node %s, using default",
                text(element->name));
    }
    if (const xmlNode* second = firstElementFrom(element->next); second != nullptr && !ztaxmlOkToSkipNode(second))
      unarchiver.report(second, format("expected one value of '%@', found more; the first one counts", key));
  }
  if (!value) value = style.defaultValueForProp(key);
  if (!value && style.classObject().isValidProperty(key)) {
    ZTULog_Fn(kZTULogNotice, kSourceFile, "Couldn't get value for %@ from node or defaults, skipping", key);
  }
  return value;
}

/// The own values of a style that is read; of two for one property the later one.
Ref<PropertyMap> archivedEntries(const ZTSStyle& style, ZTAXMLUnarchiver& unarchiver, xmlNode* properties) {
  std::size_t count = 0;
  for (xmlNode* each = properties->children; each != nullptr; each = each->next) count += isElement(each) ? 1 : 0;
  const Ref<PropertyMap> map = PropertyMap::make(count);
  unarchiver.reportUnknown(properties);
  for (xmlNode* each = properties->children; each != nullptr; each = each->next) {
    if (!isElement(each)) continue;
    if (!isOurs(each)) {
      if (!ztaxmlOkToSkipNode(each))
        unarchiver.report(each, "expected a property, found an element of another namespace");
      continue;
    }
    const PropertyKey key = unarchiver.propertyKeyForNode(each);
    if (map->contains(key)) unarchiver.report(each, format("'%@' has been set before; this value counts", key));
    if (Ref<NSObject> value = archivedValue(style, unarchiver, each, key)) map->set(key, std::move(value));
  }
  return map;
}

/// The lock, told where its word is none.
bool archivedLock(ZTAXMLUnarchiver& unarchiver, xmlNode* node) {
  if (const XMLText locked{xmlGetNsProp(node, chars("locked"), CorvaleNamespace.href)}) {
    const std::string_view word = text(locked.get());
    if (word != "true" && word != "false" && word != "1" && word != "0")
      unarchiver.report(node, format("expected 'true' or 'false' in 'locked', found '%s'", word.substr(0, 60)));
  }
  return ztaxmlBoolNsPropDefault(node, CorvaleNamespace, "locked", false);
}

}  // namespace

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
  p_setIsLocked(archivedLock(unarchiver, node));

  xmlNode* properties = ztaxmlFirstChildNsNamed(node, CorvaleNamespace, "property-map");
  if (properties == nullptr) {
    ZTULog_Fn(kZTULogFailure, kSourceFile, "No property list for %@ (%p) ident: %@ named %@ on node %p",
              classObject().name(), address(this), identifier(), name(), address(node));
    unarchiver.report(node, "expected an element 'property-map' in a style, found none");
    return {};
  }
  p_setPropertyMap(archivedEntries(*this, unarchiver, properties));
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

void ZTSStyle::upgradeStyleWithUnarchiver(ZTAXMLUnarchiver& unarchiver, std::uint64_t) {
  if (!mLocalPropertyMap) return;
  const ZTSStyleClass& mine = classObject();
  std::vector<PropertyKey> refused;
  const Ref<const PropertyMap> map = mLocalPropertyMap->copy();  // a class that is asked may do anything
  for (const PropertyMap::Entry& entry : *map) {
    if (!mine.isValidProperty(entry.key)) {
      refused.push_back(entry.key);
    } else if (NSObject* value = isNull(entry.value.get()) ? nullptr : entry.value.get();
               value != nullptr && !validateValueForProperty(value, entry.key) &&
               validateValueForProperty(nullptr, entry.key)) {
      // A class that does not even let the key be unset has no say about values.
      unarchiver.report(nullptr, format("the class '%@' refuses the value of '%@' (in the style with identifier '%@')",
                                        mine.name(), entry.key, identifier()));
    }
  }
  for (PropertyKey key : refused) {
    unarchiver.report(nullptr,
                      format("the class '%@' has no property '%@'; not kept (in the style with identifier '%@')",
                             mine.name(), key, identifier()));
    unconditionalRemoveValueForProperty(key);
  }
}

// ---- Classes that are not known here

const ZTAArchivedItems* ZTSStyle::archivedItems() const {
  static const auto* items = new ZTAArchivedItems{{"name", "ident", "parent-ident", "locked"}, {"property-map"}};
  return items;
}

void ZTSStyle::standInForClassNamed(const StringRef& className) { StandIns::set(*this, className); }
void ZTSStyle::forgetClassOf(const ZTSStyle& style) noexcept { StandIns::remove(style); }

}  // namespace zt
