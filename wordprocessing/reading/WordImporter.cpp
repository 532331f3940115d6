// SPDX-License-Identifier: MIT
#include <wordprocessing/reading/WordImporter.h>

#include <document/styles/FamilyStyles.h>
#include <document/styles/PropertyRules.h>
#include <document/values/Scalar.h>
#include <wordprocessing/properties/PropertyReader.h>
#include <wordprocessing/properties/WordValues.h>
#include <wordprocessing/reading/NumberingImporter.h>
#include <wordprocessing/reading/StyleIds.h>

#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/NSString.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

namespace zt {

namespace {

constexpr std::array kRootFamilies = {StyleFamily::paragraph, StyleFamily::text,      StyleFamily::table,
                                      StyleFamily::tableRow,  StyleFamily::tableCell, StyleFamily::list,
                                      StyleFamily::listLevel};

// What a w:style says of itself that the model has a place for; all else of it is kept under its own names.
bool isModelled(const WordElement& child) {
  constexpr std::array<std::string_view, 7> kNames = {"name", "basedOn", "next", "link", "tblPr", "trPr", "tcPr"};
  return child.is("tblStylePr") ||
         std::find_if(kNames.begin(), kNames.end(), [&](auto name) { return child.is(name); }) != kNames.end();
}

/// One import, in steps. All styles are made and connected before the first is added: parents stand before their
/// children then, so that each is linked once, and what is referred to is there.
class WordImporter {
 public:
  explicit WordImporter(const WordDocument& raw)
      : mRaw(raw),
        mDocument(ZTDocument::create()),
        mProperties(mDocument->findings),
        mIds(raw, mDocument->findings),
        mNumbering(raw, *mDocument),
        mStyles(raw.styles.size()),
        mUseMaps(raw.uses.size()) {}

  ImportedWord run() {
    mDocument->shown = mRaw.shown;
    for (const WordDocument::Part& part : mRaw.parts) mDocument->parts.push_back({part.name, part.shown});
    mDocument->findings.insert(mDocument->findings.begin(), mRaw.findings.begin(), mRaw.findings.end());
    readMaps();
    makeRoots();
    makeTheme();
    makeStyles();
    mNumbering.makeStyles([this](const std::string& id) { return numberOfStyle(id); });
    connect();
    addStyles();
    noteFieldNames();
    return {mDocument, std::move(mUsed)};
  }

 private:
  /// A style on its way: what it sets, and the parts of a table style by their key.
  struct Made {
    Ref<PropertyMap> map;
    std::vector<std::pair<PropertyKey, Ref<PropertyMap>>> conditions;
    Ref<OdfStyle> style;
    std::vector<std::pair<PropertyKey, Ref<OdfStyle>>> conditionStyles;
  };

  [[nodiscard]] PropertyReader::Owner ownerOf(std::size_t style) const {
    return {mRaw.parts[mRaw.styles[style].part].shown, mIds.identifierOf(style)};
  }

  void tell(const PropertyReader::Owner& owner, int line, const std::string& message) {
    mDocument->findings.push_back(
        {Finding::Severity::warning, "missing-reference", {owner.file, line}, owner.style, message});
  }

  // ---- What is set

  void readMaps() {
    for (std::size_t style = 0; style < mStyles.size(); ++style) readStyle(style);
    const auto note = [this](StyleFamily family, const PropertyMap& map) { noteKeys(family, map); };
    mNumbering.readMaps(mProperties, note);
    readRoots();
    for (std::size_t use = 0; use < mRaw.uses.size(); ++use) {
      const WordUse& raw = mRaw.uses[use];
      const PropertyReader::Owner owner{mRaw.parts[raw.part].shown, {}};
      mUseMaps[use] = PropertyMap::make();
      if (raw.isNameOnly) continue;
      mProperties.takeAll(raw.properties, std::string(familyName(raw.family)), owner, *mUseMaps[use]);
      takeLevel(raw.properties, owner, *mUseMaps[use]);
      noteKeys(raw.family, *mUseMaps[use]);
    }
    for (const StyleFamily family : kStyleFamilies) {
      if (const Ref<PropertySet>& wanted = mWanted.at(static_cast<std::size_t>(family))) {
        FamilyRegistry::of(family).extend(wanted->keys());
      }
    }
  }

