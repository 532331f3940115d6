// SPDX-License-Identifier: MIT
#include <insight/look/TextLook.h>

#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>
#include <insight/look/ThemeValues.h>

#include <platform/NSNull.h>
#include <platform/NSNumber.h>

#include <array>
#include <map>
#include <optional>

namespace zt {

namespace {

/// The styles of a chain, nearest first, without the root of its family.
std::vector<const OdfStyle*> chainOf(const OdfStyle* style) {
  std::vector<const OdfStyle*> chain;
  for (const ZTSStyle* at = style; at != nullptr; at = at->parent()) {
    const OdfStyle* level = asOdfStyle(at);
    if (level == nullptr) break;
    if (level->isIdentified() && level->identifier().view() == rootIdentifier(level->familyName())) break;
    chain.push_back(level);
  }
  return chain;
}

NSObject* ownEntry(const OdfStyle& style, PropertyKey key) { return style.p_overrideValueForProperty(key); }

bool isTrue(const NSObject* value) {
  const NSNumber* number = NSNumber::from(value);
  return number != nullptr && number->isBool() && number->boolValue();
}

bool tellsOfLooks(PropertyKey key) { return !key.view().starts_with("style.") && !key.view().starts_with("level."); }

}  // namespace

std::string_view levelName(LookLevel level) {
  constexpr std::array<std::string_view, 6> kNames = {"defaults", "table", "list", "paragraph", "character", "direct"};
  return kNames.at(static_cast<std::size_t>(level));
}

TextLook::TextLook(const ZTDocument& document, const TextPlace& place) : mDocument(document) {
  addChain(place.text, LookLevel::character);
  if (place.paragraph != nullptr) addParagraph(*place.paragraph);
  addTable(place);
  if (place.paragraph != nullptr) addRoot(document.rootStyle(place.paragraph->familyName()));
  if (place.text != nullptr || place.paragraph != nullptr) addRoot(document.rootStyle(familyName(StyleFamily::text)));
}

void TextLook::addChain(const OdfStyle* style, LookLevel named) {
  for (const OdfStyle* each : chainOf(style)) {
    mLayers.push_back({each, each->isAnonymous() ? LookLevel::direct : named});
  }
}

void TextLook::addParagraph(const OdfStyle& paragraph) {
  bool isListKnown = false;
  for (const OdfStyle* each : chainOf(&paragraph)) {
    mLayers.push_back({each, each->isAnonymous() ? LookLevel::direct : LookLevel::paragraph});
    if (isListKnown || ownEntry(*each, keys::listStyle()) == nullptr) continue;
    isListKnown = true;
    if (const OdfStyle* level = levelOf(paragraph, *each)) mLayers.push_back({level, LookLevel::list});
  }
}

// The level that the paragraph's direct formatting names; else the one that says that it numbers the style, or one
// above it (17.9.3: beside that a level that a style names says nothing); else the one that a style names; else the
// first.
const OdfStyle* TextLook::levelOf(const OdfStyle& paragraph, const OdfStyle& setter) const {
  const OdfStyle* list = asOdfStyle(static_cast<const NSObject*>(ownEntry(setter, keys::listStyle())));
  if (list == nullptr) return nullptr;
  const auto level = [list](std::size_t number) {
    const Ref<NSObject> found = list->valueForProperty(keys::listLevel(number));
    return asOdfStyle(static_cast<const NSObject*>(found.get()));
  };
  const auto levelNamed = [&](const NSNumber& number) {
    const bool isThere =
        number.integerValue() >= 0 && number.integerValue() < static_cast<std::int64_t>(keys::kListLevels);
    return isThere ? level(static_cast<std::size_t>(number.integerValue()) + 1) : nullptr;
  };
  const std::vector<const OdfStyle*> chain = chainOf(&paragraph);
  for (const OdfStyle* each : chain) {
    const NSNumber* direct = each->isAnonymous() ? NSNumber::from(ownEntry(*each, keys::listLevelNumber())) : nullptr;
    if (direct != nullptr) return levelNamed(*direct);
  }
  for (const OdfStyle* each : chain) {
    for (std::size_t number = 1; number <= keys::kListLevels; ++number) {
      const OdfStyle* candidate = level(number);
      if (candidate != nullptr && ownEntry(*candidate, keys::levelParagraphStyle()) == each) return candidate;
    }
  }
  const Ref<NSObject> named = paragraph.valueForProperty(keys::listLevelNumber());
  if (const NSNumber* number = NSNumber::from(named.get())) return levelNamed(*number);
  return level(1);
}

void TextLook::addTable(const TextPlace& place) {
  const auto chain = chainOf(place.table);
  for (auto part = place.tableParts.rbegin(); part != place.tableParts.rend(); ++part) {
    for (const OdfStyle* table : chain) {
      const OdfStyle* style = asOdfStyle(static_cast<const NSObject*>(ownEntry(*table, *part)));
      if (style != nullptr) mLayers.push_back({style, LookLevel::table});
    }
  }
  for (const OdfStyle* table : chain) mLayers.push_back({table, LookLevel::table});
}

void TextLook::addRoot(const OdfStyle* style) {
  for (const ZTSStyle* at = style; at != nullptr; at = at->parent()) {
    if (const OdfStyle* root = asOdfStyle(at)) mLayers.push_back({root, LookLevel::defaults});
  }
}

LookProperty TextLook::property(PropertyKey key) const {
  LookProperty property;
  property.key = key;
  const bool isOfText = key.view().starts_with("text.");
  for (const Layer& layer : mLayers) {
    // What a level says of text is said of its number.
    if (isOfText && layer.level == LookLevel::list) continue;
    if (NSObject* value = ownEntry(*layer.style, key)) property.entries.push_back({layer.style, layer.level, value});
  }
  if (property.entries.empty()) return property;
  const PropertyRule* rule = propertyRule(key);
  if (rule != nullptr && rule->isToggle) {
    takeToggle(property);
  } else {
    takeStrongest(property);
  }
  property.value = valueInTheme(mDocument, std::move(property.value));
  return property;
}

bool TextLook::isComplexScript() const {
  return isTrue(value(PropertyKey("text.w.rtl")).get()) || isTrue(value(PropertyKey("text.w.cs")).get());
}

PropertyKey TextLook::countingKey(PropertyKey key) const {
  static const std::array<std::pair<PropertyKey, PropertyKey>, 5> kPairs = {
      {{PropertyKey("text.w.b"), PropertyKey("text.w.bCs")},
       {PropertyKey("text.w.i"), PropertyKey("text.w.iCs")},
       {PropertyKey("text.w.sz"), PropertyKey("text.w.szCs")},
       {PropertyKey("text.w.rFonts.ascii"), PropertyKey("text.w.rFonts.cs")},
       {PropertyKey("text.w.rFonts.hAnsi"), PropertyKey("text.w.rFonts.cs")}}};
  for (const auto& [simple, complex] : kPairs) {
    if (simple == key) return isComplexScript() ? complex : key;
  }
  return key;
}

void TextLook::takeToggle(LookProperty& property) {
  bool isSet = false;
  std::optional<LookLevel> seen;
  for (LookEntry& entry : property.entries) {
    if (seen == entry.level) continue;  // a weaker entry of the same kind of style
    seen = entry.level;
    entry.counts = true;
    if (entry.level == LookLevel::direct) {
      isSet = isTrue(entry.value);
      break;
    }
    isSet = entry.level == LookLevel::defaults ? isSet || isTrue(entry.value) : isSet != isTrue(entry.value);
  }
  property.value = NSNumber::withBool(isSet);
}

void TextLook::takeStrongest(LookProperty& property) {
  const PropertyRule* rule = propertyRule(property.key);
  std::optional<Percentage> share;
  for (LookEntry& entry : property.entries) {
    entry.counts = true;
    const PercentageValue* percentage = rule != nullptr && rule->isShareOfParent ? asPercentage(entry.value) : nullptr;
    if (percentage != nullptr) {
      share = share ? shareOf(percentage->percentage(), *share) : percentage->percentage();
      continue;
    }
    const LengthValue* length = asLength(entry.value);
    if (share && length != nullptr) {
      property.value = make<LengthValue>(shareOf(length->length(), *share));
    } else if (!share) {
      property.value = isNull(entry.value) ? Ref<NSObject>() : Ref<NSObject>(entry.value);
    }
    break;
  }
  if (share && property.value == nullptr) property.value = make<PercentageValue>(*share);
}

std::vector<LookProperty> TextLook::properties() const {
  std::map<std::string_view, PropertyKey> keys;
  for (const Layer& layer : mLayers) {
    const Ref<const PropertyMap> own = layer.style->overridePropertyMap();
    if (own == nullptr) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (tellsOfLooks(entry.key)) keys.emplace(entry.key.view(), entry.key);
    }
  }
  std::vector<LookProperty> found;
  for (const auto& [text, key] : keys) {
    LookProperty explained = property(key);
    if (!explained.entries.empty()) found.push_back(std::move(explained));
  }
  return found;
}

}  // namespace zt
