#include "capture/engine.h"

#include <algorithm>
#include <boost/json/parse.hpp>
#include <utility>

#include "base/text.h"

namespace orvanta {
namespace {

constexpr double kGap = 20.0;              // more between two ticks: the machine slept
constexpr double kForgetProject = 3600.0;  // a gap after which the user starts something new
constexpr double kFlushEvery = 10.0;       // at most this much is lost in a crash
constexpr double kJitter = 0.05;           // by which a tick may follow the last one too early

std::vector<std::string> stringList(const std::string& json) {
  boost::system::error_code broken;
  const auto parsed = boost::json::parse(json, broken);
  std::vector<std::string> list;
  if (broken || !parsed.is_array()) return list;
  for (const auto& entry : parsed.get_array()) {
    if (!entry.is_string()) return {};
    list.emplace_back(entry.get_string());
  }
  return list;
}

}  // namespace

Engine::Engine(Database& db, const Collectors& collectors, LiveState& live, Clock clock)
    : db_(db), collectors_(collectors), live_(live), clock_(std::move(clock)), lastTick_(clock_()) {
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

// A process that was stopped with the machine learns late that it should close: the sleep is not
// activity, so the span ends where it was last seen.
double Engine::closingTime() {
  const double now = steadyNow();
  if (now - lastTick_ <= kGap) lastTick_ = now;
  return lastTick_;
}

void Engine::tick() {
  const double now = steadyNow();
  if (now - lastTick_ > kGap) bridgeGap(now);
  lastTick_ = now;
  if (live_.paused() || asleep_) return;
  consider(observe(now), now);
}

void Engine::bridgeGap(double now) {
  closeSpan(lastTick_);
  openSpan(Sample::idleSample(), std::max(lastTick_, lastEnd_));
  closeSpan(now);
  candidate_.reset();
  if (now - lastTick_ > kForgetProject) live_.setCurrentProjectId({});
}

Engine::Observation Engine::observe(double now) {
  if (locked_) return {Sample::idleSample(), now};
  const double idle = collectors_.idleSeconds();
  if (idle < numberSetting("idle_threshold", 180.0)) return {observeForeground(), now};
  if (collectors_.mediaPlaying()) {
    lastPresence_ = now;
    return {observeForeground(), now};
  }
  // Back-dated to the last input, but not into what is known to be watching or already recorded.
  return {Sample::idleSample(), std::max({now - idle, lastPresence_, lastEnd_})};
}

Sample Engine::observeForeground() {
  const auto app = collectors_.frontmostApp();
  if (!app) return {.app = "Inconnu"};
  if (isLoginWindow(app->bundle)) return Sample::idleSample();

  auto tab = collectors_.browserTab(*app);
  if (!tab) tab = BrowserTab{.url = {}, .title = collectors_.windowTitle(app->pid)};
  Sample sample{.app = app->name, .bundle = app->bundle};
  sample.domain = domainOf(tab->url);
  if (sample.domain && excluded(*sample.domain)) {
    sample.domain.reset();
    return sample;
  }
  sample.url = std::move(tab->url);
  sample.title = std::move(tab->title);
  if ((sample.title || sample.url) && db_.setting("privacy_mode") == "domain") {
    sample.title.reset();
    sample.url.reset();
  }
  return sample;
}

bool Engine::excluded(const std::string& domain) {
  const auto entries = stringList(db_.setting("excluded_domains"));
  return std::any_of(entries.begin(), entries.end(), [&](const std::string& entry) {
    const auto lowered = lowerCase(entry);
    return domain == lowered || domain.ends_with("." + lowered);
  });
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
  if (now - candidate_->since + kTickSeconds < numberSetting("min_span_seconds", 10.0) - kJitter) {
    heartbeat(now);
    return;
  }
  const double since = candidate_->since;
  closeSpan(since);
  openSpan(sample, since);
  candidate_.reset();
}

void Engine::setPaused(bool paused) {
  live_.setPaused(paused);
  db_.setSetting("paused", paused ? "1" : "0");
  if (!paused) return;
  closeSpan(closingTime());
  candidate_.reset();
}

void Engine::willSleep() {
  asleep_ = true;
  closeSpan(closingTime());
}

void Engine::finish() {
  closeSpan(closingTime());
}

std::optional<double> Engine::split(const TimeRange& range) {
  const double now = closingTime();
  if (!open_ || open_->start >= range.end || now <= range.start) return {};
  const auto sample = open_->sample;
  closeSpan(now);
  openSpan(sample, now);
  return now;
}

void Engine::openSpan(const Sample& sample, double at) {
  OpenSpan span{.key = sample.key(), .sample = sample, .start = at, .lastFlush = at};
  span.bestTitle = span.storedTitle = sample.title;
  span.storedUrl = sample.url;
  if (sample.title) span.titleTime[*sample.title] = 0;
  if (!sample.idle) span.project = live_.currentProjectId();
  open_ = std::move(span);
  insertSpan(at);
}

void Engine::insertSpan(double end) {
  const auto& sample = open_->sample;
  open_->id = db_.run(
      "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,project_id) "
      "VALUES (?,?,?,?,?,?,?,?,?)",
      {open_->start, end, sample.app, sample.bundle, open_->storedTitle, open_->storedUrl,
       sample.domain, sample.idle, open_->project});
  publish();
}

void Engine::closeSpan(double at) {
  if (!open_) return;
  storeEnd(std::max(open_->start, at));
  lastEnd_ = std::max(open_->start, at);
  open_.reset();
  publish();
}

// A span that could not be stored when it began (the disk was full) is stored as soon as it can be.
void Engine::storeEnd(double end) {
  writeTitle();
  if (open_->id < 1) {
    insertSpan(end);
  } else {
    db_.run("UPDATE events SET end=max(start, ?) WHERE id=?", {end, open_->id});
  }
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
  storeEnd(now);
  open_->lastFlush = now;
}

// The stored URL must be one that was seen with the stored title, so the pair is written only while
// the title seen longest is the one in front.
void Engine::writeTitle() {
  const auto& sample = open_->sample;
  if (!sample.title || sample.title != open_->bestTitle) return;
  if (sample.title == open_->storedTitle && sample.url == open_->storedUrl) return;
  db_.run("UPDATE events SET title=?, url=? WHERE id=?", {sample.title, sample.url, open_->id});
  open_->storedTitle = sample.title;
  open_->storedUrl = sample.url;
}

void Engine::publish() {
  live_.setActivity(open_ ? std::optional(OpenActivity{open_->id, open_->sample}) : std::nullopt);
}

double Engine::numberSetting(const char* key, double fallback) {
  return parseNumber(db_.setting(key)).value_or(fallback);
}

}  // namespace orvanta
