// SPDX-License-Identifier: MIT
#include <opendocument/writing/StyleWriter.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/StyleNames.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSNull.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>

namespace zt {

namespace {

/// The own values of a style as files have them.
Ref<const PropertyMap> valuesOf(const OdfStyle& style) {
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  return own ? own : Ref<const PropertyMap>(PropertyMap::make());
}

bool isElementText(const NSObject* value) {
  const OpaqueValue* opaque = value != nullptr ? asOpaque(value) : nullptr;
  return opaque != nullptr && opaque->text().starts_with('<');
}

bool isNoneWhenEmpty(std::string_view name) {
  return name == "list-style-name" || name == "master-page-name" || name == "default-outline-level" ||
         name == "data-style-name" || name == "style-name";
}

/// Where the property elements of a style stand among each other.
int rankOf(std::string_view group) { return group == "text" ? 2 : group == "paragraph" ? 1 : 0; }

/// Whether the property says what an element is, not what is in it.
bool isFixed(std::string_view name, std::string_view ownGroup) {
  return name == "element" || (ownGroup == "list" && name.starts_with("level-"));
}

bool isIdentifiedRoot(const OdfStyle& style) {
  return style.isIdentified() && style.identifier().view().find(':') == std::string_view::npos;
}

/// The keys whose own values are not what was read.
std::vector<PropertyKey> changedKeys(const PropertyMap& before, const PropertyMap& now) {
  const auto differs = [](const NSObject* first, const NSObject* second) {
    const bool isStyle = asStyle(first) != nullptr || asStyle(second) != nullptr;
    return isStyle ? first != second : !sameOrEqual(first, second);
  };
  std::vector<PropertyKey> changed;
  for (const PropertyMap::Entry& entry : before) {
    if (differs(entry.value.get(), now.find(entry.key))) changed.push_back(entry.key);
  }
  for (const PropertyMap::Entry& entry : now) {
    if (!before.contains(entry.key)) changed.push_back(entry.key);
  }
  return changed;
}

}  // namespace

struct StyleWriter::Property {
  std::string group;
  std::string prefix;
  std::string name;
  bool isElement = false;
};

struct StyleWriter::Properties {
  std::string attributes;
  std::string children;

