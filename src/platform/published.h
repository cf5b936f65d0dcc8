// What the classes behind the probes share: a state that the desktop's events publish, and that the
// tick reads without waiting for anybody.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "platform/desktop_entries.h"
#include "platform/probes.h"

namespace orvanta {

/// The window in front as its desktop describes it: hostile text, here valid UTF-8.
struct WindowClaims {
  std::vector<std::string> names;  ///< application ids and window classes, the surest first
  std::string fallbackName;        ///< shown when no installed application has one of the names
  std::optional<std::string> title;
  int32_t pid = 0;  ///< 0 when the desktop does not tell

  /// What a desktop's shell tells of the window in front; absent when all texts are empty, which is
  /// how it says that there is none.
  static std::optional<WindowClaims> told(const std::string& application,
                                          const std::string& windowClass, const std::string& title,
                                          int32_t pid);
};

/// The probe's operations may be called from any thread, the protected ones from one other. The
/// installed applications are looked up by who asks: that may read files.
class PublishedForeground : public ForegroundProbe {
 public:
  /// How long a desktop may be without any window from the start.
  static constexpr std::chrono::seconds kFirstWindow{20};

  explicit PublishedForeground(UptimeClock clock = machineUptime) : clock_(std::move(clock)) {}

  std::optional<FrontmostApp> frontmostApp() override;
  bool titlesReadable() override;
  /// Once it has seen a window, it is believed that there is none.
  bool doubtful() override;

 protected:
  /// Whether the desktop's service is there. Forgets the window when it is not.
  void setReadable(bool readable);
  void publish(std::optional<WindowClaims> window);

 private:
  const UptimeClock clock_;
  DesktopEntries entries_;
  std::mutex mutex_;
  std::optional<WindowClaims> front_;
  bool readable_ = false;
  double readableSince_ = 0;  // of clock_, awake
  bool hasSeen_ = false;      // a window, since then
};

/// For services that tell when the user has been idle for kNoticedAfter, and when they are back.
/// The operations may be called from any thread.
class PublishedIdle : public IdleSource {
 public:
  /// Short, so that any idle threshold works; long enough that typing causes no events.
  static constexpr std::chrono::milliseconds kNoticedAfter{2000};

  /// 0 until the service has noticed, then from the last input.
  std::optional<double> idleSeconds() override;

 protected:
  /// Whether the service is there. It begins with an active user.
  void setAvailable(bool available);
  void idled();
  void resumed();

 private:
  std::mutex mutex_;
  bool available_ = false;
  std::optional<std::chrono::steady_clock::time_point> lastInput_;
};

}  // namespace orvanta
