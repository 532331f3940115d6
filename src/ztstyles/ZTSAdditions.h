// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// One change on many inspectable objects at once: free operations over ranges of styles or of anything else
/// that has the operations of `ZTSInspectable`. Elements are taken in order. Elements may be references,
/// pointers or the objects themselves; none among them is passed over. What an element's operation raises ends
/// the walk and leaves the elements before it changed.
///
/// Elements are not held by these operations: the range must keep them alive, and stay as it is, meanwhile.

#include <platform/NSNull.h>
#include <platform/PropertyMap.h>

#include <concepts>
#include <iterator>
#include <ranges>

namespace zt {

/// What an inspector writes through: a style, a selection, a proxy of several styles.
template <class T>
concept ZTSInspectable = requires(T& object, Ref<NSObject> value, PropertyKey key, NSObject* scope,
                                  const PropertyMap& map) {
  { object.canMutateProperty(key) } -> std::convertible_to<bool>;
  object.setValueForProperty(value, key);
  object.setValueForPropertyWithScope(value, key, scope);
  object.setValuesForProperties(map);
};

namespace additions {

/// The object behind an element: the element itself, or what it points to. None only for a pointer to none.
template <class Element>
auto* inspectableOf(Element&& element) {
  if constexpr (ZTSInspectable<std::remove_reference_t<Element>>) {
    return &element;
  } else {
    return element ? &*element : nullptr;
  }
}

inline NSObject* scopeOf(NSObject* scope) noexcept { return scope; }
template <class T>
NSObject* scopeOf(const Ref<T>& scope) noexcept {
  return scope.get();
}

template <class Element>
concept StandsForInspectable = requires(Element element) {
  requires ZTSInspectable<std::remove_reference_t<decltype(*inspectableOf(element))>>;
};

}  // namespace additions

/// A range whose elements are inspectable objects, or pointers or references to such.
template <class Range>
concept ZTSInspectableRange =
    std::ranges::input_range<Range> && additions::StandsForInspectable<std::ranges::range_reference_t<Range>>;

/// Sets the value, the same object for all, on every element that can mutate the property. No value unsets.
template <ZTSInspectableRange Range>
void makeObjectsSetValueForProperty(Range&& objects, const Ref<NSObject>& value, PropertyKey key) {
  for (auto&& element : objects) {
    auto* object = additions::inspectableOf(element);
    if (object != nullptr && object->canMutateProperty(key)) object->setValueForProperty(value, key);
  }
}

/// The same with one scope for each element by position, also for those that are passed over. Where the scopes
/// have come to their end, or hold the null sentinel, there is no scope. The scopes are references or pointers to
/// objects.
template <ZTSInspectableRange Range, std::ranges::input_range Scopes>
void makeObjectsSetValueForPropertyWithScopes(Range&& objects, const Ref<NSObject>& value, PropertyKey key,
                                              Scopes&& scopes) {
  auto next = std::ranges::begin(scopes);
  const auto end = std::ranges::end(scopes);
  for (auto&& element : objects) {
    Ref<NSObject> scope;
    if (next != end) {
      scope.reset(additions::scopeOf(*next));
      ++next;
    }
    auto* object = additions::inspectableOf(element);
    if (object == nullptr || !object->canMutateProperty(key)) continue;
    object->setValueForPropertyWithScope(value, key, isNull(scope.get()) ? nullptr : scope.get());
  }
}

/// Sets a copy of its own on every element that can mutate the property. No value unsets.
template <ZTSInspectableRange Range>
void makeObjectsSetCopiedValueForProperty(Range&& objects, const Ref<NSObject>& value, PropertyKey key) {
  for (auto&& element : objects) {
    auto* object = additions::inspectableOf(element);
    if (object != nullptr && object->canMutateProperty(key))
      object->setValueForProperty(value ? value->copy() : value, key);
  }
}

/// Sets the values on every element, without asking whether it can mutate them.
template <ZTSInspectableRange Range>
void setValuesForProperties(Range&& objects, const PropertyMap& values) {
  for (auto&& element : objects) {
    if (auto* object = additions::inspectableOf(element)) object->setValuesForProperties(values);
  }
}

}  // namespace zt
