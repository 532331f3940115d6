// SPDX-License-Identifier: MIT
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSAggregateStyle.h>
#include <ztstyles/ZTSDowngradeStylesheet.h>

#include <utility>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSDowngradeStylesheet";

ZTSStyle* substituteFor(const ZTAXMLArchiver& archiver, const NSObject* object) {
  return asStyle(archiver.encoderForObject(object));
}

}  // namespace

Ref<ZTSStyle> ZTSStyle::downgradeCopy() const {
  // The stored values themselves: what the class answers as its own values may hold derived ones and defaults.
  const Ref<const PropertyMap> own = mLocalPropertyMap;
  Ref<ZTSStyle> copy = classObject().makeStyle({.name = name(),
                                                .identifier = identifier(),
                                                .parentIdentifier = parentIdentifier(),
                                                .overridePropertyMap = own.get(),
                                                .isLocked = isLocked()});
  const auto isSame = [](const PropertyMap* left, const PropertyMap* right) {
    if (left == nullptr || right == nullptr)
      return (left == nullptr || left->isEmpty()) && (right == nullptr || right->isEmpty());
    return left->isEqual(*right);
  };
  if (copy && !isSame(copy->mLocalPropertyMap.get(), own.get()))
    copy->p_setPropertyMap(own ? own->copy() : Ref<PropertyMap>());
  return copy;
}

// ---- Finding and making

Ref<ZTSStylesheet> ZTSStylesheet::downgradeStylesheetWithArchiver(ZTAXMLArchiver& archiver) {
  NSObject* substitute = archiver.encoderForObject(this);
  if (substitute == nullptr) return {};
  if (dynamic_cast<ZTSDowngradeStylesheet*>(substitute) == nullptr) {
    ZT_REPORT("downgradeStylesheetWithArchiver:", this, kSourceFile, "Bad class");
  }
  return Ref<ZTSStylesheet>(dynamic_cast<ZTSStylesheet*>(substitute));
}

Ref<ZTSStylesheet> ZTSStylesheet::overrideDowngradeStylesheetWithArchiver(ZTAXMLArchiver& archiver) {
  if (Ref<ZTSStylesheet> existing = downgradeStylesheetWithArchiver(archiver)) return existing;
  const NestingGuard guard("overrideDowngradeStylesheetWithArchiver:", Nesting::archive);
  const Ref<ZTSStylesheet> self(this);
  // The parent's family holds this stylesheet too: making it there first leaves nothing to make here.
  if (const Ref<ZTSStylesheet> above(parent()); above != nullptr) {
    above->overrideDowngradeStylesheetWithArchiver(archiver);
    if (Ref<ZTSStylesheet> existing = downgradeStylesheetWithArchiver(archiver)) return existing;
  }
  const Ref<ZTSDowngradeStylesheet> made = ZTSDowngradeStylesheet::withStylesheetArchiver(*this, archiver);
  if (!made) return {};
  archiver.setEncoderForObject(made, self);
  for (const Ref<ZTSStylesheet>& child : children().retainedSnapshot())
    child->overrideDowngradeStylesheetWithArchiver(archiver);
  return made;
}

const ZTClass& ZTSDowngradeStylesheet::downgradeStylesheetClass() {
  static const auto* object =
      new ZTClass("ZTSDowngradeStylesheet", &stylesheetClass(), &typeid(ZTSDowngradeStylesheet));
  return *object;
}
const ZTClass& ZTSDowngradeStylesheet::classObject() const { return downgradeStylesheetClass(); }

ZTSDowngradeStylesheet::~ZTSDowngradeStylesheet() = default;

Ref<ZTSDowngradeStylesheet> ZTSDowngradeStylesheet::withStylesheetArchiver(ZTSStylesheet& original,
                                                                           ZTAXMLArchiver& archiver) {
  Ref<ZTSDowngradeStylesheet> made(new ZTSDowngradeStylesheet);
  if (!made->initWithStylesheet(original, archiver)) return {};
  return made;
}

