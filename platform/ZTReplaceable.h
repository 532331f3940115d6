// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// What each thread has a current one of, and what a scope can replace: log sinks and assertion handlers.

#include <platform/ZTExport.h>

#include <utility>
#include <vector>

namespace zt {

/// The base of a class `Self` of which each thread has a current object: the standard one, which all threads share,
/// unless a scope of the thread has put another in its place.
///
/// `Self` declares and implements two functions beside itself, so that the library has one of each variable:
///
///     template <> ZT_EXPORT NSLogSink*& ZTReplaceable<NSLogSink>::replacement() noexcept;  // thread-local
///     template <> ZT_EXPORT NSLogSink& ZTReplaceable<NSLogSink>::standard() noexcept;      // outlives every static
template <class Self>
class ZTReplaceable {
 public:
  ZTReplaceable(const ZTReplaceable&) = delete;
  ZTReplaceable& operator=(const ZTReplaceable&) = delete;

  /// The object of this thread.
  static Self& current() noexcept {
    Self* const replaced = replacement();
    return replaced != nullptr ? *replaced : standard();
  }

  /// Makes an object the current one of this thread while the scope lives. Scopes nest.
  class Scope {
   public:
    explicit Scope(Self& object) noexcept : mPrevious(std::exchange(replacement(), &object)) {}
    ~Scope() { replacement() = mPrevious; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Self* mPrevious;
  };

 protected:
  ZTReplaceable() = default;
  ~ZTReplaceable() = default;

 private:
  static Self*& replacement() noexcept;
  static Self& standard() noexcept;
};

/// The base of a recorder: an object of the class that is the current one of its thread while it lives and keeps what
/// it is told.
template <class Replaceable, class Item>
class ZTRecorderOf : public Replaceable {
 protected:
  ZTRecorderOf() : mScope(*this) {}

  void keep(Item item) { mItems.push_back(std::move(item)); }
  [[nodiscard]] const std::vector<Item>& kept() const noexcept { return mItems; }
  /// What was kept so far; the record is empty afterwards.
  [[nodiscard]] std::vector<Item> takeKept() noexcept { return std::exchange(mItems, {}); }

 private:
  std::vector<Item> mItems;
  typename Replaceable::Scope mScope;
};

}  // namespace zt
