// Work for the main loop, from any thread.
#pragma once

#include <sigc++/connection.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

/// Hands work to the main loop, at once, later or again and again. What has not run when it is
/// destroyed never runs, so the work may name whatever outlives this. Made and destroyed on the
/// main thread.
class MainThread {
 public:
  using Task = std::function<void()>;

  MainThread() = default;
  ~MainThread();
  MainThread(const MainThread&) = delete;
  MainThread& operator=(const MainThread&) = delete;

  /// Runs `task` at the next turn of the main loop. From any thread.
  void post(Task task);

  /// Runs `task` once, after `delay`. From the main thread.
  void after(std::chrono::milliseconds delay, Task task);

  /// Runs `task` every `period`, a whole number of seconds, at a moment that the machine chooses
  /// together with others so that it wakes less often. From the main thread.
  void every(std::chrono::seconds period, Task task);

 private:
  struct Alive {};
  std::shared_ptr<Alive> alive_ = std::make_shared<Alive>();
  std::vector<sigc::connection> timers_;
};

}  // namespace orvanta
