// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSObject.h>
#include <platform/NSString.h>

#include <string_view>
#include <typeinfo>

namespace zt {

/// A class object: what can be asked of a class rather than of an instance. Class objects are
/// immortal, are registered by name when they are made, and are compared by address: exact class is
/// pointer equality, kind is `isKindOf`.
///
/// A class object is itself an object, so that it can be shown in a table or kept in a dictionary.
class ZT_EXPORT ZTClass : public NSObject {
 public:
  /// Registers the class. `base` is none for the root only. A name that is taken already names the
  /// newest class from then on.
  ZTClass(std::string_view name, const ZTClass* base, const std::type_info* type);

  [[nodiscard]] const StringRef& name() const noexcept { return mName; }
  [[nodiscard]] const ZTClass* base() const noexcept { return mBase; }
  [[nodiscard]] const std::type_info& type() const noexcept { return *mType; }

  /// Whether this class is `other` or is derived from it.
  [[nodiscard]] bool isKindOf(const ZTClass& other) const noexcept;

  /// A bare instance, or none where the class cannot be made from outside. The base answers none.
  virtual Ref<NSObject> allocate() const;

  /// The class registered under the name, or none. Safe across threads.
  static const ZTClass* named(std::string_view name);

  std::string description() const override { return std::string(mName.view()); }

 protected:
  ~ZTClass() override;

 private:
  StringRef mName;
  const ZTClass* mBase;
  const std::type_info* mType;
};

/// A class object for a class that is made with its default constructor.
template <class T>
class ZTClassOf : public ZTClass {
 public:
  ZTClassOf(std::string_view name, const ZTClass& base) : ZTClass(name, &base, &typeid(T)) {}
  Ref<NSObject> allocate() const override { return Ref<NSObject>(new T()); }
};

}  // namespace zt
