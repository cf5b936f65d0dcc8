#include "browser/browser_setup.h"

#include <glib.h>
#include <boost/json/parse.hpp>
#include <memory>

#include "base/processes.h"
#include "browser/browser_steps.h"
#include "support/fake_browser.h"
#include "support/places.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

boost::json::object readJson(const fs::path& path) {
  boost::system::error_code broken;
  auto value = boost::json::parse(bytesIn(path), broken);
  return broken ? boost::json::object() : value.as_object();
}

const fs::path kData = kDataFolder;
constexpr auto kName = "fr.quellvane.orvanta.tab.json";

TEST(BrowserSetup, WritesTheManifestsOfInstalledBrowsers) {
  const TempFolder folder;
  const auto home = folder.path() / "home";
  const auto config = folder.path() / "config";
  fs::create_directories(home / ".mozilla");
  fs::create_directories(config / "vivaldi");
  const BrowserSetup setup({home, config}, "/opt/é/orvanta-tab", kData);
  const auto text = setup.connectAll();
  EXPECT_TRUE(holds(text, "Firefox est prêt."));
  EXPECT_TRUE(holds(text, "Vivaldi est prêt."));
  EXPECT_FALSE(holds(text, "Brave"));
  EXPECT_FALSE(fs::exists(config / "google-chrome"));

  const auto firefox = home / ".mozilla/native-messaging-hosts" / kName;
  const auto vivaldi = config / "vivaldi/NativeMessagingHosts" / kName;
  for (const auto& file : {firefox, vivaldi}) {
    const auto manifest = readJson(file);
    EXPECT_EQ(manifest.at("path"), "/opt/é/orvanta-tab");
    EXPECT_EQ(manifest.at("name"), "fr.quellvane.orvanta.tab");
    EXPECT_EQ(manifest.at("type"), "stdio");
  }
  const auto extension = readJson(kData / "extension/manifest.json");
  EXPECT_EQ(readJson(firefox).at("allowed_extensions").at(0),
            extension.at("browser_specific_settings").at("gecko").at("id"));

  BrowserSetup({home, config}, "/ailleurs/orvanta-tab", kData).refresh();
  EXPECT_EQ(readJson(firefox).at("path"), "/ailleurs/orvanta-tab");
  EXPECT_EQ(readJson(vivaldi).at("path"), "/ailleurs/orvanta-tab");
  EXPECT_FALSE(fs::exists(config / "google-chrome"));
}

TEST(BrowserSetup, WritesAManifestWhereTheBrowserLooksForIt) {
  const TempFolder folder;
  fs::create_directories(folder.path() / ".zen");
  const BrowserSetup setup({folder.path(), folder.path() / "config"}, "/h", kData);
  EXPECT_TRUE(holds(setup.connectAll(), "Zen est prêt."));
  const auto file = folder.path() / ".mozilla/native-messaging-hosts" / kName;
  EXPECT_EQ(readJson(file).at("path"), "/h");
  EXPECT_FALSE(fs::exists(folder.path() / ".zen/native-messaging-hosts"));
}

TEST(BrowserSetup, SaysWhatFailed) {
  const TempFolder folder;
  std::ofstream(folder.path() / "config").put('x');  // a file where a folder should be
  const BrowserSetup setup({folder.path(), folder.path() / "config"}, "/h", kData);
  EXPECT_TRUE(holds(setup.connect(*findBrowser("vivaldi")), "Not a directory"));
}

std::vector<std::string> pagesOf(const std::vector<SetupStep>& steps) {
  std::vector<std::string> pages;
  for (const auto& step : steps) pages.push_back(step.page);
  return pages;
}

TEST(BrowserSteps, LeadToTheExtensionOrSayWhatIsInTheWay) {
  const auto chromium = setupSteps(*findBrowser("chromium"), 0, "/d");
  ASSERT_EQ(chromium.size(), 4U);
  EXPECT_EQ(chromium.at(0).text, "Ouvrez Chromium.");
  EXPECT_FALSE(chromium.at(0).done);
  EXPECT_EQ(chromium.at(1).copy, "chrome://extensions");
  EXPECT_EQ(chromium.at(3).copy, "/d/extension");
  EXPECT_EQ(pagesOf(chromium), (std::vector<std::string>(4)));
  EXPECT_EQ(setupObstacle(*findBrowser("chromium"), 0), "");

  EXPECT_EQ(setupObstacle(*findBrowser("com.apple.Safari"), 0), "Safari n’existe pas sous Linux.");
  EXPECT_TRUE(holds(setupObstacle(*findBrowser("epiphany"), 0), "accessibilité"));
  EXPECT_TRUE(holds(setupObstacle(*findBrowser("floorp"), 0), "seul son temps est compté"));
  EXPECT_TRUE(setupSteps(*findBrowser("floorp"), 0, "/d").empty());
}

// Mozilla's own builds say beside the program what they are, and those for everybody take no
// unsigned extension for good.
TEST(BrowserSteps, OfAFirefoxDependOnItsEdition) {
  const auto& firefox = *findBrowser("firefox");
  const FakeBrowser running("firefox-bin");
  const auto about = fs::path(programOf(running.pid())).replace_filename("application.ini");
  const std::vector<std::string> temporary{"", "about:debugging#/runtime/this-firefox"};
  const std::vector<std::string> lasting{"", "about:config", "/d/orvanta.xpi"};
  EXPECT_EQ(pagesOf(setupSteps(firefox, running.pid(), "/d")), temporary);
  std::ofstream(about) << "; a remark\n[App]\nRemotingName=firefox-esr\n";
  EXPECT_EQ(pagesOf(setupSteps(firefox, running.pid(), "/d")), lasting);
  std::ofstream(about) << "[App]\nRemotingName=firefox\n";
  const auto steps = setupSteps(firefox, running.pid(), "/d");
  EXPECT_EQ(pagesOf(steps), temporary);
  EXPECT_TRUE(steps.at(0).done);
  EXPECT_EQ(openingCommand(running.pid(), "about:config"),
            (std::vector<std::string>{programOf(running.pid()), "about:config"}));
  EXPECT_EQ(openingCommand(1 << 29, "about:config"), std::vector<std::string>());
}

// Chromium makes an extension's identifier of the key in its manifest.
TEST(BrowserSetup, TheManifestAllowsTheExtensionThatWeShip) {
  const auto key = readJson(kData / "extension/manifest.json").at("key").as_string();
  gsize size = 0;
  const std::unique_ptr<guchar, decltype(&g_free)> der(g_base64_decode(key.c_str(), &size), g_free);
  const std::unique_ptr<char, decltype(&g_free)> digest(
      g_compute_checksum_for_data(G_CHECKSUM_SHA256, der.get(), size), g_free);
  std::string id;
  for (const char* digit = digest.get(); id.size() < 32; ++digit) {
    id += static_cast<char>('a' + g_ascii_xdigit_value(*digit));
  }
  const auto manifest = readJson(kData / "native-messaging/chromium.json");
  EXPECT_EQ(manifest.at("allowed_origins").at(0),
            boost::json::string("chrome-extension://" + id + "/"));
}

}  // namespace
}  // namespace orvanta::test
