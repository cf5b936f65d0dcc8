// The capture as the rest of the program sees it: a queue of its own around the engine.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "base/clock.h"
#include "base/serial_queue.h"
#include "capture/collectors.h"
#include "capture/engine.h"
#include "capture/live_state.h"
#include "capture/retention.h"
#include "storage/database.h"

namespace orvanta {

/// Records what is in front every 2 seconds, on its own queue, from start() to shutdown().
/// Every operation may be called from any thread; those that change the capture return at once
/// unless they say otherwise.
class Tracker {
 public:
  /// What is being recorded now, and for how many seconds.
  struct Current {
    Sample sample;
    double elapsed = 0;
  };

  /// `db` and `collectors` outlive the tracker. Starts paused when the setting "paused" is "1".
  Tracker(Database& db, const Collectors& collectors, Clock clock = wallClock,
          UptimeClock uptime = machineUptime);

  /// Begins: the first tick comes after 1 s, then one every 2 s.
  void start();

  /// Holds at once; yields whether the choice is stored. A pause until then, Unix seconds, ends by
  /// itself.
  Written setPaused(bool paused, std::optional<double> until = {});
  /// The user has been told that the pause lasts.
  Written setReminded();
  /// Stores that a pause has ended by itself, if one has since.
  Written keepPauseEnd();
  void setLocked(bool locked);
  /// `done` is called on the tracker's queue once the open span is closed.
  void willSleep(std::function<void()> done);
  void didWake();

  /// Lets `work` change what was recorded in `range`, on the caller's thread. All until now is
  /// stored when it begins, and nothing is until it ends, though the capture goes on. Should the
  /// span that is being recorded overlap the range, `work` is told a range that ends now, and the
  /// same activity goes on in a span of its own if it has stored something. Yields what `work`
  /// yields, or why it was not called: what waits could not be stored within two seconds.
  Written changeRecorded(TimeRange range, const std::function<Written(const TimeRange&)>& work);

  /// The same for a `work` that changes no activity, only what lies between. An activity that is
  /// being recorded goes on as it is, and `work` is told a range that ends where it began, or now.
  Written changeAbsences(TimeRange range, const std::function<Written(const TimeRange&)>& work);

  /// Stops looking and closes the open span; returns when it is stored. For the end of the program.
  void shutdown();

  /// What is recorded from now on names this project no more. Returns at once.
  void forgetProject(int64_t project);

  /// Spans that could not be stored yet.
  std::size_t waiting() const { return live_.waiting(); }

  /// See Engine::setReturned. It is called on the tracker's queue.
  void setReturned(Absences::Returned returned);

  void setErased(Retention::Erased erased) { retention_.setErased(std::move(erased)); }
  /// See Retention::apply and Retention::start.
  void applyRetention() { retention_.apply(); }
  void startRetention() { retention_.start(); }

  std::optional<Current> current() const;
  /// Row id of the span that is being recorded, as far as it is stored.
  std::optional<int64_t> openSpanId() const;
  bool paused() const { return live_.paused(); }
  /// Also one that is over and has not been met by a tick.
  std::optional<Pause> pause() const { return live_.pause(); }
  std::optional<int64_t> currentProjectId() const { return live_.currentProjectId(); }
  std::optional<double> currentProjectSince() const { return live_.currentProjectSince(); }
  /// The project that new spans are stamped with. Forgotten after an hour away.
  /// See LiveState for `since`.
  void setCurrentProjectId(std::optional<int64_t> project, std::optional<double> since = {}) {
    live_.setCurrentProjectId(project, since);
  }

 private:
  Written change(TimeRange range, Engine::Changes what,
                 const std::function<Written(const TimeRange&)>& work);
  Written hold(TimeRange& range, Engine::Changes what);

  Database& db_;
  const Clock clock_;
  LiveState live_;
  std::mutex pauseMutex_;  // what is stored of a pause is the last that was said of it
  bool pauseStored_;       // guarded by it: the store tells of a pause
  Engine engine_;          // only touched on queue_
  Retention retention_;
  SerialQueue queue_;  // last: it ends before what its tasks use
};

}  // namespace orvanta
