// SPDX-License-Identifier: MIT
#include <platform/ZTHash.h>
#include <support/ZTUAssertionHandler.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSStylesheet.h>

#include <algorithm>
#include <limits>
#include <vector>

// Every style is checked against all identified ones: is it registered under one key, does another have its
// identifier or its name? Asked one by one that is quadratic. `RegistryIndex` proposes the entries that can matter,
// found by a number that they must share with the style; each proposal is then tested in full, in the order of the
// dictionary. The index is made when validation begins: what an application's own checks alter meanwhile in the
// registry is validated the next time.

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStylesheet";

/// Positions by a number, several for each, handed out in ascending order: those whose numbers agree in 32 bits, so
/// that what stands at a position is hardly ever looked at in vain.
class Buckets {
 public:
  explicit Buckets(const std::vector<std::size_t>& numbers) : mLinks(numbers.size()) {
    std::size_t size = 4;
    while (size < numbers.size() * 2) size *= 2;
    mFirst.assign(size, kNone);
    for (std::size_t position = numbers.size(); position-- > 0;) {
      const std::size_t mixed = mixBits(numbers[position]);
      std::uint32_t& first = mFirst[mixed & (size - 1)];
      mLinks[position] = {first, tagOf(mixed)};
      first = static_cast<std::uint32_t>(position);
    }
  }

  static constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();
  [[nodiscard]] std::uint32_t first(std::size_t number) const noexcept {
    const std::size_t mixed = mixBits(number);
    return withTag(tagOf(mixed), mFirst[mixed & (mFirst.size() - 1)]);
  }
  [[nodiscard]] std::uint32_t next(std::uint32_t position) const noexcept {
    return withTag(mLinks[position].tag, mLinks[position].next);
  }

 private:
  struct Link {
    std::uint32_t next = kNone;
    std::uint32_t tag = 0;
  };

  static std::uint32_t tagOf(std::size_t mixed) noexcept { return static_cast<std::uint32_t>(mixed >> 32); }
  [[nodiscard]] std::uint32_t withTag(std::uint32_t tag, std::uint32_t position) const noexcept {
    while (position != kNone && mLinks[position].tag != tag) position = mLinks[position].next;
    return position;
  }

  std::vector<std::uint32_t> mFirst;
  std::vector<Link> mLinks;
};

std::size_t namedClass(const ZTSStyle& style) {
  return combineHashes(reinterpret_cast<std::uintptr_t>(&style.classObject()), style.name().hash());
}

}  // namespace

/// The identified styles as validation looks them up.
class ZTSStylesheet::RegistryIndex {
 public:
  explicit RegistryIndex(const ZTSStylesheet& stylesheet) : RegistryIndex(snapshot(stylesheet)) {}

  using Entry = ZTSStyleDictionary::Entry;

  struct Holding {
    std::size_t keys = 0;  ///< under how many keys an equal style is registered
    StringRef firstKey;
  };

  /// Searches by style equality, as a dictionary's key search does.
  [[nodiscard]] Holding holdingOf(const ZTSStyle& style) const {
    Holding holding;
    const auto ask = [&](std::uint32_t position) {
      const Entry& entry = mEntries[position];
      if (entry.style->isEqual(&style) && holding.keys++ == 0) holding.firstKey = entry.key;
    };
    const std::size_t shape = shapeOf(style);
    for (std::uint32_t position = mByShape.first(shape); position != Buckets::kNone;
         position = mByShape.next(position)) {
      if (mShapes[position] == shape) ask(position);
    }
    for (const std::uint32_t position : mSpecial) ask(position);
    return holding;
  }

  /// Calls with each other registered style that may share the identifier, or class and name, in order.
  template <class Visit>
  void forEachNamesake(const ZTSStyle& style, Visit visit) const {
    std::uint32_t alike = mByIdentifier.first(style.identifier().hash());
    std::uint32_t named = style.isNamed() ? mByName.first(namedClass(style)) : Buckets::kNone;
    while (alike != Buckets::kNone || named != Buckets::kNone) {
      const std::uint32_t position = std::min(alike, named);
      if (position == alike) alike = mByIdentifier.next(alike);
      if (position == named) named = mByName.next(named);
      if (mEntries[position].style.get() != &style) visit(*mEntries[position].style);
    }
  }

 private:
  explicit RegistryIndex(std::vector<Entry> entries)
      : mEntries(std::move(entries)),
        mShapes(numbers([](const ZTSStyle& style) { return comparesPlainly(style) ? shapeOf(style) : kSpecialShape; })),
        mByShape(mShapes),
        mByIdentifier(numbers([](const ZTSStyle& style) { return style.identifier().hash(); })),
        mByName(numbers(namedClass)) {
    for (std::size_t position = 0; position < mEntries.size(); ++position) {
      if (!comparesPlainly(*mEntries[position].style)) mSpecial.push_back(static_cast<std::uint32_t>(position));
    }
  }

