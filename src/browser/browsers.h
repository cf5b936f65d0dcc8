// The web browsers whose active tab can be read.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

/// Browsers of one kind are asked in one way and write their window titles in one way. Where
/// nothing tells the private windows from the others, none is asked about.
enum class BrowserKind { kChromium, kFirefox, kWebKit, kUntold };

struct Browser {
  using Names = std::initializer_list<std::string_view>;

  std::string_view bundle;  ///< one identifier on every platform
  std::string_view name;    ///< for display
  BrowserKind kind;
  /// Desktop-file ids, window classes and program files, of distributions, vendors, Flatpak and
  /// snap; with slashes, a folder of its program, whose name another has, too. One that does not
  /// exist on Linux has none.
  Names aliases;
  Names titles;  ///< as it writes itself at the end of a window title
  /// Where it keeps its profiles: with a point below the home folder, else below the configuration
  /// folder; the usual one first. One that does not take our extension has none.
  Names profiles;
  Names manifests;  ///< where it looks for manifests, where that is not beside its profiles
  Names traces;     ///< what else in the configuration folder tells that it is installed
  /// Where it looks for everybody's manifests: "etc/…", or "lib/…" below the prefix.
  std::string_view everybody;

  bool takesExtension() const { return profiles.size() > 0; }
};

/// The file by which a browser finds our helper program.
inline constexpr auto kTabManifest = "fr.quellvane.orvanta.tab.json";

/// The browser table.
std::span<const Browser> browsers();

/// By the identifier or an alias of the table, in any letter case. Null when it is none.
const Browser* findBrowser(std::string_view name);

/// By the program file that the process runs. Null when it is no browser.
const Browser* browserOfProcess(int32_t pid);

/// The browser that a window belongs to: by its desktop-file id, and where that tells nothing, by
/// the other names that it goes by, then by its process (0 when unknown). A web application in a
/// window of its own is no browser.
const Browser* browserOfWindow(const std::optional<std::string>& bundle, int32_t pid,
                               const std::vector<std::string>& names = {});

/// A browser that runs: its main process.
struct RunningBrowser {
  const Browser* browser;
  int32_t pid;
};

/// This user's, in the order of their process numbers; one entry an instance. They are recognised
/// by the name of their program file.
std::vector<RunningBrowser> runningBrowsers();

/// Whether a window with this title is surely no private one. Firefox and its kin add the mark of
/// private browsing to the title, in the user's language, so only a title that ends with the plain
/// name of the browser is sure. Chromium and its kin mark only the title that they give to screen
/// readers. Page titles come first in a title and cannot feign its end; one that may have lost its
/// end, being very long, is not sure.
bool showsPublicWindow(const Browser& browser, std::string_view windowTitle);

/// The same of the title in the accessibility tree.
bool showsPublicFrame(const Browser& browser, std::string_view frameName);

/// Whether the profile that this process of Firefox or its kin has open holds this line of
/// settings.
bool profileSays(int32_t pid, std::string_view line);

/// Where the helper program finds the title of the window in front; which window that is,
/// Chromium's accessibility tree does not tell.
inline constexpr auto kWindowTitleVariable = "ORVANTA_WINDOW_TITLE";

}  // namespace orvanta
