// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

class ZTSStyle;
class ZTSStylesheet;

/// Is told what happens to a stylesheet and to its ancestors, since that alters what lookups find. An
/// observer must leave before it is destroyed. An operation that is not overridden tells nobody.
class ZT_EXPORT ZTSStylesheetObserver : public NSObject {
 public:
  virtual void addedStyleToStylesheet(ZTSStyle& style, ZTSStylesheet& stylesheet);
  virtual void removedStyleFromStylesheet(ZTSStyle& style, ZTSStylesheet& stylesheet);
  virtual void changedParentOfStylesheet(ZTSStylesheet& stylesheet);

 protected:
  ~ZTSStylesheetObserver() override;
};

}  // namespace zt
