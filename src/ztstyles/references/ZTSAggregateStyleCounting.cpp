// SPDX-License-Identifier: MIT

// Usage and orphan counts of aggregates.
//
// A count that leaves or reaches 0 passes to the parent and then to each observed reference, and from there on. Written
// as calls, a chain of references would be as deep on the stack as it is long. The walk below does what the calls would
// do, in their order, with a list of the aggregates that have still to pass something on. A style of a class with
// counting operations of its own is called.
//
// While an aggregate passes its usage on, requests that lead back to it are ignored, which makes circles finite. Who
// asked in vain notes that nothing was taken, and so takes nothing back later. A circle can be used from several sides,
// though: when the use ends that went round it first, the others' units are missing where they were ignored. So an
// aggregate that has ignored a request and whose own count has fallen to 0 looks for somebody who is in use and needs
// it, a child or an aggregate that refers to it, and takes that one's unit now. The giver counts as passing on
// meanwhile, so that the use does not come back to it: the counts are then those that its use alone would have made.

#include <platform/ZTFirstFailure.h>
#include <platform/ZTNesting.h>
#include <support/ZTULog.h>
#include <ztstyles/ZTSAggregateStyle.h>

#include <boost/container/small_vector.hpp>

#include <limits>

namespace zt {

/// One call of a counting operation on an aggregate, with everything that follows from it.
class ZTSAggregateStyle::CountingWalk {
 public:
  enum class Count : bool { usage, orphan };
  enum class Step : bool { up, down };
  static constexpr std::uint32_t kLargestUsage = std::numeric_limits<std::uint32_t>::max();

  CountingWalk(Count count, Step step) noexcept : mIsUsage(count == Count::usage), mIsUp(step == Step::up) {}
  CountingWalk(const CountingWalk&) = delete;
  CountingWalk& operator=(const CountingWalk&) = delete;

  void run(ZTSAggregateStyle& start) {
    if (stepOfAggregate(start) == Outcome::crossed) tellParents(start);
    while (!mPassing.empty()) {
      if (!mFailure.attempt([&] { passOn(); })) finishPassing();
    }
    mFailure.rethrow();
  }

 private:
  /// What a style did with a step: nothing, count it, or step between 0 and 1 with it.
  enum class Outcome : std::uint8_t { refused, taken, crossed };

  struct Reference {
    PropertyKey key;
    Ref<ZTSStyle> style;
  };
  /// An aggregate that has stepped between 0 and 1 and whose parent has been told.
  struct Passing {
    explicit Passing(ZTSAggregateStyle& which) noexcept : style(&which) {}

    Ref<ZTSAggregateStyle> style;
    bool hasStarted = false;
    std::size_t next = 0;
    boost::container::small_vector<Reference, 2> references;  // those to pass the step on to
  };

  // ---- One style

  /// Whether the style took the step. Those above it, and an aggregate's references, follow if it stepped between 0
  /// and 1.
  bool deliver(const Ref<ZTSStyle>& style) {
    const Outcome outcome = stepOf(*style);
    if (outcome == Outcome::crossed) tellParents(*style);
    return outcome != Outcome::refused;
  }

  /// Hands the step to the parents of a style that has stepped between 0 and 1, as far as they do so too.
  void tellParents(ZTSStyle& start) {
    if (start.parent() == nullptr) return;
    Ref<ZTSStyle> style(&start);
    while (Ref<ZTSStyle> parent{style->parent()}) {
      if (mIsUsage && !mIsUp && style->forgetRefusedUse()) return;  // the parent never had the unit
      const Outcome outcome = stepOf(*parent);
      if (mIsUsage && mIsUp && outcome == Outcome::refused) style->p_setMark(ZTSStyleMark::useWasRefused, true, {});
      if (outcome != Outcome::crossed) return;
      style = std::move(parent);
    }
  }

