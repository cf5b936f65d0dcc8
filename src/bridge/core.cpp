#include "bridge/core.h"

#include <boost/json/serialize.hpp>
#include <memory>
#include <utility>

#include "bridge/report_json.h"
#include "reports/effect.h"

namespace orvanta {

namespace {

// What the history and the preview of a change tell of it.
Measure measured(const Calendar& calendar) {
  return [calendar](Transaction& change, const std::string& changeset) {
    const auto effect = std::make_shared<ChangeEffect>(change, changeset, calendar);
    return [effect] { return boost::json::serialize(boost::json::value_from(effect->effect())); };
  };
}

}  // namespace

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
      history(db, clock, measured(calendar)),
      backups(Backups::folderOf(db.location())),
      keeper(db, backups, clock, calendar),
      telemetry(
          db, std::move(parts.facts), std::move(parts.service), [this] { shell.refreshMenu(); },
          clock, calendar) {}

}  // namespace orvanta
