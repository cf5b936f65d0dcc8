// orvanta: records what is in front, and answers questions about it.
#include <giomm/init.h>
#include <glib.h>
#include <malloc.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/application.h"
#include "app/csv_export.h"
#include "app/handover.h"
#include "app/local_call.h"
#include "app/route_call.h"
#include "app/store_commands.h"
#include "browser/browser_setup.h"
#include "platform/dbus/accessibility_switch.h"
#include "platform/desktop.h"
#include "storage/data_location.h"
#include "storage/data_lock.h"
#include "storage/store_swap.h"

namespace {

using namespace orvanta;

constexpr auto kUsage =
    "Usage : orvanta                       enregistre l'activité jusqu'à l'arrêt ; déjà en "
    "marche,\n"
    "                                      ouvre le tableau de bord\n"
    "        orvanta --show                ouvre le tableau de bord\n"
    "        orvanta --pause, --resume     met le suivi en pause, le reprend\n"
    "        orvanta --call ROUTE [JSON]   affiche la réponse d'une route\n"
    "        orvanta --call -              répond à chaque ligne {\"id\", \"path\", \"body\"} de "
    "l'entrée\n"
    "        orvanta --export DU AU [FICHIER]\n"
    "                                      écrit les activités de ces jours (AAAA-MM-JJ) en CSV\n"
    "        orvanta --check               dit si la base et ses sauvegardes sont intactes\n"
    "        orvanta --backup FICHIER      copie la base, vérifiée, dans un nouveau fichier\n"
    "        orvanta --restore FICHIER     remet cette copie à la place de la base, qui est "
    "gardée\n"
    "        orvanta --connect-browsers    prépare les navigateurs, dit comment ajouter "
    "l'extension\n"
    "        orvanta --accessibility       active l'accessibilité du bureau, pour lire l'onglet "
    "sans\n"
    "                                      extension (ralentit un peu toutes les applications)\n"
    "        orvanta --version\n"
    "        orvanta --help\n";

// GLib would convert to the locale's character set; JSON is UTF-8 wherever it goes.
void printAsIs(const char* text) {
  std::fputs(text, stdout);
}

bool runningElsewhere() {
  const auto bus = connectBus(Gio::DBus::BusType::SESSION);
  if (!bus) return false;
  try {
    Glib::Variant<bool> owned;
    bus->call_sync("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner",
                   Glib::VariantContainerBase::create_tuple(
                       Glib::Variant<Glib::ustring>::create(kApplicationId)),
                   "org.freedesktop.DBus")
        .get_child(owned, 0);
    return owned.get();
  } catch (const Glib::Error&) {
    return false;
  }
}

// The running program answers; without one the store is read here.
int call(int argc, char** argv, const std::vector<std::string>& words) {
  if (runningElsewhere()) {
    if (words == std::vector<std::string>{kManyCalls}) {
      std::fputs("Orvanta : le programme est en marche, posez-lui les questions une à une\n",
                 stderr);
      return 1;
    }
    const int status =
        Gio::Application::create(kApplicationId, Gio::Application::Flags::HANDLES_COMMAND_LINE |
                                                     Gio::Application::Flags::IS_LAUNCHER)
            ->run(argc, argv);
    if (status != kAnswerYourself) return status;
  }
  const auto result = callLocally(words);
  printAsIs(result.output.c_str());
  if (!result.complaint.empty()) std::fprintf(stderr, "Orvanta : %s\n", result.complaint.c_str());
  return result.status;
}

// The store is read here even when the program runs: reading disturbs nobody, and a year of lines
// need not pass through the bus.
int exportCsv(const std::vector<std::string>& words) {
  Database db(DataLocation::ofUser());
  return exportCsvFile(Analytics(db, wallClock), words);
}

int switchAccessibilityOn() {
  if (dbus::switchAccessibilityOn(connectBus(Gio::DBus::BusType::SESSION))) return 0;
  std::fputs("Orvanta : ce bureau n'a pas de service d'accessibilité\n", stderr);
  return 1;
}

// What a kill left half done when the store was restored or repaired, unless somebody is at it.
void finishSwapOfStore() {
  const auto where = DataLocation::ofUser();
  if (!std::filesystem::exists(where.dir)) return;
  if (const auto lock = DataLock::take(where)) finishSwap(where.file());
}

int connectBrowsers() {
  printAsIs(BrowserSetup::ofUser().connectAll().c_str());
  return 0;
}

// Ends, or goes on in a fresh image. That one has a right to the data, so it does not give way to a
// start of the program that has the name for the moment in which it is turned away.
int record(int argc, char** argv, const std::optional<Handover>& left) {
  constexpr int kAttempts = 20;
  constexpr unsigned long kPause = 100'000;  // microseconds
  for (int attempt = 1;; ++attempt) {
    Application application(left);
    const int status = application.run(argc, argv);
    if (application.handover()) {
      handOver(*application.handover());
      systemLog("Orvanta: impossible de reprendre avec le nouveau bus de session");
      return 1;
    }
    if (!left || application.started() || status == 0 || attempt == kAttempts) return status;
    g_usleep(kPause);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const auto left = takeHandover();
  // The threads take turns: an arena for each would only hold on to what it once needed.
  mallopt(M_ARENA_MAX, 1);
  g_set_print_handler(printAsIs);
  Gio::init();
  const std::vector<std::string> words(argv + 1, argv + argc);
  if (startsApplication(words)) return record(argc, argv, left);
  finishSwapOfStore();
  if (words.front() == "--call") return call(argc, argv, {words.begin() + 1, words.end()});
  if (words.front() == "--export") return exportCsv({words.begin() + 1, words.end()});
  if (words.front() == "--check") return checkCommand();
  if (words.front() == "--backup") return backupCommand({words.begin() + 1, words.end()});
  if (words.front() == "--restore") return restoreCommand({words.begin() + 1, words.end()});
  if (words.front() == "--connect-browsers") return connectBrowsers();
  if (words.front() == "--accessibility") return switchAccessibilityOn();
  if (words.front() == "--version") {
    std::puts("orvanta " ORVANTA_VERSION);
    return 0;
  }
  const bool help = words.front() == "--help";
  std::fputs(kUsage, help ? stdout : stderr);
  return help ? 0 : 2;
}
