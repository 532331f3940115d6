// SPDX-License-Identifier: MIT

// The fonts that styles name: each part declares its own.

#include <document/editing/DocumentEditor.h>
#include <document/styles/StyleValues.h>

#include <platform/NSString.h>

namespace zt {

namespace {

bool isFont(PropertyKey key) { return key.view().starts_with("text.style.font-name"); }

}  // namespace

std::size_t DocumentEditor::partOfNamedStyles() const {
  for (const Ref<OdfStyle>& style : mDocument.readStyles()) {
    const StyleOrigin* origin = mDocument.originOf(*style);
    if (origin->kind == StyleOrigin::Kind::named || origin->kind == StyleOrigin::Kind::defaultStyle)
      return origin->part;
  }
  return 0;
}

// A style that comes to stand in another part takes the declarations along that its values need.
void DocumentEditor::needFonts(const OdfStyle& style, const ZTDocument& from, std::size_t fromPart,
                               std::size_t toPart) {
  const Ref<const PropertyMap> own = style.overridePropertyMap();
  if (!own || from.declaredFonts().empty()) return;
  for (const PropertyMap::Entry& entry : *own) {
    if (const OdfStyle* referred = asOdfStyle(static_cast<const NSObject*>(entry.value.get()));
        referred != nullptr && referred->family() == StyleFamily::listLevel)
      needFonts(*referred, from, fromPart, toPart);
    const NSString* name = isFont(entry.key) ? NSString::from(entry.value.get()) : nullptr;
    if (name == nullptr) continue;
    const auto declared = from.declaredFonts().find({fromPart, std::string(name->view())});
    if (declared == from.declaredFonts().end()) continue;
    if (!mDocument.declaredFonts().contains({toPart, declared->first.second}))
      mDocument.setFont(toPart, declared->first.second, declared->second);
  }
}

std::vector<std::string> DocumentEditor::cleanupFonts() {
  std::set<std::pair<std::size_t, std::string>> used = mDocument.otherFontUses;
  std::vector<std::pair<std::size_t, std::string>> pieces;  // elements that are kept as text
  for (const Ref<ZTSStyle>& each : mDocument.stylesheet().retainedStyles()) {
    const OdfStyle& style = *asOdfStyle(static_cast<NSObject*>(each.get()));
    const Ref<const PropertyMap> own = style.overridePropertyMap();
    if (!own) continue;
    for (const PropertyMap::Entry& entry : *own) {
      if (const NSString* name = NSString::from(entry.value.get()); name != nullptr && isFont(entry.key)) {
        used.emplace(partOf(style), name->view());
      } else if (const OpaqueValue* opaque = asOpaque(entry.value.get());
                 opaque != nullptr && opaque->text().find("font-name") != std::string::npos) {
        pieces.emplace_back(partOf(style), opaque->text());
      }
    }
  }
  std::vector<std::pair<std::size_t, std::string>> unused;
  for (const auto& [place, family] : mDocument.declaredFonts()) {
    bool isUsed = used.contains(place);
    for (const auto& [part, text] : pieces)
      isUsed = isUsed || (part == place.first && text.find('"' + place.second + '"') != std::string::npos);
    if (!isUsed) unused.push_back(place);
  }
  std::vector<std::string> names;
  for (const auto& [part, name] : unused) {
    names.push_back(mDocument.parts[part].name + ":" + name);
    mDocument.setFont(part, name, std::nullopt);
  }
  return names;
}

}  // namespace zt
