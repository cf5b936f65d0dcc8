// Lets browsers start our helper program: native-messaging manifests in the user's folders.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "browser/browsers.h"

namespace orvanta {

/// Writes the manifests by which Chromium's and Firefox's kin find `orvanta-tab`, and tells the
/// user how to add our extension. Places by developer.chrome.com (Native messaging) and MDN (Native
/// manifests). A browser reads its manifest whenever the extension connects, so nothing has to be
/// restarted. May be used on any thread.
class BrowserSetup {
 public:
  struct Folders {
    std::filesystem::path home;
    std::filesystem::path config;  ///< $XDG_CONFIG_HOME
    static Folders ofUser();
  };

  /// For the user and the program of this process.
  static BrowserSetup ofUser();

  /// `helper` is the program, `data` the folder with the extension and the manifests' templates.
  BrowserSetup(Folders folders, std::filesystem::path helper, std::filesystem::path data);

  /// Writes the manifest wherever this browser looks for it, the profiles of running instances
  /// included. An empty text, or the system's words when a file could not be written.
  std::string connect(const Browser& browser) const;

  /// Does so for all browsers that are installed for this user: those that have a profile or run.
  /// Tells in French which, a line each, and how to add the extension.
  std::string connectAll() const;

  /// Brings the manifests that are there up to date: the program may have moved.
  void refresh() const;

  /// What the user has to do, in French, to have the tabs of this browser read.
  std::string advice(const Browser& browser) const;

  /// A page that says the same for all browsers.
  std::filesystem::path helpPage() const { return data_ / "navigateurs.html"; }

 private:
  std::vector<std::filesystem::path> folders(Browser::Names places) const;
  std::vector<std::filesystem::path> manifestFolders(const Browser& browser) const;
  std::string write(const Browser& browser, const std::filesystem::path& folder) const;

  const Folders folders_;
  const std::filesystem::path helper_;
  const std::filesystem::path data_;
};

}  // namespace orvanta
