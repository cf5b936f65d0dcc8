// The wall clock, as something that is handed in.
#pragma once

#include <functional>

namespace orvanta {

/// Yields seconds since 1970-01-01 UTC, with fraction. May step backwards when the user or NTP sets
/// the clock. May be called from any thread.
using Clock = std::function<double()>;

/// The machine's wall clock.
double wallClock();

/// Seconds since the machine was started. Neither steps, whoever sets the clock.
struct Uptime {
  double total = 0;  ///< CLOCK_BOOTTIME
  double awake = 0;  ///< without the time that it slept: CLOCK_MONOTONIC
};

/// May be called from any thread.
using UptimeClock = std::function<Uptime()>;

Uptime machineUptime();

}  // namespace orvanta
