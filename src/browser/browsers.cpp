#include "browser/browsers.h"

#include <algorithm>
#include <array>
#include <utility>

#include "base/processes.h"

namespace orvanta {
namespace {

constexpr std::array kBrowsers{
    Browser{"com.google.Chrome", "Google Chrome", BrowserKind::kChromium},
    Browser{"com.google.Chrome.canary", "Google Chrome Canary", BrowserKind::kChromium},
    Browser{"com.brave.Browser", "Brave Browser", BrowserKind::kChromium},
    Browser{"com.microsoft.edgemac", "Microsoft Edge", BrowserKind::kChromium},
    Browser{"com.vivaldi.Vivaldi", "Vivaldi", BrowserKind::kChromium},
    Browser{"company.thebrowser.Browser", "Arc", BrowserKind::kChromium},
    Browser{"com.apple.Safari", "Safari", BrowserKind::kWebKit},
    Browser{"com.kagi.kagimacOS", "Orion", BrowserKind::kWebKit},
    Browser{"org.mozilla.firefox", "Firefox", BrowserKind::kFirefox},
    Browser{"org.chromium.Chromium", "Chromium", BrowserKind::kChromium},
    Browser{"com.operasoftware.Opera", "Opera", BrowserKind::kChromium},
    Browser{"io.gitlab.librewolf-community", "LibreWolf", BrowserKind::kFirefox},
    Browser{"org.gnome.Epiphany", "GNOME Web", BrowserKind::kWebKit},
};

using Names = std::pair<std::string_view, std::string_view>;

// Desktop-file ids, window classes and program files, in lower case, of distributions, vendors,
// Flatpak and snap.
constexpr std::array kAliases{
    // Kin of Firefox that mark private windows in ways of their own: their titles never count.
    Names{"firefox-aurora", "org.mozilla.firefox"},
    Names{"firefox-trunk", "org.mozilla.firefox"},
    Names{"firefox.real", "org.mozilla.firefox"},
    Names{"tor browser", "org.mozilla.firefox"},
    Names{"tor-browser", "org.mozilla.firefox"},
    Names{"mullvadbrowser", "org.mozilla.firefox"},
    Names{"zen", "org.mozilla.firefox"},
    Names{"waterfox", "org.mozilla.firefox"},
    Names{"floorp", "org.mozilla.firefox"},
    Names{"google-chrome", "com.google.Chrome"},
    Names{"google-chrome-stable", "com.google.Chrome"},
    Names{"google-chrome-beta", "com.google.Chrome"},
    Names{"chrome", "com.google.Chrome"},
    Names{"google-chrome-unstable", "com.google.Chrome.canary"},
    Names{"google-chrome-canary", "com.google.Chrome.canary"},
    Names{"com.google.chromedev", "com.google.Chrome.canary"},
    Names{"brave", "com.brave.Browser"},
    Names{"brave-browser", "com.brave.Browser"},
    Names{"brave-browser-beta", "com.brave.Browser"},
    Names{"brave-browser-nightly", "com.brave.Browser"},
    Names{"brave_brave", "com.brave.Browser"},
    Names{"microsoft-edge", "com.microsoft.edgemac"},
    Names{"microsoft-edge-stable", "com.microsoft.edgemac"},
    Names{"microsoft-edge-beta", "com.microsoft.edgemac"},
    Names{"microsoft-edge-dev", "com.microsoft.edgemac"},
    Names{"com.microsoft.edge", "com.microsoft.edgemac"},
    Names{"msedge", "com.microsoft.edgemac"},
    Names{"vivaldi", "com.vivaldi.Vivaldi"},
    Names{"vivaldi-bin", "com.vivaldi.Vivaldi"},
    Names{"vivaldi-stable", "com.vivaldi.Vivaldi"},
    Names{"vivaldi-snapshot", "com.vivaldi.Vivaldi"},
    Names{"firefox", "org.mozilla.firefox"},
    Names{"firefox-bin", "org.mozilla.firefox"},
    Names{"firefox-esr", "org.mozilla.firefox"},
    Names{"firefox-beta", "org.mozilla.firefox"},
    Names{"firefox-nightly", "org.mozilla.firefox"},
    Names{"firefox-developer-edition", "org.mozilla.firefox"},
    Names{"firefoxdeveloperedition", "org.mozilla.firefox"},
    Names{"firefox_firefox", "org.mozilla.firefox"},
    Names{"chromium", "org.chromium.Chromium"},
    Names{"chromium-browser", "org.chromium.Chromium"},
    Names{"chromium_chromium", "org.chromium.Chromium"},
    Names{"ungoogled-chromium", "org.chromium.Chromium"},
    Names{"io.github.ungoogled_software.ungoogled_chromium", "org.chromium.Chromium"},
    Names{"opera", "com.operasoftware.Opera"},
    Names{"opera-beta", "com.operasoftware.Opera"},
    Names{"opera-stable", "com.operasoftware.Opera"},
    Names{"opera_opera", "com.operasoftware.Opera"},
    Names{"com.opera.opera", "com.operasoftware.Opera"},
    Names{"librewolf", "io.gitlab.librewolf-community"},
    Names{"librewolf-default", "io.gitlab.librewolf-community"},
    Names{"epiphany", "org.gnome.Epiphany"},
    Names{"epiphany-browser", "org.gnome.Epiphany"},
};

char lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameName(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return lower(a) == lower(b); });
}

