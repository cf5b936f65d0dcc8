#include "app/app_delegate.h"

#include <malloc.h>

#include <chrono>
#include <cmath>
#include <utility>

#include "app/bar.h"
#include "app/icon_theme.h"
#include "app/retention_schedule.h"
#include "base/display_text.h"
#include "base/memory.h"
#include "classify/defaults.h"

namespace orvanta {
namespace {

using namespace std::chrono_literals;

constexpr auto kMenuPeriod = 5s;
constexpr auto kHourlyPeriod = 3600s;
constexpr auto kStarted = 10s;      // what only a start needs is no longer needed
constexpr auto kPanelStarts = 20s;  // at login a panel may come later than we do
// In the settings table while the user has been told that this desktop has no tray.
constexpr auto kToldNoTray = "told_no_tray";
constexpr auto kResume = "resume";  // what a note offers

double finite(double seconds) {
  return std::isfinite(seconds) ? seconds : 0;
}

}  // namespace

AppDelegate::AppDelegate(Core& core, Glib::RefPtr<Gio::DBus::Connection> session, PostRoute post,
                         Publish publish)
    : core_(core),
      session_(std::move(session)),
      publish_(std::move(publish)),
      goals_(
          core.db, core.analytics,
          [this](const auto& slot, const auto& notice) {
            mainThread_.post([this, slot, notice] {
              show({.slot = slot, .summary = notice.title, .body = notice.sentence, .actions = {}});
            });
          },
          core.clock),
      notes_(session_),
      returnNote_(core_, notes_, std::move(post)) {
  core_.tracker.setReturned([this](const TimeRange& absence) {
    mainThread_.post([this, absence] { returnNote_.ask(absence); });
  });
}

AppDelegate::~AppDelegate() {
  core_.tracker.setReturned({});
}

void AppDelegate::applicationDidFinishLaunching() {
  seedDefaults(core_.db, core_.clock);
  applyRetention();
  core_.tracker.start();
  core_.telemetry.daily();
  core_.keeper.start();
  buildMenu();
  mainThread_.every(kMenuPeriod, [this] {
    watchStore();
    watchPause();
    refreshMenu();
  });
  mainThread_.every(kHourlyPeriod, [this] { everyHour(); });
  mainThread_.after(kStarted, giveBackMemory);
}

void AppDelegate::openDashboardAtLaunch(bool asked, const std::string& activationToken) {
  if (asked || (!core_.db.settings().onboarded && core_.db.readable()))
    core_.shell.showDashboard(activationToken);
}

void AppDelegate::buildMenu() {
  if (!session_) return;
  menu_.emplace(
      session_, iconThemePath(),
      StatusMenu::Actions{
          .pickProject =
              [this](std::optional<int64_t> project) {
                core_.tracker.setCurrentProjectId(project);
                refreshMenu();
              },
          .openDashboard = [this](const auto& token) { core_.shell.showDashboard(token); },
          .prepareDashboard = [this] { core_.shell.prepareDashboard(); },
          .toggle = [this] { setPaused(!core_.tracker.paused()); },
          .openUpdate = [this] { openUpdate(); },
          .quit = [this] { core_.shell.quit(); },
      });
  menu_->item().onShownChanged([this] { trayChanged(); });
  refreshMenu();
  mainThread_.after(kPanelStarts, [this] { missTray(); });
}

void AppDelegate::everyHour() {
  if (retentionDue(core_.clock(), retentionApplied_)) applyRetention();
  core_.telemetry.daily();
  core_.keeper.hourly();
  giveBackMemory();
}

// Told once when it begins, and once when it is over.
void AppDelegate::watchStore() {
  core_.keeper.look();
  const auto condition = core_.db.condition();
  if (condition.has_value() == toldTrouble_) return;
  toldTrouble_ = condition.has_value();
  core_.shell.tell(condition ? std::string(sentenceOf(condition->trouble)) +
                                   " Ce que vous faites entre-temps est gardé en mémoire."
                             : "Les données sont de nouveau enregistrées.");
}

// Not here: it waits a moment for what it starts.
void AppDelegate::applyRetention() {
  retentionApplied_ = core_.clock();
  queue_.post([this] { core_.tracker.startRetention(); });
}

// One that lasts for hours may have been forgotten.
void AppDelegate::watchPause() {
  constexpr double kLong = 7200;
  queue_.post([this] { core_.tracker.keepPauseEnd().forget(); });
  const auto pause = core_.tracker.pause();
  const bool forgotten =
      pause && !pause->until && !pause->reminded && core_.clock() - pause->since >= kLong;
  if (!forgotten) reminding_ = false;
  if (!forgotten || core_.desktop.session->locked() || std::exchange(reminding_, true)) return;
  remindOfPause(*pause);
}

void AppDelegate::remindOfPause(const Pause& pause) {
  show({.slot = "pause",
        .summary = "Suivi en pause depuis " + fmtDur(core_.clock() - pause.since),
        .body = "Rien n’est enregistré tant que le suivi n’a pas repris.",
        .actions = {{kResume, "Reprendre le suivi"}}});
  queue_.post([this] { core_.tracker.setReminded().forget(); });
}

void AppDelegate::show(dbus::Note note) {
  notes_.show(
      std::move(note),
      [this](const std::string& action, const std::string& token) {
        action == kResume ? setPaused(false) : core_.shell.showDashboard(token);
      },
      [this](const std::string& sentence) { core_.shell.tell(sentence); });
}

void AppDelegate::setPaused(bool paused, const std::string& length) {
  // Not here: the choice is stored, and the store may be busy.
  queue_.post([this, paused, length] {
    core_.tracker.setPaused(paused, pauseEnd(length, core_.clock(), core_.calendar)).forget();
    mainThread_.post([this] { refreshMenu(); });
  });
}

void AppDelegate::openUpdate() {
  const auto update = core_.telemetry.updateAvailable();
  if (update) core_.shell.openUrl(update->url);
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
const DayTotals& AppDelegate::today() {
  const auto revision = core_.db.revision();
  const auto date = core_.analytics.today();
  if (revision != reading_.revision || date != reading_.date) {
    reading_ = {revision, date, core_.analytics.totals(date)};
    core_.analytics.releaseMemory();
    malloc_trim(0);  // what a report takes for a moment is a third of all that we have
  }
  return reading_.totals;
}

MenuFacts AppDelegate::readFacts() {
  const auto& tracker = core_.tracker;
  MenuFacts facts;
  facts.paused = tracker.paused();
  if (const auto condition = core_.db.condition()) facts.trouble = condition->trouble;
  facts.current = tracker.current();
  if (facts.current) facts.current->elapsed = finite(facts.current->elapsed);
  facts.take(today());
  facts.goals = goals_.look();
  facts.currentProject = tracker.currentProjectId();
  facts.onProject = core_.clock() - tracker.currentProjectSince().value_or(core_.clock());
  return facts;
}

void AppDelegate::showFacts(MenuFacts facts) {
  facts.update = core_.telemetry.updateAvailable();
  menu_->show(facts);
  publish_(barState(facts, core_.clock()));
}

void AppDelegate::trayChanged() {
  if (!menu_->item().shown()) {
    mainThread_.after(kPanelStarts, [this] { missTray(); });
  } else {
    queue_.post([this] {
      if (!core_.db.setting(kToldNoTray).empty()) core_.db.setSetting(kToldNoTray, "").forget();
    });
  }
}

// Told once, not at every login.
void AppDelegate::missTray() {
  if (menu_->item().shown()) return;
  queue_.post([this] {
    if (!core_.db.setting(kToldNoTray).empty()) return;
    core_.db.setSetting(kToldNoTray, "1").forget();
    core_.db.log()(
        "Orvanta: pas de zone d’icônes sur ce bureau, « orvanta » ouvre le tableau de bord");
    core_.shell.tell(
        "Ce bureau n’a pas de zone d’icônes. Pour ouvrir Orvanta, lancez-le une deuxième fois "
        "depuis "
        "le menu des applications.");
  });
}

}  // namespace orvanta