  static std::vector<Entry> snapshot(const ZTSStylesheet& stylesheet) {
    std::vector<Entry> entries;
    entries.reserve(stylesheet.mIdentifiedStyles.count());
    for (const Entry& entry : stylesheet.mIdentifiedStyles) entries.push_back(entry);
    return entries;
  }

  template <class NumberOf>
  [[nodiscard]] std::vector<std::size_t> numbers(NumberOf numberOf) const {
    std::vector<std::size_t> all;
    all.reserve(mEntries.size());
    for (const Entry& entry : mEntries) all.push_back(numberOf(*entry.style));
    return all;
  }

  static constexpr std::size_t kSpecialShape = 0;  // shapeOf never answers it

  std::vector<Entry> mEntries;
  std::vector<std::size_t> mShapes;
  Buckets mByShape;
  Buckets mByIdentifier;
  Buckets mByName;
  std::vector<std::uint32_t> mSpecial;  // the entries whose class compares in a way of its own: always tested
};

void ZTSStylesheet::validate() const {
  const Ref<const ZTSStylesheet> self = retainIfAlive(this);
  const ZTSStyleSet all = styles();
  const RegistryIndex registry(*this);
  ZTSStyleSet referenced;

  for (ZTSStyle* style : all) {
    validateRegistrationOf(*style, registry);
    style->validate();
    if (const std::optional<ZTSStyleSet> references = style->referencedStyles()) referenced.unionSet(*references);
  }

  for (ZTSStyle* style : referenced) {
    if (all.containsObject(style)) continue;
    if (isDescendantOfStylesheet(style->stylesheet())) {
      ZTULog_About(style, kZTULogNotice, kSourceFile,
                   "%@ -- Referenced style is contained in ancestor stylesheet of referencing style!",
                   style->shortDescription());
    } else if (!isReferencedByDoomedStyleAlone(*style)) {
      ZT_REPORT_ABOUT(style, "validate", this, kSourceFile,
                      "%@ -- Referenced style not contained in stylesheet of referencing style!",
                      style->shortDescription());
    }
  }

  appSpecificValidate();
}

/// Reports what is wrong about where the style is held, and about those that are held beside it.
void ZTSStylesheet::validateRegistrationOf(const ZTSStyle& style, const RegistryIndex& registry) const {
  const auto broken = [&]<class... More>(std::type_identity_t<FormatString<std::string, More...>> text,
                                         const More&... more) {
    ZT_REPORT_ABOUT(&style, "validate", this, kSourceFile, text, style.shortDescription(), more...);
  };
  if (style.stylesheet() != this) broken("%@ -- Style with incorrect stylesheet!");
  const RegistryIndex::Holding holding = registry.holdingOf(style);
  if (!style.isIdentified()) {
    if (!mAnonymousStyles.containsObject(&style)) broken("%@ -- Anonymous style missing from mAnonymousStyles!");
    if (holding.keys != 0) broken("%@ -- Anonymous style in mIdentifiedStyles!");
    return;
  }
  if (holding.keys == 0) {
    broken("%@ -- Identified style missing from mIdentifiedStyles.");
  } else if (holding.keys > 1) {
    broken("%@ -- Style in mIdentifiedStyles more than once!");
  } else if (!equalTexts(style.identifier(), holding.firstKey)) {
    broken("%@ -- Style identifier differs from key \"%@\" in mIdentifiedStyles!", holding.firstKey);
  }
  if (mAnonymousStyles.containsObject(&style)) broken("%@ -- Identified style in mAnonymousStyles!");
  registry.forEachNamesake(style, [&](const ZTSStyle& other) {
    if (equalTexts(other.identifier(), style.identifier())) {
      broken("%@ -- Style has same identifer as %@!", other.shortDescription());
    }
    if (&other.classObject() == &style.classObject() && equalTexts(other.name(), style.name())) {
      broken("%@ -- Style has the same name as %@!", other.shortDescription());
    }
  });
}

/// Whether the only observer of the style is an unused style that the host is about to let go.
bool ZTSStylesheet::isReferencedByDoomedStyleAlone(const ZTSStyle& referenced) const {
  if (referenced.observers().count() != 1 || mHost == nullptr) return false;
  const Ref<ZTSStyle> referencing = retainIfAlive(dynamic_cast<ZTSStyle*>(referenced.observers().anyObject()));
  return referencing && referencing->usageCount() == 0 && mHost->willRemoveUnusedStyle(*referencing);
}

void ZTSStylesheet::appSpecificValidate() const {}

}  // namespace zt