  void readStyle(std::size_t style) {
    const WordElement& element = mRaw.styles[style].element;
    const PropertyReader::Owner owner = ownerOf(style);
    const Ref<PropertyMap> map = PropertyMap::make();
    for (const WordElement& child : element.children) {
      if (!isModelled(child)) mProperties.take(child, "style", owner, *map);
    }
    for (const char* flag : {"default", "customStyle"}) {
      if (const std::string* value = element.attribute(flag)) {
        mProperties.takeText(std::string("style.w.") + flag, *value, element.line, owner, *map);
      }
    }
    if (const std::string* next = element.valOf("next")) map->set(keys::nextStyle(), NSString::make(*next));
    if (const std::string* link = element.valOf("link")) map->set(keys::linkedStyle(), NSString::make(*link));
    takeFormatting(element, owner, *map);
    // A numbering style is the name of a list; it has nothing but that list's number (17.7.4.14).
    if (mIds.familyOf(style) == StyleFamily::list) {
      if (const std::string* number = listNumberOf(element))
        map->set(keys::listStyle(), NSString::make("num-" + *number));
    }
    noteKeys(mIds.familyOf(style), *map);
    mStyles[style].map = map;
    for (const WordElement& child : element.children) {
      if (child.is("tblStylePr") && mIds.familyOf(style) == StyleFamily::table) readCondition(child, style);
    }
  }

  void readCondition(const WordElement& element, std::size_t style) {
    const std::string* type = element.attribute("type");
    const PropertyKey key("table.w.tblStylePr." + (type != nullptr ? type->substr(0, 40) : std::string()));
    const auto& known = keys::tableConditions();
    if (std::find(known.begin(), known.end(), key) == known.end()) {
      return tell(ownerOf(style), element.line, "formats a part of tables that there is not; left out");
    }
    const Ref<PropertyMap> map = PropertyMap::make();
    takeFormatting(element, ownerOf(style), *map);
    noteKeys(StyleFamily::tableCell, *map);
    auto& conditions = mStyles[style].conditions;
    std::erase_if(conditions, [key](const auto& earlier) { return earlier.first == key; });
    conditions.emplace_back(key, map);
  }

  void takeFormatting(const WordElement& element, const PropertyReader::Owner& owner, PropertyMap& map) {
    constexpr std::array<std::pair<const char*, const char*>, 5> kGroups = {
        {{"pPr", "paragraph"}, {"rPr", "text"}, {"tblPr", "table"}, {"trPr", "table-row"}, {"tcPr", "table-cell"}}};
    for (const auto& [name, group] : kGroups) {
      const WordElement* properties = element.child(name);
      if (properties == nullptr) continue;
      mProperties.takeAll(*properties, group, owner, map);
      takeLevel(*properties, owner, map);
    }
  }

  // The level of w:numPr; its list is a reference, and set when there are lists.
  void takeLevel(const WordElement& properties, const PropertyReader::Owner& owner, PropertyMap& map) {
    const WordElement* numbering = properties.child("numPr");
    const std::string* level = numbering != nullptr ? numbering->valOf("ilvl") : nullptr;
    if (level == nullptr) return;
    mProperties.takeText(std::string(keys::listLevelNumber().view()), *level, numbering->line, owner, map);
  }

  void readRoots() {
    for (auto& map : mRootMaps) map = PropertyMap::make();
    if (mRaw.stylesPart == kNowhere) return;
    const std::string& file = mRaw.parts[mRaw.stylesPart].shown;
    PropertyMap& paragraph = rootMap(StyleFamily::paragraph);
    PropertyMap& text = rootMap(StyleFamily::text);
    for (const WordElement& defaults : mRaw.paragraphDefaults) {
      mProperties.takeAll(defaults, "paragraph", {file, "paragraph"}, paragraph);
    }
    for (const WordElement& defaults : mRaw.runDefaults) {
      mProperties.takeAll(defaults, "text", {file, "text"}, text);
      paragraph.addEntriesFrom(text);
    }
    for (const WordElement& latent : mRaw.latentStyles) {
      mProperties.take(latent, "style", {file, "paragraph"}, paragraph);
    }
    noteKeys(StyleFamily::paragraph, paragraph);
    noteKeys(StyleFamily::text, text);
  }

