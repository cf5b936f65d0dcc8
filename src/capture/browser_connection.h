// What the user can do about the browsers: see which there are, connect them, test a connection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/child_process.h"
#include "browser/browser_setup.h"
#include "browser/browser_steps.h"
#include "capture/browser_tabs.h"

namespace orvanta {

/// One browser of this user, however many of its processes run.
struct BrowserState {
  const Browser* browser = nullptr;
  int32_t pid = 0;         ///< a connected one's, else the last one's; 0 when none runs
  bool connected = false;  ///< its extension is there
  std::string obstacle;
  std::vector<SetupStep> steps;
};

/// For the requests of the dashboard and for the command line. The operations may be called from
/// any thread.
class BrowserConnection {
 public:
  using Running = std::function<std::vector<RunningBrowser>()>;

  /// `tabs` outlives the object.
  BrowserConnection(BrowserTabs& tabs, BrowserSetup setup, Running running = runningBrowsers,
                    RunChild runChild = orvanta::runChild)
      : tabs_(tabs),
        setup_(std::move(setup)),
        running_(std::move(running)),
        runChild_(std::move(runChild)) {}

  /// This user's browsers: those that run, then those that are installed.
  std::vector<BrowserState> states() const;

  /// Absent when the bundle is no browser that is known.
  static std::optional<std::string> browserScript(const std::string& bundle) {
    return BrowserTabs::browserScript(bundle);
  }

  void resetBrowserCooldowns() { tabs_.resetBrowserCooldowns(); }

  /// Sets the browser up to start our helper. "", or a French sentence when that failed.
  std::string connect(const std::string& bundle) const;

  /// Opens the page of a step in the browser, which runs. "", or a French sentence when that
  /// failed. Blocks for 10 s at most.
  std::string openPage(const std::string& bundle, std::size_t step) const;

  /// Sets the browser up, then asks it for its tab, under the key "browser:" + bundle, with a
  /// cool-down of 5 s and a time-out of 60 s. Where it had not been set up before, an extension
  /// that may be there is waited for, up to 12 s. When there is no output the error text tells the
  /// user in French why and what to do.
  ScriptResult test(const std::string& bundle);

  /// The page to show to a user who wants to connect a browser.
  std::filesystem::path helpPage() const { return setup_.helpPage(); }

 private:
  std::string advice(const Browser& browser) const;
  int32_t processOf(const Browser& browser) const;

  BrowserTabs& tabs_;
  const BrowserSetup setup_;
  const Running running_;
  const RunChild runChild_;
};

}  // namespace orvanta
