// What libFuzzer calls.
#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  orvanta::fuzz::target({reinterpret_cast<const char*>(data), size});
  return 0;
}
