// SPDX-License-Identifier: MIT
#include <opendocument/reading/PropertyImporter.h>

#include <document/styles/StyleValues.h>
#include <document/text/Utf8.h>

#include <platform/NSNull.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

// Keys live for ever, so that a document must not make any number of them.
constexpr std::size_t kMostUnknownKeys = 100'000;
constexpr std::size_t kLongestKey = 200;

constexpr std::array<std::string_view, 4> kSides = {"-left", "-right", "-top", "-bottom"};

// For these an empty text says "explicitly none", which hides what the parent says.
bool isNoneWhenEmpty(std::string_view name) {
  return name == "list-style-name" || name == "master-page-name" || name == "default-outline-level" ||
         name == "data-style-name";
}

/// What becomes of the attribute elsewhere: the style's name, a reference.
bool isTakenElsewhere(const RawAttribute& attribute, StyleFamily family) {
  if (attribute.prefix != "style") return false;
  if (attribute.name == "display-name") return true;
  return attribute.name == "list-style-name" && family == StyleFamily::paragraph && !attribute.value.empty();
}

}  // namespace

Ref<PropertyMap> PropertyImporter::mapOf(const RawStyle& style, StyleFamily family) {
  const Owner owner{style.part, styleIdentifier(style.family, style.name), family};
  Ref<PropertyMap> map = PropertyMap::make(style.properties.size());
  for (const RawAttribute& attribute : style.attributes) {
    if (isTakenElsewhere(attribute, family)) continue;
    // The attribute was born in an extension and has the same meaning there.
    const bool isLinked = attribute.prefix == "loext" && attribute.name == "linked-style-name";
    const std::string key = propertyKeyText("style", isLinked ? "style" : attribute.prefix, attribute.name);
    if (attribute.prefix == "style" && attribute.value.empty() && isNoneWhenEmpty(attribute.name)) {
      if (const PropertyKey known = keyFor(owner, style.line, key)) map->set(known, Ref<NSObject>(NSNull::null()));
    } else {
      take(owner, style.line, key, attribute.value, false, *map);
    }
  }
  takeProperties(style.properties, owner, *map);
  for (const RawStyleChild& child : style.children) {
    take(owner, child.line, propertyKeyText("style", child.prefix, child.name), child.text, true, *map);
  }
  if (family == StyleFamily::other && style.kind == RawStyle::Kind::defaultStyle) {
    map->set(keys::otherFamily(), NSString::make(style.family));
  }
  return map;
}

Ref<PropertyMap> PropertyImporter::mapOf(const RawListStyle& list) {
  const Owner owner{list.part, styleIdentifier("list", list.name), StyleFamily::list};
  Ref<PropertyMap> map = PropertyMap::make(list.levels.size() + list.attributes.size());
  for (const RawAttribute& attribute : list.attributes) {
    if (attribute.prefix == "style" && attribute.name == "display-name") continue;
    take(owner, list.line, propertyKeyText("list", attribute.prefix, attribute.name), attribute.value, false, *map);
  }
  return map;
}

Ref<PropertyMap> PropertyImporter::mapOf(const RawListLevel& level, const RawListStyle& list) {
  const Owner owner{list.part, styleIdentifier("list", list.name), StyleFamily::listLevel};
  Ref<PropertyMap> map = PropertyMap::make(level.attributes.size() + level.properties.size() + 1);
  take(owner, level.line, "level.style.element", level.element, false, *map);
  for (const RawAttribute& attribute : level.attributes) {
    if (attribute.prefix == "text" && attribute.name == "style-name") continue;  // a reference
    take(owner, level.line, propertyKeyText("level", attribute.prefix, attribute.name), attribute.value, false, *map);
  }
  takeProperties(level.properties, owner, *map);
  return map;
}

void PropertyImporter::takeProperties(const std::vector<RawProperty>& properties, const Owner& owner,
                                      PropertyMap& map) {
  bool hasShorthand = false;
  for (const RawProperty& property : properties) {
    if (property.prefix == "fo" && property.name == "margin" && !property.isElement) {
      hasShorthand = true;
    } else {
      take(owner, property.line,
           propertyKeyText(property.group.empty() ? "level" : property.group, property.prefix, property.name),
           property.value, property.isElement, map);
    }
  }
  if (!hasShorthand) return;
  for (const RawProperty& property : properties) {
    if (property.prefix == "fo" && property.name == "margin" && !property.isElement)
      takeShorthand(owner, property, map);
  }
}

