#pragma once

#include <ztstyles/ZTSDerivingStyle.h>

namespace zt {

/// The class object of one style class, with what the compiler knows about it:
///
///     class HeadingStyle : public ZTSAggregateStyle {
///      public:
///       static const ZTSStyleClass& styleClass();
///       const ZTSStyleClass& classObject() const override { return styleClass(); }
///       bool validateValueForProperty(NSObject* value, PropertyKey key) const override;
///     };
///     const ZTSStyleClass& HeadingStyle::styleClass() {
///       static const auto* object = new ZTSStyleClassOf<HeadingStyle>(
///           "HeadingStyle", ZTSAggregateStyle::styleClass(), PropertySet::with({"size", "weight"}));
///       return *object;
///     }
///
/// A class whose notification name, key prefix or registry is decided otherwise derives from this template and
/// overrides what differs.
///
/// The style class needs a default constructor that this template may call. A class object is immortal:
/// make it with `new` and keep the pointer.
template <class T>
class ZTSStyleClassOf : public ZTSStyleClass {
 public:
  ZTSStyleClassOf(std::string_view name, const ZTClass& base) : ZTSStyleClass(name, &base, &typeid(T)) {
    setPlainGroups(groups(), variesPlainly());
  }
  /// With the class's registry, where it is known at once and need not be overridden.
  ZTSStyleClassOf(std::string_view name, const ZTClass& base, Ref<const PropertySet> registry)
      : ZTSStyleClassOf(name, base) {
    mRegistry = std::move(registry);
  }

  const PropertySet& properties() const override { return mRegistry ? *mRegistry : ZTSStyleClass::properties(); }

  Ref<ZTSStyle> allocateStyle() const override {
    Ref<ZTSStyle> style(new Bare);
    stamp(*style);
    return style;
  }

 private:
  Ref<const PropertySet> mRegistry;

  // A style class may keep its constructor and destructor protected. The type that is made is then this
  // one, which adds nothing; its class object is T's.
  struct Bare final : T {};

