// The probes as the capture engine asks them.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/probes.h"

namespace orvanta {

/// The active tab of a browser, as far as it could be read.
struct BrowserTab {
  std::optional<std::string> url;
  std::optional<std::string> title;
};

/// Reads the active tab when the application is a browser; absent for any other. A browser's window
/// title is the reader's business as well: the window may be a private one, whose title must not be
/// recorded.
using TabReader = std::function<std::optional<BrowserTab>(const FrontmostApp& app)>;

/// Is told of the application in front, at every look at it.
using AppSeen = std::function<void(const FrontmostApp& app)>;

/// All that can be observed, from whichever desktop services were chosen at start. Holds no state
/// of its own. Called from the tracker's queue; the probes outlive it.
class Collectors {
 public:
  Collectors(ForegroundProbe& foreground, IdleProbe& idle, InhibitionProbe& inhibition,
             TabReader tabs = {}, AppSeen seen = {});

  /// Its name cut to kLongestTitle; its title, of any length, without blanks at the ends, absent
  /// when that leaves nothing.
  std::optional<FrontmostApp> frontmostApp() const;
  bool accessibilityGranted() const { return foreground_.titlesReadable(); }
  double idleSeconds() const { return idle_.idleSeconds(); }
  bool mediaPlaying() const { return inhibition_.displayKeptAwake(); }
  std::optional<BrowserTab> browserTab(const FrontmostApp& app) const;

 private:
  ForegroundProbe& foreground_;
  IdleProbe& idle_;
  InhibitionProbe& inhibition_;
  TabReader tabs_;
  AppSeen seen_;
};

/// Whether this desktop-file id is a greeter or a screen locker: with one of them in front, nobody
/// is at work.
bool isLoginWindow(const std::optional<std::string>& bundle);

}  // namespace orvanta
