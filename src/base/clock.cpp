#include "base/clock.h"

#include <ctime>

#include <chrono>

namespace orvanta {
namespace {

double read(clockid_t clock) {
  constexpr double kNano = 1e-9;
  timespec time{};
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + kNano * static_cast<double>(time.tv_nsec);
}

}  // namespace

double wallClock() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration<double>(sinceEpoch).count();
}

Uptime machineUptime() {
  return {.total = read(CLOCK_BOOTTIME), .awake = read(CLOCK_MONOTONIC)};
}

}  // namespace orvanta
