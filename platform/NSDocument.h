// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>

namespace zt {

/// The type of document that the document hooks carry. The library asks nothing of it: what a
/// document can do is the application's affair.
class ZT_EXPORT NSDocument : public NSObject {
 public:
  const ZTClass& classObject() const override;
  static const ZTClass& documentClass();

 protected:
  NSDocument() = default;
  ~NSDocument() override;
};

}  // namespace zt
