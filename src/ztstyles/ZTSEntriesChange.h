// SPDX-License-Identifier: MIT
#pragma once

#include <platform/PropertyMap.h>

namespace zt {

/// A change of a style's own entries that is under way, as the hooks see it that every mutation passes
/// (`ZTSStyle::entriesWillChange`, `entriesDidChange`). Either one key, or several entries to store, or several keys to
/// remove. The first hook may replace what is there by what is to be stored or removed instead.
struct ZTSEntriesChange {
  /// The undoable operations refuse wrong values by an exception; the locked-style ones report them; the others take
  /// what they get and tell nobody.
  enum class Way : std::uint8_t { undoable, lockedStyle, unconditional };

  const char* operation;  ///< its keyword name, for reports
  Way way = Way::undoable;
  bool isRemoval = false;
  PropertyKey key = {};                ///< of a change of one entry
  Ref<NSObject> value = {};            ///< to store under `key`; none stands for the null sentinel
  Ref<const PropertyMap> values = {};  ///< several entries to store; counts before `key`
  Ref<const PropertySet> keys = {};    ///< several entries to remove; counts before `key`

  /// Calls with each key that changes, in the order of the map or set.
  template <class Visit>
  void forEachKey(Visit visit) const {
    if (values) {
      for (std::size_t index = 0; index < values->count(); ++index) visit(values->at(index).key);
    } else if (keys) {
      keys->forEach(visit);
    } else if (key) {
      visit(key);
    }
  }
};

}  // namespace zt
