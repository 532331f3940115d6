// SPDX-License-Identifier: MIT
#pragma once

#include <archiving/ZTAValueCoder.h>
#include <platform/ZTClass.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace zt {

/// What elements and classes have been registered under. Immutable: a registration makes a new one, so that
/// an archiver reads its own snapshot without a lock.
class ZTARegistry {
 public:
  struct Coder {
    std::string elementName;
    std::shared_ptr<const ZTAValueCoder> coder;
  };

  /// The state of now.
  static std::shared_ptr<const ZTARegistry> current();
  static void addClassName(const ZTClass& objectClass, std::string_view elementName);
  static void addCoder(const ZTClass& valueClass, std::string_view elementName,
                       std::shared_ptr<const ZTAValueCoder> coder);

  /// The name under which objects of exactly this class are written, or none.
  [[nodiscard]] const std::string* nameOfClass(const ZTClass& objectClass) const;
  /// The class of such elements, or none.
  [[nodiscard]] const ZTClass* classNamed(std::string_view elementName) const;
  /// The coder of the class, else of its nearest base class that has one; none without one.
  [[nodiscard]] const Coder* coderOfClass(const ZTClass& valueClass) const;
  [[nodiscard]] const ZTAValueCoder* coderNamed(std::string_view elementName) const;

 private:
  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>{}(text); }
  };
  template <class V>
  using ByName = boost::unordered_flat_map<std::string, V, TextHash, std::equal_to<>>;

  static void change(std::string_view elementName, const std::function<void(ZTARegistry&)>& edit);

  boost::unordered_flat_map<const ZTClass*, std::string> mNames;
  ByName<const ZTClass*> mClasses;
  boost::unordered_flat_map<const ZTClass*, Coder> mCoders;
  ByName<std::shared_ptr<const ZTAValueCoder>> mCodersByName;
};

}  // namespace zt