  PropertyMap& rootMap(StyleFamily family) { return *mRootMaps.at(static_cast<std::size_t>(family)); }

  void noteKeys(StyleFamily family, const PropertyMap& map) {
    Ref<PropertySet>& wanted = mWanted.at(static_cast<std::size_t>(family));
    if (wanted == nullptr) wanted = PropertySet::make();
    for (const PropertyMap::Entry& entry : map) wanted->add(entry.key);
  }

  // ---- Styles

  void makeRoots() {
    const bool hasStyles = mRaw.stylesPart != kNowhere;
    for (const StyleFamily family : kRootFamilies) {
      const StringRef identifier(rootIdentifier(familyName(family)));
      mRoots.push_back(makeFamilyStyle(
          family, {.identifier = identifier, .parentIdentifier = identifier, .overridePropertyMap = &rootMap(family)}));
      const auto& defaults = family == StyleFamily::paragraph ? mRaw.paragraphDefaults : mRaw.runDefaults;
      const bool isRead =
          hasStyles && !defaults.empty() && (family == StyleFamily::paragraph || family == StyleFamily::text);
      mDocument->recordOrigin(
          mRoots.back(),
          isRead ? StyleOrigin{StyleOrigin::Kind::defaultStyle, mRaw.stylesPart, defaults[0].line, {}} : StyleOrigin{});
    }
  }

  // A style too, so that the values of the theme are looked up, explained and changed as all others are.
  void makeTheme() {
    if (mRaw.theme.empty()) return;
    const Ref<PropertyMap> map = PropertyMap::make();
    map->set(keys::otherFamily(), NSString::make("theme"));
    const PropertyReader::Owner owner{mRaw.parts[mRaw.themePart].shown, "theme"};
    for (const auto& [name, value] : mRaw.theme) {
      const auto colour = name.find('.') == std::string::npos ? parseHexColour(value) : std::nullopt;
      if (!value.empty()) mProperties.takeText("theme.a." + name, colour ? *colour : value, 0, owner, *map);
    }
    for (const auto& [name, value] : mRaw.colourMapping) {
      mProperties.takeText("theme.w.clrSchemeMapping." + name, value, 0, owner, *map);
    }
    std::vector<PropertyKey> keys;
    for (const PropertyMap::Entry& entry : *map) keys.push_back(entry.key);
    FamilyRegistry::of(StyleFamily::other).extend(keys);
    mRoots.push_back(
        makeFamilyStyle(StyleFamily::other, {.identifier = rootIdentifier("theme"), .overridePropertyMap = map.get()}));
    mDocument->recordOrigin(mRoots.back(), {StyleOrigin::Kind::defaultStyle, mRaw.themePart, 0, {}});
  }

  void makeStyles() {
    for (std::size_t index = 0; index < mStyles.size(); ++index) {
      const WordElement& element = mRaw.styles[index].element;
      Made& made = mStyles[index];
      const StyleFamily family = mIds.familyOf(index);
      const std::string* name = element.valOf("name");
      ZTSStyleFields fields;
      if (name != nullptr) fields.name = *name;
      if (!mIds.identifierOf(index).empty()) fields.identifier = mIds.identifierOf(index);
      fields.parentIdentifier = parentOf(index);
      fields.overridePropertyMap = made.map.get();
      made.style = makeFamilyStyle(family, fields);
      const std::string* id = element.attribute("styleId");
      const int line = element.line;
      const std::size_t part = mRaw.styles[index].part;
      mDocument->recordOrigin(made.style,
                              {StyleOrigin::Kind::named, part, line, id != nullptr ? *id : std::string(), 0, index});
      for (const auto& [key, map] : made.conditions) {
        ZTSStyleFields condition;
        condition.parentIdentifier = rootIdentifier("table-cell");
        condition.overridePropertyMap = map.get();
        made.conditionStyles.emplace_back(key, makeFamilyStyle(StyleFamily::tableCell, condition));
        made.style->p_setValueForProperty(made.conditionStyles.back().second, key);
        mDocument->recordOrigin(made.conditionStyles.back().second,
                                {StyleOrigin::Kind::automatic, part, line,
                                 fmt::format("{}/{}", id != nullptr ? *id : "", key.view().substr(19)), 0, index});
      }
    }
  }

