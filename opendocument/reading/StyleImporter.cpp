// SPDX-License-Identifier: MIT
#include <opendocument/reading/StyleImporter.h>

#include <opendocument/reading/ListImporter.h>
#include <opendocument/reading/ParentResolver.h>
#include <opendocument/reading/PropertyImporter.h>

#include <platform/NSString.h>

#include <fmt/format.h>

#include <set>

namespace zt {

namespace {

/// One import, in steps. All styles are made and connected before the first is added: parents stand
/// before their children then, so that each is linked once, and what is referred to is there.
class StyleImporter {
 public:
  explicit StyleImporter(const RawDocument& raw)
      : mRaw(raw),
        mDocument(ZTDocument::create()),
        mIndex(raw),
        mProperties(raw, mDocument->findings),
        mLists(raw, *mDocument),
        mMaps(raw.styles.size()),
        mStyles(raw.styles.size()) {}

  Ref<ZTDocument> run() {
    mDocument->shown = mRaw.shown;
    for (const RawDocument::Part& part : mRaw.parts) mDocument->parts.push_back({part.name, part.shown});
    mDocument->findings = mRaw.findings;
    for (const RawFontFace& face : mRaw.fontFaces) {
      mDocument->fontFamilies[face.name] = face.family;
      mDocument->recordFont(face.part, face.name, face.family);
    }
    reportUncounted();
    const ParentResolver parents(mRaw, mIndex, mDocument->findings);
    readMaps();
    makeRoots();
    makeStyles(parents);
    mLists.makeStyles();
    connect();
    addStyles(parents);
    return mDocument;
  }

 private:
  void tell(const char* code, const RawStyle& style, const std::string& message) {
    mDocument->findings.push_back({Finding::Severity::warning, code, mRaw.place(style.part, style.line),
                                   styleIdentifier(style.family, style.name), message});
  }

  [[nodiscard]] std::size_t indexOf(const RawStyle& style) const {
    return static_cast<std::size_t>(&style - mRaw.styles.data());
  }

  // Repeated styles and those without a usable family do not count.
  [[nodiscard]] bool counts(const RawStyle& style) const {
    if (!familyWithName(style.family)) return false;
    switch (style.kind) {
      case RawStyle::Kind::defaultStyle: return mIndex.defaultStyle(style.family) == &style;
      case RawStyle::Kind::named: return mIndex.named(style.family, style.name) == &style;
      case RawStyle::Kind::automatic: return mIndex.automatic(style.part, style.family, style.name) == &style;
    }
    return false;
  }

  void reportUncounted() {
    for (const RawStyle& style : mRaw.styles) {
      if (!familyWithName(style.family)) {
        tell("unusable-family", style, fmt::format("the family '{:.40}' cannot be used; left out", style.family));
      } else if (!counts(style)) {
        tell("repeated-style", style,
             style.kind == RawStyle::Kind::automatic ? "repeats the name of an earlier automatic style; left out"
                                                     : "is defined again further down; the later one counts");
      } else if (style.name.empty() && style.kind != RawStyle::Kind::defaultStyle) {
        tell("nameless-style", style, "has no name; kept, but nothing can refer to it");
      }
    }
  }

  void readMaps() {
    for (const RawStyle& style : mRaw.styles) {
      if (counts(style)) mMaps[indexOf(style)] = mProperties.mapOf(style, *familyWithName(style.family));
    }
    mLists.readMaps(mProperties);
    mProperties.extendRegistries();
  }

  // The root of each family that occurs. It has the identifier of the application's default, from which it inherits.
  void makeRoots() {
    std::set<std::string> families;
    for (const RawStyle& style : mRaw.styles) {
      if (counts(style)) families.insert(style.family);
    }
    if (!mLists.isEmpty()) families.insert({"list", "list-level"});
    for (const std::string& name : families) {
      const StyleFamily family =
          familyWithName(name).value_or(name == "list" ? StyleFamily::list : StyleFamily::listLevel);
      const RawStyle* raw = mIndex.defaultStyle(name);
      const Ref<PropertyMap> map = raw != nullptr ? mMaps[indexOf(*raw)] : PropertyMap::make();
      if (family == StyleFamily::other) map->set(keys::otherFamily(), NSString::make(name));
      const StringRef identifier(rootIdentifier(name));
      const bool hasDefault = family != StyleFamily::other;
      mRoots.push_back(makeFamilyStyle(family, {.identifier = identifier,
                                                .parentIdentifier = hasDefault ? identifier : StringRef(),
                                                .overridePropertyMap = map.get()}));
      mDocument->recordOrigin(mRoots.back(), raw != nullptr ? StyleOrigin{.kind = StyleOrigin::Kind::defaultStyle,
                                                                          .part = raw->part,
                                                                          .line = raw->line,
                                                                          .element = raw->element}
                                                            : StyleOrigin{});
      if (raw != nullptr) mStyles[indexOf(*raw)] = mRoots.back();
    }
  }

