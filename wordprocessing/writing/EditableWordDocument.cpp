// SPDX-License-Identifier: MIT
#include <wordprocessing/writing/EditableWordDocument.h>

#include <document/editing/StyleNames.h>
#include <document/styles/PropertyRules.h>
#include <wordprocessing/reading/WordUses.h>
#include <wordprocessing/writing/WordEditingRules.h>
#include <wordprocessing/writing/WordPartWriter.h>

#include <platform/NSNumber.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace zt {

namespace {

std::vector<XmlPart> xmlOf(const std::vector<WordPackage::Part>& parts) {
  std::vector<XmlPart> all;
  for (const WordPackage::Part& part : parts) all.push_back(part.xml);
  return all;
}

std::vector<WordPartKind> kindsOf(const std::vector<WordPackage::Part>& parts) {
  std::vector<WordPartKind> all;
  for (const WordPackage::Part& part : parts) all.push_back(part.kind);
  return all;
}

bool isTrue(const Ref<NSObject>& value) {
  const NSNumber* number = NSNumber::from(value.get());
  return number != nullptr && number->isBool() && number->boolValue();
}

/// The toggles that one of two sets of direct formatting has and the other has not.
std::vector<PropertyKey> togglesMoved(const PropertyMap& first, const PropertyMap& second) {
  std::vector<PropertyKey> keys;
  for (const auto& [map, other] : {std::pair(&first, &second), std::pair(&second, &first)}) {
    for (const PropertyMap::Entry& entry : *map) {
      const PropertyRule* rule = propertyRule(entry.key);
      if (rule != nullptr && rule->isToggle && !other->contains(entry.key)) keys.push_back(entry.key);
    }
  }
  return keys;
}

/// Whether a table style or one of its parts says true.
bool isTrueInTable(const OdfStyle& table, PropertyKey key) {
  if (isTrue(table.valueForProperty(key))) return true;
  return std::any_of(keys::tableConditions().begin(), keys::tableConditions().end(), [&](PropertyKey part) {
    const Ref<NSObject> found = table.valueForProperty(part);
    const OdfStyle* style = asOdfStyle(static_cast<const NSObject*>(found.get()));
    return style != nullptr && isTrue(style->valueForProperty(key));
  });
}

}  // namespace

struct EditableWordDocument::Read {
  WordDocument raw;
  ImportedWord word;

  static Read of(WordPackage package) {
    WordDocument raw = WordDocument::read(std::move(package));
    ImportedWord word = importWord(raw);
    return {std::move(raw), std::move(word)};
  }
};

EditableWordDocument::EditableWordDocument(DocumentSource source, std::vector<WordPartKind> kinds, Read read)
    : EditableDocument(std::move(source), read.word.document, wordEditingRules()),
      mKinds(std::move(kinds)),
      mRaw(std::move(read.raw)),
      mUses(usesAsRead(read.word)),
      mFirstPlace(mRaw.uses.size(), kNowhere) {
  for (std::size_t place = mRaw.places.size(); place-- > 0;) {
    if (mRaw.places[place] != kNowhere) mFirstPlace[mRaw.places[place]] = place;
  }
}

std::unique_ptr<EditableDocument> EditableWordDocument::open(const std::filesystem::path& path) {
  WordPackage package = WordPackage::read(path);
  DocumentSource source = DocumentSource::package(path, xmlOf(package.parts));
  std::vector<WordPartKind> kinds = kindsOf(package.parts);
  return std::unique_ptr<EditableDocument>(
      new EditableWordDocument(std::move(source), std::move(kinds), Read::of(std::move(package))));
}

std::unique_ptr<EditableDocument> EditableWordDocument::fromParts(std::vector<WordPackage::Part> parts,
                                                                  const std::string& shown) {
  DocumentSource source{shown, DocumentForm::folder, {}, xmlOf(parts)};
  std::vector<WordPartKind> kinds = kindsOf(parts);
  WordPackage package;
  package.shown = shown;
  package.parts = std::move(parts);
  return std::unique_ptr<EditableDocument>(
      new EditableWordDocument(std::move(source), std::move(kinds), Read::of(std::move(package))));
}

