#include "browser/browsers.h"
#include "browser/private_profiles.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <set>

#include "base/owned_fd.h"
#include "support/fake_browser.h"

namespace orvanta::test {
namespace {

TEST(Browsers, AreKnownByEveryName) {
  const std::pair<const char*, const char*> cases[] = {
      {"com.google.Chrome", "Google Chrome"},
      {"google-chrome", "Google Chrome"},
      {"Google-chrome", "Google Chrome"},
      {"com.brave.Browser", "Brave Browser"},
      {"com.apple.Safari", "Safari"},
      {"firefox-esr", "Firefox"},
      {"firefox_firefox", "Firefox"},
      {"org.mozilla.firefox", "Firefox"},
      {"chromium", "Chromium"},
      {"org.gnome.Epiphany", "GNOME Web"},
  };
  for (const auto& [name, display] : cases) {
    const auto* browser = findBrowser(name);
    ASSERT_TRUE(browser) << name;
    EXPECT_EQ(browser->name, display);
  }
  for (const auto* name : {"", "firefo", "org.gnome.Terminal", "chromium.desktop"}) {
    EXPECT_FALSE(findBrowser(name)) << name;
  }
  std::set<std::string_view> known;
  for (const auto& browser : browsers()) {
    EXPECT_EQ(findBrowser(browser.bundle), &browser);
    for (const auto alias : browser.aliases) EXPECT_TRUE(known.insert(alias).second) << alias;
  }
}

TEST(Browsers, AreKnownByTheirProcess) {
  const auto browserOf = [](const char* bundle, int pid) {
    const auto* browser = browserOfWindow(bundle, pid);
    return browser ? browser->bundle : "";
  };
  const auto before = runningBrowsers().size();
  int32_t pid = 0;
  {
    const FakeBrowser firefox("firefox-esr");
    pid = firefox.pid();
    const auto running = runningBrowsers();
    EXPECT_EQ(running.size(), before + 1);
    EXPECT_TRUE(std::any_of(running.begin(), running.end(), [&](const RunningBrowser& one) {
      return one.pid == pid && one.browser->name == "Firefox";
    }));
    EXPECT_EQ(browserOf("userapp-Firefox-7XKQZ1", pid), "org.mozilla.firefox");
    EXPECT_EQ(browserOf("chromium", pid), "org.chromium.Chromium");
    EXPECT_EQ(browserOf("chrome-cinhimbnkkaeohfgghhklpknlkffjgod-Default", pid), "");
  }
  EXPECT_EQ(browserOf("userapp-Firefox-7XKQZ1", pid), "");
  EXPECT_EQ(browserOf("org.gnome.Terminal", getpid()), "");
}

TEST(Browsers, AProfileThatKeepsNoHistoryIsPrivate) {
  const TempFolder profile;
  const auto history = profile.path() / "places.sqlite";
  const OwnedFd open(::open(history.c_str(), O_CREAT | O_RDWR, 0600));  // for the browser, too
  const FakeBrowser firefox("firefox-esr");
  PrivateProfiles profiles;
  EXPECT_FALSE(profiles.haveNoOthers(firefox.pid()));
  const auto choose = [&](const char* line) {
    std::ofstream(profile.path() / "new.js") << "user_pref(\"a\", 1);\n" << line;
    std::filesystem::rename(profile.path() / "new.js", profile.path() / "prefs.js");
  };
  const auto* kNone = "user_pref(\"browser.privatebrowsing.autostart\", true);\n";
  choose(kNone);
  EXPECT_TRUE(profiles.haveNoOthers(firefox.pid()));
  choose("");
  EXPECT_FALSE(profiles.haveNoOthers(firefox.pid()));
  choose(kNone);
  EXPECT_TRUE(profiles.haveNoOthers(firefox.pid()));
  EXPECT_FALSE(profiles.haveNoOthers(1));

  choose("");
  EXPECT_FALSE(profiles.haveNoOthers(firefox.pid()));
  const TempFolder other;
  const OwnedFd second(::open((other.path() / "places.sqlite").c_str(), O_CREAT | O_RDWR, 0600));
  std::ofstream(other.path() / "prefs.js") << kNone;
  const FakeBrowser both("firefox-esr");
  EXPECT_TRUE(profiles.haveNoOthers(both.pid())) << "which of them is its own is not known";
  EXPECT_FALSE(profiles.haveNoOthers(firefox.pid()));
}

TEST(Browsers, OnlyASurelyPublicTitleIsPublic) {
  const std::string longPage(2028, 'x');
  const struct {
    const char* browser;
    std::string title;
    bool window, frame;
  } cases[] = {
      {"firefox", "Une page — Mozilla Firefox", true, true},
      {"firefox", "Mozilla Firefox", true, true},
      {"firefox", "Une page — Mozilla Firefox Private Browsing", false, false},
      {"firefox", "Une page — Navigation privée de Mozilla Firefox", false, false},
      {"firefox", "x — Mozilla Firefox — Приватный просмотр Mozilla Firefox", false, false},
      {"firefox", "Une page", false, false},
      {"firefox", "", false, false},
      {"firefox", longPage + " — Mozilla Firefox", false, false},  // the mark is cut off
      {"chromium", longPage + " - Chromium", false, false},
      {"librewolf", "Une page — LibreWolf", true, true},
      {"chromium", "Une page - Chromium", false, true},
      {"chromium", "Une page - Chromium (Incognito)", false, false},
      {"chromium", "x - Chromium - Chromium (Navigation privée)", false, false},
      {"chromium", "x - Chromium - y", false, true},  // a profile
      {"chromium", "Une page", false, false},
      {"google-chrome", "Une page - Google Chrome - Camille", false, true},
      {"google-chrome", "Une page - Google Chrome (Invité)", false, false},
      {"epiphany", "Une page", false, true},
      {"zen", "Une page — Zen Browser", true, true},
      {"zen", "Une page — Zen Browser Private Browsing", false, false},
      {"thorium-browser", "Une page - Thorium", false, false},
      {"mullvadbrowser", "Une page — Mozilla Firefox", false, false},
      {"floorp", "Une page — Mozilla Firefox", false, false},
  };
  for (const auto& [name, title, window, frame] : cases) {
    const auto* browser = findBrowser(name);
    ASSERT_TRUE(browser);
    EXPECT_EQ(showsPublicWindow(*browser, title), window) << title;
    EXPECT_EQ(showsPublicFrame(*browser, title), frame) << title;
  }
}

}  // namespace
}  // namespace orvanta::test
