// SPDX-License-Identifier: MIT
#include <document/ZTDocument.h>

#include <platform/NSString.h>

namespace zt {

namespace {

std::string automaticKey(std::size_t part, std::string_view family, std::string_view name) {
  return std::to_string(part) + ':' + styleIdentifier(family, name);
}

}  // namespace

std::string_view originKindName(StyleOrigin::Kind kind) {
  switch (kind) {
    case StyleOrigin::Kind::made: return "made";
    case StyleOrigin::Kind::defaultStyle: return "default";
    case StyleOrigin::Kind::named: return "named";
    case StyleOrigin::Kind::automatic: return "automatic";
    case StyleOrigin::Kind::listStyle: return "list";
    case StyleOrigin::Kind::listLevel: return "list-level";
  }
  return "made";
}

std::optional<StyleOrigin::Kind> originKindNamed(std::string_view word) {
  using Kind = StyleOrigin::Kind;
  for (const Kind kind :
       {Kind::made, Kind::defaultStyle, Kind::named, Kind::automatic, Kind::listStyle, Kind::listLevel}) {
    if (originKindName(kind) == word) return kind;
  }
  return std::nullopt;
}

const ZTClass& ZTDocument::appDocumentClass() {
  static const auto* object = new ZTClass("ZTDocument", &NSDocument::documentClass(), &typeid(ZTDocument));
  return *object;
}

ZTDocument::ZTDocument()
    : mUndoManager(make<NSUndoManager>()),
      mUses(make<Uses>()),
      mDefaults(ZTSStylesheet::withHost(this)),
      mStylesheet(ZTSStylesheet::withHost(this)) {}

// In two steps: adding styles hands the document to their hooks, which may hold it for a moment, and that must not
// be the only hold on it.
Ref<ZTDocument> ZTDocument::create() {
  Ref<ZTDocument> document(new ZTDocument);
  document->mStylesheet->setParent(document->mDefaults);
  document->mUndoManager->disableUndoRegistration();
  for (const StyleFamily family : kStyleFamilies) {
    if (family == StyleFamily::other) continue;
    const StringRef identifier(rootIdentifier(familyName(family)));
    document->mDefaults->addStyle(makeFamilyStyle(family, {.identifier = identifier}));
  }
  document->mUndoManager->enableUndoRegistration();
  return document;
}

Ref<ZTDocument> ZTDocument::withStylesheet(Ref<ZTSStylesheet> stylesheet) {
  Ref<ZTDocument> document = create();
  document->mStylesheet->setParent({});
  if (stylesheet->parent() != nullptr) {
    document->mDefaults = stylesheet->parent();
    document->mDefaults->setHost(document.get());
  } else {
    stylesheet->setParent(document->mDefaults);
  }
  document->mStylesheet = std::move(stylesheet);
  document->mStylesheet->setHost(document.get());
  document->mUndoManager->removeAllActions();
  return document;
}

ZTDocument::~ZTDocument() {
  // The actions hold styles and stylesheets, which must not outlive their host's answers.
  mUndoManager->removeAllActions();
  // Nor must what is noted about them: a stylesheet takes a circle of styles for held while anybody outside holds one.
  mUses->all.clear();
}

OdfStyle* ZTDocument::rootStyle(std::string_view family) const {
  return asOdfStyle(mStylesheet->cascadedStyleWithIdentifier(rootIdentifier(family)));
}

OdfStyle* ZTDocument::namedStyle(std::string_view family, std::string_view name) const {
  return asOdfStyle(mStylesheet->styleWithIdentifier(styleIdentifier(family, name)));
}

OdfStyle* ZTDocument::automaticStyle(std::size_t part, std::string_view family, std::string_view name) const {
  const auto found = mAutomatic.find(automaticKey(part, family, name));
  return found == mAutomatic.end() ? nullptr : found->second;
}

OdfStyle* ZTDocument::referredStyle(std::size_t part, std::string_view family, std::string_view name) const {
  OdfStyle* style = automaticStyle(part, family, name);
  return style != nullptr ? style : namedStyle(family, name);
}

std::vector<OdfStyle*> ZTDocument::stylesCalled(std::string_view text) const {
  std::vector<OdfStyle*> exact;
  std::vector<OdfStyle*> byName;
  std::vector<OdfStyle*> byDisplayName;
  for (const Ref<OdfStyle>& style : mReadStyles) {
    const StyleOrigin& origin = mOrigins.at(style.get());
    if (labelOf(*style) == text) exact.push_back(style.get());
    if (origin.kind == StyleOrigin::Kind::listLevel) continue;
    if (origin.name == text || styleIdentifier(style->familyName(), origin.name) == text) byName.push_back(style.get());
    if (style->isNamed() && style->name().view() == text) byDisplayName.push_back(style.get());
  }
  if (!exact.empty()) return exact;
  return byName.empty() ? byDisplayName : byName;
}

void ZTDocument::recordOrigin(Ref<OdfStyle> style, StyleOrigin origin) {
  const bool isAutomatic = origin.kind == StyleOrigin::Kind::automatic ||
                           (origin.kind == StyleOrigin::Kind::listStyle && style->isAnonymous());
  if (isAutomatic && !origin.name.empty()) {
    mAutomatic.try_emplace(automaticKey(origin.part, style->familyName(), origin.name), style.get());
  }
  mOrigins[style.get()] = std::move(origin);
  mReadStyles.push_back(std::move(style));
}

void ZTDocument::recordUse(StyleUse use) {
  if (use.style) countUses(*use.style, use.count);
  mUses->all.push_back(std::move(use));
}

void ZTDocument::moveUse(std::size_t index, OdfStyle& style) {
  mUses->move(*mUndoManager, index, Ref<OdfStyle>(&style));
}

void ZTDocument::Uses::move(NSUndoManager& manager, std::size_t index, Ref<OdfStyle> style) {
  StyleUse& use = all[index];
  const Ref<OdfStyle> before = use.style;
  manager.registerUndo("moveUse:toStyle:", Ref<Uses>(this),
                       [undo = &manager, index, before](Uses& uses) { uses.move(*undo, index, before); });
  use.style = style;
  for (std::size_t count = 0; count < use.count; ++count) {
    if (style) style->incrementUsageCount();
    if (before) before->decrementUsageCount();
  }
}

void ZTDocument::recordFont(std::size_t part, std::string name, std::string family) {
  mUses->fonts[{part, std::move(name)}] = std::move(family);
}

void ZTDocument::setFont(std::size_t part, const std::string& name, const std::optional<std::string>& family) {
  mUses->setFont(*mUndoManager, {part, name}, family);
}

void ZTDocument::Uses::setFont(NSUndoManager& manager, const std::pair<std::size_t, std::string>& place,
                               const std::optional<std::string>& family) {
  const auto found = fonts.find(place);
  const std::optional<std::string> before = found == fonts.end() ? std::nullopt : std::optional(found->second);
  manager.registerUndo("setFont:family:", Ref<Uses>(this),
                       [undo = &manager, place, before](Uses& uses) { uses.setFont(*undo, place, before); });
  if (family) {
    fonts[place] = *family;
  } else {
    fonts.erase(place);
  }
}

bool ZTDocument::isDeclaredFont(const ZTSStyle& style, const NSObject* value) const {
  const NSString* name = NSString::from(value);
  const StyleOrigin* origin = originOf(style);
  if (name == nullptr || origin == nullptr || mUses->fonts.empty()) return true;
  const auto found = mUses->fonts.find({origin->part, std::string(name->view())});
  return found != mUses->fonts.end() && !found->second.empty();
}

void ZTDocument::countUses(OdfStyle& style, std::size_t uses) {
  for (std::size_t count = 0; count < uses; ++count) style.incrementUsageCount();
  if (const auto found = mOrigins.find(&style); found != mOrigins.end()) found->second.uses += uses;
}

void ZTDocument::replaceReadStyles(const std::vector<std::pair<Ref<OdfStyle>, Ref<OdfStyle>>>& answers) {
  struct Replacement {
    Ref<OdfStyle> answer;
    bool takesPlace;
  };
  std::unordered_map<const ZTSStyle*, Replacement> replaced;
  for (const auto& [style, answer] : answers) {
    const auto origin = mOrigins.extract(style.get());
    if (origin.empty()) continue;
    const auto [kept, isNew] = mOrigins.try_emplace(answer.get(), origin.mapped());
    if (!isNew) {
      kept->second.uses += origin.mapped().uses;
    } else if (answer->isIdentified()) {
      kept->second = StyleOrigin{.kind = StyleOrigin::Kind::named, .uses = origin.mapped().uses};
    }
    replaced.try_emplace(style.get(), Replacement{answer, isNew});
  }
  std::vector<Ref<OdfStyle>> read;
  for (Ref<OdfStyle>& style : mReadStyles) {
    const auto found = replaced.find(style.get());
    if (found == replaced.end()) {
      read.push_back(std::move(style));
    } else if (found->second.takesPlace) {
      read.push_back(found->second.answer);
    }
  }
  for (auto& [name, style] : mAutomatic) {
    if (const auto found = replaced.find(style); found != replaced.end()) style = found->second.answer.get();
  }
  mReadStyles = std::move(read);
}

const StyleOrigin* ZTDocument::originOf(const ZTSStyle& style) const {
  const auto found = mOrigins.find(&style);
  return found == mOrigins.end() ? nullptr : &found->second;
}

SourcePlace ZTDocument::placeOf(const ZTSStyle& style) const {
  const StyleOrigin* origin = originOf(style);
  return origin != nullptr && origin->part < parts.size() ? SourcePlace{parts[origin->part].shown, origin->line}
                                                          : SourcePlace{shown, 0};
}

std::string ZTDocument::labelOf(const ZTSStyle& style) const {
  if (style.isIdentified()) return style.identifier().text();
  const StyleOrigin* origin = originOf(style);
  const OdfStyle* odfStyle = asOdfStyle(&style);
  if (origin == nullptr || odfStyle == nullptr) return "(anonymous style)";
  if (origin->kind == StyleOrigin::Kind::listLevel) return origin->name;
  return (origin->part < parts.size() ? parts[origin->part].name + ':' : std::string()) +
         styleIdentifier(odfStyle->familyName(), origin->name);
}

}  // namespace zt