// Chromium and its kin name the desktop file of a web application after themselves, the 32 letters
// of the application's id and the profile.
bool isWebApp(std::string_view bundle) {
  constexpr std::size_t kIdLength = 32;
  const auto dash = bundle.find('-');
  if (dash == std::string_view::npos) return false;
  const auto id = bundle.substr(dash + 1, kIdLength);
  return id.size() == kIdLength &&
         std::all_of(id.begin(), id.end(), [](char c) { return c >= 'a' && c <= 'p'; });
}

}  // namespace

std::span<const Browser> browsers() {
  return kBrowsers;
}

const Browser* findBrowser(std::string_view name) {
  const auto* alias = std::find_if(kAliases.begin(), kAliases.end(),
                                   [&](const Names& names) { return sameName(names.first, name); });
  if (alias != kAliases.end()) name = alias->second;
  const auto* browser = std::find_if(kBrowsers.begin(), kBrowsers.end(), [&](const Browser& row) {
    return sameName(row.bundle, name);
  });
  return browser != kBrowsers.end() ? browser : nullptr;
}

const Browser* browserOfProcess(int32_t pid) {
  const auto path = pid > 0 ? programOf(pid) : std::string();
  if (path.find("/chrome-unstable/") != std::string::npos ||
      path.find("/chrome-canary/") != std::string::npos) {
    return findBrowser("google-chrome-canary");  // its program is called like Chrome's
  }
  return findBrowser(std::string_view(path).substr(path.rfind('/') + 1));
}

const Browser* browserOfWindow(const std::optional<std::string>& bundle, int32_t pid,
                               const std::vector<std::string>& names) {
  if (bundle && isWebApp(*bundle)) return nullptr;
  if (const auto* browser = bundle ? findBrowser(*bundle) : nullptr) return browser;
  for (const auto& name : names) {
    if (isWebApp(name)) return nullptr;
    if (const auto* browser = findBrowser(name)) return browser;
  }
  return browserOfProcess(pid);
}

std::vector<RunningBrowser> runningBrowsers() {
  std::vector<RunningBrowser> running;
  for (const auto pid : ownProcesses()) {
    const auto* browser = browserOfProcess(pid);
    if (!browser) continue;
    // A browser is many processes of one program. The main one was not started by another of them
    // and not for a purpose; its helpers may outlive it.
    const auto words = commandLineOf(pid);
    const bool helper = std::any_of(words.begin(), words.end(), [](const std::string& word) {
      return word.starts_with("--type=") || word == "-contentproc" || word == "--contentproc";
    });
    if (helper || browserOfProcess(parentOf(pid).value_or(0)) == browser) continue;
    running.push_back({browser, pid});
  }
  return running;
}

}  // namespace orvanta