void PropertyImporter::take(const Owner& owner, int line, const std::string& keyText, const std::string& text,
                            bool isElement, PropertyMap& map) {
  PropertyKey key = keyFor(owner, line, keyText);
  if (!key) return;
  const PropertyRule* rule = propertyRule(key);
  if (isElement) {
    if (rule != nullptr && (rule->kinds & kElement) == 0) {  // an element with the name of a known attribute
      key = keyFor(owner, line, keyText + "-element");
      if (!key) return;
    }
    // Several elements of one name (conditional styles) stay together in their order.
    const OpaqueValue* earlier = asOpaque(map.find(key));
    map.set(key, make<OpaqueValue>(earlier != nullptr ? earlier->text() + text : text));
    return;
  }
  Ref<NSObject> usable = value(rule, key, text);
  if (usable == nullptr)
    return tell(owner, line, fmt::format("the value '{}' of {} cannot be used; not set", excerpt(text), keyText));
  map.set(key, std::move(usable));
}

// The shorthand fills the sides that the style does not give singly, wherever it stands among them.
void PropertyImporter::takeShorthand(const Owner& owner, const RawProperty& property, PropertyMap& map) {
  bool isUsable = true;
  for (const std::string_view side : kSides) {
    const std::string keyText = propertyKeyText(property.group, "fo", "margin" + std::string(side));
    const PropertyKey key = keyFor(owner, property.line, keyText);
    if (!key || map.contains(key)) continue;
    if (Ref<NSObject> usable = value(propertyRule(key), key, property.value)) {
      map.set(key, std::move(usable));
    } else {
      isUsable = false;
    }
  }
  if (isUsable) return;
  tell(owner, property.line,
       fmt::format("the value '{}' of {}.fo.margin cannot be used; not set", excerpt(property.value), property.group));
}

PropertyKey PropertyImporter::keyFor(const Owner& owner, int line, const std::string& text) {
  auto found = mKeys.find(text);
  if (found == mKeys.end()) {
    if (text.size() > kLongestKey) {
      tell(owner, line, fmt::format("a property with a name of {} bytes ('{}'); not set", text.size(), excerpt(text)));
      return {};
    }
    if (mKeys.size() >= kMostUnknownKeys) {
      if (!mToldOfTooMany) {
        tell(owner, line,
             fmt::format("more than {} different properties; from here on new ones are not set", kMostUnknownKeys));
      }
      mToldOfTooMany = true;
      return {};
    }
    // A name with a second colon is no good one, but parsers let it pass; an archive names elements after keys.
    std::string name = text;
    std::replace(name.begin(), name.end(), ':', '.');
    found = mKeys.emplace(text, PropertyKey(name)).first;
  }
  Ref<PropertySet>& wanted = mWanted.at(static_cast<std::size_t>(owner.family));
  if (wanted == nullptr) wanted = PropertySet::make();
  wanted->add(found->second);
  return found->second;
}

Ref<NSObject> PropertyImporter::value(const PropertyRule* rule, PropertyKey key, const std::string& text) {
  constexpr std::size_t kLongestShared = 200;
  if (text.size() > kLongestShared) return readValue(rule, text);
  const auto [found, isNew] = mValues.try_emplace(std::to_string(key.ordinal()) + '=' + text);
  if (isNew) {
    // A reference that this family does not follow is kept as the name that it is.
    found->second =
        rule != nullptr && rule->kinds == kStyle ? Ref<NSObject>(NSString::make(text)) : readValue(rule, text);
  }
  return found->second;
}

void PropertyImporter::extendRegistries() {
  for (const StyleFamily family : kStyleFamilies) {
    if (const Ref<PropertySet>& wanted = mWanted.at(static_cast<std::size_t>(family))) {
      FamilyRegistry::of(family).extend(wanted->keys());
    }
  }
}

void PropertyImporter::tell(const Owner& owner, int line, const std::string& message) {
  mFindings.push_back(
      {Finding::Severity::warning, "unusable-value", mRaw.place(owner.part, line), owner.style, message});
}

}  // namespace zt
