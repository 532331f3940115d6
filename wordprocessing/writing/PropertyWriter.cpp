// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/PropertyWriter.h>

#include <document/editing/DocumentEditor.h>
#include <document/xml/XmlScanner.h>
#include <wordprocessing/writing/ElementOrder.h>

#include <ztstyles/ZTSStyle.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

using Kind = WordPlace::Kind;

constexpr std::array<std::pair<const char*, const char*>, 5> kHolders = {
    {{"pPr", "paragraph"}, {"rPr", "text"}, {"tblPr", "table"}, {"trPr", "table-row"}, {"tcPr", "table-cell"}}};

bool differs(const NSObject* first, const NSObject* second) {
  const bool isStyle = asStyle(first) != nullptr || asStyle(second) != nullptr;
  return isStyle ? first != second : !sameOrEqual(first, second);
}

std::string attribute(std::string_view name, std::string_view value) {
  return fmt::format(" w:{}=\"{}\"", name, escapedAttribute(value));
}

// The strict form gave these new names.
std::string nameIn(const PlacedElement& element, const std::string& name) {
  constexpr std::array<std::pair<std::string_view, const char*>, 4> kNames = {
      {{"left", "start"}, {"right", "end"}, {"leftChars", "startChars"}, {"rightChars", "endChars"}}};
  for (const auto& [usual, strict] : kNames) {
    if (name == usual && element.attribute("w", strict) != nullptr) return strict;
  }
  return name;
}

}  // namespace

/// One element with the values that it says.
struct PropertyWriter::Element {
  struct Value {
    WordPlace place;
    PropertyKey key;
    const NSObject* value = nullptr;  // none: it went
    bool isChanged = false;
  };
  std::string prefix;
  std::string name;
  std::vector<Value> values;

  [[nodiscard]] bool isChanged() const {
    return std::any_of(values.begin(), values.end(), [](const Value& each) { return each.isChanged; });
  }
  [[nodiscard]] bool isGone() const {
    return std::all_of(values.begin(), values.end(), [](const Value& each) { return each.value == nullptr; });
  }
  [[nodiscard]] Kind kind() const { return values.front().place.kind; }
};

void NewChildren::add(std::string_view name, std::string text) {
  if (!text.empty()) mAll.push_back({placeAmongChildren(mParent.name, name), std::move(text)});
}

void NewChildren::write() {
  if (mAll.empty()) return;
  std::stable_sort(mAll.begin(), mAll.end(),
                   [](const Child& left, const Child& right) { return left.place < right.place; });
  if (mParent.isEmpty) {
    std::string all;
    for (const Child& child : mAll) all += child.text;
    return mEdits.addChild(mParent, nullptr, all);
  }
  for (const Child& child : mAll) {
    const auto next = std::find_if(mParent.children.begin(), mParent.children.end(), [&](const auto& each) {
      return placeAmongChildren(mParent.name, each->name) > child.place;
    });
    const std::size_t at = next != mParent.children.end() ? (*next)->start : mParent.contentEnd;
    mEdits.put(at, at, mEdits.fitted(*mParent.declared, child.text));
  }
  mAll.clear();
}

std::vector<PropertyWriter::Element> PropertyWriter::elementsOf(std::string_view group, const PropertyMap& before,
                                                                const PropertyMap& after) {
  std::vector<Element> elements;
  const auto add = [&](PropertyKey key, const NSObject* value, bool isChanged) {
    const WordPlace place = placeInWord(key);
    if (place.group != group || place.kind == Kind::flag) return;
    auto found = std::find_if(elements.begin(), elements.end(), [&](const Element& each) {
      return each.name == place.element && each.prefix == place.prefix;
    });
    if (found == elements.end()) found = elements.insert(found, {place.prefix, place.element, {}});
    found->values.push_back({place, key, value, isChanged});
  };
  const auto isOfGroup = [&](PropertyKey key) {
    const bool isNumber = key.view().starts_with("style.style.list-");
    return isNumber ? group == "paragraph"
                    : key.view().starts_with(group) && key.view().substr(group.size()).starts_with('.');
  };
  for (const PropertyMap::Entry& entry : before) {
    if (isOfGroup(entry.key) && !after.contains(entry.key)) add(entry.key, nullptr, true);
  }
  for (const PropertyMap::Entry& entry : after) {
    if (!isOfGroup(entry.key)) continue;
    const bool isChanged = differs(entry.value.get(), before.find(entry.key));
    // What stands unchanged in places of its own needs no place here.
    const bool isForeign = entry.key.view().find(".tblStylePr.") != std::string_view::npos;
    if (isChanged || !isForeign) add(entry.key, entry.value.get(), isChanged);
  }
  return elements;
}

