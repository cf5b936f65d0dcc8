// Which installed application a window belongs to.
#pragma once

#include <chrono>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace orvanta {

/// What the desktop knows of an application.
struct DesktopEntry {
  std::string id;                       ///< desktop-file id without ".desktop"
  std::string name;                     ///< in the user's language
  std::vector<std::string> categories;  ///< as it lists them: "Network", "WebBrowser"
};

/// Finds the desktop file of a window by the names that the window gives itself. Answers are kept
/// for some minutes, since applications come and go. A name that no file has makes it read all that
/// are installed, once in that time: some ten milliseconds. From any thread.
class DesktopEntries {
 public:
  /// By application id ("org.gnome.TextEditor"): the desktop file of that name.
  /// By window class ("Navigator", "firefox-esr"): the file named like it, the file that claims it
  /// as StartupWMClass, the file named like it in lower case, the file whose id ends in it.
  /// This program is known also where it is not installed.
  std::optional<DesktopEntry> find(const std::string& name);

 private:
  /// What all desktop files say of themselves.
  struct Index {
    std::map<std::string, std::string> byClass;  // StartupWMClass to id
    std::vector<std::string> ids;
  };

  static Index readAll();
  std::optional<DesktopEntry> search(const std::string& name);

  std::mutex mutex_;  // guards all
  std::chrono::steady_clock::time_point since_;
  std::map<std::string, std::optional<DesktopEntry>> known_;
  std::optional<Index> index_;
};

}  // namespace orvanta
