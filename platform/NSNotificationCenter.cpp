// SPDX-License-Identifier: MIT

// Each registration stands in two lists: that of its target (the object it is filtered by, or else
// its name) and that of its owner. Both are linked through the registration itself, so that leaving
// them is a matter of constant time. Registrations of a target stand in the order in which they were
// added and carry a running number: merging the two lists that hear a post gives one order.
//
// Callbacks are application code: none runs, and none is destroyed, while the lock is held.

#include <platform/NSException.h>
#include <platform/NSNotificationCenter.h>
#include <platform/ZTFirstFailure.h>
#include <platform/ZTNesting.h>

#include <boost/container/small_vector.hpp>
#include <boost/intrusive/list.hpp>
#include <boost/unordered/unordered_flat_map.hpp>

#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace zt {

namespace {

namespace intrusive = boost::intrusive;

struct ByTarget;
struct ByOwner;
using TargetHook = intrusive::list_base_hook<intrusive::tag<ByTarget>>;
using OwnerHook = intrusive::list_base_hook<intrusive::tag<ByOwner>>;

}  // namespace

struct NSNotificationCenter::Registration final : Counted<Registration>, TargetHook, OwnerHook {
  Registration(const void* by, Callback call, NSNotificationName::Record* of, const NSObject* about,
               std::uint64_t running)
      : owner(by), callback(std::move(call)), name(of), object(about), number(running) {}

  const void* const owner;
  const Callback callback;
  NSNotificationName::Record* const name;
  const NSObject* const object;
  const std::uint64_t number;
  std::atomic<bool> isActive = true;  // written under the lock, read without
};

namespace {

// Locks unless the process has one thread, which remains so while the guard lives: what it guards
// runs no code of others.
class Guard {
 public:
  explicit Guard(std::mutex& lock) : mLock(isSingleThreaded() ? nullptr : &lock) {
    if (mLock != nullptr) mLock->lock();
  }
  ~Guard() {
    if (mLock != nullptr) mLock->unlock();
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  std::mutex* const mLock;
};

// For the lists, which know registrations by their hooks alone.
template <class Registration>
using TargetListOf =
    intrusive::list<Registration, intrusive::base_hook<TargetHook>, intrusive::constant_time_size<false>>;
template <class Registration>
using OwnerListOf =
    intrusive::list<Registration, intrusive::base_hook<OwnerHook>, intrusive::constant_time_size<false>>;

}  // namespace

struct NSNotificationCenter::NameRecord final : NSNotificationName::Record {
  using Record::Record;
  TargetListOf<Registration> registrations;  // those without an object filter
};

struct NSNotificationCenter::Registry {
  using TargetList = TargetListOf<Registration>;
  using OwnerList = OwnerListOf<Registration>;
  /// Registrations that have left all other lists, released after the lock. The list is made of the registrations
  /// themselves: listeners leave in their destructors, which must not need memory.
  struct Removed {
    OwnerList list;
    Removed() = default;
    Removed(const Removed&) = delete;
    Removed& operator=(const Removed&) = delete;
    ~Removed() {
      while (!list.empty()) {
        const Ref<Registration> first(&list.front(), false);
        list.pop_front();
      }
    }
  };

  std::mutex lock;
  std::map<std::string, NameRecord, std::less<>> names;  // nodes stay where they are
  boost::unordered_flat_map<const NSObject*, TargetList> byObject;
  boost::unordered_flat_map<const void*, OwnerList> byOwner;
  std::uint64_t nextNumber = 0;

  static Registry& shared() {
    static Registry* registry = new Registry;  // outlives every static
    return *registry;
  }

  static NameRecord& nameOf(const Registration& registration) { return static_cast<NameRecord&>(*registration.name); }

  // The lists hold one reference to each registration.
  void link(Ref<Registration> registration) {
    NameRecord& name = nameOf(*registration);
    OwnerList& owned = byOwner[registration->owner];
    TargetList& heard = registration->object != nullptr ? byObject[registration->object] : name.registrations;
    owned.push_back(*registration);
    heard.push_back(*registration);
    name.listeners.fetch_add(1, std::memory_order_relaxed);
    if (registration->object != nullptr) {
      registration->object->setHasListeners(true);
    } else {
      name.unfiltered.fetch_add(1, std::memory_order_relaxed);
    }
    registration.detach();
  }

