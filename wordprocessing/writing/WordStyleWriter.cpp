// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/WordStyleWriter.h>

#include <document/editing/DocumentEditor.h>
#include <document/editing/StyleNames.h>
#include <document/styles/StyleValues.h>
#include <document/xml/XmlScanner.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace zt {

namespace {

std::optional<std::string> baseName(const OdfStyle& style) {
  const std::string_view parent = style.parentIdentifier().view();
  const std::size_t colon = parent.find(':');
  return colon == std::string_view::npos ? std::nullopt : std::optional(std::string(parent.substr(colon + 1)));
}

/// The values that a root of the model says as w:rPrDefault, or else as w:pPrDefault.
Ref<PropertyMap> defaultsIn(const PropertyMap& values, bool isText) {
  const Ref<PropertyMap> found = PropertyMap::make();
  for (const PropertyMap::Entry& entry : values) {
    if (entry.key.view().starts_with(isText ? "text." : "paragraph.")) found->set(entry.key, entry.value);
  }
  return found;
}

struct Defaults {
  const char* holder;
  const char* properties;
  const char* group;
  StyleFamily family;
};
constexpr std::array<Defaults, 2> kDefaults = {
    {{"rPrDefault", "rPr", "text", StyleFamily::text}, {"pPrDefault", "pPr", "paragraph", StyleFamily::paragraph}}};

/// The names of the exceptions of a w:latentStyles, as the model keeps it.
std::vector<std::string> exceptionsIn(const NSObject* value) {
  std::vector<std::string> names;
  const OpaqueValue* text = value != nullptr ? asOpaque(value) : nullptr;
  if (text == nullptr) return names;
  XmlScanner scanner(text->text(), XmlScanner::Prefixes::standard);
  while (scanner.next()) {
    if (!scanner.isStart() || !scanner.is("w", "lsdException")) continue;
    for (const XmlPlacedAttribute& attribute : scanner.attributes()) {
      if (attribute.is("w", "name")) names.push_back(attribute.value());
    }
  }
  return names;
}

}  // namespace

void WordStyleWriter::editStyle(const PlacedElement& element, const WordDifference::Element& changes) {
  NewChildren added(mEdits, element);
  for (const auto& [before, partName] : changes) {
    if (partName.empty() && before->style->stylesheet() == nullptr) return mEdits.remove(element);
  }
  for (const auto& [before, partName] : changes) {
    if (partName.empty()) {
      editItself(element, *before, added);
      continue;
    }
    // A part of a table style: its element is known by its type.
    const Ref<PropertyMap> now = ownValuesOf(*before->style);
    for (const PlacedElement* part : element.childrenNamed("w", "tblStylePr")) {
      const PlacedElement::Attribute* type = part->attribute("w", "type");
      if (type == nullptr || type->value != partName) continue;
      NewChildren inside(mEdits, *part);
      mProperties.editFormatting(*part, *before->own, *now, inside);
      inside.write();
    }
  }
  added.write();
}

void WordStyleWriter::editItself(const PlacedElement& element, const StyleAsRead& before, NewChildren& added) {
  const OdfStyle& style = *before.style;
  const Ref<PropertyMap> now = ownValuesOf(style);
  if (before.identifier != style.identifier())
    mEdits.setAttribute(element, "w", "styleId", std::string(fileNameOf(style)));
  if (before.name != style.name()) mProperties.setVal(element, "name", style.name().text(), added);
  if (before.parentIdentifier != style.parentIdentifier())
    mProperties.setVal(element, "basedOn", baseName(style), added);
  for (const char* flag : {"default", "customStyle"}) {
    const PropertyKey key(std::string("style.w.") + flag);
    if (sameOrEqual(before.own->find(key), now->find(key))) continue;
    const NSObject* value = now->find(key);
    mEdits.setAttribute(element, "w", flag,
                        value != nullptr ? std::optional(wordText(placeInWord(key), key, *value)) : std::nullopt);
  }
  mProperties.edit(element, "style", *before.own, *now, added);
  mProperties.editFormatting(element, *before.own, *now, added);
}

