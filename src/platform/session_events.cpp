#include "platform/session_events.h"

#include <utility>
#include <vector>

#include "platform/sources.h"

namespace orvanta {

SessionEvents::SessionEvents(dbus::Bus system, dbus::Bus session)
    : system_(std::move(system)), session_(std::move(session)) {}

void SessionEvents::listen(SessionListener listener) {
  listener_ = std::move(listener);
  logind_ = std::make_unique<dbus::Logind>(
      system_, SessionListener{.lockChanged =
                                   [this](bool locked) {
                                     hinted_ = locked;
                                     changed();
                                   },
                               .willSleep = [this] { listener_.willSleep(); },
                               .didWake = [this] { listener_.didWake(); },
                               .sessionEnded = [this] { listener_.sessionEnded(); }});
  lockScreens_ = std::make_unique<dbus::LockScreens>(session_, [this](bool covered) {
    covered_ = covered;
    changed();
  });
}

void SessionEvents::readyToSleep() {
  logind_->readyToSleep();
}

Source SessionEvents::source() const {
  auto sources = lockScreens_ ? lockScreens_->present() : std::vector<Source>();
  if (logind_ && logind_->present()) sources.insert(sources.begin(), dbus::Logind::source());
  return joinSources(sources);
}

void SessionEvents::changed() {
  const bool locked = hinted_ || covered_;
  if (std::exchange(locked_, locked) != locked) listener_.lockChanged(locked);
}

}  // namespace orvanta
