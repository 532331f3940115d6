// SPDX-License-Identifier: MIT
#pragma once
/// @file
/// The flat list of undo actions below `NSUndoManager`: 48 bytes an action, groups as marks.

#include <platform/NSObject.h>

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace zt {

/// One action: a closure over a held target, and the keyword name of the operation that it calls.
/// A closure of up to 32 bytes, the target's 8 included, lies in the action itself.
class UndoAction {
 public:
  static constexpr std::size_t kInlineBytes = 32;

  template <class Target, class Call>
  UndoAction(const char* keyword, Ref<Target>&& target, Call&& call) : mKeyword(keyword) {
    using Closure = ClosureOf<Target, std::decay_t<Call>>;
    if constexpr (isInline<Closure>) {
      ::new (static_cast<void*>(mStorage)) Closure{std::move(target), std::forward<Call>(call)};
      mOperations = &kInline<Closure>;
    } else {
      ::new (static_cast<void*>(mStorage)) Closure*(new Closure{std::move(target), std::forward<Call>(call)});
      mOperations = &kOnHeap<Closure>;
    }
  }
  UndoAction(UndoAction&& other) noexcept : mKeyword(other.mKeyword), mOperations(other.mOperations) {
    mOperations->move(other.mStorage, mStorage);
  }
  ~UndoAction() { mOperations->destroy(mStorage); }
  UndoAction& operator=(UndoAction&&) = delete;

  void run() { mOperations->run(mStorage); }

  [[nodiscard]] const char* keyword() const noexcept { return mKeyword; }

  /// The target, or none if it is no `NSObject`.
  [[nodiscard]] const NSObject* target() const noexcept { return mOperations->target(mStorage); }

  /// What the closure takes beside the action.
  [[nodiscard]] std::size_t heapBytes() const noexcept { return mOperations->heapBytes; }

 private:
  template <class Target, class Call>
  struct ClosureOf {
    Ref<Target> target;
    Call call;
    void run() { call(*target); }
    const NSObject* object() const noexcept {
      if constexpr (std::is_base_of_v<NSObject, Target>) {
        return target.get();
      } else {
        return nullptr;
      }
    }
  };

  struct Operations {
    void (*run)(void*);
    void (*move)(void*, void*) noexcept;
    void (*destroy)(void*) noexcept;
    const NSObject* (*target)(const void*) noexcept;
    std::size_t heapBytes;
  };

  template <class Closure>
  static constexpr bool isInline = sizeof(Closure) <= kInlineBytes &&
                                   alignof(Closure) <= alignof(void*) && std::is_nothrow_move_constructible_v<Closure>;

  template <class Closure>
  static constexpr Operations kInline = {
      [](void* at) { static_cast<Closure*>(at)->run(); },
      [](void* from, void* to) noexcept { ::new (to) Closure(std::move(*static_cast<Closure*>(from))); },
      [](void* at) noexcept { static_cast<Closure*>(at)->~Closure(); },
      [](const void* at) noexcept { return static_cast<const Closure*>(at)->object(); }, 0};

  template <class Closure>
  static constexpr Operations kOnHeap = {
      [](void* at) { (*static_cast<Closure**>(at))->run(); },
      [](void* from, void* to) noexcept { ::new (to) Closure*(std::exchange(*static_cast<Closure**>(from), nullptr)); },
      [](void* at) noexcept { delete *static_cast<Closure**>(at); },
      [](const void* at) noexcept -> const NSObject* {
        const Closure* closure = *static_cast<Closure* const*>(at);
        return closure != nullptr ? closure->object() : nullptr;
      },
      sizeof(Closure)};

  const char* mKeyword;
  const Operations* mOperations = nullptr;
  alignas(void*) unsigned char mStorage[kInlineBytes];
};

static_assert(sizeof(UndoAction) == 48);

/// A vector that also drops at its front, in amortised constant time.
template <class T>
class FrontDroppingVector {
 public:
  [[nodiscard]] bool empty() const noexcept { return mHead == mItems.size(); }
  [[nodiscard]] std::size_t size() const noexcept { return mItems.size() - mHead; }
  T& operator[](std::size_t index) noexcept { return mItems[mHead + index]; }
  const T& operator[](std::size_t index) const noexcept { return mItems[mHead + index]; }
  T& front() noexcept { return mItems[mHead]; }
  const T& front() const noexcept { return mItems[mHead]; }
  T& back() noexcept { return mItems.back(); }
  const T& back() const noexcept { return mItems.back(); }
  void push_back(T item) { mItems.push_back(std::move(item)); }
  void pop_back() noexcept { mItems.pop_back(); }
  void pop_front() noexcept {
    mItems[mHead++] = T();
    if (2 * mHead < mItems.size()) return;
    mItems.erase(mItems.begin(), mItems.begin() + static_cast<std::ptrdiff_t>(mHead));
    mHead = 0;
  }
  /// Keeps the room.
  void clear() noexcept {
    mItems.clear();
    mHead = 0;
  }
  /// The next `push_back` allocates nothing.
  void makeRoom() {
    if (mItems.size() == mItems.capacity()) mItems.reserve(2 * mItems.size() + 8);
  }

 private:
  std::vector<T> mItems;
  std::size_t mHead = 0;
};

/// Actions in the order of registration, cut into groups by marks: a mark is the index behind the
/// last action of a closed group; what lies behind the last mark belongs to the open group. Indices
/// only grow, so that dropping old groups changes none.
///
/// Releasing an action runs code of others, which may come back here. Therefore an action is always
/// taken out of the list first and released afterwards.
class ZT_EXPORT UndoStack {
 public:
  UndoStack() = default;
  UndoStack(const UndoStack&) = delete;
  UndoStack& operator=(const UndoStack&) = delete;
  ~UndoStack() { clear(); }

  [[nodiscard]] bool isEmpty() const noexcept { return mFirst == mEnd; }
  [[nodiscard]] std::size_t actionCount() const noexcept { return mEnd - mFirst; }
  [[nodiscard]] std::size_t groupCount() const noexcept { return mMarks.size(); }
  [[nodiscard]] std::size_t bytes() const noexcept { return actionCount() * sizeof(UndoAction) + mHeapBytes; }

  /// Appends to the open group.
  template <class Target, class Call>
  void emplace(const char* keyword, Ref<Target>&& target, Call&& call) {
    if (mEnd == mRoomEnd) addChunk();
    const auto* action =
        ::new (static_cast<void*>(slot(mEnd))) UndoAction(keyword, std::move(target), std::forward<Call>(call));
    ++mEnd;
    mHeapBytes += action->heapBytes();
  }

  [[nodiscard]] bool hasOpenActions() const noexcept { return mEnd > openStart(); }

  /// Takes the newest action of the open group out of the list.
  UndoAction takeLast() noexcept;

  /// Puts back what was just taken. Allocates nothing.
  void putBack(UndoAction&& action) noexcept;

  /// Ends the open group; leaves nothing behind if that is empty.
  void closeGroup() {
    if (hasOpenActions()) mMarks.push_back(mEnd);
  }
  /// Makes the newest closed group the open one again. There must be one, and no open actions.
  void reopenGroup() noexcept { mMarks.pop_back(); }
  /// The next `closeGroup` allocates nothing.
  void makeRoomForMark() { mMarks.makeRoom(); }

  /// Releases the oldest closed group, action by action.
  void dropOldestGroup();

  /// Releases everything that is there now, the open group too. What is registered meanwhile stays.
  void clear();
  /// How often the stack has been cleared.
  [[nodiscard]] std::size_t clearCount() const noexcept { return mClears; }

  /// Groups from the oldest to the open one, actions in the order of registration.
  [[nodiscard]] std::vector<std::vector<const UndoAction*>> groups() const;

 private:
  static constexpr std::size_t kChunkActions = 64;
  struct Chunk {
    alignas(UndoAction) unsigned char bytes[kChunkActions * sizeof(UndoAction)];
  };

  [[nodiscard]] std::size_t openStart() const noexcept { return mMarks.empty() ? mFirst : mMarks.back(); }
  [[nodiscard]] UndoAction* slot(std::size_t index) const noexcept {
    unsigned char* chunk = mChunks[(index - mBase) / kChunkActions]->bytes;
    return reinterpret_cast<UndoAction*>(chunk + (index - mBase) % kChunkActions * sizeof(UndoAction));
  }
  void addChunk();
  UndoAction takeFirst() noexcept;

  FrontDroppingVector<std::unique_ptr<Chunk>> mChunks;
  FrontDroppingVector<std::size_t> mMarks;
  std::size_t mBase = 0;     // the index of the first slot of the first chunk
  std::size_t mFirst = 0;    // the index of the oldest action
  std::size_t mEnd = 0;      // the index behind the newest action
  std::size_t mRoomEnd = 0;  // the index behind the last slot
  std::size_t mHeapBytes = 0;
  std::size_t mClears = 0;
};

}  // namespace zt
