// SPDX-License-Identifier: MIT
#pragma once

#include <platform/ZTExport.h>

namespace zt {

class ZTSStyle;
class ZTSStyleChangeInfo;

/// Is told of a style's changes. Registered with `ZTSStyle::addObserver`, which counts and does not
/// hold its observers: leave before you are destroyed. An operation that is not overridden costs
/// nothing and tells nobody. Either may change, remove or release anything. Validation expects an observer to be an
/// `NSObject` too and reports one that is not.
class ZT_EXPORT ZTSStyleObserver {
 public:
  /// Values of an observed style changed; `change.style()` is the observed style.
  virtual void stylePropertiesChanged(const ZTSStyleChangeInfo& change);
  /// An observed style was replaced by another of its class.
  virtual void didReplaceStyleWithStyle(ZTSStyle* replaced, ZTSStyle* replacement);

 protected:
  ZTSStyleObserver() = default;
  virtual ~ZTSStyleObserver();
};

}  // namespace zt
