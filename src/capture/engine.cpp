#include "capture/engine.h"

#include <algorithm>
#include <utility>

#include "base/cut.h"
#include "base/text.h"

namespace orvanta {
namespace {

constexpr double kGap = 20.0;              // more between two ticks: something happened
constexpr double kSlow = 120.0;            // longer than that is no slowness of the machine
constexpr double kUnknown = 1209600.0;     // two weeks: nobody knows what happened meanwhile
constexpr double kForgetProject = 3600.0;  // a gap after which the user starts something new
constexpr double kFlushEvery = 10.0;       // at most this much is lost in a crash
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
      lastTick_(clock_()),
      lastUptime_(uptime_()) {
  // What an earlier run recorded stays its own: idle time is not back-dated into it.
  db_.each("SELECT max(end) FROM events", {}, [this](const Cursor& row) { lastEnd_ = row.dbl(0); });
  if (lastEnd_ > lastTick_) lastEnd_ = 0;
}

double Engine::steadyNow() {
  const double now = clock_();
  if (now >= lastTick_) return now;
  if (lastTick_ - now <= kGap) return lastTick_;
  closeSpan(lastTick_);
  candidate_.reset();
  lastEnd_ = lastPresence_ = 0;
  lastTick_ = now;
  return now;
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
      closeSpan(lastTick_);
      candidate_.reset();
      break;
  }
  lastTick_ = now;
  lastUptime_ = uptime_();
  keepUp();
  if (live_.paused() || asleep()) return;
  consider(observe(now), now);
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
  readSettings();
  if (locked_) return {Sample::idleSample(), now};
  const double idle = collectors_.idleSeconds();
  if (idle < settings_.idleThreshold) return {observeForeground(), now};
  if (collectors_.mediaPlaying()) {
    lastPresence_ = now;
    return {observeForeground(), now};
  }
  // Back-dated to the last input, but not into what is known to be watching or already recorded.
  return {Sample::idleSample(), std::max({now - idle, lastPresence_, lastEnd_})};
}

Sample Engine::observeForeground() {
  auto app = collectors_.frontmostApp();
  if (!app) return {.app = "Inconnu"};
  if (isLoginWindow(app->bundle)) return Sample::idleSample();

  auto tab = collectors_.browserTab(*app);
  if (!tab) tab = BrowserTab{.url = {}, .title = std::move(app->title)};
  Sample sample{.app = app->name, .bundle = app->bundle};
  sample.domain = domainOf(tab->url);
  if (sample.domain && settings_.excludes(*sample.domain)) {
    sample.domain.reset();
    return sample;
  }
  sample.url = std::move(tab->url);
  // What a window or a page calls itself is anybody's text.
  if (tab->title) sample.title = unlessBlank(firstBytes(*tab->title, kLongestTitle));
  if (settings_.privacy == Privacy::Domain) {
    sample.title.reset();
    sample.url.reset();
  }
  return sample;
}

void Engine::readSettings() {
  auto texts = db_.settingsNow();
  if (!texts || texts == settingTexts_) return;
  settings_ = Settings::of(*texts);
  settingTexts_ = std::move(texts);
}

void Engine::consider(Observation seen, double now) {
  if (open_ && open_->key == seen.sample.key()) {
    candidate_.reset();
    if (seen.sample.title != open_->sample.title) {
      open_->sample = std::move(seen.sample);
      publish();
    }
    heartbeat(now);
  } else if (open_ && !open_->sample.idle && !seen.sample.idle) {
    debounce(std::move(seen.sample), now);
  } else {
    // Going idle and coming back are facts, not glances.
    const double at = std::min(seen.at, now);
    closeSpan(at);
    openSpan(seen.sample, std::max(at, std::min(lastEnd_, now)));
    candidate_.reset();
    flush(now);
  }
}

void Engine::debounce(Sample sample, double now) {
  if (!candidate_ || candidate_->sample.key() != sample.key()) {
    candidate_ = Candidate{std::move(sample), now};
    heartbeat(now);
    return;
  }
  if (now - candidate_->since + kTickSeconds < settings_.minSpan - kJitter) {
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

Written Engine::hold(const TimeRange& range) {
  const double now = closingTime();
  if (open_) {
    describe();
    log_.extend(now);
  }
  auto written = log_.write();
  publish();
  if (!written) return written;
  log_.hold();
  cut_.reset();
  if (!open_ || open_->start >= range.end || now <= range.start || range.end <= range.start) {
    return written;
  }
  cut_ = {open_->start, now};
  // What comes next cannot have begun in what may be changed.
  lastEnd_ = std::max(lastEnd_, now);
  if (candidate_) candidate_->since = std::max(candidate_->since, now);
  return written;
}

void Engine::release(bool changed) {
  const auto cut = changed ? cut_ : std::nullopt;
  log_.release(cut ? std::optional(cut->at) : std::nullopt);
  cut_.reset();
  if (cut && open_ && open_->start == cut->start) {
    open_->start = cut->at;
    open_->titleTime.clear();
    open_->bestTitle = open_->sample.title;
    open_->bestTime = 0;
    log_.describe(open_->sample.title, open_->sample.url);
  }
  log_.write().forget();
  publish();
}

void Engine::openSpan(const Sample& sample, double at) {
  OpenSpan span{.key = sample.key(), .sample = sample, .start = at, .lastFlush = at};
  span.bestTitle = sample.title;
  if (sample.title) span.titleTime[*sample.title] = 0;
  open_ = std::move(span);
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
  lastEnd_ = std::max(open_->start, at);
  log_.close(lastEnd_);
  log_.write().forget();
  open_.reset();
  publish();
}

void Engine::heartbeat(double now) {
  if (open_->sample.title) countTitle(*open_->sample.title);
  flush(now);
}

// A page may show another title at every tick, for hours: those seen least are then forgotten.
void Engine::countTitle(const std::string& title) {
  constexpr std::size_t kMostTitles = 128;
  auto& times = open_->titleTime;
  if (times.size() >= kMostTitles && !times.contains(title)) {
    const auto least =
        std::min_element(times.begin(), times.end(), [](const auto& a, const auto& b) {
          return a.second < b.second;
        })->second;
    std::erase_if(times, [&](const auto& seen) {
      return seen.second <= least && seen.first != open_->bestTitle;
    });
  }
  const double seen = times[title] += kTickSeconds;
  if (seen > open_->bestTime) {
    open_->bestTime = seen;
    open_->bestTitle = title;
  }
}

void Engine::flush(double now) {
  if (now - open_->lastFlush < kFlushEvery - kJitter) return;
  describe();
  log_.extend(now);
  log_.write().forget();
  open_->lastFlush = now;
  publish();
}

// The stored URL must be one that was seen with the stored title, so the pair is written only while
// the title seen longest is the one in front.
void Engine::describe() {
  const auto& sample = open_->sample;
  if (sample.title && sample.title == open_->bestTitle) log_.describe(sample.title, sample.url);
}

void Engine::publish() {
  live_.setActivity(open_ ? std::optional(OpenActivity{log_.openId(), open_->sample})
                          : std::nullopt);
  live_.setWaiting(log_.waiting());
}

}  // namespace orvanta
