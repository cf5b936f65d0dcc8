// Lets browsers start our helper program: native-messaging manifests in the user's folders.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "browser/browsers.h"

namespace orvanta {

/// Writes the manifests by which Chromium's and Firefox's kin find `orvanta-tab`. Places by
/// developer.chrome.com (Native messaging) and MDN (Native manifests). A browser reads its manifest
/// whenever the extension connects, so nothing has to be restarted. May be used on any thread.
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

  /// Whether the manifest is wherever this browser looks for it.
  bool isPrepared(const Browser& browser) const;

  /// Those that take the extension and have a profile, in the order of the table.
  std::vector<const Browser*> installed() const;

  /// Connects those and the ones that run, and tells in French which, and how to add the extension.
  std::string connectAll() const;

  /// Brings the manifests that are there up to date: the program may have moved.
  void refresh() const;

  /// The folder with the extension.
  const std::filesystem::path& data() const { return data_; }

  /// A page that says how to add the extension to which browser.
  std::filesystem::path helpPage() const { return data_ / "navigateurs.html"; }

 private:
  std::vector<std::filesystem::path> folders(Browser::Names places) const;
  std::vector<std::filesystem::path> manifestFolders(const Browser& browser) const;
  std::string connectAndTell(const Browser& browser, int32_t pid) const;
  std::string write(const Browser& browser, const std::filesystem::path& folder) const;

  const Folders folders_;
  const std::filesystem::path helper_;
  const std::filesystem::path data_;
};

}  // namespace orvanta
