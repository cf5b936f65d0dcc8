#include "browser/browsers.h"

#include <algorithm>

#include "base/processes.h"

namespace orvanta {
namespace {

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

// By any of the names of a browser.
template <class Fits>
const Browser* findIf(const Fits& fits) {
  for (const auto& browser : browsers()) {
    if (fits(browser.bundle) || std::any_of(browser.aliases.begin(), browser.aliases.end(), fits)) {
      return &browser;
    }
  }
  return nullptr;
}

}  // namespace

const Browser* findBrowser(std::string_view name) {
  return findIf([&](std::string_view known) { return sameName(known, name); });
}

const Browser* browserOfProcess(int32_t pid) {
  const auto path = pid > 0 ? programOf(pid) : std::string();
  const auto* byFolder = findIf([&](std::string_view known) {
    return known.starts_with('/') && path.find(known) != std::string::npos;
  });
  if (byFolder) return byFolder;
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
