#include "app/app_delegate.h"

#include <malloc.h>

#include <chrono>
#include <cmath>
#include <utility>

#include "app/icon_theme.h"
#include "app/retention_schedule.h"
#include "classify/defaults.h"

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kMenuPeriod = 5s;
constexpr auto kHourlyPeriod = 3600s;
constexpr auto kPanelStarts = 20s;  // at login a panel may come later than we do
// In the settings table while the user has been told that this desktop has no tray.
constexpr auto kToldNoTray = "told_no_tray";

double finite(double seconds) {
  return std::isfinite(seconds) ? seconds : 0;
}

}  // namespace

AppDelegate::AppDelegate(Parts parts, Actions actions, Clock clock)
    : parts_(std::move(parts)), actions_(std::move(actions)), clock_(std::move(clock)) {}

void AppDelegate::applicationDidFinishLaunching() {
  seedDefaults(parts_.db, clock_);
  applyRetention();
  parts_.tracker.start();
  actions_.dailyTelemetry();
  parts_.keeper.start();
  buildMenu();
  mainThread_.every(kMenuPeriod, [this] {
    watchStore();
    refreshMenu();
  });
  mainThread_.every(kHourlyPeriod, [this] { everyHour(); });
}

void AppDelegate::openDashboardAtLaunch(bool asked, const std::string& activationToken) {
  if (asked || (!parts_.db.settings().onboarded && parts_.db.readable()))
    actions_.showDashboard(activationToken);
}

void AppDelegate::buildMenu() {
  if (!parts_.session) return;
  menu_.emplace(parts_.session, iconThemePath(),
                StatusMenu::Actions{
                    .pickProject =
                        [this](std::optional<int64_t> project) {
                          parts_.tracker.setCurrentProjectId(project);
                          refreshMenu();
                        },
                    .openDashboard = actions_.showDashboard,
                    .toggle = [this] { setPaused(!parts_.tracker.paused()); },
                    .openUpdate = [this] { openUpdate(); },
                    .quit = actions_.quit,
                });
  menu_->item().onShownChanged([this] { trayChanged(); });
  refreshMenu();
  mainThread_.after(kPanelStarts, [this] { missTray(); });
}

void AppDelegate::everyHour() {
  if (retentionDue(clock_(), retentionApplied_)) applyRetention();
  actions_.dailyTelemetry();
  parts_.keeper.hourly();
}

// Told once when it begins, and once when it is over.
void AppDelegate::watchStore() {
  parts_.keeper.look();
  const auto condition = parts_.db.condition();
  if (condition.has_value() == toldTrouble_) return;
  toldTrouble_ = condition.has_value();
  actions_.tell(condition ? std::string(sentenceOf(condition->trouble)) +
                                " Ce que vous faites entre-temps est gardé en mémoire."
                          : "Les données sont de nouveau enregistrées.");
}

// Not here: it waits a moment for what it starts.
void AppDelegate::applyRetention() {
  retentionApplied_ = clock_();
  queue_.post([this] { parts_.tracker.startRetention(); });
}

void AppDelegate::setPaused(bool paused) {
  // Not here: the choice is stored, and the store may be busy.
  queue_.post([this, paused] {
    parts_.tracker.setPaused(paused).forget();
    mainThread_.post([this] { refreshMenu(); });
  });
}

void AppDelegate::openUpdate() {
  const auto update = actions_.updateAvailable();
  if (update) actions_.openUrl(update->url);
}

void AppDelegate::refreshMenu() {
  if (!menu_) return;
  if (std::exchange(refreshing_, true)) {
    refreshAgain_ = true;
    return;
  }
  queue_.post([this] {
    mainThread_.post([this, facts = readFacts()] {
      refreshing_ = false;
      showFacts(facts);
      if (std::exchange(refreshAgain_, false)) refreshMenu();
    });
  });
}

// Read again only when the store or the day is another: most of the time neither is.
const boost::json::object& AppDelegate::today() {
  const auto revision = parts_.db.revision();
  const auto date = Calendar().dateOf(clock_());
  if (revision != reading_.revision || date != reading_.date) {
    reading_ = {revision, date, parts_.analytics.totals(date.iso())};
    malloc_trim(0);  // what a report takes for a moment is a third of all that we have
  }
  return reading_.totals;
}

MenuFacts AppDelegate::readFacts() {
  const auto& tracker = parts_.tracker;
  MenuFacts facts;
  facts.paused = tracker.paused();
  if (const auto condition = parts_.db.condition()) facts.trouble = condition->trouble;
  facts.current = tracker.current();
  if (facts.current) facts.current->elapsed = finite(facts.current->elapsed);
  facts.readDay(today());
  facts.currentProject = tracker.currentProjectId();
  facts.onProject = clock_() - tracker.currentProjectSince().value_or(clock_());
  return facts;
}

void AppDelegate::showFacts(MenuFacts facts) {
  facts.update = actions_.updateAvailable();
  menu_->show(facts);
}

void AppDelegate::trayChanged() {
  if (!menu_->item().shown()) {
    mainThread_.after(kPanelStarts, [this] { missTray(); });
  } else {
    queue_.post([this] {
      if (!parts_.db.setting(kToldNoTray).empty()) parts_.db.setSetting(kToldNoTray, "").forget();
    });
  }
}

// Told once, not at every login.
void AppDelegate::missTray() {
  if (menu_->item().shown()) return;
  queue_.post([this] {
    if (!parts_.db.setting(kToldNoTray).empty()) return;
    parts_.db.setSetting(kToldNoTray, "1").forget();
    parts_.db.log()(
        "Orvanta: pas de zone d'icônes sur ce bureau, « orvanta » ouvre le tableau de bord");
    mainThread_.post(actions_.tellNoTray);
  });
}

}  // namespace orvanta
