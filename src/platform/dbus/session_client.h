// The end of the session, as session managers announce it.
#pragma once

#include <giomm/cancellable.h>
#include <giomm/dbusconnection.h>

#include <functional>
#include <string>
#include <vector>

namespace orvanta::dbus {

/// Registers with the session manager of GNOME (also Cinnamon, MATE, Budgie) or Xfce, which then
/// waits for our answer before it goes on to end the session. Where there is none, the session ends
/// by SIGTERM or as logind tells. Never blocks. Main thread only.
class SessionClient {
 public:
  /// On the session bus, which may be null. `ending` is called when the session ends for good;
  /// once it has returned, the session manager is told that we are ready.
  SessionClient(Glib::RefPtr<Gio::DBus::Connection> session, const std::string& applicationId,
                std::function<void()> ending);
  ~SessionClient();
  SessionClient(const SessionClient&) = delete;
  SessionClient& operator=(const SessionClient&) = delete;

 private:
  struct Manager {
    const char* service;
    const char* path;
    const char* interface;
    const char* clientInterface;
  };

  void follow(const Manager& manager);
  void registerWith(const Manager& manager, const std::string& applicationId);
  void answer(const Manager& manager);

  Glib::RefPtr<Gio::DBus::Connection> session_;
  std::function<void()> ending_;
  std::vector<unsigned> subscriptions_;
  std::string client_;  // the object that stands for us; empty until we are known
  Glib::RefPtr<Gio::Cancellable> cancel_ = Gio::Cancellable::create();
};

}  // namespace orvanta::dbus
