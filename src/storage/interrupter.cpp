#include "storage/interrupter.h"

#include <utility>

namespace orvanta {
namespace {

using SteadyClock = std::chrono::steady_clock;

}  // namespace

Interrupter::Interrupter(sqlite3* connection, std::stop_token stop,
                         std::optional<std::chrono::milliseconds> budget)
    : connection_(connection), stop_(std::move(stop)) {
  if (!stop_.stop_possible() && !budget) return;
  watcher_ = std::jthread([this, budget](const std::stop_token& over) { watch(over, budget); });
}

Interrupter::~Interrupter() {
  watcher_.request_stop();
  if (watcher_.joinable()) watcher_.join();
}

// Again and again, since only what runs is interrupted; until whoever works has noticed.
void Interrupter::watch(const std::stop_token& over,
                        std::optional<std::chrono::milliseconds> budget) {
  constexpr std::chrono::milliseconds kLook{10};
  const auto begin = SteadyClock::now();
  std::unique_lock lock(mutex_);
  while (!over.stop_requested()) {
    wake_.wait_for(lock, over, kLook, [] { return false; });
    if (over.stop_requested()) return;
    if (budget && SteadyClock::now() - begin >= *budget) reached_ = true;
    if (reached()) sqlite3_interrupt(connection_);
  }
}

}  // namespace orvanta
