#include "platform/wayland/idle.h"

#include <ext-idle-notify-v1.h>
#include <idle.h>
#include <wayland-client.h>

#include <utility>

namespace orvanta::wayland {
namespace {

constexpr uint32_t kTimeout = PublishedIdle::kNoticedAfter.count();

// What the two protocols call the same things.
template <class Protocol>
struct Requests;

template <>
struct Requests<ExtIdleNotify> {
  static constexpr const wl_interface* kInterface = &ext_idle_notifier_v1_interface;
  static constexpr auto kDestroyNotifier = ext_idle_notifier_v1_destroy;
  static constexpr auto kDestroyNotification = ext_idle_notification_v1_destroy;
  static ext_idle_notification_v1* ask(ext_idle_notifier_v1* notifier, wl_seat* seat) {
    return ext_idle_notifier_v1_get_idle_notification(notifier, kTimeout, seat);
  }
  using Listener = ext_idle_notification_v1_listener;
  static constexpr auto kListen = ext_idle_notification_v1_add_listener;
};

template <>
struct Requests<KwinIdleTimeout> {
  static constexpr const wl_interface* kInterface = &org_kde_kwin_idle_interface;
  static constexpr auto kDestroyNotifier = org_kde_kwin_idle_destroy;
  static constexpr auto kDestroyNotification = org_kde_kwin_idle_timeout_release;
  static org_kde_kwin_idle_timeout* ask(org_kde_kwin_idle* notifier, wl_seat* seat) {
    return org_kde_kwin_idle_get_idle_timeout(notifier, seat, kTimeout);
  }
  using Listener = org_kde_kwin_idle_timeout_listener;
  static constexpr auto kListen = org_kde_kwin_idle_timeout_add_listener;
};

}  // namespace

template <class Protocol>
Idle<Protocol>::Idle(std::shared_ptr<Connection> connection)
    : membership_(std::move(connection), *this),
      seat_(nullptr, wl_seat_destroy),
      notifier_(nullptr, Requests<Protocol>::kDestroyNotifier),
      notification_(nullptr, Requests<Protocol>::kDestroyNotification) {}

template <class Protocol>
void Idle<Protocol>::offered(const Global& global) {
  if (!seat_ && global.interface == wl_seat_interface.name) {
    seat_.reset(static_cast<wl_seat*>(bind(global, &wl_seat_interface, 1)));
    seatName_ = global.name;
  } else if (!notifier_ && global.interface == Requests<Protocol>::kInterface->name) {
    notifier_.reset(static_cast<Notifier*>(bind(global, Requests<Protocol>::kInterface, 1)));
    notifierName_ = global.name;
  } else {
    return;
  }
  if (seat_ && notifier_) ask();
}

template <class Protocol>
void Idle<Protocol>::ask() {
  static constexpr typename Requests<Protocol>::Listener kListener{onIdle, onResumed};
  notification_.reset(Requests<Protocol>::ask(notifier_.get(), seat_.get()));
  Requests<Protocol>::kListen(notification_.get(), &kListener, this);
  setAvailable(true);
}

template <class Protocol>
void Idle<Protocol>::withdrawn(uint32_t name) {
  const bool seatGone = seat_ && name == seatName_;
  const bool notifierGone = notifier_ && name == notifierName_;
  if (!seatGone && !notifierGone) return;
  notification_.reset();
  setAvailable(false);
  if (seatGone) seat_.reset();
  if (notifierGone) notifier_.reset();
}

template <class Protocol>
void Idle<Protocol>::lost() {
  notification_.reset();
  notifier_.reset();
  seat_.reset();
  setAvailable(false);
}

template class Idle<ExtIdleNotify>;
template class Idle<KwinIdleTimeout>;

}  // namespace orvanta::wayland
