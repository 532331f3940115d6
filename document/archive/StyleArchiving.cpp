// SPDX-License-Identifier: MIT
#include <document/archive/StyleArchiving.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <support/ZTUDynamicCast.h>
#include <ztstyles/ZTSDowngradeStylesheet.h>

#include <fmt/format.h>
#include <libxml/tree.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>

namespace zt {

namespace {

// Uses are counted one by one on the style and on what it refers to.
constexpr std::size_t kMostUses = 1'000'000;

/// The number in an attribute; 0 where it holds none, and never above the limit.
std::size_t numberIn(const std::string& text, std::size_t limit) {
  std::size_t number = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  return code == std::errc() && end == text.data() + text.size() && number <= limit ? number : 0;
}

/// Whether version 1 wrote percentages of this property as numbers. Where the property takes numbers too, the
/// two could not be told apart.
bool wasNumberInVersion1(const PropertyRule* rule) {
  return rule != nullptr && (rule->kinds & kPercentage) != 0 && (rule->kinds & (kNumber | kInteger)) == 0;
}

Ref<NSObject> percentageFrom(const NSNumber& fraction) {
  const double units = fraction.realValue() * static_cast<double>(Percentage::kWhole);
  constexpr double kMost = 1e6 * static_cast<double>(Percentage::kPerPercent);
  if (!(std::abs(units) <= kMost)) return {};
  return make<PercentageValue>(Percentage{std::llround(units)});
}

/// Calls with each own entry of each style; the answer takes its place, unless it is none.
template <class Change>
void changeValues(ZTSStylesheet& stylesheet, Change change) {
  for (const Ref<ZTSStyle>& style : stylesheet.retainedStyles()) {
    const Ref<PropertyMap> map = PropertyMap::make();
    if (const Ref<const PropertyMap> own = style->ZTSStyle::overridePropertyMap()) map->addEntriesFrom(*own);
    for (const PropertyMap::Entry& entry : *map) {
      if (Ref<NSObject> value = change(entry)) style->p_setValueForProperty(std::move(value), entry.key);
    }
  }
}

bool isTaken(PropertyKey key, const NSObject& value) {
  const PropertyRule* rule = propertyRule(key);
  if (isNull(&value)) return true;
  if (rule != nullptr && (rule->kinds & kStyle) != 0) return NSString::from(&value) != nullptr;
  return takesValue(rule, value);
}

/// Keys that the archive's styles set and their families lack: such as documents make up. One call for each
/// family, since every growth of a registry is kept.
void extendRegistries(const std::vector<Ref<ZTSStyle>>& styles) {
  std::array<std::vector<PropertyKey>, kStyleFamilyCount> missing;
  for (const Ref<ZTSStyle>& each : styles) {
    const OdfStyle* style = asOdfStyle(static_cast<const NSObject*>(each.get()));
    const Ref<const PropertyMap> own =
        style != nullptr ? style->ZTSStyle::overridePropertyMap() : Ref<const PropertyMap>();
    if (!own) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (style->classObject().isValidProperty(entry.key) || !isTaken(entry.key, *entry.value)) continue;
      missing[static_cast<std::size_t>(style->family())].push_back(entry.key);
    }
  }
  for (const StyleFamily family : kStyleFamilies) {
    const auto& keys = missing[static_cast<std::size_t>(family)];
    if (!keys.empty()) FamilyRegistry::of(family).extend(keys);
  }
}

}  // namespace

std::string archivedText(_xmlNode* node, const char* attribute) {
  const std::unique_ptr<xmlChar, void (*)(xmlChar*)> text(
      xmlGetNsProp(node, reinterpret_cast<const xmlChar*>(attribute), CorvaleNamespace.href),
      [](xmlChar* owned) { xmlFree(owned); });
  return text ? reinterpret_cast<const char*>(text.get()) : std::string();
}

// ---- The element of a style

void OdfStyle::encodeWithXMLArchiver(ZTAXMLArchiver& archiver, _xmlNode* node, std::uint64_t version) {
  ZTSDerivingStyle::encodeWithXMLArchiver(archiver, node, version);
  const auto* document = dynamic_cast<const ZTDocument*>(this->document());
  const StyleOrigin* origin = version >= 2 && document != nullptr ? document->originOf(*this) : nullptr;
  if (origin == nullptr) return;
  const auto set = [&](const char* name, const std::string& text) {
    ztaxmlSetNSStringNsPropOrRaise(node, CorvaleNamespace, name, text);
  };
  set("origin", std::string(originKindName(origin->kind)));
  if (origin->part != 0) set("origin-part", std::to_string(origin->part));
  // Lines move with every edit of the original: a file that is compared as text leaves them out.
  if (origin->line != 0 && !ztaShouldGenerateDiffableXml()) set("origin-line", std::to_string(origin->line));
  if (!origin->name.empty()) set("origin-name", origin->name);
  if (origin->uses != 0) set("uses", std::to_string(origin->uses));
}

