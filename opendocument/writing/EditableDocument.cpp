// SPDX-License-Identifier: MIT
#include <opendocument/writing/EditableDocument.h>

#include <opendocument/reading/StyleImporter.h>

#include <fmt/format.h>

#include <algorithm>

namespace zt {

namespace {

Ref<ZTDocument> documentOf(Package::Kind kind, const std::vector<XmlPart>& parts, const std::string& shown) {
  return importStyles(RawDocument::read(Package::fromParts(kind, parts, shown)));
}

void refuseHalfRead(const ZTDocument& document) {
  for (const Finding& finding : document.findings) {
    if (finding.severity == Finding::Severity::error)
      throw ReadError(finding.place, finding.message + "; half of a document is never written");
    if (finding.code == "invalid-text")
      throw ReadError(finding.place, "holds bytes that are no text; it is not written");
  }
}

}  // namespace

EditableDocument::EditableDocument(Package package, std::string container)
    : mPath(package.shown()),
      mKind(package.kind()),
      mContainer(std::move(container)),
      mParts(package.parts()),
      mDocument(importStyles(RawDocument::read(std::move(package)))),
      mBefore(stylesAsRead(*mDocument)),
      mLooks(*mDocument),
      mEditor(*mDocument) {
  refuseHalfRead(*mDocument);
}

std::unique_ptr<EditableDocument> EditableDocument::fromFlatText(std::string bytes, const std::string& shown) {
  return std::unique_ptr<EditableDocument>(new EditableDocument(Package::fromFlatText(std::move(bytes), shown), {}));
}

std::vector<XmlPart> EditableDocument::writtenParts() {
  const StyleDifference difference(*mDocument, mBefore);
  std::vector<XmlPart> parts = mParts;
  mEdits.clear();
  if (difference.isEmpty()) return parts;
  for (std::size_t index = 0; index < parts.size(); ++index) {
    if (!difference.parts()[index].isEmpty())
      parts[index].bytes = writtenPart(mParts[index], index, difference, mEdits);
  }
  if (!mEdits.empty()) check(parts);
  return parts;
}

void EditableDocument::check(const std::vector<XmlPart>& parts) const {
  Ref<ZTDocument> again;
  try {
    again = documentOf(mKind, parts, mDocument->shown);
  } catch (const ReadError& error) {
    throw EditError(fmt::format("the edit would make the document unreadable ({}); nothing was written", error.what()));
  }
  refuseHalfRead(*again);
  const StyleDifference difference(*mDocument, mBefore);
  const auto nameOf = [&](std::size_t use) { return difference.nameOfUse(use); };
  const auto refuse = [](const char* what, const std::vector<LookImage::Difference>& differences) {
    std::string text = what;
    for (const LookImage::Difference& each : differences) {
      text += fmt::format("\n  {}{}{}: {} -> {}", each.style, each.key ? "  " : "",
                          each.key ? each.key.view() : std::string_view(), each.before, each.after);
    }
    throw EditError(text);
  };
  const auto unasked = mLooks.differencesTo(
      *again, nameOf, [this](const OdfStyle& style, PropertyKey key) { return mEditor.isMeant(style, key); });
  if (!unasked.empty()) refuse("text would look different that was not meant; nothing was written:", unasked);
  const auto unsaid =
      LookImage(*mDocument).differencesTo(*again, nameOf, [](const OdfStyle&, PropertyKey) { return false; });
  if (!unsaid.empty()) refuse("a file cannot say all of it; nothing was written:", unsaid);
}

}  // namespace zt
