// Usage and orphan counts of aggregates.
//
// A count that leaves or reaches 0 passes to the parent and then to each referenced style, and from there on.
// Written as calls, a chain of references would be as deep on the stack as it is long. The walk below does what
// the calls would do, in their order, with a list of the aggregates that have still to pass something on. A
// style of a class with counting operations of its own is called.

#include <platform/ZTNesting.h>
#include <support/ZTULog.h>
#include <ztstyles/references/ZTSObservationPause.h>

#include <limits>

namespace zt {

/// One call of a counting operation on an aggregate, with everything that follows from it.
class ZTSCountingWalk {
 public:
  enum class Count : bool { usage, orphan };
  enum class Step : bool { up, down };

  ZTSCountingWalk(Count count, Step step) noexcept : mIsUsage(count == Count::usage), mIsUp(step == Step::up) {}
  ZTSCountingWalk(const ZTSCountingWalk&) = delete;
  ZTSCountingWalk& operator=(const ZTSCountingWalk&) = delete;

  ~ZTSCountingWalk() {
    for (Passing& passing : mPassing) {
      if (passing.keys != nullptr) setIsAdjusting(*passing.style, false);
    }
  }

  void run(ZTSAggregateStyle& start) {
    if (!takeInAggregate(start)) return;
    deliver(Ref<ZTSStyle>(start.parent()));
    while (!mPassing.empty()) passOn();
  }

 private:
  /// An aggregate that has stepped between 0 and 1 and whose parent has been told.
  struct Passing {
    Ref<ZTSAggregateStyle> style;
    const std::vector<PropertyKey>* keys = nullptr;  // none until it passes the step on
    std::size_t next = 0;
  };

  /// Hands the step to the style, and to those above it as far as they step between 0 and 1, too.
  void deliver(Ref<ZTSStyle> style) {
    while (style) {
      bool hasCrossed = false;
      if (style->isPlain(ZTSStyleClass::plainCounting)) {
        hasCrossed = count(*style);
      } else if (style->isPlain(ZTSStyleClass::libraryCounting)) {
        hasCrossed = takeInAggregate(static_cast<ZTSAggregateStyle&>(*style));
      } else {
        return call(*style);
      }
      if (!hasCrossed) return;
      style.reset(style->parent());
    }
  }

  /// The aggregate's own count; whether it has stepped between 0 and 1. Then it waits to pass that on.
  bool takeInAggregate(ZTSAggregateStyle& style) {
    if (mIsUsage && style.isAdjustingUsageCount()) return false;
    if (mIsUsage && !mIsUp && style.usageCount() == 0) {
      ZTULog_Fn(kZTULogNotice, "src/ztstyles/ZTSAggregateStyle",
                "Attempt to decrement the usage count of style <%p> whose usage count is 0.", address(&style));
      return false;
    }
    if (!count(style)) return false;
    mPassing.push_back(Passing{Ref<ZTSAggregateStyle>(&style)});
    return true;
  }

  /// The next thing that the innermost aggregate has to do.
  void passOn() {
    Passing& passing = mPassing.back();
    ZTSAggregateStyle& style = *passing.style;
    if (passing.keys == nullptr) {
      // What was told meanwhile may have led back here: only the first use and the end of the last one pass on.
      if (countOf(style) != (mIsUp ? 1u : 0u)) return mPassing.pop_back();
      passing.keys = &style.referencedStyleProperties();
      setIsAdjusting(style, true);
    }
    if (passing.next == passing.keys->size()) {
      setIsAdjusting(style, false);
      return mPassing.pop_back();
    }
    const PropertyKey key = (*passing.keys)[passing.next++];
    if (ZTSObservationPause::covers(style, key)) return;
    Ref<ZTSStyle> referenced = style.p_referencedStyleForProperty(key);
    if (referenced && referenced != &style && style.stylesheet() != nullptr) deliver(std::move(referenced));
  }

  /// A plain style's own count; whether it has stepped between 0 and 1.
  bool count(ZTSStyle& style) {
    const std::uint32_t before = countOf(style);
    if (before == (mIsUp ? std::numeric_limits<std::uint32_t>::max() : 0u)) {
      callInherited(style);  // which knows what to say
      return false;
    }
    const std::uint32_t after = mIsUp ? before + 1 : before - 1;
    if (mIsUsage) {
      style.p_setUsageCount(after);
    } else {
      style.mOrphanCount = after;
    }
    return (mIsUp ? before : after) == 0;
  }

  [[nodiscard]] std::uint32_t countOf(const ZTSStyle& style) const noexcept {
    return mIsUsage ? style.usageCount() : style.orphanCount();
  }

  void setIsAdjusting(ZTSAggregateStyle& style, bool isAdjusting) const noexcept {
    if (mIsUsage) static_cast<ZTSStyle&>(style).setIsAdjustingUsageCount(isAdjusting);
  }

  void call(ZTSStyle& style) const {
    if (mIsUsage) {
      NestingGuard guard(mIsUp ? "incrementUsageCount" : "decrementUsageCount", Nesting::counting);
      return mIsUp ? style.incrementUsageCount() : style.decrementUsageCount();
    }
    NestingGuard guard(mIsUp ? "incrementOrphanCount" : "decrementOrphanCount", Nesting::counting);
    return mIsUp ? style.incrementOrphanCount() : style.decrementOrphanCount();
  }

  void callInherited(ZTSStyle& style) const {
    if (mIsUsage) return mIsUp ? style.ZTSStyle::incrementUsageCount() : style.ZTSStyle::decrementUsageCount();
    return mIsUp ? style.ZTSStyle::incrementOrphanCount() : style.ZTSStyle::decrementOrphanCount();
  }

  bool mIsUsage;
  bool mIsUp;
  boost::container::small_vector<Passing, 8> mPassing;
};

void ZTSAggregateStyle::incrementUsageCount() {
  ZTSCountingWalk(ZTSCountingWalk::Count::usage, ZTSCountingWalk::Step::up).run(*this);
}

void ZTSAggregateStyle::decrementUsageCount() {
  ZTSCountingWalk(ZTSCountingWalk::Count::usage, ZTSCountingWalk::Step::down).run(*this);
}

void ZTSAggregateStyle::incrementOrphanCount() {
  ZTSCountingWalk(ZTSCountingWalk::Count::orphan, ZTSCountingWalk::Step::up).run(*this);
}

void ZTSAggregateStyle::decrementOrphanCount() {
  ZTSCountingWalk(ZTSCountingWalk::Count::orphan, ZTSCountingWalk::Step::down).run(*this);
}

}  // namespace zt
