// SPDX-License-Identifier: MIT

// Edits of many styles at once, and what the single ones share.

#include <document/editing/DocumentEditor.h>
#include <document/editing/LookImage.h>
#include <document/editing/StyleNames.h>
#include <document/editing/StylesAsRead.h>
#include <document/styles/PropertyRules.h>
#include <document/styles/StyleValues.h>

#include <platform/NSString.h>
#include <ztstyles/ZTSStylesheetObserver.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

/// Notes what leaves the stylesheet while it lives.
class Leaving : public ZTSStylesheetObserver {
 public:
  explicit Leaving(ZTSStylesheet& stylesheet) : mStylesheet(stylesheet) { mStylesheet.addObserver(this); }
  ~Leaving() override { mStylesheet.removeObserver(this); }
  void removedStyleFromStylesheet(ZTSStyle& style, ZTSStylesheet&) override {
    if (OdfStyle* left = asOdfStyle(static_cast<NSObject*>(&style))) styles.emplace_back(left);
  }
  std::vector<Ref<OdfStyle>> styles;

 private:
  ZTSStylesheet& mStylesheet;
};

/// All that a level says; styles in it are told apart by where they are.
std::string textOfLevel(const OdfStyle& level) {
  std::string text;
  if (const Ref<const PropertyMap> own = level.overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      const ZTSStyle* style = asStyle(entry.value.get());
      text += fmt::format("{}={}\n", entry.key.view(),
                          style != nullptr ? fmt::format("{}", fmt::ptr(style)) : valueText(entry.value.get()));
    }
  }
  return text;
}

/// Own values that count for whether two styles are one; styles among them are compared by identity, but for the levels
/// of lists, which are compared by what they say.
Ref<PropertyMap> comparedValues(const OdfStyle& style, bool ignoresRevisionMarks) {
  const Ref<PropertyMap> values = PropertyMap::make();
  if (const Ref<const PropertyMap> own = style.overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      if (ignoresRevisionMarks && entry.key.view().ends_with("rsid")) continue;
      const OdfStyle* level = asOdfStyle(static_cast<const NSObject*>(entry.value.get()));
      if (level == nullptr || level->family() != StyleFamily::listLevel) {
        values->set(entry.key, entry.value);
      } else {
        values->set(entry.key, make<OpaqueValue>(textOfLevel(*level)));
      }
    }
  }
  return values;
}

/// The styles that refer to a style, by that.
std::unordered_map<const ZTSStyle*, std::vector<const ZTSStyle*>> referringStyles(const ZTSStylesheet& stylesheet) {
  std::unordered_map<const ZTSStyle*, std::vector<const ZTSStyle*>> referring;
  for (const Ref<ZTSStyle>& each : stylesheet.retainedStyles()) {
    const Ref<const PropertyMap> own = each->overridePropertyMap();
    if (!own) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (const ZTSStyle* referred = asStyle(entry.value.get())) referring[referred].push_back(each.get());
    }
  }
  return referring;
}

}  // namespace

// What values refer to or name.
std::set<const ZTSStyle*> DocumentEditor::namedByValues() const {
  std::set<const ZTSStyle*> found;
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    const OdfStyle& style = *asOdfStyle(static_cast<NSObject*>(each.get()));
    const Ref<const PropertyMap> own = style.overridePropertyMap();
    if (!own) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (const ZTSStyle* referred = asStyle(entry.value.get())) found.insert(referred);
      for (const NamedStyle& named : mRules.stylesNamedBy(style, entry.key, *entry.value))
        found.insert(mDocument.referredStyle(partOf(style), named.family, named.name));
    }
  }
  return found;
}

std::vector<Ref<OdfStyle>> DocumentEditor::dedupe(const DedupeOptions& options) {
  std::set<const ZTSStyle*> fixed = namedByValues();
  for (const ZTDocument::UnknownUse& use : mDocument.unknownUses) fixed.insert(use.style.get());
  struct Candidate {
    Ref<OdfStyle> style;
    Ref<PropertyMap> values;
  };
  std::unordered_map<std::string, std::vector<Candidate>> groups;
  std::unordered_map<const ZTSStyle*, OdfStyle*> answers;
  std::vector<Ref<OdfStyle>> gone;
  for (const Ref<OdfStyle>& read : mDocument.readStyles()) {
    const StyleOrigin* origin = mDocument.originOf(*read);
    const bool isList = origin->kind == StyleOrigin::Kind::listStyle;
    if ((origin->kind != StyleOrigin::Kind::automatic && !(isList && options.mergesLists)) ||
        read->stylesheet() == nullptr || read->isIdentified() || origin->name.empty() || fixed.contains(read.get()) ||
        mDocument.continuedLists.contains(read.get()))
      continue;
    Ref<PropertyMap> values = comparedValues(*read, options.ignoresRevisionMarks);
    const std::string key =
        fmt::format("{}/{}/{}/{}", origin->part, read->familyName(), read->parentIdentifier().view(), values->hash());
    std::vector<Candidate>& group = groups[key];
    const auto same = std::find_if(group.begin(), group.end(), [&](const Candidate& candidate) {
      return areSameValues(*candidate.values, *values);
    });
    if (same == group.end()) {
      group.push_back({read, std::move(values)});
    } else {
      answers[read.get()] = same->style.get();
      gone.push_back(read);
    }
  }
  for (std::size_t index = 0; index < mDocument.styleUses().size(); ++index) {
    const auto answer = answers.find(mDocument.styleUses()[index].style.get());
    if (answer != answers.end()) mDocument.moveUse(index, *answer->second);
  }
  for (const Ref<OdfStyle>& style : gone) takeOut(*style);
  return gone;
}

