#include "capture/tracker.h"

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

namespace orvanta {

Tracker::Tracker(Database& db, const Collectors& collectors, Clock clock, UptimeClock uptime)
    : db_(db),
      clock_(std::move(clock)),
      live_(clock_, storedPause(db.allSettings(), clock_())),
      pauseStored_(live_.pause().has_value()),
      engine_(db, collectors, live_, clock_, uptime),
      retention_(db, clock_, uptime),
      queue_("orvanta.tracker") {}

void Tracker::start() {
  using std::chrono::seconds;
  queue_.post([this] { engine_.takeUp(); });
  queue_.repeat(seconds(1), seconds(2), [this] { engine_.tick(); });
  db_.log()("Orvanta: capture démarrée (" + db_.location().file().string() + ")");
}

Written Tracker::setPaused(bool paused, std::optional<double> until) {
  const std::lock_guard lock(pauseMutex_);
  const auto pause = paused ? std::optional(Pause{clock_(), until}) : std::nullopt;
  live_.setPause(pause);
  if (paused) queue_.post([this] { engine_.pause(); });
  pauseStored_ = paused;
  return db_.setSettings(storedTexts(pause));
}

Written Tracker::setReminded() {
  const std::lock_guard lock(pauseMutex_);
  auto pause = live_.pause();
  if (!pause) return Written::stored();
  pause->reminded = true;
  live_.setPause(pause);
  return db_.setSettings(storedTexts(pause));
}

Written Tracker::keepPauseEnd() {
  const std::lock_guard lock(pauseMutex_);
  if (!pauseStored_ || live_.pause()) return Written::stored();
  pauseStored_ = false;
  return db_.setSettings(storedTexts({}));
}

void Tracker::setReturned(Absences::Returned returned) {
  queue_.sync([&] { engine_.setReturned(std::move(returned)); });
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

Written Tracker::changeRecorded(TimeRange range,
                                const std::function<Written(const TimeRange&)>& work) {
  return change(range, Engine::Changes::Anything, work);
}

Written Tracker::changeAbsences(TimeRange range,
                                const std::function<Written(const TimeRange&)>& work) {
  return change(range, Engine::Changes::Absences, work);
}

Written Tracker::change(TimeRange range, Engine::Changes what,
                        const std::function<Written(const TimeRange&)>& work) {
  auto held = hold(range, what);
  if (!held) return held;
  bool changed = false;
  const std::shared_ptr<void> release(
      nullptr, [&](void*) { queue_.sync([&] { engine_.release(changed); }); });
  auto written = work(range);
  changed = bool{written};
  return written;
}

// Waiting for another program or thread keeps no tick waiting.
Written Tracker::hold(TimeRange& range, Engine::Changes what) {
  using namespace std::chrono_literals;
  constexpr auto kPatience = 2s;
  constexpr auto kPause = 10ms;
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    auto held = Written::failed(SQLITE_BUSY);
    queue_.sync([&] {
      held = engine_.hold(range, what);
      if (held) range.end = std::min(range.end, engine_.limit().value_or(range.end));
    });
    const bool busy = (held.code() & 0xff) == SQLITE_BUSY;
    if (!busy || std::chrono::steady_clock::now() >= end) return held;
    std::this_thread::sleep_for(kPause);
  }
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
