// The connection to a message bus.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "dbus/values.h"

namespace orvanta::dbus {

using Bus = Glib::RefPtr<Gio::DBus::Connection>;

/// An interface of an object of a service. Where signals are chosen by it, an empty text is any.
struct Place {
  std::string service;  ///< well-known or unique name
  std::string path;
  std::string interface;
};

/// Calls a method and blocks for the answer, which is absent when there is none in that time, an
/// error, or no bus. Starts the service for it.
std::optional<Reply> callAndWait(const Bus& bus, const Place& whom, const std::string& method,
                                 const Reply& arguments, std::chrono::milliseconds patience);

/// Connects to the message bus at an address for as long as this lives. `then` gets null when
/// nobody answers there; losing the connection does not end the program. Main thread only.
class Connecting {
 public:
  Connecting(const std::string& address, std::function<void(const Bus&)> then);
  ~Connecting() { cancel_->cancel(); }
  Connecting(const Connecting&) = delete;
  Connecting& operator=(const Connecting&) = delete;

 private:
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
};

}  // namespace orvanta::dbus

namespace orvanta {

/// A message bus of the machine or of the session; null when there is none. Losing it does not end
/// the program.
dbus::Bus connectBus(Gio::DBus::BusType type);

}  // namespace orvanta
