#include "platform/dbus/mutter_idle.h"

namespace orvanta::dbus {
namespace {

constexpr auto kName = "org.gnome.Mutter.IdleMonitor";  // of the service and of its interface
constexpr auto kPath = "/org/gnome/Mutter/IdleMonitor/Core";
constexpr std::chrono::seconds kRetry{10};

}  // namespace

MutterIdle::MutterIdle(const Bus& session) : mutter_(session, kName) {
  mutter_.onSignal(kPath, kName, "WatchFired",
                   [this](const Reply& watch) { fired(argument<guint32>(watch)); });
  mutter_.watch([this] { watchIdle(); },
                [this] {
                  idleWatch_.reset();
                  inputWatch_.reset();
                  setAvailable(false);
                });
}

void MutterIdle::watchIdle() {
  mutter_.call(
      kPath, kName, "AddIdleWatch", arguments(guint64{kNoticedAfter.count()}),
      [this](const Reply& watch) {
        idleWatch_ = argument<guint32>(watch);
        setAvailable(true);
      },
      [this] {
        mainThread_.after(kRetry, [this] {
          if (mutter_.present() && !idleWatch_) watchIdle();
        });
      });
}

void MutterIdle::watchInput() {
  mutter_.call(
      kPath, kName, "AddUserActiveWatch", {},
      [this](const Reply& watch) { inputWatch_ = argument<guint32>(watch); },
      [this] { resumed(); });  // rather than idle for ever
}

void MutterIdle::fired(guint32 watch) {
  if (idleWatch_ == watch) {
    idled();
    watchInput();
  } else if (inputWatch_ == watch) {
    inputWatch_.reset();
    resumed();
  }
}

}  // namespace orvanta::dbus