  void makeStyles(const ParentResolver& parents) {
    for (const RawStyle& raw : mRaw.styles) {
      const Ref<PropertyMap>& map = mMaps[indexOf(raw)];
      if (map == nullptr || raw.kind == RawStyle::Kind::defaultStyle) continue;
      const bool isNamed = raw.kind == RawStyle::Kind::named;
      ZTSStyleFields fields;
      if (isNamed && !raw.name.empty()) {
        const std::string* displayName = raw.attribute("style", "display-name");
        fields.name = displayName != nullptr ? *displayName : raw.name;
        fields.identifier = identifierOf(raw);
      }
      const RawStyle* parent = parents.parentOf(raw);
      fields.parentIdentifier = parent != nullptr ? identifierOf(*parent) : rootOf(raw.family);
      fields.overridePropertyMap = map.get();
      Ref<OdfStyle>& style = mStyles[indexOf(raw)];
      style = makeFamilyStyle(*familyWithName(raw.family), fields);
      const auto kind = isNamed ? StyleOrigin::Kind::named : StyleOrigin::Kind::automatic;
      mDocument->recordOrigin(
          style, {.kind = kind, .part = raw.part, .line = raw.line, .name = raw.name, .element = raw.element});
    }
  }

  // Thousands of styles share few parents: one string for each.
  StringRef identifierOf(const RawStyle& named) {
    StringRef& identifier = mIdentifiers[&named];
    if (!identifier) identifier = styleIdentifier(named.family, named.name);
    return identifier;
  }

  StringRef rootOf(const std::string& family) {
    StringRef& identifier = mRootIdentifiers[family];
    if (!identifier) identifier = rootIdentifier(family);
    return identifier;
  }

  // References are set on styles that no stylesheet holds yet: nothing is observed or counted before all is there.
  void connect() {
    for (const RawStyle& raw : mRaw.styles) {
      const Ref<OdfStyle>& style = mStyles[indexOf(raw)];
      const std::string* list = raw.attribute("style", "list-style-name");
      if (style == nullptr || list == nullptr || list->empty() || style->family() != StyleFamily::paragraph) continue;
      if (OdfStyle* target = mLists.find(raw, *list)) {
        style->p_setValueForProperty(Ref<NSObject>(target), keys::listStyle());
      } else {
        tell("missing-reference", raw, fmt::format("the list style '{:.60}' does not exist; not set", *list));
      }
    }
    mLists.connectTextStyles([this](const RawListStyle& from, const std::string& name) {
      const RawStyle* target = from.isAutomatic ? nullptr : mIndex.named("text", name);
      if (target == nullptr) target = mIndex.referred(from.part, "text", name);
      return target != nullptr ? mStyles[indexOf(*target)].get() : nullptr;
    });
  }

  void addStyles(const ParentResolver& parents) {
    ZTSStylesheet& stylesheet = mDocument->stylesheet();
    mDocument->undoManager()->disableUndoRegistration();
    stylesheet.setIsChangeCommunicationEnabled(false);
    for (const Ref<OdfStyle>& root : mRoots) stylesheet.addStyle(root);
    const auto addFamily = [&](bool isText) {
      const auto add = [&](const RawStyle& raw) {
        if ((raw.family == "text") != isText) return;
        if (const Ref<OdfStyle>& style = mStyles[indexOf(raw)]) stylesheet.addStyle(style);
      };
      for (const RawStyle* raw : parents.namedParentsFirst()) add(*raw);
      for (const RawStyle* raw : mIndex.allAutomatic()) add(*raw);
    };
    addFamily(true);
    mLists.addStyles();
    addFamily(false);
    for (const auto* uses : {&mRaw.uses, &mRaw.settingUses}) readUses(*uses);
    stylesheet.setIsChangeCommunicationEnabled(true);
    mDocument->undoManager()->enableUndoRegistration();
  }

  void readUses(const ContentUses& uses) {
    for (const ContentUse& use : uses.all()) {
      OdfStyle* style = mDocument->referredStyle(use.part, use.family, use.name);
      mDocument->recordUse({use.part, use.family, use.name, use.count, Ref<OdfStyle>(style)});
    }
    for (const ContentUse& use : uses.unknown()) keepInUse(use);
    mDocument->otherFontUses.insert(uses.fonts().begin(), uses.fonts().end());
    for (const auto& [part, name] : uses.continuedLists()) {
      for (const StyleUse& use : mDocument->styleUses()) {
        if (use.part == part && use.family == "list" && (name.empty() || use.name == name))
          mDocument->continuedLists.insert(use.style.get());
      }
    }
  }

  // What an attribute of an extension calls by name may be a style: it is not to be removed.
  void keepInUse(const ContentUse& use) {
    for (const StyleFamily family : kStyleFamilies) {
      OdfStyle* style = mDocument->referredStyle(use.part, familyName(family), use.name);
      if (style == nullptr) continue;
      style->incrementUsageCount();
      mDocument->unknownUses.push_back({Ref<OdfStyle>(style), mRaw.place(use.part, use.line), use.family});
      mDocument->findings.push_back(
          {Finding::Severity::note, "unknown-use", mRaw.place(use.part, use.line), mDocument->labelOf(*style),
           fmt::format("is named by {:.60}, which is not known; taken for used", use.family)});
    }
  }

  const RawDocument& mRaw;
  Ref<ZTDocument> mDocument;
  StyleIndex mIndex;
  PropertyImporter mProperties;
  ListImporter mLists;
  std::vector<Ref<PropertyMap>> mMaps;  // by the index of the raw style; none for those that do not count
  std::vector<Ref<OdfStyle>> mStyles;   // likewise
  std::vector<Ref<OdfStyle>> mRoots;
  std::unordered_map<const RawStyle*, StringRef> mIdentifiers;
  std::unordered_map<std::string, StringRef> mRootIdentifiers;
};

}  // namespace

Ref<ZTDocument> importStyles(const RawDocument& raw) { return StyleImporter(raw).run(); }

}  // namespace zt
