#pragma once
/// @file
/// Internal to `ZTSAggregateStyle`.

#include <ztstyles/ZTSAggregateStyle.h>

#include <boost/container/small_vector.hpp>

namespace zt {

/// Ends the observation of references while an aggregate's own values change, and begins it again
/// afterwards, also when the change raises.
///
/// Whoever is told of the change may change the same aggregate again. The reference that is stored by
/// then is not observed yet, so that such a nested change must neither end nor begin it, and a change of
/// the usage count must not reach it: the outermost pause begins what it finds in the end.
class ZTSObservationPause {
 public:
  explicit ZTSObservationPause(ZTSAggregateStyle& style) noexcept : mStyle(&style), mOuter(tInnermost) {
    tInnermost = this;
  }
  /// Begins again what was ended, unless that was done or is not wanted. A second failure is passed over.
  ~ZTSObservationPause();
  ZTSObservationPause(const ZTSObservationPause&) = delete;
  ZTSObservationPause& operator=(const ZTSObservationPause&) = delete;

  void end(PropertyKey key);
  void endAll();
  void beginAgain();
  /// The references were removed: there is nothing to begin, unless a nested change has stored new ones.
  void leaveEnded() {
    if (mHidAChange) return beginAgain();
    mIsDone = true;
  }

  /// Whether a change under way has ended the observation of this reference.
  static bool covers(const ZTSAggregateStyle& style, PropertyKey key) noexcept {
    return tInnermost != nullptr && covering(tInnermost, style, key) != nullptr;
  }

 private:
  /// The pause that covers the reference: the given one or one around it; none if there is none.
  static ZTSObservationPause* covering(ZTSObservationPause* pause, const ZTSAggregateStyle& style,
                                       PropertyKey key) noexcept;

  static thread_local constinit ZTSObservationPause* tInnermost;

  Ref<ZTSAggregateStyle> mStyle;
  ZTSObservationPause* mOuter;
  boost::container::small_vector<PropertyKey, 4> mKeys;  // those that this pause ended
  std::size_t mBegun = 0;                                // of them, those that it has begun again
  bool mIsAll = false;
  bool mHidAChange = false;  // a nested change left a reference to this pause
  bool mIsDone = false;
};

}  // namespace zt
