// What the user can do about the browsers: see which run, connect them, test a connection.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "browser/browser_setup.h"
#include "capture/browser_tabs.h"

namespace orvanta {

/// For the requests of the dashboard and for the command line. The operations may be called from
/// any thread.
class BrowserConnection {
 public:
  using Running = std::function<std::vector<RunningBrowser>()>;

  /// `tabs` outlives the object.
  BrowserConnection(BrowserTabs& tabs, BrowserSetup setup, Running running = runningBrowsers)
      : tabs_(tabs), setup_(std::move(setup)), running_(std::move(running)) {}

  /// This user's browsers that run now.
  std::vector<RunningBrowser> running() const { return running_(); }

  /// Absent when the bundle is no browser that is known.
  static std::optional<std::string> browserScript(const std::string& bundle) {
    return BrowserTabs::browserScript(bundle);
  }

  void resetBrowserCooldowns() { tabs_.resetBrowserCooldowns(); }

  /// Sets the browser up to start our helper, then asks it for its tab, under the key
  /// "browser:" + bundle, with a cool-down of 5 s and a time-out of 60 s; a connection that is
  /// being made is waited for, up to 12 s. When there is no output the error text tells the user in
  /// French why and what to do.
  ScriptResult test(const std::string& bundle);

  /// Sets up every browser of this user, and tells in French which, and how to add the extension.
  std::string connectAll() const { return setup_.connectAll(); }

  /// The page to show to a user who wants to connect a browser.
  std::filesystem::path helpPage() const { return setup_.helpPage(); }

 private:
  BrowserTabs& tabs_;
  const BrowserSetup setup_;
  const Running running_;
};

}  // namespace orvanta
