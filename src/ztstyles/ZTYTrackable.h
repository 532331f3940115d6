// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

/// Change tracking, answered by a stylesheet's host or by its document.
class ZT_EXPORT ZTYTrackable {
 public:
  virtual bool isTrackingChanges() const = 0;
  /// Borrowed; none without a session.
  virtual NSObject* currentChangeTrackingSession() const = 0;

 protected:
  ZTYTrackable() = default;
  virtual ~ZTYTrackable();
};

}  // namespace zt
