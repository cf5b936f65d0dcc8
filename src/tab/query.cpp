#include "tab/query.h"

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "base/child_process.h"
#include "base/processes.h"
#include "browser/browsers.h"
#include "browser/tab_socket.h"
#include "tab/accessibility.h"

namespace orvanta {
namespace {

constexpr int kFailure = 3;
constexpr std::chrono::milliseconds kSocketPatience{150};
constexpr std::chrono::milliseconds kPatience{700};

// Somebody else may hang wherever we ask; the caller learns it all the same.
void endAfter(std::chrono::milliseconds time) {
  signal(SIGALRM, [](int) {
    constexpr std::string_view kText = "le navigateur ne répond pas\n";
    [[maybe_unused]] const auto count = write(STDERR_FILENO, kText.data(), kText.size());
    _exit(kTimedOutStatus);
  });
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  itimerval timer{};
  timer.it_value.tv_sec = seconds.count();
  timer.it_value.tv_usec = std::chrono::microseconds(time - seconds).count();
  setitimer(ITIMER_REAL, &timer, nullptr);
}

// One attempt: a tab, no readable window, or a reason why it cannot be told.
struct Attempt {
  std::optional<ActiveTab> tab;
  std::string problem;
  bool isOpen = true;        // the browser
  bool mayComeSoon = false;  // it has only just been started
  bool slow = false;         // nobody has said that it cannot be told
};

// GNOME Web runs its private windows in a process of their own.
bool isPrivateProcess(int32_t pid) {
  const auto words = commandLineOf(pid);
  return std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "--incognito-mode" || word == "-i" || word == "--private-instance" ||
           word == "-p" || word == "--incognito" || word == "--private-window";
  });
}

Attempt askAccessibility(const Browser& browser, std::vector<int32_t> pids) {
  using Kind = AccessibleAnswer::Kind;
  if (browser.kind == BrowserKind::kWebKit) std::erase_if(pids, isPrivateProcess);
  const char* title = std::getenv(kWindowTitleVariable);
  auto answer =
      readAccessibleTab(browser, pids, title ? std::optional<std::string>(title) : std::nullopt);
  if (answer.kind == Kind::kState) return {std::move(answer.tab), {}};
  if (answer.kind == Kind::kMute) {
    return {.problem = "l’accessibilité ne répond pas", .slow = true};
  }
  if (answer.kind == Kind::kOff) {
    return {{}, "l’extension n’est pas connectée, et l’accessibilité est désactivée"};
  }
  constexpr double kStarting = 10;  // seconds until a browser takes part in everything
  const bool starting = std::any_of(pids.begin(), pids.end(), [](int32_t pid) {
    const auto age = ageOf(pid);
    return age && *age < kStarting;
  });
  return {.problem = "l’extension n’est pas connectée, et le navigateur ignore l’accessibilité",
          .mayComeSoon = starting};
}

Attempt attempt(const Browser& browser, std::optional<int> pid) {
  using Kind = TabAnswer::Kind;
  std::vector<int32_t> pids;
  if (pid) {
    pids.push_back(*pid);
  } else {
    for (const auto& running : runningBrowsers()) {
      if (running.browser == &browser) pids.push_back(running.pid);
    }
  }
  if (pids.empty()) return {.problem = "le navigateur n’est pas ouvert", .isOpen = false};
  auto hosts = tabHosts(tabSocketFolder());
  std::erase_if(hosts, [&](const TabHost& host) {
    return std::find(pids.begin(), pids.end(), host.browser) == pids.end();
  });
  auto answer = askHosts(hosts, kSocketPatience);
  if (answer.kind == Kind::kState) return {std::move(answer.tab), {}};
  if (answer.kind == Kind::kMute) return {{}, "l’extension ne répond pas"};
  return askAccessibility(browser, std::move(pids));
}

int report(const Attempt& result) {
  if (!result.problem.empty() && !result.mayComeSoon) {
    std::fprintf(stderr, "%s\n", result.problem.c_str());
    return result.slow ? kTimedOutStatus : kFailure;
  }
  if (result.tab) std::printf("%s\n%s", result.tab->url.c_str(), result.tab->title.c_str());
  return 0;
}

// Null where nothing may be asked, which is said then.
const Browser* browserToAsk(std::string_view bundle) {
  const auto* browser = findBrowser(bundle);
  if (browser && browser->kind != BrowserKind::kUntold) return browser;
  std::fputs(browser ? "rien n’y distingue les fenêtres privées\n" : "navigateur inconnu\n",
             stderr);
  return nullptr;
}

}  // namespace

int printTab(std::string_view bundle, std::optional<int> pid) {
  endAfter(kPatience);
  const auto* browser = browserToAsk(bundle);
  return browser ? report(attempt(*browser, pid)) : kFailure;
}

int testTab(std::string_view bundle, std::chrono::seconds patience) {
  constexpr std::chrono::seconds kSlowest{12};  // a browser that is switching accessibility on
  const auto* browser = browserToAsk(bundle);
  if (!browser) return kFailure;
  endAfter(patience + kSlowest);
  const auto deadline = std::chrono::steady_clock::now() + patience;
  while (true) {
    auto result = attempt(*browser, {});
    result.mayComeSoon = false;
    if (result.problem.empty() || !result.isOpen || std::chrono::steady_clock::now() >= deadline) {
      return report(result);
    }
    std::this_thread::sleep_for(kPatience / 2);
  }
}

}  // namespace orvanta
