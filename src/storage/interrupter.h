// Ends a connection's long statements from outside.
#pragma once

#include <sqlite3.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <thread>

namespace orvanta {

/// While it lives, statements of `connection` end with SQLITE_INTERRUPT once `stop` is asked for or
/// the budget is spent. From a thread of its own: SQLite's progress handler is not heard while it
/// walks a tree to check it.
class Interrupter {
 public:
  Interrupter(sqlite3* connection, std::stop_token stop,
              std::optional<std::chrono::milliseconds> budget = {});
  ~Interrupter();
  Interrupter(const Interrupter&) = delete;
  Interrupter& operator=(const Interrupter&) = delete;

  /// The time is up: nothing more is to be begun.
  bool reached() const { return reached_ || stop_.stop_requested(); }

 private:
  void watch(const std::stop_token& over, std::optional<std::chrono::milliseconds> budget);

  sqlite3* connection_;
  std::stop_token stop_;
  std::atomic<bool> reached_ = false;
  std::mutex mutex_;
  std::condition_variable_any wake_;
  std::jthread watcher_;
};

}  // namespace orvanta
