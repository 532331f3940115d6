// SPDX-License-Identifier: MIT

// Copy, structural equality, order and descriptions.
//
// Equality follows parents and values, which may lead back to where it came from: a pair whose comparison is under
// way counts as equal. Styles that share layers of referenced styles would be compared once per path that leads to
// them, so pairs that were found equal are remembered until the outermost comparison ends. Such a finding may rest
// on a pair that was only taken to be equal: when that one turns out different, or equal but for its names, what was
// found since it was begun is forgotten again. Whoever compares many styles and changes none keeps findings from one
// outermost comparison to the next, with ZTSStyleFindings. Parents of plain classes are compared in a loop, everything
// else by calls.

#include <platform/ZTHash.h>
#include <platform/ZTNesting.h>
#include <support/ZTUAssertionHandler.h>
#include <ztstyles/ZTSStylesheet.h>
#include <ztstyles/style/ZTSStyleFindings.h>

#include <boost/unordered/unordered_flat_set.hpp>

#include <algorithm>
#include <mutex>
#include <vector>

namespace zt {

namespace {

constexpr const char* kSourceFile = "src/ztstyles/ZTSStyle";

/// The style asked and the one it is compared with.
struct Pair {
  const ZTSStyle* left;
  const ZTSStyle* right;
  friend bool operator==(const Pair&, const Pair&) = default;
};

struct PairHash {
  std::size_t operator()(const Pair& pair) const noexcept {
    return combineHashes(mixBits(reinterpret_cast<std::uintptr_t>(pair.left)),
                         reinterpret_cast<std::uintptr_t>(pair.right));
  }
};

/// Pairs as a stack that can be searched: by walking it while it is small.
class PairStack {
 public:
  static constexpr std::size_t kWalked = 16;

  [[nodiscard]] std::size_t size() const noexcept { return mPairs.size(); }
  [[nodiscard]] const Pair& top() const noexcept { return mPairs.back(); }
  [[nodiscard]] bool contains(const Pair& pair) const {
    if (mPairs.size() > kWalked) return mIndex.contains(pair);
    return std::find(mPairs.begin(), mPairs.end(), pair) != mPairs.end();
  }
  void push(const Pair& pair) {
    mPairs.push_back(pair);
    try {
      if (mPairs.size() == kWalked + 1) mIndex.insert(mPairs.begin(), mPairs.end());
      if (mPairs.size() > kWalked + 1) mIndex.insert(pair);
    } catch (...) {
      cutBack(mPairs.size() - 1);
      throw;
    }
  }
  void cutBack(std::size_t size) noexcept {
    while (mPairs.size() > size) {
      if (mPairs.size() > kWalked + 1) mIndex.erase(mPairs.back());
      if (mPairs.size() == kWalked + 1) mIndex.clear();
      mPairs.pop_back();
    }
    // A comparison of huge chains does not keep their memory.
    if (size == 0 && mPairs.capacity() > kKept) {
      mPairs = {};
      mIndex = {};
    }
  }

 private:
  static constexpr std::size_t kKept = 4096;
  std::vector<Pair> mPairs;
  boost::unordered_flat_set<Pair, PairHash> mIndex;  // the same pairs, while there are more than kWalked
};

/// The comparisons of the process. Every part is read and changed under the lock alone.
struct Comparisons {
  std::recursive_mutex lock;
  PairStack underWay;
  PairStack foundEqual;     // within the outermost comparison under way, or while findings are to be kept
  std::size_t keepers = 0;  // the ZTSStyleFindings alive

  static Comparisons& shared() {
    static auto* all = new Comparisons;  // outlives every static
    return *all;
  }
};

}  // namespace

/// A run of comparisons from one pair up through the parents. Puts the process-wide state back however it ends.
class ZTSStyle::Comparison {
 public:
  Comparison()
      : mAll(Comparisons::shared()),
        mHold(mAll.lock),
        mStart(mAll.underWay.size()),
        mFoundBefore(mAll.foundEqual.size()) {}
  ~Comparison() {
    if (mAll.underWay.size() > mStart) forgetFindings();  // thrown: what rested on these pairs is not known
    mAll.underWay.cutBack(mStart);
    const bool isOutermost = mStart == 0;
    if (isOutermost && !isWorthKeeping()) forgetFindings();
  }
  Comparison(const Comparison&) = delete;
  Comparison& operator=(const Comparison&) = delete;

  /// What can be told without following anything.
  static bool agreeInFields(const ZTSStyle& left, const ZTSStyle& right, CompareNames compareNames) {
    return &left.classObject() == &right.classObject() && left.isLocked() == right.isLocked() &&
           left.mIdentifier == right.mIdentifier && left.mParentIdentifier == right.mParentIdentifier &&
           (compareNames == CompareNames::no || left.mName == right.mName);
  }

  /// The answer for two styles that agree in their fields.
  bool run(const ZTSStyle& left, const ZTSStyle& right, CompareNames compareNames) {
    bool isEqual = compareParents({&left, &right});
    while (mAll.underWay.size() > mStart) {
      const Pair pair = mAll.underWay.top();
      isEqual = isEqual && mapsAreEqual(*pair.left, *pair.right);
      mAll.underWay.cutBack(mAll.underWay.size() - 1);
      const bool isFirst = mAll.underWay.size() == mStart;
      if (isEqual && (!isFirst || compareNames == CompareNames::yes)) {
        keepFinding(pair);
      } else {
        forgetFindings();  // while it was under way, the pair counted as equal in everything
      }
    }
    return isEqual;
  }

