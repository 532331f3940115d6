// SPDX-License-Identifier: MIT
#pragma once

#include <platform/NSDictionary.h>
#include <platform/NSObject.h>

#include <atomic>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace zt {

/// The name of a notification: one interned, immortal record per text, compared by address, a
/// pointer to pass around. The record also counts its listeners, so that asking whether anybody
/// listens costs a few instructions.
class ZT_EXPORT NSNotificationName {
 public:
  /// The name with this text; made on first use. Safe across threads.
  explicit NSNotificationName(std::string_view text);

  [[nodiscard]] const std::string& text() const noexcept { return mRecord->text; }

  friend bool operator==(NSNotificationName left, NSNotificationName right) noexcept = default;
  friend std::string describe(const NSNotificationName& name) { return name.text(); }

 private:
  friend class NSNotificationCenter;
  struct Record {
    explicit Record(std::string_view name) : text(name) {}
    const std::string text;
    std::atomic<std::uint32_t> listeners = 0;   // with and without an object filter
    std::atomic<std::uint32_t> unfiltered = 0;  // without
  };
  Record* mRecord;
};

/// What a listener is told. Lives on the stack of the one who posts; the object and the user
/// information are borrowed from him for the duration of the call.
struct NSNotification {
  NSNotificationName name;
  NSObject* object = nullptr;              ///< who it is about, or none
  const NSDictionary* userInfo = nullptr;  ///< further facts, or none

  /// An entry of the user information; none if there is no such entry or no user information.
  [[nodiscard]] NSObject* userInfoForKey(std::string_view key) const noexcept {
    return userInfo != nullptr ? userInfo->objectForKey(key) : nullptr;
  }
};

/// The one notification centre of the process.
///
/// Posting calls the listeners on the thread that posts, in the order in which they were added,
/// before `post` returns, and without any lock held: a listener may add, remove, post and release
/// whatever it likes. It is told from a snapshot: one that is added during a post hears the next
/// one; one that is removed before its turn is not called. Adding and removing are safe from any
/// thread; removing does not wait for a call that is under way on another thread.
///
/// A listener that throws does not keep the others from being told; the first exception then reaches the one who posts.
class ZT_EXPORT NSNotificationCenter {
 public:
  using Callback = std::function<void(const NSNotification&)>;

  static NSNotificationCenter& defaultCenter();

  NSNotificationCenter(const NSNotificationCenter&) = delete;
  NSNotificationCenter& operator=(const NSNotificationCenter&) = delete;

  /// @name Listening
  /// `owner` is an address that stands for whoever listens; nothing is ever read from it. It must
  /// remove itself before what the callback needs is gone (`NotificationListener` does).
  /// @{

  /// Calls back for each post of the name about `object`, or about anything if `object` is none.
  /// The object is not kept alive; when it is destroyed, its listeners are removed.
  /// Added twice, it is called twice. Raises `NSInvalidArgumentException` for an empty callback.
  void addObserver(const void* owner, Callback callback, NSNotificationName name, const NSObject* object);

  /// Removes everything that the owner has added; harmless if that is nothing.
  void removeObserver(const void* owner);

  /// Removes what the owner has added for the name, whatever the object.
  void removeObserverWithName(const void* owner, NSNotificationName name);

  /// Removes what the owner has added for the name and exactly this object (none: without a filter).
  void removeObserverWithNameAndObject(const void* owner, NSNotificationName name, const NSObject* object);
  /// @}

  /// @name Posting
  /// @{

  /// Whether a post could reach anybody. False is certain; true may turn out to reach nobody if the
  /// object's listeners wait for another name. Takes no lock.
  [[nodiscard]] static bool anyoneListens(NSNotificationName name, const NSObject* object) noexcept {
    const NSNotificationName::Record& record = *name.mRecord;
    if (record.listeners.load(std::memory_order_relaxed) == 0) return false;
    return record.unfiltered.load(std::memory_order_relaxed) != 0 || (object != nullptr && object->hasListeners());
  }

  /// Tells the listeners of the name. Keeps `object` alive meanwhile, unless its destruction has
  /// begun already. Allocates nothing for up to 16 listeners.
  void post(NSNotificationName name, NSObject* object, Ref<NSDictionary> userInfo = {}) {
    if (anyoneListens(name, object)) tell(name, object, std::move(userInfo));
  }

  /// The same with user information that is only made if somebody may hear it:
  /// `makeUserInfo()` answers a `Ref<NSDictionary>`.
  template <class MakeUserInfo>
  void postIfHeard(NSNotificationName name, NSObject* object, MakeUserInfo&& makeUserInfo) {
    if (anyoneListens(name, object)) tell(name, object, makeUserInfo());
  }
  /// @}

 private:
  friend class NSObject;
  friend class NSNotificationName;
  struct Registration;
  struct Registry;
  struct NameRecord;

  NSNotificationCenter();

  void tell(NSNotificationName name, NSObject* object, Ref<NSDictionary> userInfo);

  /// Called by an object's destructor if it has listeners: a new object at the same address must
  /// not inherit them.
  static void objectDies(const NSObject& object) noexcept;

  template <class Matches>
  void removeMatching(const void* owner, const Matches& matches);

  Registry* mRegistry;
};

/// Listens as long as it lives.
class ZT_EXPORT NotificationListener {
 public:
  NotificationListener(NSNotificationName name, const NSObject* object, NSNotificationCenter::Callback callback) {
    NSNotificationCenter::defaultCenter().addObserver(this, std::move(callback), name, object);
  }
  ~NotificationListener() { NSNotificationCenter::defaultCenter().removeObserver(this); }

  NotificationListener(const NotificationListener&) = delete;
  NotificationListener& operator=(const NotificationListener&) = delete;
};

}  // namespace zt