  Outcome stepOf(ZTSStyle& style) {
    if (style.isPlain(ZTSStyleClass::plainCounting)) return count(style);
    if (style.isPlain(ZTSStyleClass::libraryCounting)) return stepOfAggregate(static_cast<ZTSAggregateStyle&>(style));
    using Counting = ZTSAggregateStyle::CountingStep;
    NestingGuard guard(mIsUp ? "increment" : "decrement", Nesting::counting);
    const Counting step =
        mIsUsage ? (mIsUp ? Counting::useUp : Counting::useDown) : (mIsUp ? Counting::orphanUp : Counting::orphanDown);
    return ZTSAggregateStyle::takesStep(mFailure, style, step) ? Outcome::taken : Outcome::refused;
  }

  Outcome stepOfAggregate(ZTSAggregateStyle& style) {
    if (mIsUsage && style.isAdjustingUsageCount()) {
      if (mIsUp) style.mHasRefusedUse = true;
      return Outcome::refused;
    }
    if (mIsUsage && !mIsUp && style.usageCount() == 0) {
      ZTULog_Fn(kZTULogNotice, "src/ztstyles/ZTSAggregateStyle",
                "Attempt to decrement the usage count of style <%p> whose usage count is 0.", address(&style));
      return Outcome::refused;
    }
    if (countOf(style) == (mIsUp ? 0 : 1))
      mPassing.emplace_back(style);  // first: for want of memory nothing is counted
    return count(style);
  }

  /// The style's own count.
  Outcome count(ZTSStyle& style) {
    const std::uint32_t before = countOf(style);
    if (before == (!mIsUp ? 0u : mIsUsage ? kLargestUsage : ZTSStyle::kLargestOrphanCount)) {
      mFailure.attempt([&] { callInherited(style); });  // which knows what to say
      return Outcome::refused;
    }
    const std::uint32_t after = mIsUp ? before + 1 : before - 1;
    if (mIsUsage) {
      style.p_setUsageCount(after);
    } else {
      style.mOrphanCount = after;
    }
    return (mIsUp ? before : after) == 0 ? Outcome::crossed : Outcome::taken;
  }

  // ---- Passing on

  /// The next thing that the innermost aggregate has to do.
  void passOn() {
    Passing& passing = mPassing.back();
    ZTSAggregateStyle& style = *passing.style;
    if (!std::exchange(passing.hasStarted, true)) {
      // What was told meanwhile may have led back here: then there is nothing to pass on any more.
      if ((countOf(style) != 0) != mIsUp) return mPassing.pop_back();
      setIsAdjusting(style, true);
      if (!style.mReferences.empty()) collectReferences(passing);
      return;
    }
    if (passing.next == passing.references.size()) return finishPassing();
    passOnTo(style, passing.references[passing.next++]);
  }

  /// In the order of the class's list, then what is still observed under a property that it names no longer.
  void collectReferences(Passing& passing) {
    const ZTSAggregateStyle& style = *passing.style;
    if (style.mReferences.size() == 1) {  // as most have
      passing.references.push_back({style.mReferences.front().key, style.mReferences.front().style});
      return;
    }
    for (PropertyKey key : style.observedProperties()) {
      for (const ZTSAggregateStyle::Reference& each : style.mReferences) {
        if (each.key == key) passing.references.push_back({key, each.style});
      }
    }
  }

  /// Gives the reference its unit, or takes it back.
  void passOnTo(ZTSAggregateStyle& style, Reference reference) {
    const ZTSAggregateStyle::Reference* before = style.p_recordOf(reference.key, *reference.style);
    if (before == nullptr || unitOf(*before) == mIsUp) return;
    const bool hasTaken = deliver(reference.style);
    if (ZTSAggregateStyle::Reference* record = style.p_recordOf(reference.key, *reference.style)) {
      (mIsUsage ? record->hasUsageUnit : record->hasOrphanUnit) = hasTaken == mIsUp;
    }
  }

  [[nodiscard]] bool unitOf(const ZTSAggregateStyle::Reference& record) const noexcept {
    return mIsUsage ? record.hasUsageUnit : record.hasOrphanUnit;
  }

