// SPDX-License-Identifier: MIT
#pragma once

#include <opendocument/reading/RawDocument.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace zt {

/// Finds the styles of a raw document by name. Named styles by family and name, the last of equal
/// ones; automatic ones by part, family and name, the first of equal ones; default styles by family.
class StyleIndex {
 public:
  explicit StyleIndex(const RawDocument& document);

  [[nodiscard]] const RawStyle* named(std::string_view family, std::string_view name) const;
  [[nodiscard]] const RawStyle* automatic(std::size_t part, std::string_view family, std::string_view name) const;
  [[nodiscard]] const RawStyle* defaultStyle(std::string_view family) const;

  /// What a reference from `part` finds: an automatic style of that part, else a named style.
  [[nodiscard]] const RawStyle* referred(std::size_t part, std::string_view family, std::string_view name) const;

  /// The named style that is the parent; none if the style names none or none exists.
  [[nodiscard]] const RawStyle* parentOf(const RawStyle& style) const;

  /// The styles that count, repeated names once, in the order of the file.
  [[nodiscard]] const std::vector<const RawStyle*>& allNamed() const noexcept { return mNamedInOrder; }
  [[nodiscard]] const std::vector<const RawStyle*>& allAutomatic() const noexcept { return mAutomaticInOrder; }
  [[nodiscard]] const std::vector<const RawStyle*>& allDefaults() const noexcept { return mDefaultsInOrder; }

  /// Names that occur more than once, with the number of times; "family:name".
  [[nodiscard]] const std::vector<std::pair<std::string, std::size_t>>& repeated() const noexcept { return mRepeated; }

 private:
  std::unordered_map<std::string, const RawStyle*> mNamed;
  std::unordered_map<std::string, const RawStyle*> mAutomatic;
  std::unordered_map<std::string, const RawStyle*> mDefaults;
  std::vector<const RawStyle*> mNamedInOrder;
  std::vector<const RawStyle*> mAutomaticInOrder;
  std::vector<const RawStyle*> mDefaultsInOrder;
  std::vector<std::pair<std::string, std::size_t>> mRepeated;
};

}  // namespace zt
