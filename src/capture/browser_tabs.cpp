#include "capture/browser_tabs.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/text.h"
#include "browser/tab_socket.h"

namespace orvanta {
namespace {

constexpr std::chrono::milliseconds kPatience{150};
constexpr double kMuteCooldown = 5;  // seconds; the host may only have been busy for once

// One that is in no table: how it marks private windows nobody knows.
bool isBrowser(const FrontmostApp& app) {
  const auto& categories = app.categories;
  return std::find(categories.begin(), categories.end(), "WebBrowser") != categories.end();
}

std::string queryKey(const Browser& browser) {
  return "browser:" + std::string(browser.bundle);
}

}  // namespace

BrowserTabs::BrowserTabs(std::filesystem::path helper, std::filesystem::path socketFolder,
                         RunChild runChild, Clock clock, Log log)
    : helper_(std::move(helper)),
      socketFolder_(std::move(socketFolder)),
      runner_(std::move(runChild), std::move(clock), std::move(log)) {}

std::optional<std::string> BrowserTabs::browserScript(const std::string& bundle) {
  const auto* browser = findBrowser(bundle);
  return browser ? std::optional<std::string>(browser->bundle) : std::nullopt;
}

std::optional<BrowserTab> BrowserTabs::browserTab(const FrontmostApp& app) {
  const auto* browser = browserOfWindow(app.bundle, app.pid, app.names);
  if (!browser && !isBrowser(app)) return {};
  if (!browser || browser->kind == BrowserKind::kUntold) return BrowserTab();
  if (auto tab = askExtension(*browser, app.pid)) return tab;
  if (showsOnlyPrivateWindows(*browser, app.pid)) return BrowserTab();
  auto tab = askHelper(*browser, app);
  if (tab.url || tab.title) return tab;
  if (app.title && showsPublicWindow(*browser, *app.title)) tab.title = app.title;
  return tab;
}

// Absent when the browser has no extension that is connected.
std::optional<BrowserTab> BrowserTabs::askExtension(const Browser& browser, int32_t pid) {
  auto hosts = tabHosts(socketFolder_);
  std::erase_if(hosts, [&](const TabHost& host) {
    return pid > 0 ? host.browser != pid : browserOfProcess(host.browser) != &browser;
  });
  if (hosts.empty()) return {};
  const auto key = "extension:" + std::string(browser.bundle);
  if (runner_.disabled(key)) return BrowserTab();
  const auto answer = askHosts(hosts, kPatience);
  if (answer.kind == TabAnswer::Kind::kNoHost) return {};
  if (answer.kind == TabAnswer::Kind::kMute) runner_.disable(key, kMuteCooldown);
  if (!answer.tab) return BrowserTab();
  return BrowserTab{unlessBlank(answer.tab->url), unlessBlank(answer.tab->title)};
}

bool BrowserTabs::showsOnlyPrivateWindows(const Browser& browser, int32_t pid) {
  if (browser.kind != BrowserKind::kFirefox) return false;
  if (pid > 0) return privateProfiles_.haveNoOthers(pid);
  const auto running = runningBrowsers();
  return std::any_of(running.begin(), running.end(), [&](const RunningBrowser& one) {
    return one.browser == &browser && privateProfiles_.haveNoOthers(one.pid);
  });
}

BrowserTab BrowserTabs::askHelper(const Browser& browser, const FrontmostApp& app) {
  ChildCommand command{{helper_.string(), "--tab", std::string(browser.bundle)}, {}};
  if (app.pid > 0) command.words.push_back(std::to_string(app.pid));
  if (app.title) {
    command.environment.push_back(std::string(kWindowTitleVariable) + "=" + *app.title);
  }
  const auto result = runner_.run(command, queryKey(browser));
  if (!result.output || result.output->empty()) return {};
  const std::string_view output = *result.output;
  const auto feed = output.find('\n');
  BrowserTab tab{.url = unlessBlank(output.substr(0, feed)), .title = {}};
  if (feed != std::string_view::npos) tab.title = unlessBlank(output.substr(feed + 1));
  return tab;
}

bool BrowserTabs::isConnected(int32_t browser) const {
  auto hosts = tabHosts(socketFolder_);
  std::erase_if(hosts, [&](const TabHost& host) { return host.browser != browser; });
  return askHosts(hosts, kPatience).kind != TabAnswer::Kind::kNoHost;
}

ScriptResult BrowserTabs::test(const std::string& bundle, bool patient) {
  constexpr double kCooldown = 5;
  constexpr double kTimeout = 60;
  const auto* browser = findBrowser(bundle);
  if (!browser) return {{}, "navigateur inconnu"};
  ChildCommand command{{helper_.string(), "--test", std::string(browser->bundle)}, {}};
  if (!patient) command.words.emplace_back("0");
  return runner_.run(command, queryKey(*browser), kCooldown, kTimeout);
}

}  // namespace orvanta
