// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSDocument.h>
#include <support/ZTUMutablePointerSet.h>

namespace zt {

class NSUndoManager;
class ZTSStyle;
class ZTSStylesheet;

/// What a stylesheet asks of the document that it serves. Not held by the stylesheet: a host that is
/// destroyed leaves every stylesheet that it serves without one. What is answered is borrowed and must
/// live as long as the host.
class ZT_EXPORT ZTSStylesheetHost {
 public:
  ZTSStylesheetHost(const ZTSStylesheetHost&) = delete;
  ZTSStylesheetHost& operator=(const ZTSStylesheetHost&) = delete;

  /// None where changes are not undoable.
  virtual NSUndoManager* undoManager() const = 0;
  /// None where there is no document: then styles get no document hooks.
  virtual NSDocument* document() const = 0;

  /// Whether the cleanup may remove the style, which nothing uses. The base keeps every style.
  virtual bool willRemoveUnusedStyle(ZTSStyle& style);
  /// A cleanup removed at least one style. The base does nothing.
  virtual void didRemoveUnusedStyles();
  /// Whether a style that nothing uses is written to an archive. The base says yes.
  virtual bool shouldArchiveUnusedStyle(const ZTSStyle& style) const;
  /// Whether a style is written to an archive. The base says yes.
  virtual bool shouldArchiveStyle(const ZTSStyle& style) const;

 protected:
  ZTSStylesheetHost() = default;
  /// Clears the host of the stylesheets that it serves.
  virtual ~ZTSStylesheetHost();

 private:
  friend class ZTSStylesheet;
  ZTUMutablePointerSet<ZTSStylesheet> mServed;  // each enters and leaves in its p_setHost, and leaves when destroyed
};

}  // namespace zt
