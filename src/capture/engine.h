// Turns observations into stored spans.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "base/calendar.h"
#include "base/clock.h"
#include "capture/collectors.h"
#include "capture/live_state.h"
#include "capture/sample.h"
#include "capture/span_log.h"
#include "storage/database.h"

namespace orvanta {

/// Decides at every tick whether the user is active, idle, locked out or asleep, and keeps at most
/// one span open in the store. Not thread-safe: one thread at a time calls it; only the LiveState
/// is shared. Times are Unix seconds of the wall clock.
///
/// Spans of one run follow each other without overlap and never end before they start, also when
/// the wall clock is set back: a step of seconds makes time stand still until the clock has caught
/// up, a larger one, and one forward, closes the span at the last tick and starts afresh. A tick
/// that comes late because the machine is slow loses nothing; one after sleep finds an absence.
/// What the store cannot take at once waits, see SpanLog.
class Engine {
 public:
  /// The time between two ticks, as the title bookkeeping and the debouncing count it.
  static constexpr double kTickSeconds = 2.0;

  /// All outlive the engine.
  Engine(Database& db, const Collectors& collectors, LiveState& live, Clock clock,
         UptimeClock uptime = machineUptime);

  /// One observation. Call every kTickSeconds.
  void tick();

  /// Closes the open span. LiveState says whether the next tick opens one.
  void pause();
  void setLocked(bool locked) { locked_ = locked; }
  void willSleep();
  void didWake() { asleepSince_.reset(); }

  /// Closes the open span and waits as any write does for what could not be stored. The next tick
  /// opens a new one.
  void finish();

  /// Stores all until now, and from then to release() nothing, so that what was recorded in `range`
  /// may be changed; on failure nothing is held. Ticks go on. Does not wait.
  Written hold(const TimeRange& range);
  /// When the span that was open at hold() ends if what was recorded in its range is changed;
  /// absent where it does not overlap it.
  std::optional<double> cut() const { return cut_ ? std::optional(cut_->at) : std::nullopt; }
  /// If it was changed, the same activity goes on in a span of its own from the cut.
  void release(bool changed);

  void forgetProject(int64_t project) { log_.forgetProject(project); }

 private:
  struct OpenSpan {
    std::string key;
    Sample sample;  // the latest sample that belongs to the span
    double start = 0;
    double lastFlush = 0;
    std::map<std::string, double> titleTime;  // seconds seen per title, of the latest and longest
    std::optional<std::string> bestTitle;     // the title of titleTime with the most
    double bestTime = 0;
  };
  struct Candidate {
    Sample sample;
    double since = 0;
  };
  struct Observation {
    Sample sample;
    double at = 0;  // when it began
  };

  struct Cut {
    double start = 0;  // of the span
    double at = 0;
  };

  enum class Break { None, Absence, ClockSet };

  double steadyNow();
  Break breakBefore(double now) const;
  bool asleep();
  void keepUp();
  double closingTime();
  void bridgeGap(double now);
  Observation observe(double now);
  Sample observeForeground();
  void readSettings();
  void consider(Observation seen, double now);
  void debounce(Sample sample, double now);

  void openSpan(const Sample& sample, double at);
  void closeSpan(double at);
  void heartbeat(double now);
  void countTitle(const std::string& title);
  void flush(double now);
  void describe();
  void publish();

  Database& db_;
  const Collectors& collectors_;
  LiveState& live_;
  const Clock clock_;
  const UptimeClock uptime_;
  SpanLog log_;
  Settings settings_ = Settings::unread();
  std::optional<SettingTexts> settingTexts_;  // what settings_ was read from

  bool locked_ = false;
  std::optional<double> asleepSince_;  // of the uptime without sleep
  double lastTick_;
  Uptime lastUptime_;
  double lastKeptUp_ = 0;    // of the uptime without sleep
  double lastEnd_ = 0;       // end of the last closed span: nothing is recorded before it again
  double lastPresence_ = 0;  // when a playing video last told that somebody is watching
  std::optional<OpenSpan> open_;
  std::optional<Candidate> candidate_;
  std::optional<Cut> cut_;
};

}  // namespace orvanta
