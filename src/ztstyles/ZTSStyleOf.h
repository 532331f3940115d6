// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyleClassOf.h>

namespace zt {

/// The base of an application's style class, which gives it its class object:
///
///     class TextStyle : public ZTSStyleOf<TextStyle> {
///      public:
///       static constexpr const char* kClassName = "TextStyle";
///       static Ref<const PropertySet> classKeys() { return PropertySet::with({"size", "bold"}); }
///       bool validateValueForProperty(NSObject*, PropertyKey) const override { return true; }
///     };
///
/// `Base` is the style class to derive from: one of the library's, or one that was made this way itself.
///  - `kClassName` is the name in reports and archives. Every class needs one of its own.
///  - `classKeys()` answers the property registry, once. A class without it has its base's; where none has it, none.
///  - `Class`, a nested class derived from `ZTSStyleClassOf<Self>` that inherits its constructors, is made as the class
///    object where it is declared. It is the place to override what is asked of a class.
///
/// All three are public. A class that several shared objects use is exported from one of them, so that it has one class
/// object.
template <class Self, class Base = ZTSStyle>
class ZT_EXPORT ZTSStyleOf : public Base {
 public:
  static const ZTSStyleClass& styleClass() {
    static const ZTSStyleClass* object = makeClassObject();
    return *object;
  }
  const ZTSStyleClass& classObject() const override { return styleClass(); }

 protected:
  ZTSStyleOf() = default;
  ~ZTSStyleOf() override = default;

 private:
  // What follows looks into `Self`, which is complete no sooner than when a body is compiled.
  static const ZTSStyleClass* makeClassObject() {
    if constexpr (requires { Base::kClassName; }) {
      static_assert(static_cast<const void*>(&Self::kClassName) != static_cast<const void*>(&Base::kClassName),
                    "a style class needs a kClassName of its own");
    }
    if constexpr (requires { typename Self::Class; }) {
      // One that is inherited makes styles of the base.
      if constexpr (std::is_base_of_v<ZTSStyleClassOf<Self>, typename Self::Class>) {
        return newClassObject<typename Self::Class>();
      } else {
        return newClassObject<ZTSStyleClassOf<Self>>();
      }
    } else {
      return newClassObject<ZTSStyleClassOf<Self>>();
    }
  }
  template <class Object>
  static const ZTSStyleClass* newClassObject() {
    if constexpr (requires { Self::classKeys(); }) {
      return new Object(Self::kClassName, Base::styleClass(), Self::classKeys());
    } else {
      return new Object(Self::kClassName, Base::styleClass());
    }
  }
};

}  // namespace zt
