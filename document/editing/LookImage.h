// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What the text of a document looks like, kept to be compared.

#include <document/ZTDocument.h>

#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace zt {

/// Whether a property says how text looks, and not how styles are sorted, shown or edited (class, next style, hidden,
/// ...).
bool isLook(PropertyKey key);

/// Effective values of a style. What it refers to is kept as a look itself.
struct StyleLook {
  Ref<PropertyMap> values;
  std::vector<std::pair<PropertyKey, const StyleLook*>> references;
};

/// The looks of all styles that the text uses, and of the roots, as they are when this is made. Independent of the
/// document from then on. Linear in the effective values of the styles that are used.
class LookImage {
 public:
  explicit LookImage(const ZTDocument& document);
  LookImage(const LookImage&) = delete;
  LookImage& operator=(const LookImage&) = delete;

  /// A use or a root that looks otherwise.
  struct Difference {
    std::string style;  ///< the label of the style that was used before
    PropertyKey key;
    std::string before;
    std::string after;
  };
  /// Whether a difference of what uses this style is meant; the style may have left the document.
  using IsMeant = std::function<bool(const OdfStyle&, PropertyKey)>;

  /// Compares with a document whose text is the same. `styleOf` tells the style of a use there. Answers the
  /// differences that are not meant, a use whose style is missing there as one without a key, at most `most` of them.
  [[nodiscard]] std::vector<Difference> differencesTo(const ZTDocument& after,
                                                      const std::function<const OdfStyle*(std::size_t use)>& styleOf,
                                                      const IsMeant& isMeant, std::size_t most = 20) const;

 private:
  struct Use {
    std::size_t part;
    std::string family;
    std::size_t count;
    Ref<OdfStyle> style;
    std::string label;
    const StyleLook* look;
  };

  const StyleLook* lookOf(const ZTDocument& document, const OdfStyle& style);
  using Pair = std::pair<const StyleLook*, const StyleLook*>;
  struct Comparing;  // what one comparison has found out
  static std::vector<Difference> compare(const StyleLook& before, const StyleLook& after, Comparing& comparing);

  std::unordered_map<const ZTSStyle*, std::unique_ptr<StyleLook>> mLooks;
  std::vector<Use> mUses;   // one for each use, with a look where it has a style
  std::vector<Use> mRoots;  // by family
};

}  // namespace zt
