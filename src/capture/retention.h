// Forgets what the user does not want kept for ever.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

#include "base/clock.h"
#include "capture/trusted_time.h"
#include "storage/database.h"

namespace orvanta {

/// Removes title and URL from spans that ended longer ago than the setting "retention_days" says;
/// the spans, their application and domain stay for the reports. Works in steps of some
/// milliseconds, and leaves the store to others in between. From any thread.
class Retention {
 public:
  using Erased = std::function<void(double before)>;

  /// `db` outlives the object, which ends the work under way when it is destroyed.
  Retention(Database& db, Clock clock, UptimeClock uptime = machineUptime);

  /// Is called on the working thread when what ended before that time, Unix seconds, has been
  /// stripped.
  void setErased(Erased erased);

  /// On the caller's thread, until it is done or asked to stop.
  void apply(const std::stop_token& stop = {});

  /// On a thread of its own, in place of what an earlier start() is still at. Returns when it is
  /// done; on years of history, where the first time takes some seconds, after a quarter of one.
  void start();

 private:
  bool indexed();
  bool walk(double cutOff, const std::stop_token& stop);
  bool strip(double cutOff, const std::stop_token& stop);
  bool step(std::string_view sql, const Args& args);

  Database& db_;
  TrustedTime time_;
  std::mutex erasedMutex_;  // guards the next
  Erased erased_;
  std::atomic<bool> stripped_ = false;  // since it was last applied
  std::atomic<bool> told_ = false;
  std::mutex mutex_;   // guards the next
  std::jthread work_;  // last: it ends before what it uses
};

}  // namespace orvanta
