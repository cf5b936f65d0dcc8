#include "platform/published.h"

#include <utility>

namespace orvanta {

std::optional<WindowClaims> WindowClaims::told(const std::string& application,
                                               const std::string& windowClass,
                                               const std::string& title, int32_t pid) {
  if (application.empty() && windowClass.empty() && title.empty()) return {};
  return WindowClaims{.names = {application, windowClass},
                      .fallbackName = windowClass.empty() ? application : windowClass,
                      .title = title.empty() ? std::nullopt : std::optional(title),
                      .pid = pid};
}

std::optional<FrontmostApp> PublishedForeground::frontmostApp() {
  std::optional<WindowClaims> front;
  {
    const std::lock_guard lock(mutex_);
    front = front_;
  }
  if (!front) return {};
  std::optional<DesktopEntry> entry;
  for (const auto& name : front->names) {
    if (!entry) entry = entries_.find(name);
  }
  FrontmostApp app{.name = std::move(front->fallbackName),
                   .bundle = {},
                   .pid = front->pid,
                   .names = std::move(front->names),
                   .title = std::move(front->title)};
  if (entry) {
    app.name = entry->name;
    app.bundle = entry->id;
    app.categories = std::move(entry->categories);
  }
  if (app.name.empty()) app.name = "Inconnu";
  return app;
}

bool PublishedForeground::titlesReadable() {
  const std::lock_guard lock(mutex_);
  return readable_;
}

bool PublishedForeground::doubtful() {
  const std::lock_guard lock(mutex_);
  return readable_ && !hasSeen_ && clock_().awake - readableSince_ >= kFirstWindow.count();
}

void PublishedForeground::setReadable(bool readable) {
  const std::lock_guard lock(mutex_);
  if (readable && !readable_) readableSince_ = clock_().awake;
  readable_ = readable;
  if (readable) return;
  front_.reset();
  hasSeen_ = false;
}

void PublishedForeground::publish(std::optional<WindowClaims> window) {
  const std::lock_guard lock(mutex_);
  front_ = std::move(window);
  hasSeen_ = hasSeen_ || front_;
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