  // Takes the registration out of the list of its target and of the counts; its owner's list is up to the caller.
  Ref<Registration> unlinkFromTarget(Registration& registration) {
    NameRecord& name = nameOf(registration);
    name.listeners.fetch_sub(1, std::memory_order_relaxed);
    registration.isActive.store(false, std::memory_order_release);
    if (registration.object == nullptr) {
      name.unfiltered.fetch_sub(1, std::memory_order_relaxed);
      name.registrations.erase(TargetList::s_iterator_to(registration));
    } else if (const auto found = byObject.find(registration.object); found != byObject.end()) {
      found->second.erase(TargetList::s_iterator_to(registration));
      if (found->second.empty()) {
        registration.object->setHasListeners(false);
        byObject.erase(found);
      }
    }
    return {&registration, false};
  }
};

NSNotificationName::NSNotificationName(std::string_view text) {
  NSNotificationCenter::Registry& registry = NSNotificationCenter::Registry::shared();
  const Guard guard(registry.lock);
  auto found = registry.names.find(text);
  if (found == registry.names.end()) found = registry.names.try_emplace(std::string(text), text).first;
  mRecord = &found->second;
}

NSNotificationCenter::NSNotificationCenter() : mRegistry(&Registry::shared()) {}

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  static NSNotificationCenter* center = new NSNotificationCenter;  // outlives every static
  return *center;
}

void NSNotificationCenter::addObserver(const void* owner, Callback callback, NSNotificationName name,
                                       const NSObject* object) {
  if (!callback)
    throw NSInvalidArgumentException("addObserver:selector:name:object: -- nothing to call for " + name.text());
  const Guard guard(mRegistry->lock);
  mRegistry->link(
      Ref<Registration>(new Registration(owner, std::move(callback), name.mRecord, object, mRegistry->nextNumber++)));
}

template <class Matches>
void NSNotificationCenter::removeMatching(const void* owner, const Matches& matches) {
  Registry::Removed removed;  // released after the lock
  const Guard guard(mRegistry->lock);
  const auto found = mRegistry->byOwner.find(owner);
  if (found == mRegistry->byOwner.end()) return;
  Registry::OwnerList& owned = found->second;
  for (auto each = owned.begin(); each != owned.end();) {
    Registration& registration = *each;
    if (!matches(registration)) {
      ++each;
      continue;
    }
    each = owned.erase(each);
    removed.list.push_back(*mRegistry->unlinkFromTarget(registration).detach());
  }
  if (owned.empty()) mRegistry->byOwner.erase(found);
}

void NSNotificationCenter::removeObserver(const void* owner) {
  removeMatching(owner, [](const Registration&) { return true; });
}

void NSNotificationCenter::removeObserverWithName(const void* owner, NSNotificationName name) {
  removeMatching(owner, [&](const Registration& each) { return each.name == name.mRecord; });
}

void NSNotificationCenter::removeObserverWithNameAndObject(const void* owner, NSNotificationName name,
                                                           const NSObject* object) {
  removeMatching(owner, [&](const Registration& each) { return each.name == name.mRecord && each.object == object; });
}

void NSNotificationCenter::objectDies(const NSObject& object) noexcept {
  Registry& registry = Registry::shared();
  for (bool more = true; more;) {
    Ref<Registration> removed;  // released after the lock, one by one: nothing to allocate in a destructor
    const Guard guard(registry.lock);
    const auto found = registry.byObject.find(&object);
    if (found == registry.byObject.end()) return;
    Registration& registration = found->second.front();
    const auto owner = registry.byOwner.find(registration.owner);
    owner->second.erase(Registry::OwnerList::s_iterator_to(registration));
    if (owner->second.empty()) registry.byOwner.erase(owner);
    removed = registry.unlinkFromTarget(registration);
    more = object.hasListeners();
  }
}

void NSNotificationCenter::tell(NSNotificationName name, NSObject* object, Ref<NSDictionary> userInfo) {
  const NestingGuard nesting("postNotificationName:object:userInfo:");
  const Ref<NSObject> keptObject = retainIfAlive(object);
  boost::container::small_vector<Ref<Registration>, 16> told;
  {
    const Guard guard(mRegistry->lock);
    const auto& unfiltered = static_cast<NameRecord*>(name.mRecord)->registrations;
    auto any = unfiltered.begin();
    const auto tellAnyBefore = [&](std::uint64_t number) {
      for (; any != unfiltered.end() && any->number < number; ++any)
        told.emplace_back(const_cast<Registration*>(&*any));
    };
    if (object != nullptr && object->hasListeners()) {
      const auto found = mRegistry->byObject.find(object);
      if (found != mRegistry->byObject.end()) {
        for (Registration& filtered : found->second) {
          if (filtered.name != name.mRecord) continue;
          tellAnyBefore(filtered.number);
          told.emplace_back(&filtered);
        }
      }
    }
    tellAnyBefore(mRegistry->nextNumber);
  }
  const NSNotification notification{name, object, userInfo.get()};
  ZTFirstFailure failure;
  for (const Ref<Registration>& each : told) {
    if (!each->isActive.load(std::memory_order_acquire)) continue;
    failure.attempt([&] { each->callback(notification); });
  }
  failure.rethrow();
}

}  // namespace zt