void WordStyleWriter::editList(const PlacedElement& element, const WordDifference::Element& changes) {
  NewChildren added(mEdits, element);
  for (const auto& [before, number] : changes) {
    const Ref<PropertyMap> now = ownValuesOf(*before->style);
    if (before->style->family() == StyleFamily::list) {
      if (before->style->stylesheet() == nullptr) return mEdits.remove(element);
      if (before->identifier != before->style->identifier() ||
          before->parentIdentifier != before->style->parentIdentifier())
        throw EditError(fmt::format("{} cannot be another list in a file", before->identifier.view()));
      mProperties.edit(element, "list", *before->own, *now, added);
      continue;
    }
    const PlacedElement* level = nullptr;
    for (const auto& child : element.children) {
      const PlacedElement* candidate = child.get();
      if (child->name == "lvlOverride") {
        const auto inside = child->childrenNamed("w", "lvl");
        candidate = inside.empty() ? nullptr : inside.front();
      }
      const PlacedElement::Attribute* given = candidate != nullptr ? candidate->attribute("w", "ilvl") : nullptr;
      if (given != nullptr && candidate->name == "lvl" && given->value == number) level = candidate;
    }
    if (level == nullptr) throw EditError("a level that only starts elsewhere cannot be changed in a file");
    NewChildren inside(mEdits, *level);
    mProperties.edit(*level, "level", *before->own, *now, inside);
    mProperties.editFormatting(*level, *before->own, *now, inside);
    inside.write();
  }
  added.write();
}

void WordStyleWriter::editDefaults(const PlacedElement& element, const std::vector<const StyleAsRead*>& roots) {
  NewChildren added(mEdits, element);
  for (const Defaults& each : kDefaults) {
    const auto root = std::find_if(roots.begin(), roots.end(),
                                   [&](const StyleAsRead* read) { return read->style->family() == each.family; });
    if (root == roots.end()) continue;
    const bool isText = each.family == StyleFamily::text;
    const Ref<PropertyMap> before = defaultsIn(*(*root)->own, isText);
    const Ref<PropertyMap> now = defaultsIn(*ownValuesOf(*(*root)->style), isText);
    if (areSameValues(*before, *now)) continue;
    const auto holders = element.childrenNamed("w", each.holder);
    if (holders.empty()) {
      added.add(each.holder, fmt::format("<w:{0}>{1}</w:{0}>", each.holder, PropertyWriter::formattingText(*now)));
      continue;
    }
    NewChildren inside(mEdits, *holders.front());
    mProperties.editFormatting(*holders.front(), *before, *now, inside);
    inside.write();
  }
  added.write();
}

std::string WordStyleWriter::newDefaults(const std::vector<const StyleAsRead*>& roots) {
  std::string inside;
  for (const Defaults& each : kDefaults) {
    for (const StyleAsRead* root : roots) {
      if (root->style->family() != each.family) continue;
      const Ref<PropertyMap> now = defaultsIn(*ownValuesOf(*root->style), each.family == StyleFamily::text);
      if (!now->isEmpty())
        inside += fmt::format("<w:{0}>{1}</w:{0}>", each.holder, PropertyWriter::formattingText(*now));
    }
  }
  return inside.empty() ? inside : "<w:docDefaults>" + inside + "</w:docDefaults>";
}

void WordStyleWriter::editLatentStyles(const PlacedElement& element, const StyleAsRead& root) {
  const PropertyKey key("style.w.latentStyles");
  const NSObject* now = root.style->p_overrideValueForProperty(key);
  if (sameOrEqual(root.own->find(key), now)) return;
  if (now == nullptr) return mEdits.remove(element);
  const std::vector<std::string> kept = exceptionsIn(now);
  for (const PlacedElement* exception : element.childrenNamed("w", "lsdException")) {
    const PlacedElement::Attribute* name = exception->attribute("w", "name");
    if (name != nullptr && std::find(kept.begin(), kept.end(), name->value) == kept.end()) mEdits.remove(*exception);
  }
}

std::string WordStyleWriter::newStyle(const OdfStyle& style) {
  const Ref<PropertyMap> own = ownValuesOf(style);
  const char* type = style.family() == StyleFamily::text    ? "character"
                     : style.family() == StyleFamily::table ? "table"
                                                            : "paragraph";
  const std::string id(fileNameOf(style));
  std::string tag = fmt::format("<w:style w:type=\"{}\"", type);
  for (const char* flag : {"default", "customStyle"}) {
    const PropertyKey key(std::string("style.w.") + flag);
    if (const NSObject* value = own->find(key))
      tag += fmt::format(" w:{}=\"{}\"", flag, wordText(placeInWord(key), key, *value));
  }
  if (!own->contains(PropertyKey("style.w.customStyle"))) tag += " w:customStyle=\"1\"";
  tag += fmt::format(" w:styleId=\"{}\">", escapedAttribute(id));
  const std::string name = style.name().view().empty() ? id : style.name().text();
  tag += fmt::format("<w:name w:val=\"{}\"/>", escapedAttribute(name));
  if (const auto base = baseName(style)) tag += fmt::format("<w:basedOn w:val=\"{}\"/>", escapedAttribute(*base));
  return tag + PropertyWriter::textOf("style", "style", *own) + PropertyWriter::formattingText(*own) + "</w:style>";
}

}  // namespace zt
