#include "browser/browser_setup.h"

#include <glib.h>
#include <boost/json/parse.hpp>
#include <memory>

#include "base/program_files.h"
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

TEST(BrowserSetup, SaysWhatFailedAndWhatToDo) {
  const TempFolder folder;
  std::ofstream(folder.path() / "config").put('x');  // a file where a folder should be
  const BrowserSetup setup({folder.path(), folder.path() / "config"}, "/h", kData);
  EXPECT_TRUE(holds(setup.connect(*findBrowser("vivaldi")), "Not a directory"));
  EXPECT_EQ(setup.advice(*findBrowser("vivaldi")), "Ouvrez Vivaldi, puis recommencez.");
  EXPECT_EQ(setup.advice(*findBrowser("com.apple.Safari")), "Safari n'existe pas sous Linux.");
  EXPECT_TRUE(holds(setup.advice(*findBrowser("epiphany")), "accessibilité"));
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
