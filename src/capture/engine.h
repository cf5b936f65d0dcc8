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
#include "storage/database.h"

namespace orvanta {

/// Decides at every tick whether the user is active, idle, locked out or asleep, and keeps at most
/// one span open in the store. Not thread-safe: one thread at a time calls it; only the LiveState
/// is shared. Times are Unix seconds of the wall clock.
///
/// Spans of one run follow each other without overlap and never end before they start, also when
/// the wall clock is set back: a step of seconds makes time stand still until the clock has caught
/// up, a larger one closes the span at the last tick and starts afresh.
class Engine {
 public:
  /// The time between two ticks, as the title bookkeeping and the debouncing count it.
  static constexpr double kTickSeconds = 2.0;

  /// All outlive the engine.
  Engine(Database& db, const Collectors& collectors, LiveState& live, Clock clock);

  /// One observation. Call every kTickSeconds.
  void tick();

  /// Pauses, closing the open span, or resumes at the next tick; the choice is stored.
  void setPaused(bool paused);
  void setLocked(bool locked) { locked_ = locked; }
  void willSleep();
  void didWake() { asleep_ = false; }

  /// Closes the open span. The next tick opens a new one.
  void finish();

  /// Ends the open span, if it overlaps `range`, and goes on with the same activity in a new one.
  /// Yields when that was.
  std::optional<double> split(const TimeRange& range);

 private:
  struct OpenSpan {
    int64_t id = -1;  // -1 until it could be stored
    std::string key;
    Sample sample;  // the latest sample that belongs to the span
    std::optional<int64_t> project;
    double start = 0;
    double lastFlush = 0;
    std::map<std::string, double> titleTime;  // seconds seen per title, of the latest and longest
    std::optional<std::string> bestTitle;     // the title of titleTime with the most
    double bestTime = 0;
    std::optional<std::string> storedTitle;  // what the row holds
    std::optional<std::string> storedUrl;
  };
  struct Candidate {
    Sample sample;
    double since = 0;
  };
  struct Observation {
    Sample sample;
    double at = 0;  // when it began
  };

  double steadyNow();
  double closingTime();
  void bridgeGap(double now);
  Observation observe(double now);
  Sample observeForeground();
  bool excluded(const std::string& domain);
  void consider(Observation seen, double now);
  void debounce(Sample sample, double now);

  void openSpan(const Sample& sample, double at);
  void insertSpan(double end);
  void storeEnd(double end);
  void closeSpan(double at);
  void heartbeat(double now);
  void countTitle(const std::string& title);
  void flush(double now);
  void writeTitle();
  void publish();
  double numberSetting(const char* key, double fallback);

  Database& db_;
  const Collectors& collectors_;
  LiveState& live_;
  Clock clock_;

  bool locked_ = false;
  bool asleep_ = false;
  double lastTick_;
  double lastEnd_ = 0;       // end of the last closed span: nothing is recorded before it again
  double lastPresence_ = 0;  // when a playing video last told that somebody is watching
  std::optional<OpenSpan> open_;
  std::optional<Candidate> candidate_;
};

}  // namespace orvanta
