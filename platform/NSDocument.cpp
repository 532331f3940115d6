// SPDX-License-Identifier: MIT
#include <platform/NSDocument.h>
#include <platform/ZTClass.h>

namespace zt {

NSDocument::~NSDocument() = default;

const ZTClass& NSDocument::documentClass() {
  static const ZTClass* object = new ZTClass("NSDocument", &nsObjectClass(), &typeid(NSDocument));
  return *object;
}

const ZTClass& NSDocument::classObject() const { return documentClass(); }

}  // namespace zt
