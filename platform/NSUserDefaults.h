// SPDX-License-Identifier: MIT
#pragma once

#include <platform/ZTExport.h>

#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace zt {

/// The settings of the process, by name. They live in memory, are empty at start, and may be read
/// and set from any thread.
class ZT_EXPORT NSUserDefaults {
 public:
  static NSUserDefaults& standardUserDefaults();

  NSUserDefaults() = default;
  NSUserDefaults(const NSUserDefaults&) = delete;
  NSUserDefaults& operator=(const NSUserDefaults&) = delete;

  /// The setting; false if it has never been set.
  [[nodiscard]] bool boolForKey(std::string_view key) const;
  void setBoolForKey(bool value, std::string_view key);

  /// As if the setting had never been set.
  void removeObjectForKey(std::string_view key);

 private:
  mutable std::mutex mLock;
  std::map<std::string, bool, std::less<>> mSettings;
};

}  // namespace zt
