// How the native-messaging hosts of our browser extension tell the active tab to whoever asks.
//
// Each host keeps one Unix socket in a folder that only the user can enter, named after the process
// numbers of its browser and of itself. Who connects is told the state at once, as text, and the
// connection ends:
//
//     tab SINCE LF URL LF TITLE      the tab of a window that may be read
//     none SINCE                     no such window is in front in that browser profile
//
// SINCE is when that window came to the front, in seconds of the system's monotonic clock. A title
// may contain line feeds.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "base/owned_fd.h"

namespace orvanta {

struct ActiveTab {
  std::string url;
  std::string title;

  friend bool operator==(const ActiveTab&, const ActiveTab&) = default;
};

/// What one host knows.
struct TabState {
  std::optional<ActiveTab> tab;  ///< absent when no readable window is in front
  double since = 0;              ///< seconds of the monotonic clock
};

/// `$XDG_RUNTIME_DIR/orvanta`, the variable defaulting to `/run/user/UID`.
std::filesystem::path tabSocketFolder();

/// Seconds of the monotonic clock.
double monotonicNow();

/// The socket of one host.
struct TabHost {
  std::filesystem::path path;
  int32_t browser = 0;  ///< process number
};

/// All hosts that have a socket, dead ones included.
std::vector<TabHost> tabHosts(const std::filesystem::path& folder);

/// What the hosts of one browser say together.
struct TabAnswer {
  enum class Kind {
    kNoHost,  ///< nobody serves this browser
    kMute,    ///< somebody does, and did not answer in time
    kState,
  };
  Kind kind = Kind::kNoHost;
  std::optional<ActiveTab> tab;  ///< of the window that came to the front last
};

/// Asks those hosts of `hosts`, one after the other, until `patience` is over for all of them
/// together. A browser has one host a profile.
TabAnswer askHosts(const std::vector<TabHost>& hosts, std::chrono::milliseconds patience);

/// The serving side, for one thread that waits for file() with poll.
class TabServer {
 public:
  /// Listens in `folder`, which is made if need be, and removes what dead hosts left there. Throws
  /// std::system_error.
  TabServer(const std::filesystem::path& folder, int32_t browser, int32_t host);
  /// Removes the socket.
  ~TabServer();
  TabServer(const TabServer&) = delete;
  TabServer& operator=(const TabServer&) = delete;

  /// Readable when somebody asks.
  int file() const { return listener_.get(); }
  /// Answers all who ask.
  void answer();
  void setState(TabState state) { state_ = std::move(state); }
  const TabState& state() const { return state_; }

 private:
  std::filesystem::path path_;
  OwnedFd listener_;
  TabState state_;
};

}  // namespace orvanta
