#include "capture/tracker.h"

#include <chrono>
#include <utility>

namespace orvanta {

Tracker::Tracker(Database& db, const Collectors& collectors, Clock clock, UptimeClock uptime)
    : db_(db),
      clock_(std::move(clock)),
      live_(clock_, db.setting("paused") == "1"),
      engine_(db, collectors, live_, clock_, uptime),
      retention_(db, clock_, uptime),
      queue_("orvanta.tracker") {}

void Tracker::start() {
  using std::chrono::seconds;
  queue_.repeat(seconds(1), seconds(2), [this] { engine_.tick(); });
  db_.log()("Orvanta: capture démarrée (" + db_.location().file().string() + ")");
}

Written Tracker::setPaused(bool paused) {
  live_.setPaused(paused);
  if (paused) queue_.post([this] { engine_.pause(); });
  return db_.setSetting("paused", paused ? "1" : "0");
}

void Tracker::forgetProject(int64_t project) {
  if (live_.currentProjectId() == project) live_.setCurrentProjectId({});
  queue_.post([this, project] { engine_.forgetProject(project); });
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
  queue_.sync([this] {
    engine_.finish();
    db_.look();  // what waits to be stored has one more chance
  });
}

std::optional<int64_t> Tracker::openSpanId() const {
  const auto activity = live_.activity();
  return activity && activity->id > 0 ? std::optional(activity->id) : std::nullopt;
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