  /// A deriving style without source and derived properties shows its own map as it is stored.
  static constexpr bool derivesNothing() {
    if constexpr (requires {
                    &T::isSourceProperty;
                    &T::isDerivedProperty;
                  }) {
      return kSameOperation<decltype(&T::isSourceProperty), decltype(&ZTSDerivingStyle::isSourceProperty)> &&
             kSameOperation<decltype(&T::isDerivedProperty), decltype(&ZTSDerivingStyle::isDerivedProperty)>;
    } else {
      return false;
    }
  }
  static constexpr bool showsOwnMap() {
    if constexpr (requires { &T::overridePropertyMap; }) {
      return kSameOperation<decltype(&T::overridePropertyMap), decltype(&ZTSStyle::overridePropertyMap)> ||
             (derivesNothing() &&
              kSameOperation<decltype(&T::overridePropertyMap), decltype(&ZTSDerivingStyle::overridePropertyMap)>);
    } else {
      return false;
    }
  }
  static constexpr bool variesPlainly() {
    if constexpr (requires { &T::overridePropertyMapWithPropertyMap; }) {
      using Operation = decltype(&T::overridePropertyMapWithPropertyMap);
      return kSameOperation<Operation, decltype(&ZTSStyle::overridePropertyMapWithPropertyMap)> ||
             (derivesNothing() &&
              kSameOperation<Operation, decltype(&ZTSDerivingStyle::overridePropertyMapWithPropertyMap)>);
    } else {
      return false;
    }
  }
  static constexpr std::uint8_t groups() {
    std::uint8_t all = 0;
    if constexpr (requires {
                    &T::valueForProperty;
                    &T::definesProperty;
                    &T::propertyMap;
                  }) {
      constexpr bool values = kSameOperation<decltype(&T::valueForProperty), decltype(&ZTSStyle::valueForProperty)> ||
                              readsLikePlainAggregate();
      if (values && kSameOperation<decltype(&T::definesProperty), decltype(&ZTSStyle::definesProperty)> &&
          kSameOperation<decltype(&T::propertyMap), decltype(&ZTSStyle::propertyMap)>) {
        all |= plainReading;
      }
    }
    if constexpr (requires {
                    &T::stylePropertiesChanged;
                    &T::inspectableProperties;
                    &T::undoManager;
                  }) {
      if (kSameOperation<decltype(&T::stylePropertiesChanged), decltype(&ZTSStyle::stylePropertiesChanged)> &&
          kSameOperation<decltype(&T::inspectableProperties), decltype(&ZTSStyle::inspectableProperties)> &&
          showsOwnMap() && kSameOperation<decltype(&T::undoManager), decltype(&ZTSStyle::undoManager)>) {
        all |= plainTelling;
      }
    }
    if constexpr (requires {
                    &T::incrementUsageCount;
                    &T::decrementUsageCount;
                    &T::incrementOrphanCount;
                    &T::decrementOrphanCount;
                  }) {
      if (kSameOperation<decltype(&T::incrementUsageCount), decltype(&ZTSStyle::incrementUsageCount)> &&
          kSameOperation<decltype(&T::decrementUsageCount), decltype(&ZTSStyle::decrementUsageCount)> &&
          kSameOperation<decltype(&T::incrementOrphanCount), decltype(&ZTSStyle::incrementOrphanCount)> &&
          kSameOperation<decltype(&T::decrementOrphanCount), decltype(&ZTSStyle::decrementOrphanCount)>) {
        all |= plainCounting | libraryCounting;
      }
      if (kSameOperation<decltype(&T::incrementUsageCount), decltype(&ZTSAggregateStyle::incrementUsageCount)> &&
          kSameOperation<decltype(&T::decrementUsageCount), decltype(&ZTSAggregateStyle::decrementUsageCount)> &&
          kSameOperation<decltype(&T::incrementOrphanCount), decltype(&ZTSAggregateStyle::incrementOrphanCount)> &&
          kSameOperation<decltype(&T::decrementOrphanCount), decltype(&ZTSAggregateStyle::decrementOrphanCount)>) {
        all |= libraryCounting;
      }
    }
    if constexpr (requires {
                    &T::valueForProperty;
                    &T::referencedStyles;
                    &T::recursivelyReferencedStyles;
                  }) {
      // A class with the bit is an aggregate unless it is plain.
      if (((all & plainReading) != 0 &&
           kSameOperation<decltype(&T::valueForProperty), decltype(&ZTSStyle::valueForProperty)> &&
           kSameOperation<decltype(&T::referencedStyles), decltype(&ZTSStyle::referencedStyles)> &&
           kSameOperation<decltype(&T::recursivelyReferencedStyles),
                          decltype(&ZTSStyle::recursivelyReferencedStyles)>) ||
          refersLikeAggregate()) {
        all |= libraryReading;
      }
    }
    if (showsOwnMap()) all |= plainMatching;
    if constexpr (requires { &T::updateParent; }) {
      if (kSameOperation<decltype(&T::updateParent), decltype(&ZTSStyle::updateParent)>) all |= plainResolving;
    }
    if constexpr (requires {
                    &T::isEqual;
                    &T::isEqualCompareNames;
                  }) {
      if (kSameOperation<decltype(&T::isEqual), decltype(&ZTSStyle::isEqual)> &&
          kSameOperation<decltype(&T::isEqualCompareNames), decltype(&ZTSStyle::isEqualCompareNames)>) {
        all |= plainComparing;
      }
    }
    return all;
  }

  static constexpr bool refersLikeAggregate() {
    using Aggregate = ZTSAggregateStyle;
    if constexpr (requires { &T::overridesAnyNonReferencedStylePropertyIgnoringStyles; }) {
      return kSameOperation<decltype(&T::valueForProperty), decltype(&Aggregate::valueForProperty)> &&
             kSameOperation<decltype(&T::referencedStyles), decltype(&Aggregate::referencedStyles)> &&
             kSameOperation<decltype(&T::recursivelyReferencedStyles),
                            decltype(&Aggregate::recursivelyReferencedStyles)> &&
             kSameOperation<decltype(&T::overridesAnyNonReferencedStylePropertyIgnoringStyles),
                            decltype(&Aggregate::overridesAnyNonReferencedStylePropertyIgnoringStyles)>;
    } else {
      return false;
    }
  }

  /// An aggregate whose default-value hook is the library's answers what a plain style answers.
  static constexpr bool readsLikePlainAggregate() {
    if constexpr (requires {
                    &T::valueForProperty;
                    &T::defaultValueForNilStyleProperty;
                  }) {
      return kSameOperation<decltype(&T::valueForProperty), decltype(&ZTSAggregateStyle::valueForProperty)> &&
             kSameOperation<decltype(&T::defaultValueForNilStyleProperty),
                            decltype(&ZTSAggregateStyle::defaultValueForNilStyleProperty)>;
    } else {
      return false;
    }
  }
};

/// Makes a style of a C++ class; none where its initialiser refuses.
template <class T>
requires requires { T::styleClass(); }
Ref<T> make(const ZTSStyleFields& fields = {}) {
  return boost::static_pointer_cast<T>(T::styleClass().makeStyle(fields));
}

}  // namespace zt