  // Bases with no id cannot be named; `find` never answers one.
  StringRef parentOf(std::size_t style) {
    const std::size_t base = mIds.baseOf(style);
    const std::string identifier =
        base != kNowhere ? mIds.identifierOf(base) : rootIdentifier(familyName(mIds.familyOf(style)));
    StringRef& shared = mIdentifiers[identifier];
    if (!shared) shared = identifier;
    return shared;
  }

  // ---- References

  [[nodiscard]] const std::string* numberOfStyle(const std::string& id) const {
    const std::size_t style = mIds.find(StyleFamily::list, id);
    return style != kNowhere ? listNumberOf(mRaw.styles[style].element) : nullptr;
  }

  static const std::string* listNumberOf(const WordElement& style) {
    const WordElement* properties = style.child("pPr");
    const WordElement* numbering = properties != nullptr ? properties->child("numPr") : nullptr;
    return numbering != nullptr ? numbering->valOf("numId") : nullptr;
  }

  /// The list that w:numPr names: a style, the null sentinel for "explicitly none", or none where it says nothing.
  Ref<NSObject> listOf(const WordElement& properties, const PropertyReader::Owner& owner) {
    const WordElement* numbering = properties.child("numPr");
    const std::string* number = numbering != nullptr ? numbering->valOf("numId") : nullptr;
    if (number == nullptr) return {};
    if (*number == "0") return Ref<NSObject>(NSNull::null());
    if (OdfStyle* list = mNumbering.find(*number)) return Ref<NSObject>(list);
    tell(owner, numbering->line, fmt::format("the list '{:.40}' does not exist; not set", *number));
    return {};
  }

  // References are set on styles that no stylesheet holds yet: nothing is observed or counted before all is there.
  void connect() {
    for (std::size_t index = 0; index < mStyles.size(); ++index) {
      const WordElement* properties = mRaw.styles[index].element.child("pPr");
      if (properties == nullptr || mIds.familyOf(index) != StyleFamily::paragraph) continue;
      if (Ref<NSObject> list = listOf(*properties, ownerOf(index))) {
        mStyles[index].style->p_setValueForProperty(std::move(list), keys::listStyle());
      }
    }
    mNumbering.connect([this](const std::string& id) {
      const std::size_t style = mIds.find(StyleFamily::paragraph, id);
      return style != kNowhere ? mStyles[style].style.get() : nullptr;
    });
    for (std::size_t use = 0; use < mRaw.uses.size(); ++use) {
      const WordUse& raw = mRaw.uses[use];
      if (raw.family != StyleFamily::paragraph || raw.isNameOnly) continue;
      if (Ref<NSObject> list = listOf(raw.properties, {mRaw.parts[raw.part].shown, {}})) {
        mUseMaps[use]->set(keys::listStyle(), std::move(list));
      }
    }
  }

  void addStyles() {
    ZTSStylesheet& stylesheet = mDocument->stylesheet();
    mDocument->undoManager()->disableUndoRegistration();
    stylesheet.setIsChangeCommunicationEnabled(false);
    for (const Ref<OdfStyle>& root : mRoots) stylesheet.addStyle(root);
    const auto add = [&](bool isText) {
      for (const std::size_t index : mIds.basesFirst()) {
        const Made& made = mStyles[index];
        if ((mIds.familyOf(index) == StyleFamily::text) != isText) continue;
        for (const auto& condition : made.conditionStyles) stylesheet.addStyle(condition.second);
        stylesheet.addStyle(made.style);
      }
    };
    add(true);
    mNumbering.addStyles();
    add(false);
    for (std::size_t use = 0; use < mRaw.uses.size(); ++use) {
      const WordUse& raw = mRaw.uses[use];
      mUsed.push_back(raw.isNameOnly ? styleNamedBy(raw) : styleOfUse(use));
      mDocument->recordUse({raw.part, std::string(familyName(raw.family)), raw.styleId, raw.count, mUsed.back()});
    }
    stylesheet.setIsChangeCommunicationEnabled(true);
    mDocument->undoManager()->enableUndoRegistration();
  }

