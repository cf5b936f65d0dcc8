#include "platform/published.h"

#include <utility>

namespace orvanta {

std::optional<FrontmostApp> PublishedForeground::frontmostApp() {
  const std::lock_guard lock(mutex_);
  return front_ ? std::optional(front_->app) : std::nullopt;
}

std::optional<std::string> PublishedForeground::windowTitle(int32_t pid) {
  const std::lock_guard lock(mutex_);
  return front_ && front_->app.pid == pid ? front_->title : std::nullopt;
}

bool PublishedForeground::titlesReadable() {
  const std::lock_guard lock(mutex_);
  return readable_;
}

void PublishedForeground::setReadable(bool readable) {
  const std::lock_guard lock(mutex_);
  readable_ = readable;
  if (!readable) front_.reset();
}

void PublishedForeground::publish(const std::optional<WindowClaims>& window) {
  auto described = window ? std::optional(describe(*window)) : std::nullopt;
  const std::lock_guard lock(mutex_);
  front_ = std::move(described);
}

PublishedForeground::Window PublishedForeground::describe(const WindowClaims& claims) {
  std::optional<DesktopEntry> entry;
  for (const auto& name : claims.names) {
    if (!entry) entry = entries_.find(name);
  }
  Window window{
      .app = {.name = claims.fallbackName, .bundle = {}, .pid = claims.pid, .names = claims.names},
      .title = claims.title};
  if (entry) {
    window.app.name = entry->name;
    window.app.bundle = entry->id;
  }
  if (window.app.name.empty()) window.app.name = "Inconnu";
  return window;
}

std::optional<double> PublishedIdle::idleSeconds() {
  using std::chrono::duration;
  const std::lock_guard lock(mutex_);
  if (!available_) return {};
  if (!lastInput_) return 0;
  return duration<double>(std::chrono::steady_clock::now() - *lastInput_).count();
}

void PublishedIdle::setAvailable(bool available) {
  const std::lock_guard lock(mutex_);
  available_ = available;
  lastInput_.reset();
}

void PublishedIdle::idled() {
  const std::lock_guard lock(mutex_);
  lastInput_ = std::chrono::steady_clock::now() - kNoticedAfter;
}

void PublishedIdle::resumed() {
  const std::lock_guard lock(mutex_);
  lastInput_.reset();
}

}  // namespace orvanta