bool ZTSDowngradeStylesheet::initWithStylesheet(ZTSStylesheet& original, ZTAXMLArchiver& archiver) {
  if (!p_initForDowngradeWithStylesheet(original, archiver)) return false;
  mArchiver = archiver.place();
  mOriginalStylesheet = &original;
  return true;
}

namespace {

/// Copies refer to copies, by their own values: inherited values and defaults are others' and stay theirs.
void referToCopies(const std::vector<Ref<ZTSStyle>>& aggregates, ZTAXMLArchiver& archiver) {
  for (const Ref<ZTSStyle>& copy : aggregates) {
    for (PropertyKey key : asAggregateStyle(static_cast<ZTAXMLCoding*>(copy.get()))->referencedStyleProperties()) {
      const Ref<NSObject> value(copy->rawValueForProperty(key));
      if (asStyle(value.get()) == nullptr) continue;
      if (NSObject* substitute = archiver.encoderForObject(value.get()); asStyle(substitute) != nullptr)
        copy->setValueForProperty(Ref<NSObject>(substitute), key);
    }
  }
}

}  // namespace

bool ZTSDowngradeStylesheet::p_initForDowngradeWithStylesheet(ZTSStylesheet& original, ZTAXMLArchiver& archiver) {
  if (!initWithHost(nullptr)) return false;
  p_setParent(original.parent() != nullptr ? original.parent()->overrideDowngradeStylesheetWithArchiver(archiver)
                                           : Ref<ZTSStylesheet>());
  setIsChangeCommunicationEnabled(false);

  std::vector<Ref<ZTSStyle>> aggregates;
  const auto copyStyle = [&](ZTSStyle& style, auto store) {
    Ref<ZTSStyle> copy = style.downgradeCopy();
    if (!copy) {
      ZTULog_Fn(kZTULogFailure, kSourceFile, "Couldn't copy style %p of class '%@' for an archive of an older version",
                address(&style), style.classObject().name());
      return;
    }
    store(copy);
    mOriginals.setObjectForKey(Ref<ZTSStyle>(&style), copy);
    archiver.setEncoderForObject(Ref<NSObject>(static_cast<ZTAXMLCoding*>(copy.get())),
                                 Ref<NSObject>(static_cast<ZTAXMLCoding*>(&style)));
    copy->setStylesheet(this);
    if (asAggregateStyle(static_cast<ZTAXMLCoding*>(copy.get())) != nullptr) aggregates.push_back(std::move(copy));
  };

  // Parents before children, so that each copy finds its parent when it arrives.
  std::vector<Ref<ZTSStyle>> walk;
  for (const Ref<ZTSStyle>& style : original.identifiedStyles().retainedSnapshot()) {
    if (style->parent() == nullptr || style->parent()->stylesheet() != &original) walk.push_back(style);
  }
  for (std::size_t index = 0; index < walk.size(); ++index) {
    const Ref<ZTSStyle> style = walk[index];
    copyStyle(*style, [&](const Ref<ZTSStyle>& copy) { p_identifiedStyles().set(copy->identifier(), copy); });
    for (Ref<ZTSStyle>& child : style->children().retainedSnapshot()) {
      if (child->isIdentified() && child->stylesheet() == &original) walk.push_back(std::move(child));
    }
  }
  for (const Ref<ZTSStyle>& style : original.anonymousStyles().retainedSnapshot()) {
    copyStyle(*style, [&](const Ref<ZTSStyle>& copy) { p_anonymousStyles().addObject(copy.get()); });
  }

  referToCopies(aggregates, archiver);
  return true;
}

Ref<ZTSStylesheet> ZTSDowngradeStylesheet::downgradeStylesheetWithArchiver(ZTAXMLArchiver&) {
  return Ref<ZTSStylesheet>(this);
}

// ---- Substitutes

Ref<NSObject> ZTSDowngradeStylesheet::replacementForStyle(const ZTSStyle& style) const {
  NSObject* substitute =
      archiver() != nullptr ? archiver()->encoderForObject(static_cast<const ZTAXMLCoding*>(&style)) : nullptr;
  if (substitute == nullptr) ZT_REPORT("replacementForStyle:", this, kSourceFile, "Could not find replacement style.");
  return Ref<NSObject>(substitute);
}

