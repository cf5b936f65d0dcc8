#include "app/turn.h"

#include <glibmm/main.h>

#include <utility>

#include "platform/desktop.h"

namespace orvanta {
namespace {

constexpr unsigned kLookSeconds = 2;

}  // namespace

Turn::Turn(DataLocation where, std::function<void(DataLock lock)> come,
           std::function<void()> sessionEnded)
    : where_(std::move(where)),
      come_(std::move(come)),
      session_(connectBus(Gio::DBus::BusType::SYSTEM), {}),
      timer_(Glib::signal_timeout().connect_seconds([this] { return look(); }, kLookSeconds)) {
  session_.listen({.lockChanged = [](bool /*locked*/) {},
                   .willSleep = [this] { session_.readyToSleep(); },
                   .didWake = [] {},
                   .sessionEnded = std::move(sessionEnded)});
}

Turn::~Turn() {
  timer_.disconnect();
}

bool Turn::look() {
  auto lock = DataLock::take(where_);
  if (!lock) return true;
  const auto come = come_;  // this may end in it
  come(std::move(*lock));
  return false;
}

}  // namespace orvanta
