// SPDX-License-Identifier: MIT
#include <opendocument/reading/ListImporter.h>

#include <document/styles/FamilyStyles.h>
#include <document/values/Scalar.h>

#include <platform/NSNull.h>

#include <fmt/format.h>

namespace zt {

namespace {

std::string keyFor(bool isOutline, bool isAutomatic, std::size_t part, const std::string& name) {
  return (isAutomatic ? std::to_string(part) : std::string()) + (isOutline ? "outline:" : "list:") + name;
}

// The position of a level in its list, 0 if it cannot have one.
std::size_t positionOf(const RawListLevel& level) {
  const std::string* text = level.attribute("text", "level");
  const auto number = text != nullptr ? parseInteger(*text) : std::nullopt;
  return number && *number >= 1 && *number <= static_cast<std::int64_t>(keys::kListLevels)
             ? static_cast<std::size_t>(*number)
             : 0;
}

}  // namespace

std::string ListImporter::keyOf(const RawListStyle& list) {
  return keyFor(list.isOutline, list.isAutomatic, list.part, list.name);
}

void ListImporter::readMaps(PropertyImporter& properties) {
  for (const RawListStyle& raw : mRaw.listStyles) {
    List list{&raw, properties.mapOf(raw), {}, {}, {}};
    for (const RawListLevel& level : raw.levels) list.levelMaps.push_back(properties.mapOf(level, raw));
    const auto [place, isNew] = mPlaces.try_emplace(keyOf(raw), mLists.size());
    if (isNew) {
      mLists.push_back(std::move(list));
      continue;
    }
    List& earlier = mLists[place->second];
    const RawListStyle& dropped = raw.isAutomatic ? raw : *earlier.raw;
    tell("repeated-style", dropped, dropped.line, styleIdentifier("list", raw.name),
         raw.isAutomatic ? "repeats the name of an earlier automatic style; left out"
                         : "is defined again further down; the later one counts");
    if (!raw.isAutomatic) earlier = std::move(list);
  }
}

void ListImporter::makeStyles() {
  for (List& list : mLists) {
    const RawListStyle& raw = *list.raw;
    ZTSStyleFields fields;
    if (!raw.isAutomatic) {
      const std::string* displayName = raw.attribute("style", "display-name");
      fields.name = displayName != nullptr ? *displayName : raw.name;
      fields.identifier = styleIdentifier(raw.isOutline ? "outline" : "list", raw.name);
    }
    fields.parentIdentifier = rootIdentifier("list");
    fields.overridePropertyMap = list.map.get();
    list.style = makeFamilyStyle(StyleFamily::list, fields);
    mDocument.recordOrigin(list.style, {.kind = StyleOrigin::Kind::listStyle,
                                        .part = raw.part,
                                        .line = raw.line,
                                        .name = raw.name,
                                        .element = raw.element});
    const std::string label = mDocument.labelOf(*list.style);
    for (std::size_t index = 0; index < raw.levels.size(); ++index)
      list.levels.push_back(makeLevel(list, index, label));
  }
}

Ref<OdfStyle> ListImporter::makeLevel(List& list, std::size_t index, const std::string& label) {
  const RawListLevel& raw = list.raw->levels[index];
  const std::size_t position = positionOf(raw);
  if (position == 0 || list.style->p_overrideValueForProperty(keys::listLevel(position)) != nullptr) {
    tell("unusable-level", *list.raw, raw.line, label,
         position == 0 ? "a level without a number from 1 to 10; left out" : "repeats a level; the earlier one counts");
    return {};
  }
  ZTSStyleFields fields;
  fields.parentIdentifier = rootIdentifier("list-level");
  fields.overridePropertyMap = list.levelMaps[index].get();
  Ref<OdfStyle> level = makeFamilyStyle(StyleFamily::listLevel, fields);
  list.style->p_setValueForProperty(level, keys::listLevel(position));
  mDocument.recordOrigin(level, {.kind = StyleOrigin::Kind::listLevel,
                                 .part = list.raw->part,
                                 .line = raw.line,
                                 .name = fmt::format("{}/level-{}", label, position),
                                 .element = list.raw->element,
                                 .level = index});
  return level;
}

void ListImporter::connectTextStyles(
    const std::function<OdfStyle*(const RawListStyle& from, const std::string& name)>& find) {
  for (List& list : mLists) {
    for (std::size_t index = 0; index < list.levels.size(); ++index) {
      const RawListLevel& raw = list.raw->levels[index];
      const std::string* name = raw.attribute("text", "style-name");
      if (name == nullptr || list.levels[index] == nullptr) continue;
      if (name->empty()) {
        list.levels[index]->p_setValueForProperty(Ref<NSObject>(NSNull::null()), keys::levelTextStyle());
      } else if (OdfStyle* target = find(*list.raw, *name)) {
        list.levels[index]->p_setValueForProperty(Ref<NSObject>(target), keys::levelTextStyle());
      } else {
        tell("missing-reference", *list.raw, raw.line, mDocument.labelOf(*list.levels[index]),
             fmt::format("the text style '{}' does not exist; not set", *name));
      }
    }
  }
}

void ListImporter::addStyles() {
  for (const List& list : mLists) {
    for (const Ref<OdfStyle>& level : list.levels) {
      if (level != nullptr) mDocument.stylesheet().addStyle(level);
    }
    mDocument.stylesheet().addStyle(list.style);
  }
}

OdfStyle* ListImporter::find(const RawStyle& from, const std::string& name) const {
  const bool seesAutomaticFirst = from.kind == RawStyle::Kind::automatic;
  for (const bool isAutomatic : {seesAutomaticFirst, !seesAutomaticFirst}) {
    const auto place = mPlaces.find(keyFor(false, isAutomatic, from.part, name));
    if (place != mPlaces.end()) return mLists[place->second].style.get();
  }
  return nullptr;
}

void ListImporter::tell(const char* code, const RawListStyle& list, int line, const std::string& style,
                        const std::string& message) {
  mDocument.findings.push_back({Finding::Severity::warning, code, mRaw.place(list.part, line), style, message});
}

}  // namespace zt