std::vector<Ref<OdfStyle>> DocumentEditor::cleanup(const CleanupOptions& options) {
  ZTSStylesheet& sheet = mDocument.stylesheet();
  // What a style that stays calls by name stays too: each of them counts as used for as long as this takes.
  std::vector<Ref<OdfStyle>> held;
  const auto hold = [&](OdfStyle* style) {
    if (style == nullptr || style->usageCount() != 0) return;
    style->incrementUsageCount();
    held.emplace_back(style);
  };
  const auto stays = [&](const OdfStyle& style) {
    const StyleOrigin* origin = mDocument.originOf(style);
    const bool isRoot = origin != nullptr &&
                        (origin->kind == StyleOrigin::Kind::made || origin->kind == StyleOrigin::Kind::defaultStyle);
    return isRoot || mRules.isUsedUnnamed(style) || (!options.trimsLatent && mRules.isLatent(style)) ||
           (options.keepsNamed && style.isIdentified()) || options.kept.contains(mDocument.labelOf(style)) ||
           options.kept.contains(style.name().text()) || (origin != nullptr && options.kept.contains(origin->name));
  };
  for (const Ref<ZTSStyle>& each : sheet.retainedStyles()) {
    OdfStyle* style = asOdfStyle(static_cast<NSObject*>(each.get()));
    if (style != nullptr && stays(*style)) hold(style);
  }
  std::set<const ZTSStyle*> seen;
  for (bool isNew = true; isNew;) {
    isNew = false;
    for (const Ref<ZTSStyle>& each : sheet.retainedStyles()) {
      OdfStyle* style = asOdfStyle(static_cast<NSObject*>(each.get()));
      if (style == nullptr || style->usageCount() == 0 || !seen.insert(style).second) continue;
      isNew = true;
      const Ref<const PropertyMap> own = style->overridePropertyMap();
      if (!own) continue;
      for (const PropertyMap::Entry& entry : *own) {
        for (const NamedStyle& named : mRules.stylesNamedBy(*style, entry.key, *entry.value))
          hold(mDocument.referredStyle(partOf(*style), named.family, named.name));
      }
    }
  }
  Leaving leaving(sheet);
  mDocument.mayRemoveUnused = [](const ZTSStyle&) { return true; };
  sheet.enableUnusedStyleCleanup();
  sheet.cleanupUnusedStyles();
  sheet.disableUnusedStyleCleanup();
  mDocument.mayRemoveUnused = {};
  for (const Ref<OdfStyle>& style : held) style->decrementUsageCount();
  if (options.trimsLatent) trimLatent();
  return std::move(leaving.styles);
}

void DocumentEditor::trimLatent() {
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    if (!each->isIdentified() || each->identifier().view().find(':') != std::string_view::npos) continue;
    const Ref<const PropertyMap> own = each->overridePropertyMap();
    if (!own) continue;
    const Ref<PropertyMap> values = own->copy();
    for (const PropertyMap::Entry& entry : *values) {
      Ref<NSObject> trimmed = mRules.withoutLatentStyles(mDocument.stylesheet(), entry.key, entry.value);
      if (trimmed != entry.value) each->setValueForProperty(std::move(trimmed), entry.key);
    }
  }
}

bool DocumentEditor::isMeant(const OdfStyle& style, PropertyKey key) const {
  const auto found = mMeant.find(&style);
  return found != mMeant.end() && (!found->second || found->second->contains(key.view()));
}

// The style, what inherits from it, and what refers to any of these.
void DocumentEditor::mean(const OdfStyle& start, const std::set<std::string_view>* keys, KeepLook keepLook) {
  std::vector<const ZTSStyle*> open = {&start};
  std::set<const ZTSStyle*> seen;
  auto referring = referringStyles(mDocument.stylesheet());
  std::set<const ZTSStyle*> wholly;  // reached by way of a reference: the key that differs is that of the reference
  while (!open.empty()) {
    const ZTSStyle* style = open.back();
    open.pop_back();
    if (!seen.insert(style).second) continue;
    const auto [place, isNew] = mMeant.try_emplace(style);
    auto& meant = place->second;
    if (isNew) {
      mHeld.emplace_back(asOdfStyle(const_cast<NSObject*>(static_cast<const NSObject*>(style))));
      meant.emplace();
    }
    if (keys == nullptr || wholly.contains(style)) {
      meant.reset();
    } else if (meant) {
      meant->insert(keys->begin(), keys->end());
    }
    if (style == &start && keepLook == KeepLook::yes) continue;
    for (const Ref<ZTSStyle>& child : style->children().retainedSnapshot()) {
      if (wholly.contains(style)) wholly.insert(child.get());
      open.push_back(child.get());
    }
    for (const ZTSStyle* each : referring[style]) {
      wholly.insert(each);
      open.push_back(each);
    }
  }
}

