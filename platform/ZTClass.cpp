// SPDX-License-Identifier: MIT
#include <platform/ZTClass.h>

#include <map>
#include <mutex>

namespace zt {

namespace {

struct Registry {
  std::mutex lock;
  std::map<std::string, const ZTClass*, std::less<>> classes;
};

Registry& registry() {
  static Registry* classes = new Registry;  // never destroyed: class objects outlive every static
  return *classes;
}

}  // namespace

ZTClass::ZTClass(std::string_view name, const ZTClass* base, const std::type_info* type)
    : mName(name), mBase(base), mType(type) {
  intrusive_ptr_add_ref(this);  // immortal
  Registry& all = registry();
  std::lock_guard guard(all.lock);
  all.classes.insert_or_assign(std::string(name), this);
}

ZTClass::~ZTClass() = default;

bool ZTClass::isKindOf(const ZTClass& other) const noexcept {
  for (const ZTClass* each = this; each != nullptr; each = each->mBase) {
    if (each == &other) return true;
  }
  return false;
}

Ref<NSObject> ZTClass::allocate() const { return {}; }

const ZTClass* ZTClass::named(std::string_view name) {
  Registry& all = registry();
  std::lock_guard guard(all.lock);
  auto found = all.classes.find(name);
  return found == all.classes.end() ? nullptr : found->second;
}

}  // namespace zt
