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

// How a running browser was packaged, when that keeps it from starting our program.
std::optional<std::string_view> sandboxOf(int32_t pid) {
  if (isThere(fs::path("/proc") / std::to_string(pid) / "root/.flatpak-info")) return "Flatpak";
  if (programOf(pid).starts_with("/snap/")) return "Snap";
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
  if (broken || !manifest.is_object()) return source.string() + " : fichier manquant ou abîmé";
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

std::string BrowserSetup::connectAll() const {
  const auto running = runningBrowsers();
  std::string text;
  for (const auto& browser : browsers()) {
    if (!browser.takesExtension()) continue;
    const auto profiles = folders(browser.profiles);
    const bool installed =
        std::any_of(profiles.begin(), profiles.end(), isThere) ||
        std::any_of(running.begin(), running.end(),
                    [&](const RunningBrowser& one) { return one.browser == &browser; }) ||
        std::any_of(browser.traces.begin(), browser.traces.end(),
                    [&](std::string_view trace) { return isThere(folders_.config / trace); });
    if (!installed) continue;
    const auto problem = connect(browser);
    text += problem.empty() ? fmt::format("{} est prêt. {}\n", browser.name, advice(browser))
                            : fmt::format("{} : {}\n", browser.name, problem);
  }
  return text.empty() ? "Aucun navigateur connu n'a été trouvé.\n" : text;
}

void BrowserSetup::refresh() const {
  for (const auto& browser : browsers()) {
    for (const auto& place : folders(manifestPlaces(browser))) {
      const auto folder = place / hostsFolder(browser.kind);
      if (isThere(folder / kTabManifest)) write(browser, folder);
    }
  }
}

std::string BrowserSetup::advice(const Browser& browser) const {
  if (browser.aliases.size() == 0) return fmt::format("{} n'existe pas sous Linux.", browser.name);
  if (browser.kind == BrowserKind::kUntold) {
    return fmt::format(
        "Rien ne distingue les fenêtres privées de {} des autres : seul son temps est compté.",
        browser.name);
  }
  if (!browser.takesExtension()) {
    return fmt::format(
        "{0} n'accepte pas l'extension Orvanta. Son onglet se lit quand l'accessibilité du bureau "
        "est activée : activez-la, puis redémarrez {0}.",
        browser.name);
  }
  bool open = false;
  for (const auto& running : runningBrowsers()) {
    if (running.browser != &browser) continue;
    open = true;
    if (const auto sandbox = sandboxOf(running.pid)) {
      return fmt::format(
          "Ce {} est installé par {} : son bac à sable empêche l'extension de joindre Orvanta. "
          "Installez-le par votre distribution ou par son éditeur.",
          browser.name, *sandbox);
    }
  }
  if (!open) return fmt::format("Ouvrez {}, puis recommencez.", browser.name);
  if (browser.kind == BrowserKind::kFirefox) {
    return fmt::format(
        "Ajoutez l'extension Orvanta à {} : dans about:addons, menu de la roue dentée, « Installer "
        "un module depuis un fichier », choisissez {}. Il faut pour cela que "
        "xpinstall.signatures.required soit à false dans about:config. Jusqu'à la fermeture de "
        "Firefox, elle se charge aussi dans about:debugging.",
        browser.name, (data_ / "orvanta.xpi").string());
  }
  return fmt::format(
      "Ajoutez l'extension Orvanta à {} : dans chrome://extensions, activez le « Mode "
      "développeur », puis « Charger l'extension non empaquetée », et choisissez le dossier {}.",
      browser.name, (data_ / "extension").string());
}

}  // namespace orvanta
