// SPDX-License-Identifier: MIT
#include "ApiModel.h"

#include <archiving/ZTAXMLArchiver.h>
#include <archiving/ZTAXMLFunctions.h>
#include <archiving/ZTAXMLUnarchiver.h>
#include <platform/NSException.h>
#include <platform/NSNull.h>
#include <platform/NSNumber.h>
#include <platform/ZTFormat.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSArchiving.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>

namespace zt::fuzzing {

namespace {

[[noreturn]] void fail(const std::string& what) {
  std::fprintf(stderr, "%s\n", what.c_str());
  std::abort();
}

/// A stylesheet that leaves no shortcut.
class OtherSheet final : public ZTSStylesheet {
 public:
  ZTSStyle* cascadedStyleWithIdentifier(const StringRef& identifier) const override {
    return ZTSStylesheet::cascadedStyleWithIdentifier(identifier);
  }
  void addStyleWithContext(Ref<ZTSStyle> style, NSObject* context) override {
    ZTSStylesheet::addStyleWithContext(std::move(style), context);
  }
  void updateParentForOrphanStyles() override { ZTSStylesheet::updateParentForOrphanStyles(); }
};

std::string archived(ZTSStylesheet& sheet) {
  ZTSInitArchivingClassToElementNameMappings();
  const ZTADiffableXmlScope diffable;
  const auto archiver = make<ZTAXMLArchiver>(1);
  archiver->encodeRootObject(sheet);
  return archiver->bytes();
}

/// The lines of an archive without the numbers of its references, sorted.
std::string contents(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    std::string line = text.substr(at, end - at);
    for (const char* attribute : {" zt:id=", " zt:to="}) {
      const std::size_t start = line.find(attribute);
      if (start != std::string::npos) line.erase(start, line.find('"', start + 8) + 1 - start);
    }
    lines.push_back(std::move(line));
    at = end == std::string::npos ? text.size() : end + 1;
  }
  std::sort(lines.begin(), lines.end());
  std::string all;
  for (const std::string& line : lines) all += line + '\n';
  return all;
}

}  // namespace

class ApiModel::Host final : public ZTSStylesheetHost {
 public:
  NSUndoManager* undoManager() const override { return undo.get(); }
  NSDocument* document() const override { return theDocument.get(); }
  bool willRemoveUnusedStyle(ZTSStyle& style) override {
    disturb("unused");
    return style.isAnonymous() && !undo->isUndoingOrRedoing();
  }
  void didRemoveUnusedStyles() override { disturb("cleaned"); }

  Ref<NSUndoManager> undo = make<NSUndoManager>();
  struct Document final : NSDocument {};
  Ref<Document> theDocument = make<Document>();
};

ApiModel::ApiModel(Bytes bytes)
    : mBytes(bytes),
      mHost(std::make_unique<Host>()),
      mSheetWatcher(make<SheetWatcher>()),
      mWatcher(make<Watcher>()),
      mUpper(ZTSStylesheet::withHost(mHost.get())),
      mLower(mBytes.chance(3) ? Ref<ZTSStylesheet>(make<OtherSheet>()) : ZTSStylesheet::withHost(mHost.get())),
      mOther(make<OtherSheet>()) {
  for (const Ref<ZTSStylesheet>& each : {mLower, mOther}) {
    if (each->host() == nullptr) each->initWithHost(mHost.get());
  }
  mLower->setParent(mUpper);
  mLower->addObserver(mSheetWatcher.get());
  for (int count = 0; count < 12; ++count) addNew();
  for (const Ref<ZTSStyle>& style : mPool) {
    if (mBytes.chance(3)) style->addObserver(mWatcher.get());
  }
  const std::uint8_t manner = mBytes.take();
  if ((manner & 1) != 0) mLower->enableUnusedStyleCleanup();
  if ((manner & 2) != 0) {
    mListener.emplace(ZTSStylePropertiesChangedNotification, nullptr, [](const NSNotification&) { disturb("heard"); });
  }
  mHost->undo->removeAllActions();
  mFirst = state();
  mIsCalm = (manner & 12) == 0;
  disturbance() = [this](const char* hook) { disturbed(hook); };
  check();
}

ApiModel::~ApiModel() {
  disturbance() = {};
  mHost->undo->removeAllActions();
  mLower->removeObserver(mSheetWatcher.get());
  for (const Ref<ZTSStyle>& style : mPool) {
    while (style->observers().countForObject(mWatcher.get()) != 0) style->removeObserver(mWatcher.get());
  }
  mLower->disableUnusedStyleCleanup();
}

void ApiModel::trace(const char* what) const {
  static const bool isWanted = std::getenv("ZT_FUZZ_TRACE") != nullptr;
  if (isWanted) std::fprintf(stderr, "%*s%s\n%s\n", 2 * mNesting, "", what, state().c_str());
}