Ref<NSObject> OdfStyle::initMoreWithXMLUnarchiver(ZTAXMLUnarchiver& unarchiver, _xmlNode* node) {
  Ref<NSObject> kept = ZTSDerivingStyle::initMoreWithXMLUnarchiver(unarchiver, node);
  auto* origins = ZTUDynamicCast<ArchivedOrigins>(unarchiver.metadataForKey(kArchivedOrigins));
  if (kept != this || origins == nullptr) return kept;
  const std::string word = archivedText(node, "origin");
  if (word.empty()) return kept;
  const auto kind = originKindNamed(word);
  if (!kind) {
    unarchiver.report(node, fmt::format("'{:.60}' is no origin of a style", word));
    return kept;
  }
  StyleOrigin origin;
  origin.kind = *kind;
  origin.part = numberIn(archivedText(node, "origin-part"), 1000);
  origin.line = static_cast<int>(numberIn(archivedText(node, "origin-line"), 2'000'000'000));
  origin.name = archivedText(node, "origin-name");
  origin.uses = numberIn(archivedText(node, "uses"), kMostUses);
  origins->value.emplace_back(Ref<OdfStyle>(this), std::move(origin));
  return kept;
}

const ZTAArchivedItems* OdfStyle::archivedItems() const {
  static const auto* items = [this] {
    auto* all = new ZTAArchivedItems(*ZTSDerivingStyle::archivedItems());
    for (const char* name : {"origin", "origin-part", "origin-line", "origin-name", "uses"})
      all->attributes.emplace_back(name);
    return all;
  }();
  return items;
}

void OdfStyle::upgradeStyleWithUnarchiver(ZTAXMLUnarchiver&, std::uint64_t) {}

// ---- Versions

void ArchiveUpgrader::postUnarchiveUpgradeStylesheetForUnarchiver(ZTSStylesheet& stylesheet,
                                                                  ZTAXMLUnarchiver& unarchiver) {
  if (unarchiver.version() < 2) {
    changeValues(stylesheet, [](const PropertyMap::Entry& entry) {
      const NSNumber* number = NSNumber::from(entry.value.get());
      return number != nullptr && !number->isBool() && wasNumberInVersion1(propertyRule(entry.key))
                 ? percentageFrom(*number)
                 : Ref<NSObject>();
    });
  }
  const std::vector<Ref<ZTSStyle>> styles = stylesheet.retainedStyles();
  extendRegistries(styles);
  for (const Ref<ZTSStyle>& style : styles) {
    const Ref<const PropertyMap> own = style->ZTSStyle::overridePropertyMap();
    if (!own) continue;
    const auto* aggregate = dynamic_cast<const ZTSAggregateStyle*>(style.get());
    std::vector<PropertyKey> refused;
    for (const PropertyMap::Entry& entry : *own) {
      if (aggregate != nullptr && aggregate->isReferencedStyleProperty(entry.key))
        continue;  // has been looked at in reading
      if (!style->validateValueForProperty(isNull(entry.value.get()) ? nullptr : entry.value.get(), entry.key))
        refused.push_back(entry.key);
    }
    for (const PropertyKey key : refused) {
      unarchiver.report(
          nullptr, fmt::format("the style '{:.60}' cannot have the value '{:.60}' for '{:.60}'; not set",
                               style->identifier().view(), valueText(style->rawValueForProperty(key)), key.view()));
      style->p_removeValueForProperty(key);
    }
  }
}

void ArchiveDowngrader::preArchiveDowngradeStylesheetForVersionArchiver(ZTSStylesheet& stylesheet,
                                                                        std::uint64_t version,
                                                                        ZTAXMLArchiver& archiver) {
  if (version >= 2) return;
  const Ref<ZTSStylesheet> copy = stylesheet.overrideDowngradeStylesheetWithArchiver(archiver);
  changeValues(*copy, [](const PropertyMap::Entry& entry) {
    const PercentageValue* percentage = asPercentage(entry.value.get());
    return percentage != nullptr && wasNumberInVersion1(propertyRule(entry.key))
               ? Ref<NSObject>(
                     NSNumber::withReal(static_cast<double>(percentage->percentage().units) / Percentage::kWhole))
               : Ref<NSObject>();
  });
}

}  // namespace zt
