// SPDX-License-Identifier: MIT
#include <platform/ZTUndoStack.h>

namespace zt {

void UndoStack::addChunk() {
  mChunks.push_back(std::make_unique<Chunk>());
  mRoomEnd += kChunkActions;
}

UndoAction UndoStack::takeLast() noexcept {
  UndoAction* last = slot(mEnd - 1);
  UndoAction taken(std::move(*last));
  last->~UndoAction();
  --mEnd;
  mHeapBytes -= taken.heapBytes();
  // One empty chunk stays: putting back must not allocate, and a list that swings about the border
  // of a chunk should not either.
  if (mRoomEnd - mEnd >= 2 * kChunkActions) {
    mChunks.pop_back();
    mRoomEnd -= kChunkActions;
  }
  return taken;
}

void UndoStack::putBack(UndoAction&& action) noexcept {
  ::new (static_cast<void*>(slot(mEnd))) UndoAction(std::move(action));
  ++mEnd;
  mHeapBytes += slot(mEnd - 1)->heapBytes();
}

UndoAction UndoStack::takeFirst() noexcept {
  UndoAction* first = slot(mFirst);
  UndoAction taken(std::move(*first));
  first->~UndoAction();
  ++mFirst;
  mHeapBytes -= taken.heapBytes();
  if (mFirst - mBase == kChunkActions) {
    mChunks.pop_front();
    mBase += kChunkActions;
  }
  return taken;
}

void UndoStack::dropOldestGroup() {
  const std::size_t end = mMarks.front();
  mMarks.pop_front();
  while (mFirst < end) takeFirst();  // whoever comes back here may have dropped or cleared more
}

void UndoStack::clear() {
  ++mClears;
  if (isEmpty()) return;
  // The actions move to a list that nobody else can reach and are released from there.
  UndoStack old;
  std::swap(old.mChunks, mChunks);
  mMarks.clear();  // which keeps the room that `makeRoomForMark` has made
  old.mBase = mBase;
  old.mFirst = mFirst;
  old.mEnd = mEnd;
  old.mRoomEnd = mRoomEnd;
  old.mHeapBytes = std::exchange(mHeapBytes, 0);
  mBase = mFirst = mRoomEnd = mEnd;
  while (!old.isEmpty()) old.takeLast();
}

std::vector<std::vector<const UndoAction*>> UndoStack::groups() const {
  std::vector<std::vector<const UndoAction*>> result(mMarks.size());
  std::size_t at = mFirst;
  for (std::size_t group = 0; group < mMarks.size(); ++group) {
    for (; at < mMarks[group]; ++at) result[group].push_back(slot(at));
  }
  if (hasOpenActions()) result.emplace_back();
  for (; at < mEnd; ++at) result.back().push_back(slot(at));
  return result;
}

}  // namespace zt
