#include "capture/browser_tabs.h"

#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "base/cut.h"
#include "browser/tab_socket.h"
#include "capture/browser_connection.h"
#include "support/fake_browser.h"
#include "support/fake_desktop.h"
#include "support/places.h"

namespace orvanta::test {
namespace {

// A helper program that does what a test wants, and a folder for sockets.
struct BrowserTabsTest : testing::Test {
  void helper(const std::string& script) {
    std::ofstream(program) << "#!/bin/sh\necho \"$*\" >>" << calls.string() << "\n" << script;
    fs::permissions(program, fs::perms::owner_all);
  }

  std::string callsSoFar() const { return bytesIn(calls); }

  BrowserTab read(const std::string& bundle = "chromium", int32_t pid = 0) {
    const auto tab = tabs.browserTab({"Navigateur", bundle, pid, {}, {}, title});
    EXPECT_TRUE(tab) << bundle;
    return tab.value_or(BrowserTab());
  }

  TempFolder folder;
  LogLines log;
  FakeClock clock;
  std::optional<std::string> title;
  const fs::path program = folder.path() / "helper";
  const fs::path calls = folder.path() / "calls";
  const fs::path sockets = folder.path() / "sockets";
  BrowserTabs tabs{program, sockets, runChild, clock.read(), log.sink()};
};

TEST_F(BrowserTabsTest, TheHelpersAnswerIsUrlAndTitle) {
  const struct {
    const char* output;
    std::optional<std::string> url, title;
  } cases[] = {
      {"https://a.fr/\\nUn titre", "https://a.fr/", "Un titre"},
      {"https://a.fr/\\nUn\\nDeux\\n", "https://a.fr/", "Un\nDeux"},
      {" https://a.fr/\\t\\n\\tUn titre ", "https://a.fr/", "Un titre"},
      {"https://a.fr/", "https://a.fr/", {}},
      {"https://a.fr/\\n\\n", "https://a.fr/", {}},
      {"", {}, {}},
      {" \\n\\t\\n", {}, {}},
      {"https://a.fr/\\n\\377", {}, {}},  // not UTF-8
  };
  for (const auto& [output, url, expected] : cases) {
    helper(std::string("printf '") + output + "'");
    const auto tab = read();
    EXPECT_EQ(tab.url, url) << output;
    EXPECT_EQ(tab.title, expected) << output;
  }
  EXPECT_TRUE(log.lines().empty());
  helper("printf 'u\\nt'; head -c 1000000 /dev/zero | tr '\\0' x");
  EXPECT_EQ(read().title->size(), 1'000'001U);
}

TEST_F(BrowserTabsTest, OtherProgramsAreNobodysBusiness) {
  helper("echo https://a.fr/");
  EXPECT_FALSE(tabs.browserTab({"Terminal", "org.gnome.Terminal", getpid()}));
  EXPECT_FALSE(tabs.browserTab({"Terminal", std::nullopt, 0}));
  EXPECT_FALSE(BrowserTabs::browserScript("org.gnome.Terminal"));
  EXPECT_EQ(BrowserTabs::browserScript("google-chrome"), "com.google.Chrome");
  EXPECT_EQ(callsSoFar(), "");
  read("google-chrome", 1234567);
  EXPECT_EQ(callsSoFar(), "--tab com.google.Chrome 1234567\n");
}

TEST_F(BrowserTabsTest, AFailedQueryIsLeftAloneForFiveMinutes) {
  helper("echo ' refusé ' >&2; exit 1");
  EXPECT_FALSE(read().url);
  EXPECT_EQ(log.lines(), Texts{"Orvanta AppleScript browser:org.chromium.Chromium : refusé"});
  const auto once = callsSoFar();
  clock.now = clock.now + 299;
  read();
  EXPECT_EQ(callsSoFar(), once);
  read("firefox");  // each browser for itself
  EXPECT_EQ(callsSoFar(), once + "--tab org.mozilla.firefox\n");
  clock.now = clock.now + 1;
  read();
  EXPECT_EQ(log.lines().size(), 3U);
  const auto thrice = callsSoFar();
  clock.now = clock.now - 3600;  // the clock was set back
  read();
  EXPECT_NE(callsSoFar(), thrice);
  tabs.resetBrowserCooldowns();
  helper("echo https://a.fr/");
  EXPECT_EQ(read().url, "https://a.fr/");
  EXPECT_EQ(tabs.test("com.apple.TextEdit", true).error, "navigateur inconnu");
  helper("exit 3");
  EXPECT_EQ(tabs.test("chromium", true).error, "");
  EXPECT_EQ(tabs.test("chromium", true).error, "désactivé");
  clock.now = clock.now + 5;
  EXPECT_EQ(tabs.test("chromium", true).error, "");
}

TEST_F(BrowserTabsTest, AHangCostsAMinute) {
  ScriptRunner runner(runChild, clock.read(), log.sink());
  const ChildCommand hang{{"/bin/sh", "-c", "trap '' TERM; sleep 60"}, {}};
  EXPECT_EQ(runner.run(hang, "k", 300, 0.1).error, "timeout");
  EXPECT_TRUE(log.lines().empty());
  clock.now = clock.now + 59;
  EXPECT_EQ(runner.run(hang, "k").error, "désactivé");
  clock.now = clock.now + 1;
  const auto result = runner.run({{"/bin/echo", "rétabli"}, {}}, "k");
  EXPECT_EQ(result.output, "rétabli");
  const ChildCommand kept{{"/bin/sh", "-c", "echo lent >&2; exit 124"}, {}};
  EXPECT_EQ(runner.run(kept, "k").error, "lent");
  EXPECT_TRUE(log.lines().empty());
  clock.now = clock.now + 59;
  EXPECT_TRUE(runner.disabled("k"));
  clock.now = clock.now + 1;
  EXPECT_EQ(runner.run({{"/nonexistent"}, {}}, "k").error, "No such file or directory");
  EXPECT_FALSE(runner.disabled("k"));
}

TEST_F(BrowserTabsTest, AWindowTitleServesOnlyWhenItIsSurelyNoPrivateOne) {
  helper("exit 0");
  title = "Une page — Mozilla Firefox";
  EXPECT_EQ(read("firefox").title, "Une page — Mozilla Firefox");
  title = "Une page — Mozilla Firefox Private Browsing";
  EXPECT_FALSE(read("firefox").title);
  title = "Une page - Chromium";
  EXPECT_FALSE(read("chromium").title);

  // Nor where a long one would end like a public one's, were it cut.
  FakeDesktop desktop;
  desktop.app = FrontmostApp{"Navigateur", "firefox", 0};
  const std::string end = " — Mozilla Firefox";
  desktop.title = std::string(kLongestTitle - end.size(), 'x') + end + " Private Browsing";
  EXPECT_FALSE(tabs.browserTab(*desktop.collectors.frontmostApp())->title);
}

TEST_F(BrowserTabsTest, ATestPreparesTheBrowserAndSaysWhatToDo) {
  helper("echo \"l’extension n’est pas connectée\" >&2; exit 3");
  BrowserConnection connection(tabs, {{folder.path(), folder.path()}, program, kDataFolder});
  EXPECT_EQ(connection.test("com.apple.TextEdit").error, "navigateur inconnu");
  EXPECT_EQ(connection.test("com.vivaldi.Vivaldi").error,
            "Pas de réponse (l’extension n’est pas connectée). Ouvrez Vivaldi, puis recommencez.");
  EXPECT_EQ(callsSoFar(), "--test com.vivaldi.Vivaldi\n");
  EXPECT_TRUE(fs::exists(folder.path() / "vivaldi/NativeMessagingHosts"));
  // An extension that could find us before would be there: nothing is waited for any more.
  helper("printf 'https://a.fr/\\nA'");
  connection.resetBrowserCooldowns();
  const auto result = connection.test("vivaldi-stable");
  EXPECT_EQ(callsSoFar(), "--test com.vivaldi.Vivaldi\n--test com.vivaldi.Vivaldi 0\n");
  EXPECT_EQ(result.output, "https://a.fr/\nA");
  EXPECT_EQ(result.error, "");
}

// The host of a browser, on a thread until the test ends.
class Host {
 public:
  Host(const fs::path& folder, int32_t number, TabState state, int32_t browser = getpid())
      : server_(folder, browser, number) {
    server_.setState(std::move(state));
    thread_ = std::thread([this] {
      while (!stop_) {
        pollfd asked{server_.file(), POLLIN, 0};
        if (poll(&asked, 1, 10) > 0) server_.answer();
      }
    });
  }
  ~Host() {
    stop_ = true;
    thread_.join();
  }

