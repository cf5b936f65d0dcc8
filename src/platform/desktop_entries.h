// Which installed application a window belongs to.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>

namespace orvanta {

/// What the desktop knows of an application.
struct DesktopEntry {
  std::string id;    ///< desktop-file id without ".desktop"
  std::string name;  ///< in the user's language
};

/// Finds the desktop file of a window by the names that the window gives itself. Answers are kept
/// for some minutes: the search may read every installed desktop file, and applications come and
/// go. Not thread-safe.
class DesktopEntries {
 public:
  /// By application id ("org.gnome.TextEditor"): the desktop file of that name.
  /// By window class ("Navigator", "firefox-esr"): the file named like it, the file that claims it
  /// as StartupWMClass, the file named like it in lower case, the file whose id ends in it.
  std::optional<DesktopEntry> find(const std::string& name);

 private:
  std::chrono::steady_clock::time_point since_;
  std::map<std::string, std::optional<DesktopEntry>> known_;
};

}  // namespace orvanta
