// A wall clock that is believed.
#pragma once

#include <functional>
#include <mutex>

#include "base/clock.h"
#include "storage/database.h"

namespace orvanta {

/// Whether the kernel says that its clock is kept right by the network's time (adjtimex).
bool networkTimeHeld();

/// The time from which ages are counted before something is erased for its age: a clock that is
/// years ahead for some minutes must not erase years. The wall clock is believed when the network's
/// time holds it or this run has lasted a day; else no more than two days after the last time that
/// was believed, or after the newest span that was recorded before this run. Any thread.
class TrustedTime {
 public:
  /// `db` outlives it. What is believed is kept in its settings.
  TrustedTime(Database& db, Clock clock, UptimeClock uptime,
              std::function<bool()> held = networkTimeHeld);

  /// Unix seconds; never after the wall clock.
  double now();

 private:
  double believedBefore() const;

  Database& db_;
  const Clock clock_;
  const UptimeClock uptime_;
  const std::function<bool()> held_;
  const double began_;    // this run, by the wall clock
  const double started_;  // the same by the uptime
  std::mutex mutex_;      // guards the next
  double believed_ = 0;   // 0 while there is nothing to go by
};

}  // namespace orvanta
