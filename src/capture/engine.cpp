#include "capture/engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace orvanta {
namespace {

constexpr double kGap = 20.0;              // more between two ticks: something happened
constexpr double kSlow = 120.0;            // longer than that is no slowness of the machine
constexpr double kUnknown = 1209600.0;     // two weeks: nobody knows what happened meanwhile
constexpr double kForgetProject = 3600.0;  // a gap after which the user starts something new
constexpr double kFlushEvery = 10.0;       // at most this much is lost in a crash
constexpr double kAway = 30.0;             // without input, from which on it is kept since when
constexpr double kJitter = 0.05;           // by which a tick may follow the last one too early
constexpr double kFallsAsleep = 60.0;      // at most, after it was said

}  // namespace

Engine::Engine(Database& db, const Collectors& collectors, LiveState& live, Clock clock,
               UptimeClock uptime)
    : db_(db),
      collectors_(collectors),
      live_(live),
      clock_(std::move(clock)),
      uptime_(std::move(uptime)),
      log_(db),
      foreground_(db, collectors),
      lastTick_(clock_()),
      lastUptime_(uptime_()) {
  readLastEnd();
}

// What an earlier run recorded stays its own: idle time is not back-dated into it.
void Engine::readLastEnd() {
  db_.each("SELECT max(end) FROM events", {}, [this](const Cursor& row) { lastEnd_ = row.dbl(0); });
  if (lastEnd_ > lastTick_) lastEnd_ = 0;
  log_.settle(lastEnd_);
}

void Engine::takeUp() {
  last_input::endKilledRun(db_);
  readLastEnd();
}

double Engine::steadyNow() {
  const double now = clock_();
  if (now >= lastTick_) return now;
  if (lastTick_ - now <= kGap) return lastTick_;
  startAfresh(now);
  lastEnd_ = lastPresence_ = lastFilm_ = 0;
  lastTick_ = now;
  return now;
}

// The clock was set: what was recorded by the old time has nothing to do with the new.
void Engine::startAfresh(double now) {
  closeSpan(lastTick_);
  candidate_.reset();
  absences_.forget();
  log_.settle(now);
}

// The wall clock alone would take a slow machine for an absence, and a clock that was set for years
// of it.
Engine::Break Engine::breakBefore(double now) const {
  if (now - lastTick_ <= kGap) return Break::None;
  const auto uptime = uptime_();
  const double passed = uptime.total - lastUptime_.total;
  const double slept = passed - (uptime.awake - lastUptime_.awake);
  if (slept > kGap || passed > kSlow) return Break::Absence;
  return passed > kGap ? Break::None : Break::ClockSet;
}

// A process that was stopped with the machine learns late that it should close: the sleep is not
// activity, so the span ends where it was last seen.
double Engine::closingTime() {
  const double now = steadyNow();
  if (breakBefore(now) == Break::None) {
    lastTick_ = now;
    lastUptime_ = uptime_();
  }
  return lastTick_;
}

void Engine::tick() {
  const double now = steadyNow();
  switch (breakBefore(now)) {
    case Break::None:
      break;
    case Break::Absence:
      bridgeGap(now);
      break;
    case Break::ClockSet:
      startAfresh(now);
      break;
  }
  const auto resumed = pauseEnded(now);
  lastTick_ = now;
  lastUptime_ = uptime_();
  keepUp();
  if (live_.pause()) log_.settle(now);
  if (live_.pause() || asleep()) return;
  auto seen = observe(now);
  // What is in front at the first look is taken to have been there when the pause ended.
  if (resumed && !open_) seen.at = *resumed;
  consider(std::move(seen), now);
  if (open_ && !open_->sample().idle && !watching_) absences_.somebodyIsThere(now);
}

// When a pause ended that was over by now, as far as it can be told: not before the last look.
std::optional<double> Engine::pauseEnded(double now) {
  const auto until = live_.endPause(now);
  if (!until) return {};
  const double resumed = std::max({*until, lastTick_, lastEnd_});
  log_.settle(resumed);
  return resumed;
}

// The machine that was about to sleep is awake, and nobody has said so.
bool Engine::asleep() {
  if (asleepSince_ && lastUptime_.awake - *asleepSince_ > kFallsAsleep) asleepSince_.reset();
  return asleepSince_.has_value();
}

// What waits is brought into the store also while nothing is recorded.
void Engine::keepUp() {
  if (lastUptime_.awake - lastKeptUp_ < kFlushEvery - kJitter) return;
  lastKeptUp_ = lastUptime_.awake;
  db_.look();
  if (log_.waiting() == 0) return;
  log_.write().forget();
  publish();
}

