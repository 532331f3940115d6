#include <platform/NSException.h>
#include <platform/NSNotificationCenter.h>
#include <platform/NSObject.h>
#include <platform/ZTClass.h>
#include <platform/ZTFormat.h>

#include <functional>
#include <vector>

namespace zt {

namespace {

// Objects that own one another in a long chain would be destroyed in a recursion as deep as the
// chain. Up to a bound that is what happens, since it is fastest; beyond it the objects wait here
// and the outermost destruction works them off.
constexpr int kNestedDestructions = 64;

struct Disposal {
  int depth = 0;
  std::vector<const NSObject*> waiting;
};

// As for NestingGuard: a few bytes, and no call per access.
[[gnu::tls_model("initial-exec")]] constinit thread_local Disposal* tDisposal = nullptr;

}  // namespace

NSObject::~NSObject() {
  if (hasListeners()) NSNotificationCenter::objectDies(*this);
}

void NSObject::dispose(const NSObject* object) noexcept {
  if (tDisposal != nullptr) {
    if (tDisposal->depth >= kNestedDestructions) {
      tDisposal->waiting.push_back(object);
      return;
    }
    ++tDisposal->depth;
    delete object;
    --tDisposal->depth;
    return;
  }
  Disposal disposal;
  tDisposal = &disposal;
  delete object;
  while (!disposal.waiting.empty()) {
    const NSObject* next = disposal.waiting.back();
    disposal.waiting.pop_back();
    delete next;
  }
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
