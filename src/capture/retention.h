// Forgets what the user does not want kept for ever.
#pragma once

#include <mutex>
#include <stop_token>
#include <thread>

#include "base/clock.h"
#include "storage/database.h"

namespace orvanta {

/// Removes title and URL from spans that ended longer ago than the setting "retention_days" says;
/// the spans, their application and domain stay for the reports. Works in steps of some
/// milliseconds, and leaves the store to others in between. From any thread.
class Retention {
 public:
  /// `db` outlives the object, which ends the work under way when it is destroyed.
  Retention(Database& db, Clock clock);

  /// On the caller's thread, until it is done or asked to stop.
  void apply(const std::stop_token& stop = {});

  /// On a thread of its own, in place of what an earlier start() is still at. Returns when it is
  /// done; on years of history, where the first time takes some seconds, after a quarter of one.
  void start();

 private:
  bool indexed();
  bool walk(double cutOff, const std::stop_token& stop);
  void strip(double cutOff, const std::stop_token& stop);

  Database& db_;
  const Clock clock_;
  std::mutex mutex_;   // guards the next
  std::jthread work_;  // last: it ends before what it uses
};

}  // namespace orvanta
