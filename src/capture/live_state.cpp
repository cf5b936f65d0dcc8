#include "capture/live_state.h"

#include <utility>

namespace orvanta {

LiveState::LiveState(Clock clock, bool paused) : clock_(std::move(clock)), paused_(paused) {}

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
  const std::lock_guard lock(mutex_);
  return paused_;
}

void LiveState::setPaused(bool paused) {
  const std::lock_guard lock(mutex_);
  paused_ = paused;
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
