// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSDerivingStyle.h>

#include <type_traits>

namespace zt {

/// The operations that shortcuts may pass by, each as the type of its address in a class. That type names the class
/// which declared the operation last, so that two classes have the same one where none between them redeclares it.
/// There is none where a class overloads or hides the operation.
namespace operations {
// One line each:
// clang-format off
template <class T> using ValueForProperty = decltype(&T::valueForProperty);
template <class T> using DefaultValue = decltype(&T::defaultValueForNilStyleProperty);
template <class T> using DefinesProperty = decltype(&T::definesProperty);
template <class T> using FlattenedMap = decltype(&T::propertyMap);
template <class T> using OwnMap = decltype(&T::overridePropertyMap);
template <class T> using MinimalMap = decltype(&T::overridePropertyMapWithPropertyMap);
template <class T> using Changed = decltype(&T::stylePropertiesChanged);
template <class T> using Inspectable = decltype(&T::inspectableProperties);
template <class T> using UndoManager = decltype(&T::undoManager);
template <class T> using Use = decltype(&T::incrementUsageCount);
template <class T> using Disuse = decltype(&T::decrementUsageCount);
template <class T> using Orphan = decltype(&T::incrementOrphanCount);
template <class T> using Adopt = decltype(&T::decrementOrphanCount);
template <class T> using WillChange = decltype(&T::entriesWillChange);
template <class T> using DidChange = decltype(&T::entriesDidChange);
template <class T> using References = decltype(&T::referencedStyles);
template <class T> using AllReferences = decltype(&T::recursivelyReferencedStyles);
template <class T> using OverridesOthers = decltype(&T::overridesAnyNonReferencedStylePropertyIgnoringStyles);
template <class T> using IsSource = decltype(&T::isSourceProperty);
template <class T> using IsDerived = decltype(&T::isDerivedProperty);
template <class T> using Resolve = decltype(&T::updateParent);
template <class T> using Equal = decltype(&T::isEqual);
template <class T> using EqualCompareNames = decltype(&T::isEqualCompareNames);
// clang-format on
}  // namespace operations

/// The class object of one style class, with what the compiler knows about it. `ZTSStyleOf` makes one for a style
/// class; a class whose notification name, key prefix or registry is decided otherwise derives from this template
/// and overrides what differs.
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

  template <class Library, template <class> class Operation>
  static constexpr bool leaves() {
    if constexpr (requires { typename Operation<T>; }) {
      return std::is_same_v<Operation<T>, Operation<Library>>;
    } else {
      return false;
    }
  }
  /// Whether the class has each operation as the library's class has it.
  template <class Library, template <class> class... Operations>
  static constexpr bool kLeaves = (leaves<Library, Operations>() && ...);

  static constexpr std::uint8_t groups() {
    using namespace operations;
    using Plain = ZTSStyle;
    using Aggregate = ZTSAggregateStyle;
    using Deriving = ZTSDerivingStyle;
    // An aggregate whose default-value hook is the library's answers what a plain style answers, and a deriving style
    // without source and derived properties shows its own map as it is stored.
    constexpr bool looksUp = kLeaves<Plain, ValueForProperty> || kLeaves<Aggregate, ValueForProperty, DefaultValue>;
    constexpr bool showsOwn = kLeaves<Plain, OwnMap> || kLeaves<Deriving, OwnMap, IsSource, IsDerived>;
    constexpr bool reads = looksUp && kLeaves<Plain, DefinesProperty, FlattenedMap>;
    constexpr bool counts = kLeaves<Plain, Use, Disuse, Orphan, Adopt>;
    // A class with the bit libraryReading is an aggregate unless it is plain.
    constexpr bool refersToNone = reads && kLeaves<Plain, ValueForProperty, References, AllReferences>;
    constexpr bool refers = kLeaves<Aggregate, ValueForProperty, References, AllReferences, OverridesOthers>;
    std::uint8_t all = 0;
    if (reads) all |= plainReading;
    if (showsOwn && kLeaves<Plain, Changed, Inspectable, UndoManager>) all |= plainTelling;
    if (counts && kLeaves<Plain, WillChange, DidChange>) all |= plainCounting;
    if (showsOwn) all |= plainMatching;
    if (kLeaves<Plain, Resolve>) all |= plainResolving;
    if (kLeaves<Plain, Equal, EqualCompareNames>) all |= plainComparing;
    if (counts || kLeaves<Aggregate, Use, Disuse, Orphan, Adopt>) all |= libraryCounting;
    if (refersToNone || refers) all |= libraryReading;
    return all;
  }
  static constexpr bool variesPlainly() {
    using namespace operations;
    return kLeaves<ZTSStyle, MinimalMap> || kLeaves<ZTSDerivingStyle, MinimalMap, IsSource, IsDerived>;
  }
};

}  // namespace zt
