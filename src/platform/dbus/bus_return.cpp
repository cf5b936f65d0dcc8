#include "platform/dbus/bus_return.h"

#include <glib.h>

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace orvanta::dbus {
namespace {

using namespace std::chrono_literals;

constexpr auto kFirstPause = 250ms;
constexpr auto kLongestPause = 60s;
constexpr auto kMoment = 500ms;  // a bus that crashes at its start is not back

// Where the desktop says that its bus listens; "" where it is not a socket that can come back.
std::string addressOfSessionBus() {
  const char* told = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  std::string address = told && *told ? told : "";
  if (address.empty()) address = std::string("unix:path=") + g_get_user_runtime_dir() + "/bus";
  return address.starts_with("unix:") ? address : "";
}

}  // namespace

BusReturn::BusReturn(Bus bus, std::function<void()> returned)
    : address_(addressOfSessionBus()),
      returned_(std::move(returned)),
      bus_(std::move(bus)),
      pause_(kFirstPause) {
  if (address_.empty()) return;
  if (!bus_ || bus_->is_closed()) {
    lookLater();
    return;
  }
  closed_ = bus_->signal_closed().connect([this](bool /*lost*/, const auto& /*error*/) {
    closed_.disconnect();
    lookLater();
  });
}

BusReturn::~BusReturn() {
  closed_.disconnect();
}

void BusReturn::lookLater() {
  mainThread_.after(pause_, [this] { look(); });
  pause_ = std::min<std::chrono::milliseconds>(2 * pause_, kLongestPause);
}

void BusReturn::look() {
  connecting_ = std::make_unique<Connecting>(address_, [this](const Bus& bus) {
    bus_ = bus;
    if (!bus_) return lookLater();
    mainThread_.after(kMoment, [this] { bus_->is_closed() ? lookLater() : returned_(); });
  });
}

}  // namespace orvanta::dbus