bool ZTSDowngradeStylesheet::hasReplacementForStyle(const ZTSStyle& style) const {
  return archiver() != nullptr && archiver()->encoderForObject(static_cast<const ZTAXMLCoding*>(&style)) != nullptr;
}

namespace {

/// The aggregates that observe the style, in their order.
std::vector<Ref<ZTSAggregateStyle>> referrersOf(ZTSStyle& style) {
  std::vector<Ref<ZTSAggregateStyle>> found;
  for (ZTSStyleObserver* each : style.observers().allObjects()) {
    if (auto* aggregate = dynamic_cast<ZTSAggregateStyle*>(each)) found.emplace_back(aggregate);
  }
  return found;
}

}  // namespace

void ZTSDowngradeStylesheet::replaceStyleWithStyle(Ref<ZTSStyle> original, Ref<ZTSStyle> replacement) {
  const Ref<ZTSStyle> copy(archiver() != nullptr && original
                               ? substituteFor(*archiver(), static_cast<ZTAXMLCoding*>(original.get()))
                               : nullptr);
  std::vector<Ref<ZTSAggregateStyle>> referrers;
  if (copy) referrers = referrersOf(*copy);
  ZTSStylesheet::removeStyle(copy ? copy : original);
  if (copy) mOriginals.removeObjectForKey(copy.get());
  addStyle(replacement);
  if (replacement && original) mOriginals.setObjectForKey(original, replacement);
  for (const Ref<ZTSAggregateStyle>& each : referrers) each->didReplaceStyleWithStyle(copy.get(), replacement.get());
  if (archiver() != nullptr) archiver()->setEncoderForObject(std::move(replacement), std::move(original));
}

void ZTSDowngradeStylesheet::removeStyle(Ref<ZTSStyle> style) {
  Ref<ZTSStyle> removed = style;
  if (style && archiver() != nullptr) {
    if (ZTSStyle* substitute = substituteFor(*archiver(), static_cast<ZTAXMLCoding*>(style.get()))) {
      removed.reset(substitute);
      archiver()->removeEncoderForObject(static_cast<ZTAXMLCoding*>(style.get()));
    }
  }
  const bool isHeld = removed && holdsStyle(*removed);
  ZTSStylesheet::removeStyle(removed);
  if (!isHeld) return;
  mOriginals.removeObjectForKey(removed.get());
  // A reference to it would bring it back into the archive, where it belongs to nobody.
  for (const Ref<ZTSAggregateStyle>& each : referrersOf(*removed)) {
    for (PropertyKey key : std::vector<PropertyKey>(each->referencedStyleProperties())) {
      if (each->rawValueForProperty(key) == static_cast<NSObject*>(removed.get())) each->removeValueForProperty(key);
    }
  }
}

// ---- Writing

bool ZTSDowngradeStylesheet::isUsedInArchive(const ZTSStyle& style) const {
  const ZTSStyle* original = mOriginals.objectForKey(&style);
  return ZTSStylesheet::isUsedInArchive(original != nullptr ? *original : style);
}

void ZTSDowngradeStylesheet::encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) {
  // The parent is named by the original, in whose place the archiver then writes the parent's own copy; the
  // original's host is asked what may be written. Both go back on every way out.
  struct Disguise {
    ZTSDowngradeStylesheet& self;
    Ref<ZTSStylesheet> parent;
    explicit Disguise(ZTSDowngradeStylesheet& sheet) : self(sheet), parent(sheet.parent()) {
      self.p_setParent(Ref<ZTSStylesheet>(self.originalStylesheet().parent()));
      self.setHost(self.originalStylesheet().host());
    }
    Disguise(const Disguise&) = delete;
    Disguise& operator=(const Disguise&) = delete;
    ~Disguise() {
      self.setHost(nullptr);
      self.p_setParent(std::move(parent));
    }
  };
  const Disguise disguise(*this);
  ZTSStylesheet::encodeWithXMLArchiver(archiver, node, version);
}

}  // namespace zt
