// Turns observations into stored spans.
#pragma once

#include <optional>

#include "base/calendar.h"
#include "base/clock.h"
#include "capture/absences.h"
#include "capture/collectors.h"
#include "capture/foreground.h"
#include "capture/live_state.h"
#include "capture/open_span.h"
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
///
/// An absence begins with the last input, also where windows came to the front by themselves since:
/// their spans are taken back. But it reaches neither into an earlier one, nor into a film or a
/// call, a pause, or what an earlier run recorded.
class Engine {
 public:
  /// The time between two ticks, as the title bookkeeping and the debouncing count it.
  static constexpr double kTickSeconds = 2.0;

  /// All outlive the engine.
  Engine(Database& db, const Collectors& collectors, LiveState& live, Clock clock,
         UptimeClock uptime = machineUptime);

  /// Before the first tick of whoever keeps the store: what an earlier run recorded while nobody
  /// was there ends with the last input, should that run have been killed.
  void takeUp();

  /// One observation. Call every kTickSeconds.
  void tick();

  /// Is told when somebody is back, some seconds after: of the time in which there was no activity,
  /// and no pause.
  void setReturned(Absences::Returned returned) { absences_.setReturned(std::move(returned)); }

  /// Closes the open span. LiveState says whether the next tick opens one.
  void pause();
  void setLocked(bool locked) { locked_ = locked; }
  void willSleep();
  void didWake() { asleepSince_.reset(); }

  /// Closes the open span and waits as any write does for what could not be stored. The next tick
  /// opens a new one.
  void finish();

  enum class Changes {
    Anything,
    Absences  ///< activity stays as it is
  };
  /// Stores all until now, and from then to release() nothing, so that what was recorded in `range`
  /// may be changed; on failure nothing is held. Ticks go on. Does not wait.
  Written hold(const TimeRange& range, Changes what = Changes::Anything);
  /// Where what may be changed after hold() ends: now, or with an activity that goes on and stays
  /// as it is. Absent where nothing that is being recorded is in the range.
  std::optional<double> limit() const { return limit_; }
  /// If it was changed, the same activity goes on in a span of its own from the cut.
  void release(bool changed);

  void forgetProject(int64_t project) { log_.forgetProject(project); }

 private:
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
  void startAfresh(double now);
  bool asleep();
  void readLastEnd();
  void keepUp();
  double closingTime();
  void bridgeGap(double now);
  Observation observe(double now);
  std::optional<double> pauseEnded(double now);
  void consider(Observation seen, double now);
  void endBy(double at);
  void debounce(Sample sample, double now);

  void openSpan(const Sample& sample, double at);
  void closeSpan(double at);
  void heartbeat(double now);
  void flush(double now);
  void noteInput(double now);
  void describe();
  void publish();

  Database& db_;
  const Collectors& collectors_;
  LiveState& live_;
  const Clock clock_;
  const UptimeClock uptime_;
  SpanLog log_;
  Foreground foreground_;
  double minSpan_ = 0;  // seconds, as the settings were at the last look

  bool locked_ = false;
  std::optional<double> asleepSince_;  // of the uptime without sleep
  double lastTick_;
  Uptime lastUptime_;
  double lastKeptUp_ = 0;  // of the uptime without sleep
  double lastEnd_ = 0;     // end of the last closed span: nothing is recorded before it again
  double lastInput_ = 0;
  double lastFilm_ = 0;      // when something last played while there was no input
  double lastPresence_ = 0;  // when that last told that somebody is watching
  bool watching_ = false;    // nothing else tells of somebody
  Absences absences_;
  std::optional<OpenSpan> open_;
  std::optional<Candidate> candidate_;
  std::optional<Cut> cut_;
  std::optional<double> limit_;
};

}  // namespace orvanta
