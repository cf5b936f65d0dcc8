// The life of the resident program: what happens at launch, while it runs, and at the end.
#pragma once

#include <giomm/dbusconnection.h>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "app/goal_watch.h"
#include "app/menu_content.h"
#include "app/return_note.h"
#include "app/status_menu.h"
#include "base/calendar.h"
#include "base/main_thread.h"
#include "base/serial_queue.h"
#include "bridge/core.h"
#include "platform/dbus/notifications.h"

namespace orvanta {

/// Carries the program from launch to its end, and is the target of the status menu. The menu is
/// computed on a queue of its own, so that the main loop never waits for the store. Main thread
/// only.
class AppDelegate {
 public:
  /// Is handed what status bars show, see barState(), every few seconds.
  using Publish = std::function<void(const std::string& state)>;

  /// `core` outlives it. Without a session bus there are no menu and no notes. `post` runs work
  /// where a route of that name is answered.
  AppDelegate(Core& core, Glib::RefPtr<Gio::DBus::Connection> session, PostRoute post,
              Publish publish);

  ~AppDelegate();
  AppDelegate(const AppDelegate&) = delete;
  AppDelegate& operator=(const AppDelegate&) = delete;

  /// Everything between the opened store and the running program; once.
  void applicationDidFinishLaunching();
  /// The last step of the launch: the dashboard opens if the user has never seen it or asks for it.
  void openDashboardAtLaunch(bool asked, const std::string& activationToken);
  /// The user has started the program again.
  void applicationShouldHandleReopen(const std::string& activationToken = {}) {
    core_.shell.showDashboard(activationToken);
  }
  /// Closes the open span.
  void applicationWillTerminate() { core_.tracker.shutdown(); }

  /// Brings the menu up to date, soon. Costs nothing while an earlier refresh is on its way.
  void refreshMenu();

  /// A pause may end by itself: see pauseEnd() for `length`; "" is a pause without end.
  void setPaused(bool paused, const std::string& length = {});

 private:
  void buildMenu();
  void watchStore();
  void watchPause();
  void remindOfPause(const Pause& pause);
  void show(dbus::Note note);
  void everyHour();
  void applyRetention();
  void trayChanged();
  void missTray();
  const DayTotals& today();
  MenuFacts readFacts();
  void showFacts(MenuFacts facts);
  void openUpdate();

  Core& core_;
  const Glib::RefPtr<Gio::DBus::Connection> session_;
  const Publish publish_;
  double retentionApplied_ = 0;  // when, Unix seconds
  // What was last read for the menu; only touched on queue_.
  struct Reading {
    int64_t revision = -1;
    Date date;
    DayTotals totals;
  } reading_;
  GoalWatch goals_;  // the same

  bool toldTrouble_ = false;   // the user knows that nothing can be stored
  bool reminding_ = false;     // of a pause
  bool refreshing_ = false;    // a refresh is on its way
  bool refreshAgain_ = false;  // and was too early for what has happened since
  std::optional<StatusMenu> menu_;
  dbus::Notifications notes_;
  ReturnNote returnNote_;
  MainThread mainThread_;
  SerialQueue queue_{"orvanta.menu"};  // last: it ends before what its tasks use
};

}  // namespace orvanta
