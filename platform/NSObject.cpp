// SPDX-License-Identifier: MIT
#include <platform/NSException.h>
#include <platform/NSNotificationCenter.h>
#include <platform/NSObject.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

#include <functional>
#include <new>
#include <vector>

namespace zt {

namespace {

// Objects that own one another in a long chain would be destroyed in a recursion as deep as the
// chain. Up to a bound that is what happens, since it is fastest; beyond it the objects wait here
// and the outermost destruction works them off.
constexpr int kNestedDestructions = 64;

//
// Destruction must not fail for want of memory. A chain has one object waiting at a time, so the room on the stack
// does for it; only objects that let go of many at once, that deep, need more. Where no more is to be had, they are
// destroyed on the spot, deeper than the bound.
class Disposal {
 public:
  int depth = 0;

  bool wait(const NSObject* object) noexcept {
    if (mCount < kRoom) {
      mFirst[mCount++] = object;
      return true;
    }
    try {
      mMore.push_back(object);
      return true;
    } catch (const std::bad_alloc&) {
      return false;
    }
  }
  /// The one that came last; none if none waits.
  const NSObject* next() noexcept {
    if (!mMore.empty()) {
      const NSObject* last = mMore.back();
      mMore.pop_back();
      return last;
    }
    return mCount != 0 ? mFirst[--mCount] : nullptr;
  }

 private:
  static constexpr std::size_t kRoom = 64;
  std::size_t mCount = 0;
  const NSObject* mFirst[kRoom];  // left as it is: most destructions need none of it
  std::vector<const NSObject*> mMore;
};

// As for NestingGuard: a few bytes, and no call per access.
[[gnu::tls_model("initial-exec")]] constinit thread_local Disposal* tDisposal = nullptr;

}  // namespace

NSObject::~NSObject() {
  if (hasListeners()) NSNotificationCenter::objectDies(*this);
}

void NSObject::dispose(const NSObject* object) noexcept {
  object->mCount = counting::kDying;
  if (tDisposal != nullptr) {
    if (tDisposal->depth >= kNestedDestructions && tDisposal->wait(object)) return;
    ++tDisposal->depth;
    delete object;
    --tDisposal->depth;
    return;
  }
  Disposal disposal;
  tDisposal = &disposal;
  delete object;
  while (const NSObject* next = disposal.next()) delete next;
  tDisposal = nullptr;
}

const ZTClass& NSObject::nsObjectClass() {
  static const ZTClass* object = new ZTClass("NSObject", nullptr, &typeid(NSObject));
  return *object;
}

const ZTClass& NSObject::classObject() const { return nsObjectClass(); }

bool NSObject::isEqual(const NSObject* other) const { return this == other; }

std::size_t NSObject::hash() const { return std::hash<const void*>{}(this); }

std::size_t NSObject::stableHash() const { return 0x9e3779b97f4a7c15ull; }

std::string NSObject::description() const { return format("<%@ %p>", classObject().name(), address(this)); }

Ref<NSObject> NSObject::copy() const {
  throw NSInvalidArgumentException(
      format("-[%@ copyWithZone:]: an object of this class cannot be copied", classObject().name()));
}

}  // namespace zt
