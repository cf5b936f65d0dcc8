// A desktop that shows what a test tells it to, and a clock that a test moves.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "base/clock.h"
#include "capture/collectors.h"
#include "platform/desktop.h"

namespace orvanta::test {

/// All probes in one. Set the fields between ticks.
struct FakeDesktop : ForegroundProbe, IdleProbe, InhibitionProbe {
  std::optional<FrontmostApp> app;
  std::optional<std::string> title;
  double idle = 0;
  bool awake = false;  // something keeps the display awake
  bool readable = true;
  std::map<std::string, BrowserTab> tabs;  // by bundle
  int inhibitionQuestions = 0;

  void show(const std::string& name, std::optional<std::string> windowTitle = {}) {
    app = FrontmostApp{name, "org.example." + name, 7};
    title = std::move(windowTitle);
  }
  void browse(const std::string& url, const std::string& tabTitle) {
    show("Firefox", "titre de fenêtre");
    tabs[*app->bundle] = {url, tabTitle};
  }

  std::optional<FrontmostApp> frontmostApp() override {
    auto front = app;
    if (front && readable) front->title = title;
    return front;
  }
  bool titlesReadable() override { return readable; }
  double idleSeconds() override { return idle; }
  bool displayKeptAwake() override {
    ++inhibitionQuestions;
    return awake;
  }
  Source source() override { return {"fake", "Fake"}; }

  /// Probes that see this desktop, which outlives them.
  Desktop probes() {
    auto blind = blindDesktop();
    const std::shared_ptr<FakeDesktop> self(std::shared_ptr<void>(), this);  // owned elsewhere
    blind.foreground = self;
    blind.idle = self;
    blind.inhibition = self;
    return blind;
  }

  Collectors collectors{*this, *this, *this,
                        [this](const FrontmostApp& front) -> std::optional<BrowserTab> {
                          const auto tab = tabs.find(front.bundle.value_or(""));
                          if (tab == tabs.end()) return {};
                          return tab->second;
                        }};
};

/// Starts on 14 November 2023, 22:13:20 UTC.
struct FakeClock {
  std::atomic<double> now = 1'700'000'000.0;
  std::atomic<double> slept = 0;  ///< seconds of the time that has passed
  std::atomic<double> set = 0;    ///< seconds that have not passed: somebody set the clock

  void sleep(double seconds) {
    now = now + seconds;
    slept = slept + seconds;
  }
  void step(double seconds) {
    now = now + seconds;
    set = set + seconds;
  }
  Clock read() {
    return [this] { return now.load(); };
  }
  UptimeClock uptime() {
    return [this] {
      const double total = now - set;
      return Uptime{total, total - slept};
    };
  }
};

}  // namespace orvanta::test
