#include "capture/live_state.h"

#include <utility>

namespace orvanta {

LiveState::LiveState(Clock clock, std::optional<Pause> pause)
    : clock_(std::move(clock)), pause_(pause) {}

std::optional<OpenActivity> LiveState::activity() const {
  const std::lock_guard lock(mutex_);
  return activity_;
}

void LiveState::setActivity(std::optional<OpenActivity> activity) {
  const std::lock_guard lock(mutex_);
  activity_ = std::move(activity);
}

std::size_t LiveState::waiting() const {
  const std::lock_guard lock(mutex_);
  return waiting_;
}

void LiveState::setWaiting(std::size_t spans) {
  const std::lock_guard lock(mutex_);
  waiting_ = spans;
}

bool LiveState::paused() const {
  const auto known = pause();
  return known && !known->overAt(clock_());
}

std::optional<Pause> LiveState::pause() const {
  const std::lock_guard lock(mutex_);
  return pause_;
}

void LiveState::setPause(std::optional<Pause> pause) {
  const std::lock_guard lock(mutex_);
  pause_ = pause;
}

std::optional<double> LiveState::endPause(double now) {
  const std::lock_guard lock(mutex_);
  if (!pause_ || !pause_->overAt(now)) return {};
  return std::exchange(pause_, std::nullopt)->until;
}

std::optional<int64_t> LiveState::currentProjectId() const {
  const std::lock_guard lock(mutex_);
  return project_;
}

std::optional<double> LiveState::currentProjectSince() const {
  const std::lock_guard lock(mutex_);
  return projectSince_;
}

void LiveState::setCurrentProjectId(std::optional<int64_t> project, std::optional<double> since) {
  const double said = since.value_or(clock_());
  const std::lock_guard lock(mutex_);
  project_ = project;
  projectSince_ = project ? std::optional(said) : std::nullopt;
}

}  // namespace orvanta