 private:
  TabServer server_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

TEST_F(BrowserTabsTest, ABrowserIsOneHoweverManyOfItsProcessesRun) {
  const auto* firefox = findBrowser("firefox");
  const auto running = [&] {
    return std::vector<RunningBrowser>{{firefox, 7}, {firefox, getpid()}, {firefox, 8}};
  };
  fs::create_directories(folder.path() / ".mozilla");
  fs::create_directories(folder.path() / "vivaldi");
  const BrowserConnection connection(tabs, {{folder.path(), folder.path()}, program, kDataFolder},
                                     running);
  auto states = connection.states();
  ASSERT_EQ(states.size(), 2U);
  EXPECT_EQ(states.at(0).pid, 8);
  EXPECT_FALSE(states.at(0).connected);
  EXPECT_EQ(states.at(1).browser->name, "Vivaldi");
  EXPECT_EQ(states.at(1).pid, 0);
  const Host host(sockets, 1, {{}, 30});
  states = connection.states();
  EXPECT_EQ(states.at(0).pid, getpid());
  EXPECT_TRUE(states.at(0).connected);
}

TEST_F(BrowserTabsTest, TheExtensionIsAskedWithoutAHelper) {
  helper("printf 'https://aide.fr/\\nAide'");
  title = "Secret — Mozilla Firefox";
  {
    // One profile shows nothing readable; of the others the one that came to the front last counts.
    const Host none(sockets, 1, {{}, 30});
    const Host old(sockets, 2, {ActiveTab{"https://vieux.fr/", "Vieux"}, 10});
    const Host front(sockets, 3, {ActiveTab{"https://a.fr/", " Deux\nlignes "}, 20});
    const auto tab = read("firefox", getpid());
    EXPECT_EQ(tab.url, "https://a.fr/");
    EXPECT_EQ(tab.title, "Deux\nlignes");
    EXPECT_EQ(modeOf(sockets), 0700U);
    for (const auto& host : tabHosts(sockets)) EXPECT_EQ(modeOf(host.path), 0600U);
    EXPECT_EQ(read("firefox", 1).url, "https://aide.fr/");  // another process has no extension
  }
  {
    const Host none(sockets, 1, {{}, 30});
    const auto tab = read("firefox", getpid());
    EXPECT_FALSE(tab.url);
    EXPECT_FALSE(tab.title);  // the window is not one that the extension may see
  }
  EXPECT_EQ(callsSoFar(), "--tab org.mozilla.firefox 1\n");
  EXPECT_TRUE(tabHosts(sockets).empty());
}

TEST_F(BrowserTabsTest, WhereTheDesktopTellsNoProcessTheBrowserDoes) {
  helper("exit 0");
  const FakeBrowser firefox("firefox-esr");
  const Host host(sockets, 1, {ActiveTab{"https://a.fr/", "A"}, 10}, firefox.pid());
  const Host other(sockets, 2, {ActiveTab{"https://b.fr/", "B"}, 20});
  EXPECT_EQ(read("firefox").url, "https://a.fr/");
  EXPECT_FALSE(read("librewolf").url);
}

TEST_F(BrowserTabsTest, OfABrowserWithPrivateWindowsThatNobodyCanTellNothingIsRead) {
  helper("printf 'https://secret.fr/\\nSecret'");
  const Host host(sockets, 1, {ActiveTab{"https://secret.fr/", "Secret"}, 10});
  title = "Secret — Mozilla Firefox";
  const FrontmostApp known{"Mullvad Browser", "mullvadbrowser", getpid(), {}, {}, title};
  FrontmostApp other{"Falkon", "org.kde.falkon", 1, {}, {"Qt", "Network", "WebBrowser"}, title};
  for (const auto& app : {known, other}) {
    const auto tab = tabs.browserTab(app);
    ASSERT_TRUE(tab) << app.name;
    EXPECT_FALSE(tab->url || tab->title) << app.name;
  }
  EXPECT_EQ(callsSoFar(), "");
  other.categories.pop_back();
  EXPECT_FALSE(tabs.browserTab(other)) << "no browser: its title is its own";
}

TEST_F(BrowserTabsTest, DeadAndMuteHostsHoldNobodyUp) {
  helper("printf 'https://aide.fr/\\nAide'");
  const auto dead = sockets / ("tab-" + std::to_string(getpid()) + "-1");
  {
    const TabServer server(sockets, getpid(), 1);
    fs::rename(dead, sockets / "kept");
  }
  fs::rename(sockets / "kept", dead);
  EXPECT_EQ(read("firefox", getpid()).url, "https://aide.fr/");
  const TabServer mute(sockets, getpid(), 2);
  EXPECT_FALSE(fs::exists(dead));  // the new host cleaned up
  const auto begin = std::chrono::steady_clock::now();
  for (int tick = 0; tick < 20; ++tick) EXPECT_FALSE(read("firefox", getpid()).url);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
}

}  // namespace
}  // namespace orvanta::test
