// SPDX-License-Identifier: MIT
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/ZTSStylesheetHost.h>
#include <ztstyles/ZTYTrackable.h>

namespace zt {

ZTSStylesheetHost::~ZTSStylesheetHost() {
  for (ZTSStylesheet* stylesheet : mServed.allObjects()) {
    stylesheet->mHost = nullptr;
    stylesheet->mChangeTracker = ZTSStylesheet::Tracker::none;
  }
}

bool ZTSStylesheetHost::willRemoveUnusedStyle(ZTSStyle&) { return false; }
void ZTSStylesheetHost::didRemoveUnusedStyles() {}
bool ZTSStylesheetHost::shouldArchiveUnusedStyle(const ZTSStyle&) const { return true; }
bool ZTSStylesheetHost::shouldArchiveStyle(const ZTSStyle&) const { return true; }

ZTYTrackable::~ZTYTrackable() = default;

}  // namespace zt