 private:
  void forgetFindings() noexcept { mAll.foundEqual.cutBack(mFoundBefore); }
  void keepFinding(const Pair& pair) {
    const bool isOutermost = mAll.underWay.size() == 0;
    if (!isOutermost) mAll.foundEqual.push(pair);  // that one is not met again
  }
  /// Few findings are found again sooner than they are looked up.
  [[nodiscard]] bool isWorthKeeping() const noexcept {
    return mAll.keepers != 0 && mAll.foundEqual.size() > mFoundBefore + PairStack::kWalked;
  }

  /// Goes up while the parents have to be compared, and puts each pair on the way under way.
  bool compareParents(Pair pair) {
    for (;;) {
      if (mAll.underWay.contains(pair) || mAll.foundEqual.contains(pair)) return true;
      mAll.underWay.push(pair);
      const ZTSStyle* asked = pair.right->mParent.get();
      const ZTSStyle* other = pair.left->mParent.get();
      if (asked == other) return true;
      if (asked == nullptr) return false;
      if (!asked->isPlain(ZTSStyleClass::plainComparing)) return asked->isEqual(other);
      if (other == nullptr || !agreeInFields(*asked, *other, CompareNames::yes)) return false;
      pair = {asked, other};
    }
  }

  static bool mapsAreEqual(const ZTSStyle& left, const ZTSStyle& right) {
    if (!left.overridesAnyProperty() || !right.overridesAnyProperty()) {
      return left.overridesAnyProperty() == right.overridesAnyProperty();
    }
    // Held: a value's own comparison may change either style.
    const Ref<const PropertyMap> mine = left.mLocalPropertyMap;
    const Ref<const PropertyMap> its = right.mLocalPropertyMap;
    return mine->isEqual(*its);
  }

  Comparisons& mAll;
  std::lock_guard<std::recursive_mutex> mHold;
  const std::size_t mStart;
  const std::size_t mFoundBefore;
};

ZTSStyleFindings::ZTSStyleFindings() : mHold(Comparisons::shared().lock) { ++Comparisons::shared().keepers; }

ZTSStyleFindings::~ZTSStyleFindings() {
  Comparisons& all = Comparisons::shared();
  if (--all.keepers == 0 && all.underWay.size() == 0) all.foundEqual.cutBack(0);
}

Ref<NSObject> ZTSStyle::copy() const {
  const Ref<ZTSStyle> copy = classObject().makeStyle();
  if (!copy) return {};
  copy->p_setName(mName);
  copy->p_setIdentifier(mIdentifier);
  copy->p_setParentIdentifier(mParentIdentifier);
  copy->p_setPropertyMap(overridesAnyProperty() ? mLocalPropertyMap->copy() : Ref<PropertyMap>());
  copy->p_setIsLocked(isLocked());
  return copy;
}

Ref<ZTSStyle> ZTSStyle::copyWithoutSettingStylesheet() const { return Ref<ZTSStyle>(asStyle(copy().get())); }

bool ZTSStyle::isEqual(const NSObject* other) const { return isEqualCompareNames(asStyle(other), CompareNames::yes); }

bool ZTSStyle::isEqualCompareNames(const ZTSStyle* other, CompareNames compareNames) const {
  if (other == this) return true;
  if (other == nullptr || !Comparison::agreeInFields(*this, *other, compareNames)) return false;
  const NestingGuard guard("isEqual:compareNames:", Nesting::equality);
  Comparison comparison;
  return comparison.run(*this, *other, compareNames);
}

std::size_t ZTSStyle::comparisonsInProgress() {
  Comparisons& all = Comparisons::shared();
  const std::lock_guard hold(all.lock);
  return all.underWay.size();
}

std::size_t ZTSStyle::hash() const { return mIdentifier.hash(); }

std::size_t ZTSStyle::stableHash() const { return mixBits(classObject().name().hash()); }

int ZTSStyle::compareByName(const ZTSStyle* other) const {
  if (other == nullptr) {
    ZT_REPORT("compareByName:", this, kSourceFile, "invalid nil value for variable/parameter %s", "style");
  }
  // No name sorts as an empty one does: before every other.
  const int order = mName.view().compare(other != nullptr ? other->mName.view() : std::string_view());
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

std::string ZTSStyle::description() const {
  return format(
      "\n<%@ %p name=%@ identifier=%@ parentIdentifier=%@ parent=%p stylesheet=%p usageCount=%d debugUsageCount=%d "
      "isLocked=%@>",
      classObject().name(), address(this), mName, mIdentifier, mParentIdentifier, mParent, address(mStylesheet),
      mUsageCount, 0, isLocked() ? "YES" : "NO");
}

std::string ZTSStyle::shortDescription() const {
  const StringRef& name = classObject().name();
  const void* self = address(this);
  if (isNamed() && isIdentified())
    return format("%@ %#x identified as \"%@\" and named \"%@\"", name, self, mIdentifier, mName);
  if (isNamed()) return format("%@ %#x with named \"%@\"", name, self, mName);
  if (isIdentified()) return format("%@ %#x identified as \"%@\"", name, self, mIdentifier);
  if (!mParent) return format("Anonymous unnamed parentless %@ %#x", name, self);
  const void* parent = address(mParent.get());
  if (mParent->isNamed() && mParent->isIdentified()) {
    return format("Anonymous unnamed %@ %#x with parent %#x identified as \"%@\" and named \"%@\"", name, self, parent,
                  mParent->mIdentifier, mParent->mName);
  }
  if (mParent->isNamed()) {
    return format("Anonymous unnamed %@ %#x with parent %#x named \"%@\"", name, self, parent, mParent->mName);
  }
  if (mParent->isIdentified()) {
    return format("Anonymous unnamed %@ %#x with parent %#x identified as \"%@\"", name, self, parent,
                  mParent->mIdentifier);
  }
  return format("Anonymous unnamed %@ %#x with anonymouse unnamed parent %#x", name, self, parent);
}

}  // namespace zt
