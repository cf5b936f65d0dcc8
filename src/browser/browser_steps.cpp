#include "browser/browser_steps.h"

#include <fmt/format.h>

#include <fstream>
#include <optional>
#include <string_view>
#include <system_error>

#include "base/processes.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;

// How a running browser was packaged, when that keeps it from starting our program.
std::optional<std::string_view> sandboxOf(int32_t pid) {
  std::error_code ignored;
  if (fs::exists(fs::path("/proc") / std::to_string(pid) / "root/.flatpak-info", ignored)) {
    return "Flatpak";
  }
  if (programOf(pid).starts_with("/snap/")) return "Snap";
  return {};
}

// Firefox's releases for everybody insist on extensions that Mozilla has signed. What it was built
// from stands beside the program.
bool insistsOnSignatures(const Browser& browser, int32_t pid) {
  if (browser.bundle != "org.mozilla.firefox") return false;
  const fs::path program = programOf(pid);
  if (program.empty()) return false;
  std::ifstream file(program.parent_path() / "application.ini");
  for (std::string line; std::getline(file, line);) {
    constexpr std::string_view kName = "RemotingName=";
    if (!line.starts_with(kName)) continue;
    const auto name = line.substr(kName.size());
    return name == "firefox" || name == "firefox-beta";
  }
  return program.filename() == "firefox" || program.filename() == "firefox-bin";
}

constexpr auto kSignatures = "xpinstall.signatures.required";

std::vector<SetupStep> firefoxSteps(const Browser& browser, int32_t pid, const fs::path& data) {
  const auto file = (data / "orvanta.xpi").string();
  if (insistsOnSignatures(browser, pid)) {
    return {
        {.text = fmt::format(
             "Dans about:debugging, choisissez « Charger un module complémentaire temporaire », "
             "puis ce fichier. Cette édition de {} n’accepte une extension sans signature que "
             "jusqu’à sa fermeture ; l’édition ESR la garde.",
             browser.name),
         .copy = file,
         .button = "Ouvrir la page des extensions",
         .page = "about:debugging#/runtime/this-firefox"}};
  }
  return {{.text = "Dans about:config, cherchez ce réglage et mettez-le à « false ».",
           .copy = kSignatures,
           .button = "Ouvrir about:config",
           .page = "about:config",
           .done = profileSays(pid, fmt::format("user_pref(\"{}\", false);", kSignatures))},
          {.text = "Ouvrez l’extension, puis choisissez « Ajouter ».",
           .copy = file,
           .button = "Ouvrir l’extension",
           .page = file}};
}

// Chromium opens such an address for nobody but its user.
std::vector<SetupStep> chromiumSteps(const fs::path& data) {
  return {{.text = "Allez à cette adresse : collez-la dans la barre d’adresse.",
           .copy = "chrome://extensions"},
          {.text = "Activez le « Mode développeur », en haut à droite."},
          {.text = "Choisissez « Charger l’extension non empaquetée », puis ce dossier : "
                   "Ctrl + L permet de le coller.",
           .copy = (data / "extension").string()}};
}

}  // namespace

std::vector<SetupStep> setupSteps(const Browser& browser, int32_t pid, const fs::path& data) {
  if (!setupObstacle(browser, pid).empty()) return {};
  std::vector<SetupStep> steps{{.text = fmt::format("Ouvrez {}.", browser.name), .done = pid > 0}};
  for (auto& step : browser.kind == BrowserKind::kFirefox ? firefoxSteps(browser, pid, data)
                                                          : chromiumSteps(data)) {
    steps.push_back(std::move(step));
  }
  return steps;
}

std::string setupObstacle(const Browser& browser, int32_t pid) {
  if (browser.aliases.size() == 0) return fmt::format("{} n’existe pas sous Linux.", browser.name);
  if (browser.kind == BrowserKind::kUntold) {
    return fmt::format(
        "Rien ne distingue les fenêtres privées de {} des autres : seul son temps est compté.",
        browser.name);
  }
  if (!browser.takesExtension()) {
    return fmt::format(
        "{0} n’accepte pas l’extension Orvanta. Son onglet se lit quand l’accessibilité du bureau "
        "est activée : activez-la (orvanta --accessibility), puis redémarrez {0}.",
        browser.name);
  }
  if (const auto sandbox = sandboxOf(pid)) {
    return fmt::format(
        "Ce {} est installé par {} : son bac à sable empêche l’extension de joindre Orvanta, seul "
        "son temps est compté. Installez-le par votre distribution ou par son éditeur.",
        browser.name, *sandbox);
  }
  return {};
}

std::vector<std::string> openingCommand(int32_t pid, const std::string& page) {
  const auto program = programOf(pid);
  if (program.empty()) return {};
  std::vector<std::string> command{program};
  const auto words = commandLineOf(pid);
  for (std::size_t i = 1; i < words.size(); ++i) {
    const auto& word = words[i];
    if (word.starts_with("--user-data-dir=") || word == "--no-sandbox") command.push_back(word);
    const bool profile = word == "--profile" || word == "-profile" || word == "-P";
    if (profile && i + 1 < words.size()) command.insert(command.end(), {word, words[i + 1]});
  }
  command.push_back(page);
  return command;
}

}  // namespace orvanta