void ApiModel::step() {
  ZTUAssertionRecorder refusals;  // an operation may refuse what makes no sense
  NSUndoManager& undo = *mHost->undo;
  const std::size_t what = mBytes.below(16);
  try {
    if (what == 0 && undo.canUndo()) {
      trace("undo");
      undo.undo();
    } else if (what == 1 && undo.canRedo()) {
      trace("redo");
      undo.redo();
    } else {
      undo.performInGroup([&] { performOne(); });
    }
  } catch (const std::exception&) {
    // From anywhere: the model must be as valid as before.
  }
  adopt();
  check();
}

void ApiModel::disturbed(const char* hook) {
  if (mIsCalm || mNesting > 1 || mHost->undo->isUndoingOrRedoing()) return;
  const std::size_t what = mBytes.below(12);
  if (what == 1) {
    trace("throw");
    if (mBytes.chance(2)) throw std::bad_alloc();
    throw NSGenericException("thrown by the application");
  }
  if (what != 2 || mIsAway) return;
  trace(hook);
  ++mNesting;
  try {
    performOne();
  } catch (...) {
    --mNesting;
    throw;
  }
  --mNesting;
}

void ApiModel::check() {
  const bool wasCalm = std::exchange(mIsCalm, true);
  ZTUAssertionRecorder reports;
  for (const Ref<ZTSStylesheet>& each : {mUpper, mLower, mOther}) {
    each->validate();
    if (!each->indexesAreRight()) fail("an index is wrong");
  }
  for (const std::string& text : reports.descriptions()) {
    // A style may be removed, or leave for another stylesheet, while others refer to it; names may be shared.
    if (text.find("Referenced style") == std::string::npos && text.find("same name") == std::string::npos) {
      fail(text);
    }
  }
  mIsCalm = wasCalm;
}

void ApiModel::goBackAndForth() {
  mIsCalm = true;
  const std::string last = state();
  NSUndoManager& undo = *mHost->undo;
  ZTUAssertionRecorder refusals;
  int steps = 0;  // what had been undone by then stays undone
  for (; undo.canUndo(); ++steps) undo.undo();
  check();
  if (state() != mFirst) fail("undo of everything:\n" + state() + "\ninstead of\n" + mFirst);
  while (steps-- != 0) undo.redo();
  check();
  if (state() != last) fail("redo of everything:\n" + state() + "\ninstead of\n" + last);
  readAgain();
}

/// What is written can be read, and holds the same then. Which style of a circle of parents goes without, and with it
/// the order, is decided by the order in which they come.
void ApiModel::readAgain() const {
  const std::string text = archived(*mLower);
  const auto unarchiver = ZTAXMLUnarchiver::unarchiverForBytes(text);
  const Ref<NSObject> root = unarchiver->unarchiveRootObject();
  for (const Ref<ZTAError>& finding : unarchiver->findings()) fail(finding->description() + "\n" + text);
  auto* sheet = dynamic_cast<ZTSStylesheet*>(root.get());
  if (sheet == nullptr || contents(archived(*sheet)) != contents(text)) {
    fail("read again:\n" + contents(archived(*sheet)) + "\ninstead of\n" + contents(text));
  }
}

/// What undo brings back. Styles that left and came again may stand at other places of their stylesheet.
std::string ApiModel::state() const {
  const auto numberOf = [this](const NSObject* object) {
    const auto isIt = [&](const Ref<ZTSStyle>& each) {
      return static_cast<NSObject*>(static_cast<ZTAXMLCoding*>(each.get())) == object;
    };
    return std::find_if(mPool.begin(), mPool.end(), isIt) - mPool.begin();
  };
  std::string all;
  for (std::size_t index = 0; index < mPool.size(); ++index) {
    const ZTSStyle& style = *mPool[index];
    if (style.stylesheet() == nullptr) continue;
    all +=
        format("%d in %d: '%@' '%@' from '%@' locked %d", static_cast<int>(index), style.stylesheet() == mLower.get(),
               style.name(), style.identifier(), style.parentIdentifier(), style.isLocked());
    for (const PropertyKey each : {size, weight, list, label}) {
      const NSObject* own = style.rawValueForProperty(each);
      if (own == nullptr) continue;
      all += asStyle(own) != nullptr ? format(" %@=style %d", each, static_cast<int>(numberOf(own)))
                                     : format(" %@=%s", each, own->description());
    }
    all += '\n';
  }
  return all;
}

void ApiModel::adopt() {
  for (const Ref<ZTSStylesheet>& each : {mUpper, mLower}) {
    for (const Ref<ZTSStyle>& style : each->retainedStyles()) {
      if (std::find(mPool.begin(), mPool.end(), style) == mPool.end()) mPool.push_back(style);
    }
  }
}

}  // namespace zt::fuzzing
