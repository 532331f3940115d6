// SPDX-License-Identifier: MIT
#pragma once

#include <concepts>
#include <cstdint>

namespace zt {

class NSDocument;
class NSObject;

/// What a part of a document is told when it joins and leaves it. The context is what the caller of the operation
/// handed over, or none.
///
/// A concept, no base: a table of virtual functions of its own would cost each of a million styles eight bytes, and
/// nobody holds parts of a document without knowing what they are.
template <class T>
concept ZTUDocumentObject = requires(T& object, NSDocument* document, NSObject* context) {
  object.willBeAddedToDocument(document, context);
  object.wasAddedToDocument(document, context);
  object.willBeRemovedFromDocument(document);
  object.wasRemovedFromDocument(document);
};

/// A part of a document whose users say so, and which may lose the owner of such a use (an orphan).
template <class T>
concept ZTUCountedDocumentObject = ZTUDocumentObject<T> && requires(T& object, const T& constant) {
  object.incrementUsageCount();
  object.decrementUsageCount();
  object.incrementOrphanCount();
  object.decrementOrphanCount();
  { constant.usageCount() } -> std::convertible_to<std::uint32_t>;
  { constant.orphanCount() } -> std::convertible_to<std::uint32_t>;
};

}  // namespace zt
