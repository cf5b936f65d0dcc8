#include "platform/dbus/session_client.h"

#include <cstdlib>
#include <utility>

namespace orvanta::dbus {
namespace {

constexpr std::chrono::seconds kPatience{25};  // a session that begins is busy

}  // namespace

// At most one of them is there; Xfce took over GNOME's protocol under other names.
SessionClient::SessionClient(const Bus& session, const std::string& applicationId,
                             std::function<void()> ending)
    : talk_(session, Conversation::Start::No, kPatience), ending_(std::move(ending)) {
  const Place gnome{"org.gnome.SessionManager", "/org/gnome/SessionManager",
                    "org.gnome.SessionManager"};
  const Place xfce{"org.xfce.SessionManager", "/org/xfce/SessionManager",
                   "org.xfce.Session.Manager"};
  follow(gnome, "org.gnome.SessionManager.ClientPrivate");
  follow(xfce, "org.xfce.Session.Client");
  registerWith(gnome, applicationId);
  registerWith(xfce, applicationId);
}

// Before it knows us, so that nothing it says to us is missed.
void SessionClient::follow(const Place& manager, const char* clientInterface) {
  const Place clients{.service = manager.service, .interface = clientInterface};
  talk_.onSignal(clients, "", [this, clients](const Signal& signal) {
    if (signal.path != client_) return;
    const Place client{clients.service, client_, clients.interface};
    if (signal.name == "QueryEndSession") {
      answer(client);  // another program may still hold the session back: nothing ends here yet
    } else if (signal.name == "EndSession") {
      ending_();
      answer(client);
    } else if (signal.name == "Stop") {
      ending_();
    }
  });
}

// One that is not there, or does not take us as a client, is no session manager to us.
void SessionClient::registerWith(const Place& manager, const std::string& applicationId) {
  const char* startup = std::getenv("DESKTOP_AUTOSTART_ID");
  talk_.call(
      manager, "RegisterClient", arguments(applicationId, startup ? startup : ""),
      [this](const Reply& reply) { client_ = argument<Glib::DBusObjectPathString>(reply).raw(); });
}

void SessionClient::answer(const Place& client) {
  talk_.call(client, "EndSessionResponse", arguments(true, ""));
}

}  // namespace orvanta::dbus
