// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <platform/NSException.h>
#include <platform/ZTNesting.h>

#include <pthread.h>

#include <string>

namespace zt {
namespace {

// Nests `depth` calls with frames of at least `Bytes`; answers how deep it came.
template <std::size_t Bytes>
[[gnu::noinline]] std::uint32_t nest(std::uint32_t depth) {
  const NestingGuard guard("nest:", Nesting::lookup);
  volatile char frame[Bytes];
  frame[0] = 1;
  const std::uint32_t reached = depth == 1 ? NestingGuard::depth(Nesting::lookup) : nest<Bytes>(depth - 1);
  return reached + frame[0] - 1;
}

template <std::size_t Bytes>
std::string refusal(std::uint32_t depth) {
  try {
    nest<Bytes>(depth);
  } catch (const NSInternalInconsistencyException& refused) {
    return refused.reason();
  }
  return "";
}

TEST(NestingTest, TheDeepestLevelWorksAndTheNextIsRefusedForEachKindApart) {
  const NestingGuard telling("telling", Nesting::telling);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(nest<16>(kDeepestNesting), kDeepestNesting);
    EXPECT_EQ(refusal<16>(kDeepestNesting + 1),
              "nest: -- nested deeper than 10000 levels; a chain of styles or values is too long for it.");
  }
  EXPECT_EQ(NestingGuard::depth(Nesting::lookup), 0);
  EXPECT_EQ(NestingGuard::depth(Nesting::telling), 1);
}

TEST(NestingTest, LargeFramesAreRefusedBeforeTheStackOfTheirThreadEnds) {
  std::string reasons[2] = {refusal<8192>(kDeepestNesting)};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 512 * 1024);
  pthread_t thread;
  const auto run = [](void* at) -> void* {
    *static_cast<std::string*>(at) = refusal<1024>(kDeepestNesting);
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &reasons[1]), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  for (const std::string& reason : reasons)
    EXPECT_NE(reason.find("the thread's stack is almost used up"), std::string::npos) << reason;
}

}  // namespace
}  // namespace zt
