// Runs the queries that ask other programs something, and leaves those alone that failed.
#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

#include "base/child_process.h"
#include "base/clock.h"
#include "base/log.h"

namespace orvanta {

/// What a query yielded.
struct ScriptResult {
  std::optional<std::string> output;  ///< absent when it failed
  std::string error;                  ///< what it said on standard error, or why there is no output
  bool givenUp = false;               ///< by giveUp(): says nothing about the query
};

/// A query that failed is not run again for a while. The operations may be called from any thread;
/// two callers can run the same query at the same time.
class ScriptRunner {
 public:
  static constexpr double kCooldown = 300;
  static constexpr double kTimeout = 20;
  static constexpr double kHangCooldown = 60;

  ScriptRunner(RunChild runChild, Clock clock, Log log);

  /// Runs `command` and blocks until it ends, `timeout` seconds at most. White space around its
  /// output is dropped; output that is not UTF-8 counts as empty. Without output:
  /// - "désactivé": the query called `key` is in a cool-down; nothing was run
  /// - the system's words: the program could not be started
  /// - "timeout": it hung and was ended; cool-down of kHangCooldown seconds
  /// - what it wrote to standard error: its exit status was not 0. With kTimedOutStatus it is as
  ///   after a hang; otherwise this is logged, and the cool-down is `cooldown` seconds.
  ScriptResult run(ChildCommand command, const std::string& key, double cooldown = kCooldown,
                   double timeout = kTimeout);

  /// Ends what runs and runs nothing any more: for the end of the program.
  void giveUp() { end_.request_stop(); }

  /// Whether the query is in a cool-down.
  bool disabled(const std::string& key) const;
  void disable(const std::string& key, double seconds);
  void resetCooldowns();

 private:
  struct Cooldown {
    double since = 0;  // a clock that is set back does not prolong it
    double until = 0;
  };

  const RunChild runChild_;
  const Clock clock_;
  const Log log_;
  std::stop_source end_;
  mutable std::mutex mutex_;  // never held while a child runs
  std::map<std::string, Cooldown> disabledUntil_;
};

}  // namespace orvanta
