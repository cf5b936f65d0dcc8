// Time since the last input of a Wayland session.
#pragma once

#include <memory>
#include <string>

#include "platform/published.h"
#include "platform/wayland/connection.h"

struct ext_idle_notification_v1;
struct ext_idle_notifier_v1;
struct org_kde_kwin_idle;
struct org_kde_kwin_idle_timeout;
struct wl_seat;

namespace orvanta::wayland {

/// A notifier, the first seat, and one notification of both. While a program keeps the display
/// awake the notification does not come; the time since the last input is then told as 0.
///
/// `Protocol` names the types and requests of one of the two protocols that do this.
template <class Protocol>
class Idle : public PublishedIdle, private Client {
 public:
  explicit Idle(std::shared_ptr<Connection> connection);

  Source source() const override { return {Protocol::kSource, Protocol::kName}; }

 private:
  using Notifier = typename Protocol::Notifier;
  using Notification = typename Protocol::Notification;

  void offered(const Global& global) override;
  void withdrawn(uint32_t name) override;
  void lost() override;
  void ask();

  static void onIdle(void* self, Notification* /*notification*/) {
    static_cast<Idle*>(self)->idled();
  }
  static void onResumed(void* self, Notification* /*notification*/) {
    static_cast<Idle*>(self)->resumed();
  }

  Membership membership_;  // first: the connection outlives the objects
  Owned<wl_seat> seat_;
  uint32_t seatName_ = 0;
  Owned<Notifier> notifier_;
  uint32_t notifierName_ = 0;
  Owned<Notification> notification_;
};

/// ext-idle-notify-v1: compositors of today.
struct ExtIdleNotify {
  using Notifier = ext_idle_notifier_v1;
  using Notification = ext_idle_notification_v1;
  static constexpr auto kSource = "ext-idle-notify";
  static constexpr auto kName = "Wayland";
};
using ExtIdle = Idle<ExtIdleNotify>;

/// org_kde_kwin_idle: KDE, and compositors from before ext-idle-notify-v1.
struct KwinIdleTimeout {
  using Notifier = org_kde_kwin_idle;
  using Notification = org_kde_kwin_idle_timeout;
  static constexpr auto kSource = "kwin-idle";
  static constexpr auto kName = "KWin";
};
using KwinIdle = Idle<KwinIdleTimeout>;

extern template class Idle<ExtIdleNotify>;
extern template class Idle<KwinIdleTimeout>;

}  // namespace orvanta::wayland
