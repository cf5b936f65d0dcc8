#include "browser/browser_setup.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <fstream>
#include <iterator>
#include <memory>
#include <utility>

#include "base/own_file.h"
#include "base/processes.h"
#include "base/program_files.h"
#include "browser/browser_steps.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

const char* hostsFolder(BrowserKind kind) {
  return kind == BrowserKind::kFirefox ? "native-messaging-hosts" : "NativeMessagingHosts";
}

bool isThere(const fs::path& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

Browser::Names manifestPlaces(const Browser& browser) {
  return browser.manifests.size() > 0 ? browser.manifests : browser.profiles;
}

fs::path userDataFolder(int32_t pid) {
  constexpr std::string_view kOption = "--user-data-dir=";
  for (const auto& word : commandLineOf(pid)) {
    if (word.starts_with(kOption)) return word.substr(kOption.size());
  }
  return {};
}

}  // namespace

BrowserSetup::Folders BrowserSetup::Folders::ofUser() {
  return {g_get_home_dir(), g_get_user_config_dir()};
}

BrowserSetup::BrowserSetup(Folders folders, fs::path helper, fs::path data)
    : folders_(std::move(folders)), helper_(std::move(helper)), data_(std::move(data)) {}

BrowserSetup BrowserSetup::ofUser() {
  return {Folders::ofUser(), ownProgram("orvanta-tab"), ownData("")};
}

std::vector<fs::path> BrowserSetup::folders(Browser::Names places) const {
  std::vector<fs::path> found;
  for (const auto place : places) {
    found.push_back((place.starts_with('.') ? folders_.home : folders_.config) / place);
  }
  return found;
}

std::vector<fs::path> BrowserSetup::manifestFolders(const Browser& browser) const {
  const auto places = this->folders(manifestPlaces(browser));
  std::vector<fs::path> folders;
  for (const auto& place : places) {
    // Of several editions those that are there; of none, the usual one.
    if (&place != &places.front() && !isThere(place)) continue;
    folders.push_back(place / hostsFolder(browser.kind));
  }
  if (browser.kind == BrowserKind::kFirefox) return folders;
  for (const auto& running : runningBrowsers()) {
    const auto own = running.browser == &browser ? userDataFolder(running.pid) : fs::path();
    if (own.is_absolute()) folders.push_back(own / hostsFolder(browser.kind));
  }
  return folders;
}

std::string BrowserSetup::write(const Browser& browser, const fs::path& folder) const {
  const bool firefox = browser.kind == BrowserKind::kFirefox;
  const auto source = data_ / "native-messaging" / (firefox ? "firefox.json" : "chromium.json");
  boost::system::error_code broken;
  auto manifest = json::parse(contents(source), broken);
  if (broken || !manifest.is_object()) return source.string() + " : fichier manquant ou abîmé";
  manifest.get_object()["path"] = helper_.string();
  const auto text = json::serialize(manifest) + "\n";
  const auto file = folder / kTabManifest;
  if (contents(file) == text) return {};
  return writeOwnFile(file, text).value_or("");
}

std::string BrowserSetup::connect(const Browser& browser) const {
  std::string problem;
  for (const auto& folder : manifestFolders(browser)) {
    const auto failed = write(browser, folder);
    if (!failed.empty()) problem = failed;
  }
  return problem;
}

bool BrowserSetup::isPrepared(const Browser& browser) const {
  const auto folders = manifestFolders(browser);
  return std::all_of(folders.begin(), folders.end(),
                     [](const fs::path& folder) { return isThere(folder / kTabManifest); });
}

std::vector<const Browser*> BrowserSetup::installed() const {
  std::vector<const Browser*> found;
  for (const auto& browser : browsers()) {
    if (!browser.takesExtension()) continue;
    const auto profiles = folders(browser.profiles);
    if (std::any_of(profiles.begin(), profiles.end(), isThere) ||
        std::any_of(browser.traces.begin(), browser.traces.end(),
                    [&](std::string_view trace) { return isThere(folders_.config / trace); })) {
      found.push_back(&browser);
    }
  }
  return found;
}

std::string BrowserSetup::connectAll() const {
  const auto running = runningBrowsers();
  const auto installed = this->installed();
  std::string text;
  for (const auto& browser : browsers()) {
    const auto open = std::find_if(running.begin(), running.end(), [&](const RunningBrowser& one) {
      return one.browser == &browser;
    });
    const bool runs = open != running.end();
    if (!runs && std::find(installed.begin(), installed.end(), &browser) == installed.end()) {
      continue;
    }
    text += connectAndTell(browser, runs ? open->pid : 0);
  }
  return text.empty() ? "Aucun navigateur connu n’a été trouvé.\n" : text;
}

std::string BrowserSetup::connectAndTell(const Browser& browser, int32_t pid) const {
  auto problem = setupObstacle(browser, pid);
  if (problem.empty()) problem = connect(browser);
  if (!problem.empty()) return fmt::format("{} : {}\n", browser.name, problem);
  auto text = fmt::format("{} est prêt. Pour lui ajouter l’extension :\n", browser.name);
  int number = 0;
  for (const auto& step : setupSteps(browser, pid, data_)) {
    text += fmt::format("  {}. {}\n", ++number, step.text);
    if (!step.copy.empty()) text += fmt::format("     {}\n", step.copy);
  }
  return text;
}

void BrowserSetup::refresh() const {
  for (const auto& browser : browsers()) {
    for (const auto& place : folders(manifestPlaces(browser))) {
      const auto folder = place / hostsFolder(browser.kind);
      if (isThere(folder / kTabManifest)) write(browser, folder);
    }
  }
}

}  // namespace orvanta
