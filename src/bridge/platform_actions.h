// What the dashboard's requests ask of the desktop.
#pragma once

#include <boost/json/object.hpp>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvanta {

/// A browser that runs now.
struct BrowserName {
  std::string bundle;  ///< its identifier in the browser table
  std::string name;
};

/// How the test of a browser ended.
struct BrowserTest {
  bool ok = false;  ///< its active tab could be read
  std::string error;
};

/// Filled in where the program is put together; what is left as it is does nothing. All are called
/// on the queue that answers requests. Those without a result return at once and act later, on the
/// main thread.
struct PlatformActions {
  std::function<bool()> accessibilityGranted = [] { return false; };
  /// Which desktop service each probe uses, by the probe's name.
  std::function<boost::json::object()> probes = [] { return boost::json::object(); };
  /// The same in the user's language.
  std::function<boost::json::object()> probeNames = [] { return boost::json::object(); };
  std::function<void()> requestAccessibility = [] {};
  /// A French sentence that says why window titles are missing, "" when they are not.
  std::function<std::string()> whyTitlesAreMissing = [] { return std::string(); };

  std::function<std::vector<BrowserName>()> runningBrowsers = [] {
    return std::vector<BrowserName>();
  };
  std::function<bool(const std::string& bundle)> isBrowser = [](const std::string&) {
    return false;
  };
  /// Blocks until the browser has answered or a minute is over. Absent when that was given up,
  /// since the program ends.
  std::function<std::optional<BrowserTest>(const std::string& bundle)> testBrowser =
      [](const std::string&) { return BrowserTest(); };
  std::function<void()> openAutomation = [] {};

  std::function<void(const std::string& url)> openUrl = [](const std::string&) {};
  std::function<void()> revealData = [] {};
  /// Lets the user choose where to save, and blocks until then. Absent when that was cancelled or
  /// there is no window to ask in.
  std::function<std::optional<std::filesystem::path>(const std::string& suggestedName)> saveAs =
      [](const std::string&) { return std::nullopt; };
  std::function<void()> refreshMenu = [] {};
  std::function<void()> quit = [] {};
};

}  // namespace orvanta
