// SPDX-License-Identifier: MIT
#include <platform/NSUserDefaults.h>

namespace zt {

NSUserDefaults& NSUserDefaults::standardUserDefaults() {
  static NSUserDefaults* defaults = new NSUserDefaults;  // outlives every static
  return *defaults;
}

bool NSUserDefaults::boolForKey(std::string_view key) const {
  const std::lock_guard guard(mLock);
  const auto found = mSettings.find(key);
  return found != mSettings.end() && found->second;
}

void NSUserDefaults::setBoolForKey(bool value, std::string_view key) {
  const std::lock_guard guard(mLock);
  mSettings.insert_or_assign(std::string(key), value);
}

void NSUserDefaults::removeObjectForKey(std::string_view key) {
  const std::lock_guard guard(mLock);
  if (const auto found = mSettings.find(key); found != mSettings.end()) mSettings.erase(found);
}

}  // namespace zt
