// SPDX-License-Identifier: MIT
#include "Silence.h"
#include "api/ApiModel.h"

#include <cstddef>
#include <cstdint>

/// Any bytes as a sequence of operations, with an application that interferes: the model stays valid after each of
/// them, and undo and redo lead to the first and the last state.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zt;
  if (size > 400) return 0;
  const fuzzing::Silence silence;
  fuzzing::ApiModel model(fuzzing::Bytes(data, size));
  for (int step = 0; step < 60 && !model.isDone(); ++step) model.step();
  model.goBackAndForth();
  return 0;
}
