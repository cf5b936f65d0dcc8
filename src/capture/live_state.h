// The few facts of the running capture that other threads look at or change.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>

#include "base/clock.h"
#include "capture/pause.h"
#include "capture/sample.h"

namespace orvanta {

/// A span that is being recorded.
struct OpenActivity {
  int64_t id = 0;  ///< row id in `events`; below 1 when it could not be stored
  Sample sample;   ///< the latest sample that belongs to it
};

/// Shared between the capture engine, which writes, and menu and dashboard, which read; the current
/// project goes both ways. Every operation may be called from any thread.
class LiveState {
 public:
  LiveState(Clock clock, std::optional<Pause> pause = {});

  std::optional<OpenActivity> activity() const;
  void setActivity(std::optional<OpenActivity> activity);

  /// Spans that could not be stored yet.
  std::size_t waiting() const;
  void setWaiting(std::size_t spans);

  /// Whether there is a pause that is not over.
  bool paused() const;
  /// The pause, over or not, until endPause() has met it.
  std::optional<Pause> pause() const;
  void setPause(std::optional<Pause> pause);
  /// Ends a pause that is over by then, and yields when that was.
  std::optional<double> endPause(double now);

  /// The project that the user says to be working on; stamped on new spans.
  std::optional<int64_t> currentProjectId() const;
  /// When that was said, Unix seconds; absent with the project.
  std::optional<double> currentProjectSince() const;
  /// `since` is when the user said so; absent for now.
  void setCurrentProjectId(std::optional<int64_t> project, std::optional<double> since = {});

 private:
  const Clock clock_;
  mutable std::mutex mutex_;
  std::optional<OpenActivity> activity_;
  std::size_t waiting_ = 0;
  std::optional<Pause> pause_;
  std::optional<int64_t> project_;
  std::optional<double> projectSince_;
};

}  // namespace orvanta
