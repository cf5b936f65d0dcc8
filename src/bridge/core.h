// The program without its face: what records, sorts, reports and answers, put together once.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "base/child_process.h"
#include "base/clock.h"
#include "base/program_files.h"
#include "bridge/router.h"
#include "bridge/shell.h"
#include "browser/tab_socket.h"
#include "capture/browser_connection.h"
#include "capture/collectors.h"
#include "capture/tracker.h"
#include "classify/app_rules.h"
#include "platform/desktop.h"
#include "platform/login_item.h"
#include "reports/analytics.h"
#include "storage/backups.h"
#include "storage/database.h"
#include "storage/history.h"
#include "storage/store_keeper.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// Made and destroyed on the main thread. Records nothing before tracker.start(). What stands below
/// uses what stands above, so destruction runs in a safe order.
struct Core {
  struct Browsers {
    std::filesystem::path helper = ownProgram("orvanta-tab");
    std::filesystem::path sockets = tabSocketFolder();
    RunChild runChild = orvanta::runChild;
    BrowserSetup setup = BrowserSetup::ofUser();
    std::function<std::vector<RunningBrowser>()> running = runningBrowsers;
  };
  /// What it works on; the references outlive it.
  struct Parts {
    Database& db;
    Desktop& desktop;
    Shell& shell;
    Browsers browsers;
    LoginItem loginItem = LoginItem::ofUser();
    AppFacts facts = appFacts(ORVANTA_VERSION);
    std::string service = serviceUrl();
    Clock clock = wallClock;
    UptimeClock uptime = machineUptime;
    Calendar calendar;
    Log log = systemLog;
  };

  explicit Core(Parts parts);
  Core(const Core&) = delete;
  Core& operator=(const Core&) = delete;

  const Clock clock;
  const Calendar calendar;
  Database& db;
  Desktop& desktop;
  Shell& shell;
  AppRules appRules;
  BrowserTabs tabs;
  BrowserConnection browsers;
  const LoginItem loginItem;
  Collectors collectors;
  Tracker tracker;
  Analytics analytics;
  History history;
  Backups backups;
  StoreKeeper keeper;
  Telemetry telemetry;
  std::atomic<int64_t> highestProject = 0;  ///< id that a project had in this run
  Router router{*this};
};

}  // namespace orvanta