std::vector<XmlPart> EditableWordDocument::written(std::vector<ShownEdit>& shown) {
  const WordDifference difference(mRaw, document(), before(), mUses);
  refuseMovedToggles(difference);
  mNames = difference.names;
  std::vector<XmlPart> parts = source().parts;
  if (difference.isEmpty()) return parts;
  bool hasStyles = false;
  for (std::size_t index = 0; index < parts.size(); ++index) {
    const WordPartKind kind = mKinds[index];
    hasStyles = hasStyles || kind == WordPartKind::styles;
    const bool isText = kind == WordPartKind::document || kind == WordPartKind::text || kind == WordPartKind::settings;
    if (kind == WordPartKind::theme || (isText && !difference.changesText())) continue;
    parts[index].bytes = writtenWordPart(source().parts[index], kind, difference, shown);
  }
  if (!hasStyles && (!difference.newStyles.empty() || !difference.roots.empty()))
    throw EditError("the document has no part for styles");
  return parts;
}

// By the use.
std::unordered_map<std::size_t, std::vector<PropertyKey>> EditableWordDocument::movedToggles(
    const WordDifference& difference) const {
  std::unordered_map<std::size_t, std::vector<PropertyKey>> moved;
  for (std::size_t use = 0; use < mRaw.uses.size(); ++use) {
    const WordUse& raw = mRaw.uses[use];
    if (raw.family != StyleFamily::text || raw.isNameOnly) continue;
    const auto found = difference.uses.find(useKey(raw.family, raw.styleId, raw.properties));
    if (found == difference.uses.end() || !found->second.hasOtherName) continue;
    std::vector<PropertyKey> keys = togglesMoved(*found->second.before, *found->second.after);
    if (!keys.empty()) moved.emplace(use, std::move(keys));
  }
  return moved;
}

// A toggle in direct formatting is absolute, in a style it turns those of the paragraph and the table over (17.7.3):
// what moves between the two looks otherwise beside them, which comparing styles one by one does not show.
void EditableWordDocument::refuseMovedToggles(const WordDifference& difference) const {
  const auto moved = movedToggles(difference);
  if (moved.empty()) return;
  const auto& uses = document().styleUses();
  for (const WordParagraph& paragraph : mRaw.paragraphs) {
    const std::size_t tableUse = paragraph.table != kNowhere ? mRaw.tables[paragraph.table].use : kNowhere;
    const OdfStyle* table = tableUse != kNowhere ? uses[tableUse].style.get() : nullptr;
    const OdfStyle& style = *uses[paragraph.use].style;
    for (const std::size_t run : paragraph.runs) {
      const auto found = moved.find(run);
      if (found == moved.end()) continue;
      for (const PropertyKey key : found->second) {
        if (!isTrue(style.valueForProperty(key)) && (table == nullptr || !isTrueInTable(*table, key))) continue;
        throw EditError(
            fmt::format("{} is absolute in direct formatting and turns others over in a style: it cannot move between "
                        "them beside {}",
                        key.view(), document().labelOf(style)));
      }
    }
  }
}

Ref<ZTDocument> EditableWordDocument::readAgain(std::vector<XmlPart> parts) const {
  WordPackage package;
  package.shown = document().shown;
  for (std::size_t index = 0; index < parts.size(); ++index)
    package.parts.push_back({mKinds[index], std::move(parts[index])});
  const Read read = Read::of(std::move(package));
  mPlacesAgain.clear();
  for (const std::size_t use : read.raw.places)
    mPlacesAgain.push_back(use != kNowhere ? read.word.styleOfUse[use].get() : nullptr);
  return read.word.document;
}

const OdfStyle* EditableWordDocument::styleOfUse(std::size_t use, const ZTDocument& again) const {
  const WordUse& raw = mRaw.uses[use];
  if (raw.isNameOnly) {
    const auto name = mNames.find(styleIdentifier(familyName(raw.family), raw.styleId));
    return again.namedStyle(familyName(raw.family), name != mNames.end() ? name->second : raw.styleId);
  }
  const bool isThere = mPlacesAgain.size() == mRaw.places.size() && mFirstPlace[use] != kNowhere;
  return isThere ? mPlacesAgain[mFirstPlace[use]] : nullptr;
}

bool EditableWordDocument::isReplaceable(const std::filesystem::path& path) const {
  return WordPackage::recognises(path);
}

bool EditableWordDocument::isSignature(std::string_view entry) const { return entry.starts_with("_xmlsignatures/"); }

}  // namespace zt
