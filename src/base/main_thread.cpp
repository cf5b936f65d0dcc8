#include "base/main_thread.h"

#include <glibmm/main.h>

#include <utility>

namespace orvanta {

MainThread::~MainThread() {
  for (auto& timer : timers_) timer.disconnect();
}

void MainThread::post(Task task) {
  Glib::signal_idle().connect_once(
      [alive = std::weak_ptr(alive_), task = std::move(task)] {
        if (!alive.expired()) task();
      },
      Glib::PRIORITY_DEFAULT);
}

void MainThread::after(std::chrono::milliseconds delay, Task task) {
  Glib::signal_timeout().connect_once(
      [alive = std::weak_ptr(alive_), task = std::move(task)] {
        if (!alive.expired()) task();
      },
      static_cast<unsigned>(delay.count()));
}

void MainThread::every(std::chrono::seconds period, Task task) {
  timers_.push_back(Glib::signal_timeout().connect_seconds(
      [task = std::move(task)] {
        task();
        return true;
      },
      static_cast<unsigned>(period.count())));
}

}  // namespace orvanta
