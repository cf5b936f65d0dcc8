#include "app/services.h"

#include <utility>

#include "app/application.h"
#include "base/memory.h"
#include "base/program_files.h"
#include "classify/defaults.h"

namespace orvanta {

Services::Services(DataLock held, Shell& shell, const std::function<void()>& endSession)
    : lock(std::move(held)),
      db(DataLocation::ofUser()),
      systemBus(connectBus(Gio::DBus::BusType::SYSTEM)),
      sessionBus(connectBus(Gio::DBus::BusType::SESSION)),
      desktop(observeDesktop(systemBus, sessionBus, systemLog)),
      core({.db = db, .desktop = desktop, .shell = shell}),
      dashboard(
          ownProgram("orvanta-dashboard"), core,
          [this] {
            core.analytics.releaseMemory();
            giveBackMemory();
          },
          systemLog),
      sessionClient(sessionBus, kApplicationId, [this, endSession] {
        core.tabs.giveUp();
        core.tracker.shutdown();  // before the session manager hears that we are ready
        endSession();
      }) {
  db.setErrorReport([this](const std::string& message) { core.telemetry.reportError(message); });
  keepStore();
  BrowserSetup::ofUser().refresh();
  desktop.session->listen({.lockChanged = [this](bool locked) { core.tracker.setLocked(locked); },
                           .willSleep =
                               [this] {
                                 core.tracker.willSleep([this] {
                                   core.shell.post([this] { desktop.session->readyToSleep(); });
                                 });
                               },
                           .didWake = [this] { core.tracker.didWake(); },
                           .sessionEnded = endSession});
}

Services::~Services() {
  db.setErrorReport({});  // telemetry ends before the last statement
  db.setReplaced({});
  core.tracker.setErased({});
}

// A file that is new, or another, needs what every store has; and the user is told of it.
void Services::keepStore() {
  const auto renewed = [this] {
    seedDefaults(db, core.clock);
    core.shell.refreshMenu();
  };
  core.keeper.listen(
      {.renewed = renewed, .tell = [this](const auto& sentence) { core.shell.tell(sentence); }});
  db.setReplaced([this, renewed](const std::string& sentence) {
    core.keeper.replaced();
    renewed();
    if (!sentence.empty()) core.shell.tell(sentence);
  });
  core.tracker.setErased(
      [this](double before) { core.keeper.eraseLater(stripTitlesBefore(before)); });
}

}  // namespace orvanta
