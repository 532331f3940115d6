// SPDX-License-Identifier: MIT
#pragma once

#include <ztstyles/ZTSStyle.h>

#include <boost/unordered/unordered_flat_map.hpp>

#include <memory>

namespace zt {

/// What a search for an existing style compares.
struct ZTSVariationQuery {
  const PropertyMap* map = nullptr;  ///< none: only a style without overrides fits; never empty
  bool isLocked = false;
  bool includesIdentified = false;              ///< among children: whether identified ones fit too
  const ZTSStyleClass* styleClass = nullptr;    ///< among anonymous styles
  const StringRef* parentIdentifier = nullptr;  ///< among anonymous styles
};

/// The indexes by which a stylesheet finds an existing style among many: one over the children of each of its
/// styles that was searched, one over its anonymous styles. An index is built when a search meets more than
/// sixteen members. It only proposes: each proposal is tested by the full rule, in the order of the set, so that
/// the answer is the very style that a walk would give, and a stale entry costs time and nothing else.
///
/// Always holds of an index that is not stale: the slot of every member is entered under the hash of the member's
/// present state (stylesheet, lock, anonymous or not, own entries; for an anonymous style class, parent identifier,
/// lock, own entries), or among those that are always tested. The latter are members whose class overrides
/// what is compared, or with a value whose equality a style class overrides. Children without stylesheet
/// fit no search and need no entry. An index whose set has closed its holes is stale, and is built anew by the
/// next search.
///
/// A style as a value is hashed by its class, lock, identifiers and own entries. So each index knows which slots
/// hold which style, and enters them again when such a style has changed.
///
/// Owned by the stylesheet; kept right by the primitives of `ZTSStyle` through `matchingChanged`,
/// `p_addChild`, the stylesheet link and the destructor, and by the stylesheet where it stores an anonymous style.
class ZTSVariationIndexes {
 public:
  ZTSVariationIndexes();
  ~ZTSVariationIndexes();
  ZTSVariationIndexes(const ZTSVariationIndexes&) = delete;
  ZTSVariationIndexes& operator=(const ZTSVariationIndexes&) = delete;

  /// @name Searching
  /// @{

  /// The first child of `base`, in their order, that `stylesheet` holds and that fits; none if there is none.
  static Ref<ZTSStyle> firstChildOf(ZTSStyle& base, const ZTSStylesheet& stylesheet, const ZTSVariationQuery& query);
  /// The first anonymous style of the stylesheet that fits; none if there is none.
  static Ref<ZTSStyle> firstAnonymousStyleOf(ZTSStylesheet& stylesheet, const ZTSVariationQuery& query);
  /// Whether the style's own entries are the same map or an equal one; with none, whether it has none.
  static bool overridesMatch(const ZTSStyle& style, const PropertyMap* map);

  /// A map to compute in, so that a request that finds a style allocates nothing; a new one while that is in use.
  class Scratch {
   public:
    explicit Scratch(ZTSStylesheet& stylesheet);
    ~Scratch();
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    [[nodiscard]] PropertyMap& map() const noexcept { return *mMap; }

   private:
    Ref<ZTSStylesheet> mStylesheet;
    Ref<PropertyMap> mMap;
  };
  /// @}

  /// @name Following the styles
  /// @{

  static void childWasAdded(ZTSStyle& parent, ZTSStyle& child);
  /// The index over the base's children goes, since the base leaves its stylesheet.
  static void dropIndexOf(ZTSStyle& base) noexcept;
  /// The style was stored among the stylesheet's anonymous ones, or its link to the stylesheet goes while it may
  /// still be stored there.
  void anonymousStyleChanged(ZTSStyle& style);
  /// The set of anonymous styles was handed out, to be changed by others.
  void anonymousStylesAreOpen() noexcept;
  /// What searches compare has changed of a style that has a stylesheet.
  static void memberChanged(ZTSStyle& member);
  /// A style that indexed members hold as a value has changed, or dies.
  static void valueChanged(ZTSStyle& value);
  static void valueDies(ZTSStyle& value) noexcept;
  /// @}

  /// The slow check of the sentence above. For tests.
  [[nodiscard]] bool check(const ZTSStylesheet& stylesheet) const;

 private:
  class Index;
  struct Members;
  struct Values;

  static ZTSVariationIndexes& of(ZTSStylesheet& stylesheet);
  static Ref<ZTSStyle> first(const Members& members, ZTSStylesheet* owner, const ZTSStylesheet& stylesheet,
                             const ZTSVariationQuery& query);
  std::shared_ptr<Index> indexOver(const Members& members);

  boost::unordered_flat_map<const ZTSStyle*, std::shared_ptr<Index>> mChildIndexes;
  std::shared_ptr<Index> mAnonymousIndex;
  Ref<PropertyMap> mScratch;  // none while it is in use
};

}  // namespace zt
