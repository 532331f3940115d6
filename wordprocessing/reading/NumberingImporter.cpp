// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/NumberingImporter.h>

#include <document/styles/FamilyStyles.h>
#include <document/styles/PropertyRules.h>
#include <document/values/Scalar.h>

#include <fmt/format.h>

#include <optional>

namespace zt {

namespace {

// Numbering styles have ids of their own, which may be numbers too.
std::string identifierOf(bool isAbstract, const std::string& id) {
  return styleIdentifier("list", (isAbstract ? "abstractNum-" : "num-") + id);
}

std::optional<std::size_t> levelIn(const WordElement& element) {
  const std::string* text = element.attribute("ilvl");
  const auto number = text != nullptr ? parseInteger(*text) : std::nullopt;
  return number && *number >= 0 && *number < 9 ? std::optional(static_cast<std::size_t>(*number)) : std::nullopt;
}

}  // namespace

void NumberingImporter::readMaps(PropertyReader& reader, const Note& note) {
  for (const RawWordStyle& raw : mRaw.abstractLists) readList(raw, true, reader, note);
  for (const RawWordStyle& raw : mRaw.lists) readList(raw, false, reader, note);
}

void NumberingImporter::readList(const RawWordStyle& raw, bool isAbstract, PropertyReader& reader, const Note& note) {
  List list;
  list.raw = &raw;
  list.isAbstract = isAbstract;
  const std::string* id = raw.element.attribute(isAbstract ? "abstractNumId" : "numId");
  if (id != nullptr) list.id = *id;
  if (const std::string* link = raw.element.valOf("numStyleLink")) list.linked = *link;
  if (const std::string* definition = raw.element.valOf("abstractNumId")) list.abstractId = *definition;
  if (!mPlaces.try_emplace(identifierOf(isAbstract, list.id), mLists.size()).second) {
    return tell("repeated-style", list, raw.element.line, "repeats an earlier one; left out");
  }
  const std::string* base = isAbstract ? raw.element.valOf("styleLink") : nullptr;
  if (base != nullptr && list.linked.empty()) mBases.try_emplace(*base, list.id);
  list.map = PropertyMap::make();
  for (const WordElement& child : raw.element.children) {
    if (child.is("lvl")) {
      readLevel(child, list, reader, note);
    } else if (child.is("lvlOverride")) {
      readOverride(child, list, reader, note);
    } else if (!child.is("abstractNumId")) {
      reader.take(child, "list", ownerOf(list), *list.map);
    }
  }
  note(StyleFamily::list, *list.map);
  mLists.push_back(std::move(list));
}

void NumberingImporter::readLevel(const WordElement& element, List& list, PropertyReader& reader, const Note& note) {
  const auto number = levelIn(element);
  if (!number) return tell("unusable-level", list, element.line, "a level without a number from 0 to 8; left out");
  Level& level = list.levels.at(*number);
  if (level.map != nullptr)
    return tell("unusable-level", list, element.line, "repeats a level; the earlier one counts");
  const PropertyReader::Owner owner = ownerOf(list);
  level.line = element.line;
  level.map = PropertyMap::make();
  reader.takeAll(element, "level", owner, *level.map);
  if (const WordElement* properties = element.child("pPr")) {
    reader.takeAll(*properties, "paragraph", owner, *level.map);
  }
  if (const WordElement* properties = element.child("rPr")) reader.takeAll(*properties, "text", owner, *level.map);
  if (const std::string* style = element.valOf("pStyle")) level.paragraphStyle = *style;
  note(StyleFamily::listLevel, *level.map);
}

// A level that an instance only starts elsewhere is otherwise that of the definition.
void NumberingImporter::readOverride(const WordElement& element, List& list, PropertyReader& reader, const Note& note) {
  const auto number = levelIn(element);
  if (!number) return tell("unusable-level", list, element.line, "a level without a number from 0 to 8; left out");
  if (const WordElement* whole = element.child("lvl")) readLevel(*whole, list, reader, note);
  Level& level = list.levels.at(*number);
  const std::string* start = element.valOf("startOverride");
  if (start == nullptr) return;
  if (level.map == nullptr) {
    const List* definition = definitionOf(list);
    const Level* original = definition != nullptr ? &definition->levels.at(*number) : nullptr;
    level.map = original != nullptr && original->map != nullptr ? original->map->copy() : PropertyMap::make();
    if (original != nullptr) level.paragraphStyle = original->paragraphStyle;
    level.line = element.line;
  }
  reader.takeText("level.w.start", *start, element.line, ownerOf(list), *level.map);
  note(StyleFamily::listLevel, *level.map);
}

const NumberingImporter::List* NumberingImporter::definitionOf(const List& list) const {
  const auto found = mPlaces.find(identifierOf(true, list.abstractId));
  return found == mPlaces.end() || found->second >= mLists.size() ? nullptr : &mLists[found->second];
}

// An instance inherits from its definition. A definition that stands for another inherits from the one that the
// numbering style is based on (17.9.21, 17.9.27), or else from that of the instance that the style uses. Neither stands
// for another itself, so that no loop can arise.
std::string NumberingImporter::parentOf(const List& list,
                                        const std::function<const std::string*(const std::string& id)>& numberOfStyle) {
  if (!list.isAbstract) {
    if (definitionOf(list) != nullptr) return identifierOf(true, list.abstractId);
    tell("missing-reference", list, list.raw->element.line,
         fmt::format("the numbering definition '{:.40}' does not exist", list.abstractId));
  } else if (!list.linked.empty()) {
    if (const auto base = mBases.find(list.linked); base != mBases.end()) return identifierOf(true, base->second);
    const std::string* number = numberOfStyle(list.linked);
    const auto found = number != nullptr ? mPlaces.find(identifierOf(false, *number)) : mPlaces.end();
    const List* definition = found != mPlaces.end() ? definitionOf(mLists[found->second]) : nullptr;
    if (definition != nullptr && definition->linked.empty()) return identifierOf(true, definition->id);
    tell("missing-reference", list, list.raw->element.line,
         fmt::format("the numbering style '{:.60}' leads to no numbering definition", list.linked));
  }
  return rootIdentifier("list");
}

void NumberingImporter::makeStyles(const std::function<const std::string*(const std::string& id)>& numberOfStyle) {
  for (List& list : mLists) {
    const std::string identifier = identifierOf(list.isAbstract, list.id);
    ZTSStyleFields fields;
    fields.name = identifier.substr(identifier.find(':') + 1);
    fields.identifier = identifier;
    fields.parentIdentifier = parentOf(list, numberOfStyle);
    fields.overridePropertyMap = list.map.get();
    list.style = makeFamilyStyle(StyleFamily::list, fields);
    const auto& all = list.isAbstract ? mRaw.abstractLists : mRaw.lists;
    const auto element = static_cast<std::size_t>(list.raw - all.data());
    mDocument.recordOrigin(list.style, {StyleOrigin::Kind::listStyle, list.raw->part, list.raw->element.line,
                                        std::string(list.style->name().view()), 0, element});
    for (std::size_t number = 0; number < kLevels; ++number) {
      Level& level = list.levels.at(number);
      if (level.map == nullptr) continue;
      ZTSStyleFields levelFields;
      levelFields.parentIdentifier = rootIdentifier("list-level");
      levelFields.overridePropertyMap = level.map.get();
      level.style = makeFamilyStyle(StyleFamily::listLevel, levelFields);
      list.style->p_setValueForProperty(level.style, keys::listLevel(number + 1));
      mDocument.recordOrigin(level.style, {StyleOrigin::Kind::listLevel, list.raw->part, level.line,
                                           fmt::format("{}/level-{}", identifier, number + 1), 0, element, number});
    }
  }
}

void NumberingImporter::connect(const std::function<OdfStyle*(const std::string& id)>& find) {
  for (const List& list : mLists) {
    for (const Level& level : list.levels) {
      if (level.style == nullptr || level.paragraphStyle.empty()) continue;
      if (OdfStyle* target = find(level.paragraphStyle)) {
        level.style->p_setValueForProperty(Ref<NSObject>(target), keys::levelParagraphStyle());
      } else {
        tell("missing-reference", list, level.line,
             fmt::format("the paragraph style '{:.60}' does not exist; not set", level.paragraphStyle));
      }
    }
  }
}

void NumberingImporter::addStyles() {
  for (const List& list : mLists) {
    for (const Level& level : list.levels) {
      if (level.style != nullptr) mDocument.stylesheet().addStyle(level.style);
    }
    mDocument.stylesheet().addStyle(list.style);
  }
}

OdfStyle* NumberingImporter::find(const std::string& number) const {
  const auto found = mPlaces.find(identifierOf(false, number));
  return found == mPlaces.end() ? nullptr : mLists[found->second].style.get();
}

PropertyReader::Owner NumberingImporter::ownerOf(const List& list) const {
  return {mRaw.parts[list.raw->part].shown, identifierOf(list.isAbstract, list.id)};
}

void NumberingImporter::tell(const char* code, const List& list, int line, const std::string& message) {
  const PropertyReader::Owner owner = ownerOf(list);
  mDocument.findings.push_back({Finding::Severity::warning, code, {owner.file, line}, owner.style, message});
}

}  // namespace zt