std::string PropertyWriter::elementText(const Element& element) {
  std::string attributes;
  std::string children;
  for (const Element::Value& each : element.values) {
    if (each.value == nullptr) continue;
    switch (each.place.kind) {
      case Kind::element: return wordText(each.place, each.key, *each.value);
      case Kind::side: children += wordText(each.place, each.key, *each.value); break;
      case Kind::number:
        children.insert(
            each.place.part == "ilvl" ? 0 : children.size(),
            fmt::format("<w:{}{}/>", each.place.part, attribute("val", wordText(each.place, each.key, *each.value))));
        break;
      case Kind::attributes:
        for (const auto& [name, value] : attributesFor(each.place, each.key, each.value)) {
          if (value) attributes += attribute(name, *value);
        }
        break;
      case Kind::flag: break;
    }
  }
  return children.empty() ? fmt::format("<w:{}{}/>", element.name, attributes)
                          : fmt::format("<w:{0}{1}>{2}</w:{0}>", element.name, attributes, children);
}

// Of doubled elements the last counts.
void PropertyWriter::editElement(const PlacedElement& holder, const Element& element, NewChildren& added) {
  const std::vector<const PlacedElement*> found = holder.childrenNamed(element.prefix, element.name);
  if (found.empty()) {
    if (!element.isGone()) added.add(element.name, elementText(element));
    return;
  }
  if (element.isGone()) {
    for (const PlacedElement* each : found) mEdits.remove(*each);
  } else if (element.kind() == Kind::element) {
    mEdits.replace(holder, found, elementText(element));
  } else {
    editParts(*found.back(), element);
  }
}

void PropertyWriter::editParts(const PlacedElement& found, const Element& element) {
  NewChildren added(mEdits, found);
  for (const Element::Value& each : element.values) {
    if (!each.isChanged) continue;
    if (each.place.kind == Kind::attributes) {
      for (const auto& [name, value] : attributesFor(each.place, each.key, each.value)) {
        mEdits.setAttribute(found, "w", nameIn(found, name), value);
      }
    } else if (each.place.kind == Kind::number) {
      setVal(found, each.place.part,
             each.value != nullptr ? std::optional(wordText(each.place, each.key, *each.value)) : std::nullopt, added);
    } else {
      const std::vector<const PlacedElement*> sides = found.childrenNamed("w", each.place.part);
      const std::string text = each.value != nullptr ? wordText(each.place, each.key, *each.value) : std::string();
      if (sides.empty()) {
        added.add(each.place.part, text);
      } else {
        mEdits.replace(found, sides, text);
      }
    }
  }
  added.write();
}

void PropertyWriter::edit(const PlacedElement& holder, std::string_view group, const PropertyMap& before,
                          const PropertyMap& after, NewChildren& added) {
  for (const Element& element : elementsOf(group, before, after)) {
    if (element.isChanged()) editElement(holder, element, added);
  }
}

void PropertyWriter::editFormatting(const PlacedElement& element, const PropertyMap& before, const PropertyMap& after,
                                    NewChildren& added) {
  for (const auto& [name, group] : kHolders) {
    const std::vector<const PlacedElement*> holders = element.childrenNamed("w", name);
    if (holders.empty()) {
      const std::string text = textOf(group, name, after);
      if (!text.empty()) added.add(name, fmt::format("<w:{0}>{1}</w:{0}>", name, text));
      continue;
    }
    NewChildren inside(mEdits, *holders.front());
    edit(*holders.front(), group, before, after, inside);
    inside.write();
  }
}

void PropertyWriter::setVal(const PlacedElement& parent, const std::string& name,
                            const std::optional<std::string>& value, NewChildren& added) {
  const std::vector<const PlacedElement*> found = parent.childrenNamed("w", name);
  if (found.empty()) {
    if (value) added.add(name, fmt::format("<w:{}{}/>", name, attribute("val", *value)));
  } else if (value) {
    mEdits.setAttribute(*found.front(), "w", "val", value);
  } else {
    for (const PlacedElement* each : found) mEdits.remove(*each);
  }
}

std::string PropertyWriter::textOf(std::string_view group, std::string_view holder, const PropertyMap& values) {
  std::vector<Element> elements = elementsOf(group, *PropertyMap::make(), values);
  std::stable_sort(elements.begin(), elements.end(), [&](const Element& left, const Element& right) {
    return placeAmongChildren(holder, left.name) < placeAmongChildren(holder, right.name);
  });
  std::string text;
  for (const Element& element : elements) text += elementText(element);
  return text;
}

std::string PropertyWriter::formattingText(const PropertyMap& values) {
  std::string text;
  for (const auto& [name, group] : kHolders) {
    const std::string inside = textOf(group, name, values);
    if (!inside.empty()) text += fmt::format("<w:{0}>{1}</w:{0}>", name, inside);
  }
  return text;
}

}  // namespace zt
