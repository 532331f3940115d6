// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/reading/StyleIndex.h>

#include <vector>

namespace zt {

/// Decides from which style each style inherits, so that every chain ends at a root: a parent that
/// cannot be is given up for the root of the family, with one finding for each style that loses it.
/// Linear: each link is followed once.
class ParentResolver {
 public:
  ParentResolver(const RawDocument& raw, const StyleIndex& index, std::vector<Finding>& findings);

  /// The named style to inherit from; none stands for the root of the family.
  [[nodiscard]] const RawStyle* parentOf(const RawStyle& style) const { return mParents[indexOf(style)]; }

  /// All named styles, each after its parent.
  [[nodiscard]] const std::vector<const RawStyle*>& namedParentsFirst() const noexcept { return mOrder; }

 private:
  [[nodiscard]] std::size_t indexOf(const RawStyle& style) const {
    return static_cast<std::size_t>(&style - mRaw.styles.data());
  }
  void choose(const RawStyle& style);
  void cutLoopsAndOrder();
  [[nodiscard]] std::string reasonAgainst(const RawStyle& style) const;
  void giveUp(const RawStyle& style, const std::string& code, const std::string& reason);

  const RawDocument& mRaw;
  const StyleIndex& mIndex;
  std::vector<Finding>& mFindings;
  std::vector<const RawStyle*> mParents;  // by the index of the style
  std::vector<const RawStyle*> mOrder;
};

}  // namespace zt