void Engine::bridgeGap(double now) {
  closeSpan(lastTick_);
  if (now - lastTick_ <= kUnknown) {
    openSpan(Sample::idleSample(), std::max(lastTick_, lastEnd_));
    closeSpan(now);
  }
  candidate_.reset();
  if (now - lastTick_ > kForgetProject) live_.setCurrentProjectId({});
}

Engine::Observation Engine::observe(double now) {
  const auto& settings = foreground_.settings();
  minSpan_ = settings.minSpan;
  watching_ = false;
  if (locked_) return {Sample::idleSample(), now};
  const double idle = collectors_.idleSeconds();
  lastInput_ = now - idle;
  if (idle < settings.idleThreshold) {
    if (idle >= kAway && collectors_.mediaPlaying()) lastFilm_ = now;
    return {foreground_.sample(), now};
  }
  if (collectors_.mediaPlaying()) {
    lastFilm_ = lastPresence_ = now;
    watching_ = true;
    return {foreground_.sample(), now};
  }
  // Back-dated to the last input, but not into what is known to be watching or settled.
  return {Sample::idleSample(), std::max({now - idle, lastPresence_, log_.settled()})};
}

void Engine::consider(Observation seen, double now) {
  if (open_ && open_->key() == seen.sample.key()) {
    candidate_.reset();
    if (seen.sample.title != open_->sample().title) {
      open_->see(std::move(seen.sample));
      publish();
    }
    heartbeat(now);
  } else if (open_ && !open_->sample().idle && !seen.sample.idle) {
    debounce(std::move(seen.sample), now);
  } else {
    // Going idle and coming back are facts, not glances.
    const double at = std::min(seen.at, now);
    closeSpan(at);
    if (seen.sample.idle && at <= lastEnd_) endBy(at);
    openSpan(seen.sample, std::max(at, std::min(lastEnd_, now)));
    candidate_.reset();
    flush(now);
  }
}

// What came to the front since by itself was no activity.
void Engine::endBy(double at) {
  log_.endBy(at);
  lastEnd_ = at;
  absences_.activityEndedBy(at);
}

void Engine::debounce(Sample sample, double now) {
  if (!candidate_ || candidate_->sample.key() != sample.key()) {
    candidate_ = Candidate{std::move(sample), now};
    heartbeat(now);
    return;
  }
  if (now - candidate_->since + kTickSeconds < minSpan_ - kJitter) {
    heartbeat(now);
    return;
  }
  const double since = candidate_->since;
  closeSpan(since);
  openSpan(sample, since);
  candidate_.reset();
}

void Engine::pause() {
  finish();
  candidate_.reset();
  absences_.forget();
}

void Engine::willSleep() {
  asleepSince_ = uptime_().awake;
  finish();
}

// Nothing comes after it for a while, so it may wait for its turn.
void Engine::finish() {
  closeSpan(closingTime());
  log_.write(Patience::Usual).forget();
  publish();
}

void Engine::openSpan(const Sample& sample, double at) {
  open_.emplace(sample, at);
  if (!sample.idle) absences_.activityBegins(at);
  log_.open({.start = at,
             .end = at,
             .app = sample.app,
             .bundle = sample.bundle,
             .title = sample.title,
             .url = sample.url,
             .domain = sample.domain,
             .idle = sample.idle,
             .project = sample.idle ? std::nullopt : live_.currentProjectId()});
  log_.write().forget();
  publish();
}

void Engine::closeSpan(double at) {
  if (!open_) return;
  describe();
  lastEnd_ = std::max(open_->start(), at);
  log_.close(lastEnd_);
  log_.setLastInput({});
  if (open_->sample().idle) {
    log_.settle(lastEnd_);
  } else {
    absences_.activityEnds(lastEnd_);
  }
  log_.write().forget();
  open_.reset();
  publish();
}

void Engine::heartbeat(double now) {
  open_->countTitle(kTickSeconds);
  flush(now);
}

void Engine::flush(double now) {
  if (now - open_->lastFlush < kFlushEvery - kJitter) return;
  describe();
  noteInput(now);
  log_.extend(now);
  log_.write().forget();
  open_->lastFlush = now;
  publish();
}

// For the next run, should this one be killed before anybody is back, or known to be away.
void Engine::noteInput(double now) {
  std::optional<double> input;
  if (!open_->sample().idle && !watching_) {
    const double at = std::max({lastInput_, lastFilm_, log_.settled()});
    // Whole seconds, so that it is stored once.
    if (now - at >= kAway) input = std::ceil(at);
  }
  log_.setLastInput(input);
}

void Engine::describe() {
  if (open_->describes()) log_.describe(open_->sample().title, open_->sample().url);
}

void Engine::publish() {
  live_.setActivity(open_ ? std::optional(OpenActivity{log_.openId(), open_->sample()})
                          : std::nullopt);
  live_.setWaiting(log_.waiting());
}

}  // namespace orvanta