  void add(const Property& property, const std::string& text) {
    if (property.isElement) {
      children += text;
    } else {
      attributes += fmt::format(" {}:{}=\"{}\"", property.prefix, property.name, escapedAttribute(text));
    }
  }
};

StyleWriter::Property StyleWriter::propertyFor(PropertyKey key, const NSObject* value) {
  const std::string_view text = key.view();
  const std::size_t first = text.find('.');
  const std::size_t second = first == std::string_view::npos ? first : text.find('.', first + 1);
  if (second == std::string_view::npos) throw EditError(fmt::format("the property '{}' has no place in a file", text));
  Property property{std::string(text.substr(0, first)), std::string(text.substr(first + 1, second - first - 1)),
                    std::string(text.substr(second + 1)), isElementText(value)};
  constexpr std::string_view kMark = "-element";
  if (property.isElement && property.name.ends_with(kMark)) property.name.resize(property.name.size() - kMark.size());
  return property;
}

std::string StyleWriter::textOf(const OdfStyle& style, PropertyKey key, const NSObject& value) const {
  if (const OdfStyle* referred = asOdfStyle(&value)) return mDifference.nameIn(mPart, *referred);
  if (isNull(&value)) {
    if (isNoneWhenEmpty(propertyFor(key, nullptr).name)) return {};
    throw EditError(fmt::format("a file cannot say that {} of {} has explicitly no value", key.view(),
                                style.isIdentified() ? style.identifier().text() : style.familyName()));
  }
  const PropertyRule* rule = propertyRule(key);
  return valueText(&value, rule != nullptr && rule->prefersPoints);
}

void StyleWriter::edit(const PlacedElement& element, const StyleDifference::Element& change) {
  if (change.style != nullptr) {
    editNames(element, *change.style);
    editValues(element, *change.style, change.style->style->family() == StyleFamily::list ? "list" : "style");
  }
  for (const auto& [level, before] : change.levels) editValues(*element.children.at(level), *before, "level");
}

void StyleWriter::editNames(const PlacedElement& element, const StyleAsRead& before) {
  const OdfStyle& style = *before.style;
  if (style.isIdentified() && !isIdentifiedRoot(style)) {
    const std::string name(fileNameOf(style));
    if (before.identifier != style.identifier()) mEdits.setAttribute(element, "style", "name", name);
    if (before.name != style.name() || before.identifier != style.identifier()) {
      const std::string shown = style.name().text();
      mEdits.setAttribute(element, "style", "display-name", shown == name ? std::nullopt : std::optional(shown));
    }
  }
  if (before.parentIdentifier == style.parentIdentifier() || style.family() == StyleFamily::list) return;
  const std::string_view parent = style.parentIdentifier().view();
  const std::size_t colon = parent.find(':');
  mEdits.setAttribute(
      element, "style", "parent-style-name",
      colon == std::string_view::npos ? std::nullopt : std::optional(std::string(parent.substr(colon + 1))));
}

void StyleWriter::expandShorthand(const PlacedElement& properties, const std::string& group, const PropertyMap& now,
                                  std::vector<PropertyKey>& changed) {
  constexpr std::array<std::string_view, 4> kSides = {"left", "right", "top", "bottom"};
  if (properties.attribute("fo", "margin") == nullptr) return;
  std::vector<PropertyKey> sides;
  bool isTouched = false;
  for (const std::string_view side : kSides) {
    sides.emplace_back(fmt::format("{}.fo.margin-{}", group, side));
    isTouched |= std::find(changed.begin(), changed.end(), sides.back()) != changed.end();
  }
  if (!isTouched) return;
  mEdits.setAttribute(properties, "fo", "margin", std::nullopt);
  for (const PropertyKey side : sides) {
    if (now.contains(side) && std::find(changed.begin(), changed.end(), side) == changed.end()) changed.push_back(side);
  }
}

struct StyleWriter::Edit {
  const PlacedElement& element;
  const StyleAsRead& before;
  std::string_view ownGroup;  // of attributes of the element itself
  Ref<const PropertyMap> now;
};

// What has a place keeps it: values go to the elements of their group that are there. A group that has none gets one.
void StyleWriter::editValues(const PlacedElement& element, const StyleAsRead& before, std::string_view ownGroup) {
  const Edit edit{element, before, ownGroup, valuesOf(*before.style)};
  std::map<std::string, std::vector<PropertyKey>> byGroup;
  for (const PropertyKey key : changedKeys(*before.own, *edit.now)) {
    byGroup[propertyFor(key, nullptr).group].push_back(key);
  }
  std::map<std::pair<int, std::string>, std::string> newGroups;
  for (auto& [group, keys] : byGroup) {
    const bool isOwn = group == ownGroup;
    const Elements there = isOwn ? Elements{&element} : element.childrenNamed("style", group + "-properties");
    if (there.size() == 1 && !isOwn) expandShorthand(*there.front(), group, *edit.now, keys);
    Properties added;
    for (const PropertyKey key : keys) editValue(edit, there, key, added);
    if (!there.empty()) continue;
    newGroups[{rankOf(group), group}] =
        fmt::format("<style:{}-properties{}{}", group, added.attributes,
                    added.children.empty() ? "/>" : fmt::format(">{}</style:{}-properties>", added.children, group));
  }
  if (element.isEmpty && !newGroups.empty()) {
    std::string all;
    for (const auto& [place, text] : newGroups) all += text;
    return mEdits.addChild(element, nullptr, all);
  }
  for (const auto& [place, text] : newGroups) addPropertyElement(element, place.second, text);
}

/// Edits one value where its group stands, or adds it to what a new element will hold.
void StyleWriter::editValue(const Edit& edit, const Elements& there, PropertyKey key, Properties& added) {
  const NSObject* value = edit.now->find(key);
  const Property property = propertyFor(key, value != nullptr ? value : edit.before.own->find(key));
  if (key == keys::otherFamily() || isFixed(property.name, edit.ownGroup))
    throw EditError(fmt::format("{} of a style cannot be changed in a file", key.view()));
  const auto text = value == nullptr ? std::nullopt : std::optional(textOf(*edit.before.style, key, *value));
  if (there.empty()) {
    if (!text) throw EditError(fmt::format("{} does not stand where it was read", key.view()));
    return added.add(property, *text);
  }
  if (property.isElement) return replaceChildren(there, property, text.value_or(std::string()));
  // The linked style was born in an extension and has the same meaning there.
  const bool isExtension = key == keys::linkedStyle() && edit.element.attribute("loext", property.name) != nullptr;
  setAttribute(there, isExtension ? "loext" : property.prefix, property.name, text);
}

/// Replaces the children that are the property, in the element that has them, else in the first one.
void StyleWriter::replaceChildren(const Elements& there, const Property& property, const std::string& text) {
  const auto holder = std::find_if(there.begin(), there.end(), [&](const PlacedElement* each) {
    return !each->childrenNamed(property.prefix, property.name).empty();
  });
  const PlacedElement& parent = holder != there.end() ? **holder : *there.front();
  mEdits.replace(parent, parent.childrenNamed(property.prefix, property.name), text);
}

/// Sets the attribute, or removes it, where it counts: in the last element that has it, else in the first one.
void StyleWriter::setAttribute(const Elements& there, const std::string& prefix, const std::string& name,
                               const std::optional<std::string>& value) {
  const auto holder = std::find_if(there.rbegin(), there.rend(),
                                   [&](const PlacedElement* each) { return each->attribute(prefix, name) != nullptr; });
  mEdits.setAttribute(holder != there.rend() ? **holder : *there.front(), prefix, name, value);
}

/// Adds a property element behind those that have to stand before it.
void StyleWriter::addPropertyElement(const PlacedElement& element, const std::string& group, const std::string& text) {
  constexpr std::string_view kEnding = "-properties";
  const PlacedElement* after = nullptr;
  for (const auto& child : element.children) {
    if (child->prefix != "style" || !child->name.ends_with(kEnding)) continue;
    if (rankOf(child->name.substr(0, child->name.size() - kEnding.size())) <= rankOf(group)) after = child.get();
  }
  if (after != nullptr) {
    mEdits.addChild(element, after, text);
  } else {
    mEdits.put(element.tagEnd, element.tagEnd, mEdits.fitted(*element.declared, text));
  }
}

std::string StyleWriter::newStyles(const std::vector<const OdfStyle*>& styles) const {
  std::string text;
  for (const OdfStyle* style : styles) text += newStyle(*style);
  return text;
}

std::string StyleWriter::newStyle(const OdfStyle& style) const {
  if (style.family() == StyleFamily::list) return newList(style);
  const bool isRoot = isIdentifiedRoot(style);
  const auto attribute = [](std::string_view name, std::string_view value) {
    return fmt::format(" {}=\"{}\"", name, escapedAttribute(value));
  };
  const std::string element = isRoot ? "style:default-style" : "style:style";
  std::string tag = '<' + element;
  if (!isRoot) {
    const std::string name = mDifference.nameIn(mPart, style);
    tag += attribute("style:name", name);
    if (style.isIdentified() && style.name().view() != name)
      tag += attribute("style:display-name", style.name().view());
  }
  tag += attribute("style:family", style.familyName());
  const std::string_view parent = style.parentIdentifier().view();
  if (!isRoot && parent.find(':') != std::string_view::npos)
    tag += attribute("style:parent-style-name", parent.substr(parent.find(':') + 1));
  const Properties content = propertiesOf(style, "style");
  tag += content.attributes;
  return content.children.empty() ? tag + "/>" : tag + '>' + content.children + "</" + element + '>';
}

StyleWriter::Properties StyleWriter::propertiesOf(const OdfStyle& style, std::string_view ownGroup) const {
  Properties own;
  std::map<std::pair<int, std::string>, Properties> groups;
  const Ref<const PropertyMap> values = valuesOf(style);
  for (const PropertyMap::Entry& entry : *values) {
    const Property property = propertyFor(entry.key, entry.value.get());
    if (entry.key == keys::otherFamily() || property.name == "element" ||
        (ownGroup == "list" && property.name.starts_with("level-")))
      continue;
    const std::string text = textOf(style, entry.key, *entry.value);
    Properties& group = property.group == ownGroup ? own : groups[{rankOf(property.group), property.group}];
    group.add(property, text);
  }
  std::string children;
  for (const auto& [place, group] : groups) {
    children += fmt::format("<style:{0}-properties{1}>{2}</style:{0}-properties>", place.second, group.attributes,
                            group.children);
  }
  own.children.insert(0, children);
  return own;
}

std::string StyleWriter::newList(const OdfStyle& list) const {
  const bool isOutline = list.isIdentified() && list.identifier().view().starts_with("outline:");
  const std::string element = isOutline ? "text:outline-style" : "text:list-style";
  const std::string name = mDifference.nameIn(mPart, list);
  std::string tag = fmt::format("<{} style:name=\"{}\"", element, escapedAttribute(name));
  if (list.isIdentified() && list.name().view() != name)
    tag += fmt::format(" style:display-name=\"{}\"", escapedAttribute(list.name().view()));
  std::string levels;
  for (std::size_t position = 1; position <= keys::kListLevels; ++position) {
    const OdfStyle* level = asOdfStyle(list.p_overrideValueForProperty(keys::listLevel(position)));
    if (level == nullptr) continue;
    const std::string kind = valueText(level->p_overrideValueForProperty(PropertyKey("level.style.element")));
    const Properties content = propertiesOf(*level, "level");
    levels += fmt::format("<text:{0}{1}>{2}</text:{0}>", kind, content.attributes, content.children);
  }
  return fmt::format("{0}{1}>{2}</{3}>", tag, propertiesOf(list, "list").attributes, levels, element);
}

}  // namespace zt
