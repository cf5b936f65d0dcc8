#include "app/legacy_agents.h"

#include <glibmm/error.h>
#include <glibmm/spawn.h>

#include <system_error>

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr auto kPatienceSeconds = "20";  // of a service manager that hangs

bool isThere(const fs::path& file) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(file, ignored));
}

bool removed(const fs::path& file) {
  std::error_code ignored;
  return fs::remove(file, ignored);
}

}  // namespace

void runProgram(const std::vector<std::string>& words) {
  try {
    Glib::spawn_sync("", words,
                     Glib::SpawnFlags::SEARCH_PATH | Glib::SpawnFlags::STDOUT_TO_DEV_NULL |
                         Glib::SpawnFlags::STDERR_TO_DEV_NULL);
  } catch (const Glib::Error&) {
    // Not there: then nothing runs that it could stop.
  }
}

void cleanupLegacyAgents(const fs::path& config, const RunProgram& run, const Log& log) {
  for (const std::string label : {"fr.quellvane.lumaplan.tracker", "fr.quellvane.lumaplan.server",
                                  "fr.quellvane.lumaplan.menubar"}) {
    const auto entry = config / "autostart" / (label + ".desktop");
    const auto unit = config / "systemd/user" / (label + ".service");
    bool gone = removed(entry);
    if (isThere(unit)) {
      run({"timeout", kPatienceSeconds, "systemctl", "--user", "disable", "--now",
           label + ".service"});
      gone = removed(unit) || gone;
    }
    if (gone) log("Orvanta: ancien agent " + label + " retiré");
  }
}

}  // namespace orvanta
