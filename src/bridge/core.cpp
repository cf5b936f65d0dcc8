#include "bridge/core.h"

#include <utility>

namespace orvanta {

Core::Core(Parts parts)
    : clock(std::move(parts.clock)),
      calendar(std::move(parts.calendar)),
      db(parts.db),
      desktop(parts.desktop),
      shell(parts.shell),
      appRules(db, clock),
      tabs(std::move(parts.browsers.helper), std::move(parts.browsers.sockets),
           parts.browsers.runChild, clock, std::move(parts.log)),
      browsers(tabs, std::move(parts.browsers.setup), std::move(parts.browsers.running),
               std::move(parts.browsers.runChild)),
      loginItem(std::move(parts.loginItem)),
      collectors(
          *desktop.foreground, *desktop.idle, *desktop.inhibition,
          [this](const FrontmostApp& app) { return tabs.browserTab(app); },
          [this](const FrontmostApp& app) { appRules.seen(app.name, app.categories); }),
      tracker(db, collectors, clock, std::move(parts.uptime)),
      analytics(db, clock, calendar),
      history(db, clock),
      backups(Backups::folderOf(db.location())),
      keeper(db, backups, clock, calendar),
      telemetry(
          db, std::move(parts.facts), std::move(parts.service), [this] { shell.refreshMenu(); },
          clock, calendar) {}

}  // namespace orvanta
