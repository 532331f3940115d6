// SPDX-License-Identifier: MIT
#include <platform/ZTClass.h>
#include <platform/ZTHash.h>
#include <support/ZTUPair.h>

namespace zt {

Ref<ZTUPair> ZTUPair::pairWithFirstSecond(Ref<NSObject> first, Ref<NSObject> second) {
  return Ref<ZTUPair>(new ZTUPair(std::move(first), std::move(second)));
}

const ZTClass& ZTUPair::pairClass() {
  static const ZTClass* object = new ZTClass("ZTUPair", &nsObjectClass(), &typeid(ZTUPair));
  return *object;
}

const ZTClass& ZTUPair::classObject() const { return pairClass(); }

bool ZTUPair::isEqual(const NSObject* other) const {
  const auto* pair = dynamic_cast<const ZTUPair*>(other);
  return pair != nullptr && sameOrEqual(first(), pair->first()) && sameOrEqual(second(), pair->second());
}

std::size_t ZTUPair::hash() const { return combineHashes(mFirst ? mFirst->hash() : 0, mSecond ? mSecond->hash() : 0); }

Ref<NSObject> ZTUPair::copy() const { return Ref<NSObject>(const_cast<ZTUPair*>(this)); }

}  // namespace zt
