// The end of the session, as session managers announce it.
#pragma once

#include <functional>
#include <string>

#include "dbus/conversation.h"

namespace orvanta::dbus {

/// Registers with the session manager of GNOME (also Cinnamon, MATE, Budgie) or Xfce, which then
/// waits for our answer before it goes on to end the session. Where there is none, the session ends
/// by SIGTERM or as logind tells. Never blocks. Main thread only.
class SessionClient {
 public:
  /// On the session bus, which may be null. `ending` is called when the session ends for good;
  /// once it has returned, the session manager is told that we are ready.
  SessionClient(const Bus& session, const std::string& applicationId, std::function<void()> ending);

 private:
  void follow(const Place& manager, const char* clientInterface);
  void registerWith(const Place& manager, const std::string& applicationId);
  void answer(const Place& client);

  Conversation talk_;
  std::function<void()> ending_;
  std::string client_;  // the object that stands for us; empty until we are known
};

}  // namespace orvanta::dbus
