#include "platform/dbus/gnome_shell.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
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
constexpr auto kNeedsExtension =
    "GNOME ne montre ses fenêtres qu’à ses extensions : sans celle d’Orvanta, seules les "
    "applications qui parlent aux lecteurs d’écran se voient, le reste est « Inconnu ». "
    "Installez-la.";
constexpr auto kNeedsLogOut =
    "L’extension GNOME d’Orvanta est installée : fermez votre session puis rouvrez-la une fois "
    "pour que les titres des fenêtres soient enregistrés.";

// The shells that understand a form of the extension. It is to outlive upgrades of GNOME, and what
// it uses has not changed from one to the next for long.
struct Form {
  int first;
  int last;
};
constexpr Form kFunctions{43, 44};
constexpr Form kModules{45, 60};

const Form& formFor(int version) {
  return version < kModules.first ? kFunctions : kModules;
}

// Shells load an extension only when it names their version.
std::string metadata(int version) {
  const auto& form = formFor(version);
  std::vector<std::string> versions;
  for (int each = std::min(form.first, version); each <= std::max(form.last, version); ++each) {
    versions.push_back(fmt::format("\"{}\"", each));
  }
  return fmt::format(R"({{
  "uuid": "{}",
  "name": "Orvanta",
  "description": "Indique à Orvanta, et à lui seul, la fenêtre active.",
  "shell-version": [{}]
}}
)",
                     kId, fmt::join(versions, ", "));
}

std::string script(int version) {
  const int form = formFor(version).first;
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

std::string extensionFolder() {
  return Glib::build_filename(Glib::get_user_data_dir(), "gnome-shell/extensions", kId);
}

// Whether it was not there as it should be.
bool writeExtension(int version) {
  const auto folder = extensionFolder();
  const bool isNew = write(Glib::build_filename(folder, "metadata.json"), metadata(version));
  return write(Glib::build_filename(folder, "extension.js"), script(version)) || isNew;
}

// Whether the shell knows the extension in a form that it can load.
bool isLoadable(const std::map<Glib::ustring, Glib::VariantBase>& info) {
  constexpr double kOutOfDate = 4;
  const auto found = info.find("state");
  if (found == info.end() || !found->second.is_of_type(Glib::VARIANT_TYPE_DOUBLE)) return false;
  return Glib::VariantBase::cast_dynamic<Glib::Variant<double>>(found->second).get() != kOutOfDate;
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
                 loadable_ = false;
               });
}

void GnomeShell::learn() {
  shell_.read<std::string>(kShellPath, kShell, "ShellVersion", [this](const std::string& version) {
    std::from_chars(version.data(), version.data() + version.size(), version_);
    shell_.call(
        kShellPath, kExtensions, "GetExtensionInfo", arguments(kId), [this](const Reply& reply) {
          loadable_ = isLoadable(argument<std::map<Glib::ustring, Glib::VariantBase>>(reply));
          refresh();
        });
  });
}

// An upgrade of GNOME, or of this program, wants the extension written anew. Whoever has removed it
// does not get it back.
void GnomeShell::refresh() {
  installed_ = Glib::file_test(extensionFolder(), Glib::FileTest::IS_DIR);
  if (!installed_ || version_ == 0) return;
  try {
    if (writeExtension(version_)) loadable_ = false;  // the shell has read what was there before
  } catch (const std::exception& error) {
    installed_ = false;
    log_(std::string("Orvanta: extension GNOME non mise à jour (") + error.what() + ")");
  }
}

std::string GnomeShell::whyNoTitles() const {
  return installed_ && !loadable_ ? kNeedsLogOut : kNeedsExtension;
}

std::string GnomeShell::installExtension() {
  if (version_ == 0) {
    return "GNOME n’a pas encore répondu ; réessayez dans quelques secondes.";
  }
  try {
    if (writeExtension(version_)) loadable_ = false;
    installed_ = true;
    if (!switchOn()) {
      openExtensionSettings();
      return "Les extensions de GNOME sont désactivées : activez-les, puis activez « Orvanta » "
             "dans "
             "l’application Extensions.";
    }
  } catch (const std::exception& error) {
    log_(std::string("Orvanta: extension GNOME non installée (") + error.what() + ")");
    return "L’extension GNOME d’Orvanta n’a pas pu être installée dans votre dossier personnel.";
  }
  if (!loadable_) return kNeedsLogOut;
  shell_.call(kShellPath, kExtensions, "EnableExtension", arguments(kId));
  return {};
}

}  // namespace orvanta::dbus
