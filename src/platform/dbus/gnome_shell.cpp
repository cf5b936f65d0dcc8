#include "platform/dbus/gnome_shell.h"

#include <fmt/format.h>
#include <giomm/desktopappinfo.h>
#include <giomm/file.h>
#include <giomm/settings.h>
#include <giomm/settingsschemasource.h>
#include <glibmm/fileutils.h>
#include <glibmm/miscutils.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "base/own_file.h"
#include "platform/resources/resources.h"

namespace orvanta::dbus {
namespace {

constexpr auto kShell = "org.gnome.Shell";
constexpr auto kShellPath = "/org/gnome/Shell";
constexpr auto kExtensions = "org.gnome.Shell.Extensions";
constexpr auto kSettings = "org.gnome.shell";
constexpr auto kId = "focus@orvanta.quellvane.fr";
constexpr int kFirstWithModules = 45;

// Shells load an extension only when it names their version.
std::string metadata(int version) {
  return fmt::format(R"({{
  "uuid": "{}",
  "name": "Orvanta",
  "description": "Indique à Orvanta, et à lui seul, la fenêtre active.",
  "shell-version": ["{}"]
}}
)",
                     kId, version);
}

std::string script(int version) {
  const auto* form = version < kFirstWithModules ? "43" : "45";
  return platformResource(fmt::format("gnome-head-{}.js", form)) +
         platformResource("gnome-focus.js") +
         platformResource(fmt::format("gnome-tail-{}.js", form));
}

// Whether the file had to be written.
bool write(const std::string& path, const std::string& text) {
  if (Glib::file_test(path, Glib::FileTest::EXISTS) && Glib::file_get_contents(path) == text) {
    return false;
  }
  if (const auto problem = writeOwnFile(path, text)) throw std::runtime_error(*problem);
  return true;
}

// Whether the user lets the shell load extensions at all.
bool switchOn() {
  const auto schemas = Gio::SettingsSchemaSource::get_default();
  if (!schemas || !schemas->lookup(kSettings, true)) return true;  // no setting, nothing to switch
  const auto settings = Gio::Settings::create(kSettings);
  auto enabled = settings->get_string_array("enabled-extensions");
  if (std::find(enabled.begin(), enabled.end(), kId) == enabled.end()) {
    enabled.emplace_back(kId);
    settings->set_string_array("enabled-extensions", enabled);
  }
  return !settings->get_boolean("disable-user-extensions");
}

void openExtensionSettings() {
  for (const auto* id :
       {"org.gnome.Extensions.desktop", "com.mattjakeman.ExtensionManager.desktop"}) {
    const auto app = Gio::DesktopAppInfo::create(id);
    if (app && app->launch(std::vector<Glib::RefPtr<Gio::File>>())) return;
  }
}

}  // namespace

GnomeShell::GnomeShell(const Bus& session, Log log)
    : log_(std::move(log)), shell_(session, kShell) {
  shell_.watch([this] { learn(); },
               [this] {
                 version_ = 0;
                 listed_ = false;
               });
}

void GnomeShell::learn() {
  shell_.read<std::string>(kShellPath, kShell, "ShellVersion", [this](const std::string& version) {
    std::from_chars(version.data(), version.data() + version.size(), version_);
  });
  shell_.call(kShellPath, kExtensions, "GetExtensionInfo", arguments(kId),
              [this](const Reply& reply) {
                using Info = std::map<Glib::ustring, Glib::VariantBase>;
                listed_ = !argument<Info>(reply).empty();
              });
}

std::string GnomeShell::installExtension() {
  if (version_ == 0) {
    return "GNOME n'a pas encore répondu ; réessayez dans quelques secondes.";
  }
  try {
    const auto folder =
        Glib::build_filename(Glib::get_user_data_dir(), "gnome-shell/extensions", kId);
    const bool isNew = write(Glib::build_filename(folder, "metadata.json"), metadata(version_));
    if (write(Glib::build_filename(folder, "extension.js"), script(version_)) || isNew) {
      listed_ = false;  // what the shell has found is not what is there now
    }
    if (!switchOn()) {
      openExtensionSettings();
      return "Les extensions de GNOME sont désactivées : activez-les, puis activez « Orvanta » "
             "dans "
             "l'application Extensions.";
    }
  } catch (const std::exception& error) {
    log_(std::string("Orvanta: extension GNOME non installée (") + error.what() + ")");
    return "L'extension GNOME d'Orvanta n'a pas pu être installée dans votre dossier personnel.";
  }
  if (!listed_) {
    return "L'extension GNOME d'Orvanta est installée : fermez votre session puis rouvrez-la une "
           "fois pour que les titres des fenêtres soient enregistrés.";
  }
  shell_.call(kShellPath, kExtensions, "EnableExtension", arguments(kId));
  return {};
}

}  // namespace orvanta::dbus
