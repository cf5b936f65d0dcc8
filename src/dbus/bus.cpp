#include "dbus/bus.h"

#include <giomm/asyncresult.h>

#include <utility>

namespace orvanta::dbus {

std::optional<Reply> callAndWait(const Bus& bus, const Place& whom, const std::string& method,
                                 const Reply& arguments, std::chrono::milliseconds patience) {
  if (!bus) return {};
  try {
    return bus->call_sync(whom.path, whom.interface, method, arguments, whom.service,
                          static_cast<int>(patience.count()));
  } catch (const Glib::Error&) {
    return {};
  }
}

Connecting::Connecting(const std::string& address, std::function<void(const Bus&)> then) {
  Gio::DBus::Connection::create_for_address(
      address,
      [cancel = cancel_, then = std::move(then)](const Glib::RefPtr<Gio::AsyncResult>& result) {
        Bus bus;
        try {
          bus = Gio::DBus::Connection::create_for_address_finish(result);
          bus->set_exit_on_close(false);
        } catch (const Glib::Error&) {
          // Nobody listens there.
        }
        if (!cancel->is_cancelled()) then(bus);
      },
      cancel_,
      Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
          Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
}

}  // namespace orvanta::dbus

namespace orvanta {

dbus::Bus connectBus(Gio::DBus::BusType type) {
  try {
    auto bus = Gio::DBus::Connection::get_sync(type);
    bus->set_exit_on_close(false);
    return bus;
  } catch (const Glib::Error&) {
    return {};
  }
}

}  // namespace orvanta
