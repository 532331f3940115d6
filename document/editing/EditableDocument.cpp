// SPDX-License-Identifier: MIT
#include <document/editing/EditableDocument.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

void refuse(const char* what, const std::vector<LookImage::Difference>& differences) {
  if (differences.empty()) return;
  std::string text = what;
  for (const LookImage::Difference& each : differences) {
    text += fmt::format("\n  {}{}{}: {} -> {}", each.style, each.key ? "  " : "",
                        each.key ? each.key.view() : std::string_view(), each.before, each.after);
  }
  throw EditError(text);
}

}  // namespace

void refuseHalfRead(const ZTDocument& document) {
  for (const Finding& finding : document.findings) {
    if (finding.severity == Finding::Severity::error)
      throw ReadError(finding.place, finding.message + "; half of a document is never written");
    if (finding.code == "invalid-text")
      throw ReadError(finding.place, "holds bytes that are no text; it is not written");
  }
}

std::string editedBytes(const XmlPart& part, const XmlBytes& bytes, const XmlSplices& splices,
                        std::vector<ShownEdit>& shown) {
  if (splices.isEmpty()) return part.bytes;
  int line = 1;
  std::size_t at = 0;
  for (const XmlSplices::Splice& splice : splices.sorted()) {
    const std::string_view before = bytes.text().substr(at, splice.start - at);
    line += static_cast<int>(std::count(before.begin(), before.end(), '\n'));
    at = splice.start;
    shown.push_back(
        {{part.shown, line}, std::string(bytes.text().substr(splice.start, splice.end - splice.start)), splice.text});
  }
  return bytes.bytesOf(splices.applyTo(bytes.text()));
}

EditableDocument::EditableDocument(DocumentSource source, Ref<ZTDocument> document, const EditingRules& rules)
    : mSource(std::move(source)),
      mDocument(std::move(document)),
      mBefore(stylesAsRead(*mDocument)),
      mLooks(*mDocument),
      mEditor(*mDocument, rules) {
  refuseHalfRead(*mDocument);
}

EditableDocument::~EditableDocument() = default;

std::vector<XmlPart> EditableDocument::writtenParts() {
  mEdits.clear();
  std::vector<XmlPart> parts = written(mEdits);
  if (!mEdits.empty()) check(parts);
  return parts;
}

std::vector<LookImage::Difference> EditableDocument::changedLooks(std::size_t most) const {
  const auto styleNow = [this](std::size_t use) { return mDocument->styleUses()[use].style.get(); };
  return mLooks.differencesTo(
      *mDocument, styleNow, [](const OdfStyle&, PropertyKey) { return false; }, most);
}

void EditableDocument::check(std::vector<XmlPart> parts) const {
  Ref<ZTDocument> again;
  try {
    again = readAgain(std::move(parts));
  } catch (const ReadError& error) {
    throw EditError(fmt::format("the edit would make the document unreadable ({}); nothing was written", error.what()));
  }
  refuseHalfRead(*again);
  const auto styleOf = [&](std::size_t use) { return styleOfUse(use, *again); };
  refuse("text would look different that was not meant; nothing was written:",
         mLooks.differencesTo(*again, styleOf,
                              [this](const OdfStyle& style, PropertyKey key) { return mEditor.isMeant(style, key); }));
  refuse("a file cannot say all of it; nothing was written:",
         LookImage(*mDocument).differencesTo(*again, styleOf, [](const OdfStyle&, PropertyKey) { return false; }));
}

}  // namespace zt
