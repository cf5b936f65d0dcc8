// The wall clock, as something that is handed in.
#pragma once

#include <functional>

namespace orvanta {

/// Yields seconds since 1970-01-01 UTC, with fraction. May step backwards when the user or NTP sets
/// the clock. May be called from any thread.
using Clock = std::function<double()>;

/// The machine's wall clock.
double wallClock();

}  // namespace orvanta
