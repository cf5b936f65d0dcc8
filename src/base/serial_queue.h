// One thread that runs tasks one at a time, in order, and a repeating timer on it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace orvanta {

/// All operations may be called from any thread. Destroying the queue runs what was posted before
/// and joins the thread; it must not be destroyed from one of its own tasks.
class SerialQueue {
 public:
  using Task = std::function<void()>;
  using Duration = std::chrono::steady_clock::duration;

  /// `label` names the thread for debuggers and top; the system keeps its first 15 bytes.
  explicit SerialQueue(const std::string& label);
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Runs `task` after everything posted before it; returns at once.
  void post(Task task);

  /// Like post, and waits until the task is done. From a task of the same queue: dead-lock.
  void sync(const Task& task);

  /// Runs `task` first after `delay`, then every `period`. A queue has one timer; a second call
  /// replaces it. Of the firings missed while a task took long one is made up for, the others are
  /// dropped. The time base stands still while the machine sleeps.
  void repeat(Duration delay, Duration period, Task task);

  /// Drops what was posted and has not begun.
  void discard();

  /// Ends the repetition. A firing under way is still carried out.
  void stopRepeating();

 private:
  void work();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Task> tasks_;
  Task timer_;
  Duration period_{};
  std::chrono::steady_clock::time_point due_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace orvanta