  // ---- Uses

  Ref<OdfStyle> styleOfUse(std::size_t index) {
    const WordUse& use = mRaw.uses[index];
    OdfStyle* base = baseOfUse(use);
    if (base == nullptr) return {};
    Ref<OdfStyle> style(base);
    const Ref<PropertyMap>& map = mUseMaps[index];
    if (map->count() > 0) {
      style = Ref<OdfStyle>(asOdfStyle(
          mDocument->stylesheet()
              .variationOfStyle(
                  base, {.overridePropertyMap = map.get(), .canCollapse = false, .canReuseIdentifiedChildren = false})
              .get()));
      if (style == nullptr) return {};
      if (mDocument->originOf(*style) == nullptr) {
        const char letter = letterOf(use.family);
        mDocument->recordOrigin(style, {StyleOrigin::Kind::automatic, use.part, use.line,
                                        fmt::format("{}{}", letter, ++mCounters[letter])});
      }
    }
    return style;
  }

  static char letterOf(StyleFamily family) {
    if (family == StyleFamily::paragraph) return 'P';
    if (family == StyleFamily::text) return 'R';
    return family == StyleFamily::table ? 'T' : family == StyleFamily::tableRow ? 'L' : 'C';
  }

  // What only names a style is not worth a finding where there is none.
  [[nodiscard]] Ref<OdfStyle> styleNamedBy(const WordUse& use) const {
    const std::size_t found = mIds.find(use.family, use.styleId);
    return found != kNowhere ? mStyles[found].style : Ref<OdfStyle>();
  }

  // Which of the names in the code of a field are to be changed with a style is not known: the style stays as it is.
  void noteFieldNames() {
    if (mRaw.fieldNames.empty()) return;
    std::unordered_map<std::string_view, OdfStyle*> byName;
    for (const Made& made : mStyles) byName.try_emplace(made.style->name().view(), made.style.get());
    for (const WordFieldName& field : mRaw.fieldNames) {
      const auto found = byName.find(field.name);
      if (found == byName.end()) continue;
      found->second->incrementUsageCount();
      mDocument->unknownUses.push_back(
          {Ref<OdfStyle>(found->second), {mRaw.parts[field.part].shown, field.line}, "the code of a field"});
    }
  }

  // The style that text names; else the default one of the kind; else the root, for a table none.
  OdfStyle* baseOfUse(const WordUse& use) {
    std::size_t found = use.styleId.empty() ? kNowhere : mIds.find(use.family, use.styleId);
    if (found == kNowhere && !use.styleId.empty()) {
      tell({mRaw.parts[use.part].shown, {}}, use.line,
           fmt::format("the {} style '{:.60}' does not exist; the default one is meant", familyName(use.family),
                       use.styleId));
    }
    if (found == kNowhere) found = mIds.defaultOf(use.family);
    if (found != kNowhere) return mStyles[found].style.get();
    return mDocument->rootStyle(familyName(use.family));
  }

  const WordDocument& mRaw;
  Ref<ZTDocument> mDocument;
  PropertyReader mProperties;
  StyleIds mIds;
  NumberingImporter mNumbering;
  std::vector<Made> mStyles;  // by the index of the raw style
  std::vector<Ref<PropertyMap>> mUseMaps;
  std::vector<Ref<OdfStyle>> mUsed;
  std::array<Ref<PropertyMap>, kStyleFamilyCount> mRootMaps;
  std::array<Ref<PropertySet>, kStyleFamilyCount> mWanted;
  std::vector<Ref<OdfStyle>> mRoots;
  std::unordered_map<std::string, StringRef> mIdentifiers;
  std::unordered_map<char, std::size_t> mCounters;
};

}  // namespace

ImportedWord importWord(const WordDocument& raw) { return WordImporter(raw).run(); }

}  // namespace zt
