#include "base/clock.h"

#include <chrono>

namespace orvanta {

double wallClock() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(sinceEpoch).count();
}

}  // namespace orvanta
