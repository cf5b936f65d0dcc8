// Notices that the session bus is there again.
#pragma once

#include <sigc++/connection.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "base/main_thread.h"
#include "dbus/bus.h"

namespace orvanta::dbus {

/// A bus that is restarted, or comes later than we do, normally listens at the same address: once
/// the connection is closed, that address is tried quietly, at longer and longer intervals. GLib
/// gives a process one session bus for its life, and never another: whoever hears of the return has
/// to begin anew with a fresh process image. Main thread only; never blocks it.
class BusReturn {
 public:
  /// `bus` may be null. `returned` is called once: when a bus answers that has been there for a
  /// moment. Without a socket as the address there is nothing to wait for.
  BusReturn(Bus bus, std::function<void()> returned);
  ~BusReturn();
  BusReturn(const BusReturn&) = delete;
  BusReturn& operator=(const BusReturn&) = delete;

 private:
  void lookLater();
  void look();

  const std::string address_;
  const std::function<void()> returned_;
  Bus bus_;  // the lost one, or the one that is tried
  sigc::connection closed_;
  std::chrono::milliseconds pause_;
  std::unique_ptr<Connecting> connecting_;
  MainThread mainThread_;
};

}  // namespace orvanta::dbus