void DocumentEditor::refuseUnknownUses(const OdfStyle& style, const char* what) const {
  for (const ZTDocument::UnknownUse& use : mDocument.unknownUses) {
    if (use.style != &style) continue;
    throw EditError(fmt::format("{} cannot be {}: {} names it at {}, and what that means is not known",
                                mDocument.labelOf(style), what, use.attribute, use.place.text()));
  }
}

void DocumentEditor::moveUses(const OdfStyle& from, OdfStyle& to) {
  for (std::size_t index = 0; index < mDocument.styleUses().size(); ++index) {
    const StyleUse& use = mDocument.styleUses()[index];
    if (use.style != &from) continue;
    if (to.isAnonymous()) needFonts(to, mDocument, partOf(from), use.part);
    mDocument.moveUse(index, to);
  }
}

// List styles of paragraphs, text styles of levels, the paragraph styles that levels number.
void DocumentEditor::moveReferences(const OdfStyle& from, OdfStyle* to) {
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    const Ref<const PropertyMap> own = each->overridePropertyMap();
    if (!own || each.get() == &from) continue;
    std::vector<PropertyKey> keys;
    for (const PropertyMap::Entry& entry : *own) {
      if (entry.value == &from) keys.push_back(entry.key);
    }
    for (const PropertyKey key : keys) {
      if (to != nullptr) {
        each->setValueForProperty(Ref<NSObject>(to), key);
      } else {
        each->removeValueForProperty(key);
      }
    }
  }
}

void DocumentEditor::followNames(const OdfStyle& style, const std::string& oldName, const std::string& newName) {
  const NamedStyle wanted{style.family() == StyleFamily::list ? "list" : style.familyName(), oldName};
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    OdfStyle& holder = *asOdfStyle(static_cast<NSObject*>(each.get()));
    const Ref<const PropertyMap> own = holder.overridePropertyMap();
    if (!own || &holder == &style) continue;
    std::vector<std::pair<PropertyKey, Ref<NSObject>>> found;
    for (const PropertyMap::Entry& entry : *own) {
      const std::vector<NamedStyle> named = mRules.stylesNamedBy(holder, entry.key, *entry.value);
      if (std::find(named.begin(), named.end(), wanted) != named.end()) found.emplace_back(entry.key, entry.value);
    }
    // An automatic style of the same name is what the holder means.
    if (found.empty() || mDocument.automaticStyle(partOf(holder), wanted.family, oldName) != nullptr) continue;
    for (const auto& [key, value] : found) {
      if (!newName.empty()) {
        holder.setValueForProperty(
            mRules.valueWithNames(holder, key, *value,
                                  [&](const NamedStyle& named) { return named == wanted ? newName : std::string(); }),
            key);
      } else if (NSString::from(value.get()) != nullptr) {
        holder.removeValueForProperty(key);
      } else {
        throw EditError(fmt::format("{} names {} in {}, and nothing could take its place", mDocument.labelOf(holder),
                                    mDocument.labelOf(style), key.view()));
      }
    }
  }
  // A style may name itself, as the style of the next paragraph.
  if (newName.empty() || style.stylesheet() == nullptr) return;
  OdfStyle& self = const_cast<OdfStyle&>(style);
  for (const PropertyKey key : {keys::nextStyle(), keys::linkedStyle()}) {
    const NSObject* own = self.p_overrideValueForProperty(key);
    if (own == nullptr) continue;
    const std::vector<NamedStyle> named = mRules.stylesNamedBy(self, key, *own);
    if (named.size() == 1 && named.front() == wanted) self.setValueForProperty(NSString::make(newName), key);
  }
}

std::size_t DocumentEditor::partOf(const OdfStyle& style) const {
  const StyleOrigin* origin = mDocument.originOf(style);
  return origin != nullptr ? origin->part : 0;
}

// The levels of a list style have no other use.
void DocumentEditor::takeOut(OdfStyle& style) {
  const Ref<OdfStyle> held(&style);
  std::vector<Ref<OdfStyle>> levels;
  if (const Ref<const PropertyMap> own = style.overridePropertyMap()) {
    for (const PropertyMap::Entry& entry : *own) {
      OdfStyle* level = asOdfStyle(entry.value.get());
      if (level != nullptr && level->family() == StyleFamily::listLevel) levels.emplace_back(level);
    }
  }
  mDocument.stylesheet().removeStyle(held);
  for (const Ref<OdfStyle>& level : levels) {
    if (level->stylesheet() != nullptr && level->usageCount() == 0) mDocument.stylesheet().removeStyle(level);
  }
}

}  // namespace zt