  void finishPassing() noexcept {
    const Ref<ZTSAggregateStyle> style = std::move(mPassing.back().style);
    mPassing.pop_back();
    setIsAdjusting(*style, false);
    if (mIsUsage && !mIsUp) mFailure.attempt([&] { rescue(*style); });
  }

  /// Finds an aggregate that has fallen to 0 a use that it ignored while it was passing on. See the top of this file.
  static void rescue(ZTSAggregateStyle& style) {
    if (!style.mHasRefusedUse || style.usageCount() != 0) return;
    for (const Ref<ZTSStyle>& child : style.children().retainedSnapshot()) {
      if (child->usageCount() == 0 || child->parent() != &style || !child->forgetRefusedUse()) continue;
      const Adjusting adjusting(*child);
      return child->passUseTo(style);
    }
    for (ZTSStyleObserver* observer : style.observers().allObjects()) {
      const Ref<ZTSAggregateStyle> user = retainIfAlive(dynamic_cast<ZTSAggregateStyle*>(observer));
      if (!user || user->usageCount() == 0) continue;
      for (ZTSAggregateStyle::Reference& record : user->mReferences) {
        if (record.style != &style || record.hasUsageUnit) continue;
        const Adjusting adjusting(*user);
        return user->p_beginObservingReferencedStyleForProperty(record.key);
      }
    }
    style.mHasRefusedUse = false;
  }

  /// While it lives, requests that lead back to the style are ignored.
  class Adjusting {
   public:
    explicit Adjusting(ZTSStyle& style) noexcept : mStyle(style), mWas(style.isAdjustingUsageCount()) {
      if (!style.isPlain(ZTSStyleClass::plainCounting)) style.setIsAdjustingUsageCount(true);
    }
    ~Adjusting() { mStyle.setIsAdjustingUsageCount(mWas); }
    Adjusting(const Adjusting&) = delete;
    Adjusting& operator=(const Adjusting&) = delete;

   private:
    ZTSStyle& mStyle;
    bool mWas;
  };

  // ---- Usage or orphans, up or down

  [[nodiscard]] std::uint32_t countOf(const ZTSStyle& style) const noexcept {
    return mIsUsage ? style.usageCount() : style.orphanCount();
  }

  void setIsAdjusting(ZTSAggregateStyle& style, bool isAdjusting) const noexcept {
    if (mIsUsage) static_cast<ZTSStyle&>(style).setIsAdjustingUsageCount(isAdjusting);
  }

  void callInherited(ZTSStyle& style) const {
    if (mIsUsage) return mIsUp ? style.ZTSStyle::incrementUsageCount() : style.ZTSStyle::decrementUsageCount();
    return mIsUp ? style.ZTSStyle::incrementOrphanCount() : style.ZTSStyle::decrementOrphanCount();
  }

  bool mIsUsage;
  bool mIsUp;
  ZTFirstFailure mFailure;
  boost::container::small_vector<Passing, 4> mPassing;
};

// A step that does not lead between 0 and 1 concerns nobody else, and needs no walk.

void ZTSAggregateStyle::incrementUsageCount() {
  const std::uint32_t count = usageCount();
  if (count != 0 && count != CountingWalk::kLargestUsage && !isAdjustingUsageCount()) return p_setUsageCount(count + 1);
  CountingWalk(CountingWalk::Count::usage, CountingWalk::Step::up).run(*this);
}

void ZTSAggregateStyle::decrementUsageCount() {
  const std::uint32_t count = usageCount();
  if (count > 1 && !isAdjustingUsageCount()) return p_setUsageCount(count - 1);
  CountingWalk(CountingWalk::Count::usage, CountingWalk::Step::down).run(*this);
}

void ZTSAggregateStyle::incrementOrphanCount() {
  CountingWalk(CountingWalk::Count::orphan, CountingWalk::Step::up).run(*this);
}

void ZTSAggregateStyle::decrementOrphanCount() {
  CountingWalk(CountingWalk::Count::orphan, CountingWalk::Step::down).run(*this);
}

}  // namespace zt
