#include "app/commands.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "app/csv_export.h"
#include "app/follow_command.h"
#include "app/import_command.h"
#include "app/local_call.h"
#include "app/report_commands.h"
#include "app/search_command.h"
#include "app/store_commands.h"
#include "base/application_id.h"
#include "bridge/request.h"
#include "browser/browser_setup.h"
#include "capture/pause.h"
#include "classify/rule_set.h"
#include "dbus/bus.h"
#include "platform/dbus/accessibility_switch.h"
#include "storage/data_location.h"
#include "storage/data_lock.h"
#include "storage/store_swap.h"

namespace orvanta {
namespace {

// The store is read here even when the program runs: reading disturbs nobody, and a year of lines
// need not pass through the bus.
int exportCsv(const std::vector<std::string>& words) {
  Database db(DataLocation::ofUser());
  return exportCsvFile(Analytics(db, wallClock), words);
}

int tellOfPeriod(const Options& options) {
  Database db(DataLocation::ofUser());
  const Analytics analytics(db, wallClock);
  if (options.has("search")) return searchCommand(analytics, {}, options.words());
  if (options.has("report")) return reportCommand(analytics, {}, options.words());
  return sheetCommand(analytics, wallClock, loadProjects(db), options.words(),
                      options.value("client"), options.value("format").value_or("text"));
}

int switchAccessibilityOn() {
  if (dbus::switchAccessibilityOn(connectBus(Gio::DBus::BusType::SESSION))) return 0;
  std::fputs("Orvanta : ce bureau n’a pas de service d’accessibilité\n", stderr);
  return 1;
}

// What a kill left half done when the store was restored or repaired, unless somebody is at it.
void finishSwapOfStore() {
  const auto where = DataLocation::ofUser();
  if (!std::filesystem::exists(where.dir)) return;
  if (const auto lock = DataLock::take(where)) finishSwap(where.file());
}

int connectBrowsers() {
  std::fputs(BrowserSetup::ofUser().connectAll().c_str(), stdout);
  return 0;
}

int unexpected(const std::string& word) {
  std::fprintf(stderr, "Orvanta : « %s » n’est pas attendu ici, voir orvanta --help\n",
               word.c_str());
  return 2;
}

// The resident program pauses, once it is known that it can.
std::optional<int> pauseLength(const std::string& word) {
  if (pauseEnd(word, wallClock(), {})) return {};
  std::fprintf(stderr, "Orvanta : « %s » : %s\n", word.c_str(), kNoPauseLength);
  return 2;
}

}  // namespace

std::optional<int> runCommand(const Options& options) {
  const auto& words = options.words();
  if (options.has("version")) {
    std::puts("orvanta " ORVANTA_VERSION);
    return 0;
  }
  if (options.hasValues() && !options.has("sheet")) {
    return unexpected(options.value("client") ? "--client" : "--format");
  }
  const bool tells = options.has("report") || options.has("sheet") || options.has("search");
  if (tells || options.has("export") || options.has("backup") || options.has("take-all") ||
      options.has("restore") || options.has("check"))
    finishSwapOfStore();
  if (tells) return tellOfPeriod(options);
  if (options.has("export")) return exportCsv(words);
  if (options.has("backup")) return backupCommand(words);
  if (options.has("take-all")) return takeAllCommand(words);
  if (options.has("restore")) return restoreCommand(words);
  if (options.has("bar") || options.has("watch")) return followCommand(options);
  if (options.has("once")) return unexpected("--once");
  if (options.has("import")) return importCommand(words);
  if (options.has("call")) return {};
  if (options.has("pause") && words.size() == 1) return pauseLength(words.front());
  if (!words.empty()) return unexpected(words.front());
  if (options.has("check")) return checkCommand();
  if (options.has("connect-browsers")) return connectBrowsers();
  if (options.has("accessibility")) return switchAccessibilityOn();
  return {};
}

int answerHere(const Options& options) {
  finishSwapOfStore();
  const auto result = callLocally(options.words());
  std::fputs(result.output.c_str(), stdout);
  if (!result.complaint.empty()) std::fprintf(stderr, "Orvanta : %s\n", result.complaint.c_str());
  return result.status;
}

int tellUnanswered() {
  std::puts(failure("Orvanta s’est arrêté avant de répondre").json.c_str());
  return 1;
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

}  // namespace orvanta
