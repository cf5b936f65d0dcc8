#include "capture/retention.h"

#include <chrono>
#include <cstdint>
#include <future>
#include <limits>
#include <optional>
#include <string>
#include <utility>

#include "storage/transaction.h"

namespace orvanta {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr double kSecondsPerDay = 86400.0;
// The way back from a change may hold what is stripped from the spans.
constexpr auto kForget = "DELETE FROM changes WHERE titled_from < ?";
constexpr int kStep = 2000;  // spans; a step takes 1 to 10 ms

// Does `step` until it says that nothing is left, and pauses after each for as long as it took: a
// mutex that is taken again at once lets nobody else in. False when asked to stop.
template <class Step>
bool inSteps(const std::stop_token& stop, Step step) {
  while (!stop.stop_requested()) {
    const auto begin = SteadyClock::now();
    if (!step()) return true;
    std::this_thread::sleep_for(SteadyClock::now() - begin);
  }
  return false;
}

}  // namespace

Retention::Retention(Database& db, Clock clock, UptimeClock uptime)
    : db_(db), time_(db, std::move(clock), std::move(uptime)) {}

void Retention::setErased(Erased erased) {
  const std::lock_guard lock(erasedMutex_);
  erased_ = std::move(erased);
}

void Retention::start() {
  constexpr std::chrono::milliseconds kPatience{250};
  const std::lock_guard lock(mutex_);
  std::promise<void> promise;
  const auto done = promise.get_future();
  work_ = {};  // ends the earlier one
  work_ = std::jthread([this, promise = std::move(promise)](const std::stop_token& stop) mutable {
    apply(stop);
    promise.set_value();
  });
  done.wait_for(kPatience);
}

// The index holds what is not stripped yet, so that years of stripped spans are not walked at every
// start. Only where there is a retention: an index on `end` costs a write at every heartbeat. It is
// made after the first walk, when little is left for it to hold: making it is one statement, for
// which everybody waits.
void Retention::apply(const std::stop_token& stop) {
  const auto days = db_.settings().retentionDays;
  if (days < 1) {
    if (indexed()) db_.exec("DROP INDEX IF EXISTS idx_events_titled").forget();
    return;
  }
  const double cutOff = time_.now() - static_cast<double>(days) * kSecondsPerDay;
  stripped_ = false;
  if (!indexed()) {
    if (!walk(cutOff, stop)) return;
    // Without it, the next walk takes as long as this one.
    db_.exec(
           "CREATE INDEX IF NOT EXISTS idx_events_titled ON events(end) "
           "WHERE title IS NOT NULL OR url IS NOT NULL")
        .forget();
  }
  if (!strip(cutOff, stop)) return;
  step(kForget, {cutOff});
  if (stripped_) db_.truncateLog();
  Erased erased;
  {
    const std::lock_guard lock(erasedMutex_);
    erased = erased_;
  }
  // The first time it may also make up for what an earlier run did not come to.
  if (erased && (stripped_ || !told_.exchange(true))) erased(cutOff);
}

bool Retention::indexed() {
  bool found = false;
  db_.each("SELECT 1 FROM sqlite_master WHERE name='idx_events_titled'", {},
           [&](const Cursor&) { found = true; });
  return found;
}

// Over all spans in the order in which they lie in the file.
bool Retention::walk(double cutOff, const std::stop_token& stop) {
  int64_t from = std::numeric_limits<int64_t>::min();
  bool failed = false;
  const bool walked = inSteps(stop, [&] {
    std::optional<int64_t> to;
    db_.each("SELECT id FROM events WHERE id > ? ORDER BY id LIMIT 1 OFFSET ?", {from, kStep - 1},
             [&](const Cursor& row) { to = row.int_(0); });
    failed = !step(
        "UPDATE events SET title=NULL, url=NULL WHERE id > ? AND id <= ? AND end < ? "
        "AND (title IS NOT NULL OR url IS NOT NULL)",
        {from, to.value_or(std::numeric_limits<int64_t>::max()), cutOff});
    from = to.value_or(from);
    return to && !failed;
  });
  return walked && !failed;
}

// By the index.
bool Retention::strip(double cutOff, const std::stop_token& stop) {
  bool failed = false;
  const bool stripped = inSteps(stop, [&] {
    bool left = false;
    db_.each(
        "SELECT 1 FROM events WHERE end < ? AND (title IS NOT NULL OR url IS NOT NULL) LIMIT 1",
        {cutOff}, [&](const Cursor&) { left = true; });
    failed = left && !step(
                         "UPDATE events SET title=NULL, url=NULL WHERE id IN "
                         "(SELECT id FROM events WHERE end < ? AND "
                         "(title IS NOT NULL OR url IS NOT NULL) LIMIT ?)",
                         {cutOff, kStep});
    return left && !failed;
  });
  return stripped && !failed;
}

bool Retention::step(std::string_view sql, const Args& args) {
  Transaction change(db_);
  change.run(sql, args);
  const bool stripped = change.changes() > 0;
  if (!change.commit()) return false;
  stripped_ = stripped_ || stripped;
  return true;
}

}  // namespace orvanta
