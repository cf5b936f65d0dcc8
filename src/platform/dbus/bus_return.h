// Notices that the session bus is there again.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>
#include <sigc++/connection.h>

#include <chrono>
#include <functional>
#include <string>

#include "base/main_thread.h"

namespace orvanta::dbus {

/// A bus that is restarted, or comes later than we do, normally listens at the same address: once
/// the connection is closed, that address is tried quietly, at longer and longer intervals. GLib
/// gives a process one session bus for its life, and never another: whoever hears of the return has
/// to begin anew with a fresh process image. Main thread only; never blocks it.
class BusReturn {
 public:
  /// `bus` may be null. `returned` is called once: when a bus answers that has been there for a
  /// moment. Without a socket as the address there is nothing to wait for.
  BusReturn(Glib::RefPtr<Gio::DBus::Connection> bus, std::function<void()> returned);
  ~BusReturn();
  BusReturn(const BusReturn&) = delete;
  BusReturn& operator=(const BusReturn&) = delete;

 private:
  void lookLater();
  void look();
  void found(const Glib::RefPtr<Gio::DBus::Connection>& bus);

  const std::string address_;
  const std::function<void()> returned_;
  Glib::RefPtr<Gio::DBus::Connection> bus_;  // the lost one, or the one that is tried
  sigc::connection closed_;
  std::chrono::milliseconds pause_;
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
  MainThread mainThread_;
};

}  // namespace orvanta::dbus
