// The active tab of whichever browser is in front.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "browser/browsers.h"
#include "browser/private_profiles.h"
#include "capture/collectors.h"
#include "capture/script_runner.h"

namespace orvanta {

/// Asks, in this order: the browser's extension, through the socket of its native-messaging host
/// (no process is started); the helper program, which can also read the accessibility tree; the
/// title of the window. Nothing of a private window comes out: the extension does not see one, the
/// helper drops it, and a window title is taken only when it shows that the window is no private
/// one and no extension could have told of the window. Of a browser whose private windows cannot be
/// told, in the table or not, and of a Firefox that has no others nothing is read at all. The
/// operations may be called from any thread.
class BrowserTabs {
 public:
  /// `helper` is the program `orvanta-tab`, `socketFolder` where the hosts have their sockets.
  BrowserTabs(std::filesystem::path helper, std::filesystem::path socketFolder, RunChild runChild,
              Clock clock, Log log);

  /// What the helper program is to be asked for this browser; absent when the bundle is none that
  /// is known. `bundle` is an identifier of the browser table or another name of the browser.
  static std::optional<std::string> browserScript(const std::string& bundle);

  /// Of the application in front; absent when it is no browser. Blocks for 150 ms at most where the
  /// extension is connected, otherwise for as long as ScriptRunner::run does.
  std::optional<BrowserTab> browserTab(const FrontmostApp& app);

  /// Asks the helper about any running instance of the browser; `patient`: giving a connection that
  /// is being made some seconds. `bundle` must have a script. The cool-down of the query is 5 s,
  /// its time-out 60 s.
  ScriptResult test(const std::string& bundle, bool patient);

  /// Whether the extension of this process of a browser is there. Blocks for 150 ms at most.
  bool isConnected(int32_t browser) const;

  /// Every browser is tried again at the next tick.
  void resetBrowserCooldowns() { runner_.resetCooldowns(); }

  /// Ends what the helper is being asked, and asks it nothing any more.
  void giveUp() { runner_.giveUp(); }

 private:
  std::optional<BrowserTab> askExtension(const Browser& browser, int32_t pid);
  bool showsOnlyPrivateWindows(const Browser& browser, int32_t pid);
  BrowserTab askHelper(const Browser& browser, const FrontmostApp& app);

  const std::filesystem::path helper_;
  const std::filesystem::path socketFolder_;
  PrivateProfiles privateProfiles_;
  ScriptRunner runner_;
};

}  // namespace orvanta
