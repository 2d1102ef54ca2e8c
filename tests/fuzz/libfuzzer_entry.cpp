// One target as libFuzzer wants it; KAVO_FUZZ_TARGET is the target's function.
#include <cstddef>
#include <cstdint>

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  motion::fuzz::KAVO_FUZZ_TARGET({data, size});
  return 0;
}
