#include "capture/tracker.h"

#include <charconv>
#include <chrono>
#include <cmath>
#include <limits>
#include <utility>

namespace orvanta {
namespace {

constexpr double kSecondsPerDay = 86400.0;

std::optional<int64_t> wholeNumber(const std::string& text) {
  int64_t number = 0;
  const auto* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

}  // namespace

Tracker::Tracker(Database& db, const Collectors& collectors, Clock clock)
    : db_(db),
      clock_(std::move(clock)),
      live_(clock_, db.setting("paused") == "1"),
      engine_(db, collectors, live_, clock_),
      queue_("orvanta.tracker") {}

void Tracker::start() {
  using std::chrono::seconds;
  queue_.repeat(seconds(1), seconds(2), [this] { engine_.tick(); });
  db_.log()("Orvanta: capture démarrée (" + db_.location().file().string() + ")");
}

void Tracker::setPaused(bool paused) {
  queue_.post([this, paused] { engine_.setPaused(paused); });
}

void Tracker::setLocked(bool locked) {
  queue_.post([this, locked] { engine_.setLocked(locked); });
}

void Tracker::willSleep(std::function<void()> done) {
  queue_.post([this, done = std::move(done)] {
    engine_.willSleep();
    done();
  });
}

void Tracker::didWake() {
  queue_.post([this] { engine_.didWake(); });
}

std::optional<double> Tracker::splitOpenSpan(const TimeRange& range) {
  std::optional<double> at;
  queue_.sync([&] { at = engine_.split(range); });
  return at;
}

void Tracker::shutdown() {
  queue_.stopRepeating();
  queue_.sync([this] { engine_.finish(); });
}

void Tracker::applyRetention() {
  const auto days = wholeNumber(db_.setting("retention_days"));
  if (!days || *days < 1) {
    db_.exec("DROP INDEX IF EXISTS idx_events_titled");
    return;
  }
  // Holds what is not stripped yet, so that years of stripped spans are not walked at every start.
  // Only where there is a retention: an index on `end` costs a write at every heartbeat.
  db_.exec(
      "CREATE INDEX IF NOT EXISTS idx_events_titled ON events(end) "
      "WHERE title IS NOT NULL OR url IS NOT NULL");
  const Args cutOff{clock_() - static_cast<double>(*days) * kSecondsPerDay};
  // By some thousand spans, so that nobody waits long for the store in between.
  bool left = true;
  while (left) {
    left = false;
    db_.each(
        "SELECT 1 FROM events WHERE end < ? AND (title IS NOT NULL OR url IS NOT NULL) LIMIT 1",
        cutOff, [&](const Cursor&) { left = true; });
    left = left && db_.run(
                       "UPDATE events SET title=NULL, url=NULL WHERE id IN "
                       "(SELECT id FROM events WHERE end < ? AND "
                       "(title IS NOT NULL OR url IS NOT NULL) LIMIT 4000)",
                       cutOff) >= 0;
  }
}

std::optional<Tracker::Current> Tracker::current() const {
  auto activity = live_.activity();
  if (!activity || activity->id < 1) return {};
  const double now = clock_();
  double start = now;
  db_.each("SELECT start FROM events WHERE id=?", {activity->id},
           [&](const Cursor& row) { start = row.dbl(0); });
  return Current{std::move(activity->sample), now - start};
}

}  // namespace orvanta
