#include "base/serial_queue.h"

#include <pthread.h>

#include <future>
#include <utility>

namespace orvanta {

SerialQueue::SerialQueue(const std::string& label) : thread_([this] { work(); }) {
  constexpr std::size_t kLongestThreadName = 15;
  pthread_setname_np(thread_.native_handle(), label.substr(0, kLongestThreadName).c_str());
}

SerialQueue::~SerialQueue() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void SerialQueue::post(Task task) {
  {
    const std::lock_guard lock(mutex_);
    tasks_.push_back(std::move(task));
  }
  changed_.notify_one();
}

void SerialQueue::sync(const Task& task) {
  std::promise<void> done;
  post([&] {
    task();
    done.set_value();
  });
  done.get_future().wait();
}

void SerialQueue::repeat(Duration delay, Duration period, Task task) {
  {
    const std::lock_guard lock(mutex_);
    timer_ = std::move(task);
    period_ = period;
    due_ = std::chrono::steady_clock::now() + delay;
  }
  changed_.notify_one();
}

void SerialQueue::discard() {
  std::deque<Task> dropped;  // destroyed without the lock
  const std::lock_guard lock(mutex_);
  dropped.swap(tasks_);
}

void SerialQueue::stopRepeating() {
  const std::lock_guard lock(mutex_);
  timer_ = nullptr;
}

void SerialQueue::work() {
  std::unique_lock lock(mutex_);
  for (;;) {
    Task task;
    const auto now = std::chrono::steady_clock::now();
    if (!tasks_.empty()) {
      task = std::move(tasks_.front());
      tasks_.pop_front();
    } else if (stopping_) {
      return;
    } else if (timer_ && now >= due_) {
      task = timer_;
      due_ += period_ * ((now - due_) / period_ + 1);
    } else if (timer_) {
      changed_.wait_until(lock, due_);
      continue;
    } else {
      changed_.wait(lock);
      continue;
    }
    lock.unlock();
    task();
    lock.lock();
  }
}

}  // namespace orvanta
