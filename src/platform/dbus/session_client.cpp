#include "platform/dbus/session_client.h"

#include <giomm/asyncresult.h>
#include <glibmm/variant.h>

#include <cstdlib>
#include <utility>

namespace orvanta::dbus {
namespace {

Glib::Variant<Glib::ustring> text(const std::string& value) {
  return Glib::Variant<Glib::ustring>::create(value);
}

}  // namespace

SessionClient::SessionClient(Glib::RefPtr<Gio::DBus::Connection> session,
                             const std::string& applicationId, std::function<void()> ending)
    : session_(std::move(session)), ending_(std::move(ending)) {
  if (!session_) return;
  // At most one of them is there; Xfce took over GNOME's protocol under other names.
  registerWith({"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
                "org.gnome.SessionManager.ClientPrivate"},
               applicationId);
  registerWith({"org.xfce.SessionManager", "/org/xfce/SessionManager", "org.xfce.Session.Manager",
                "org.xfce.Session.Client"},
               applicationId);
}

SessionClient::~SessionClient() {
  cancel_->cancel();
  for (const auto subscription : subscriptions_) session_->signal_unsubscribe(subscription);
}

void SessionClient::registerWith(const Manager& manager, const std::string& applicationId) {
  const char* startup = std::getenv("DESKTOP_AUTOSTART_ID");
  session_->call(
      manager.path, manager.interface, "RegisterClient",
      Glib::VariantContainerBase::create_tuple({text(applicationId), text(startup ? startup : "")}),
      [this, session = session_, cancel = cancel_,
       manager](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          Glib::Variant<Glib::DBusObjectPathString> client;
          session->call_finish(result).get_child(client, 0);
          if (!cancel->is_cancelled()) follow(manager, client.get());
        } catch (const std::exception&) {
          // Not there, or one that does not take us as a client.
        }
      },
      cancel_, manager.service, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void SessionClient::follow(const Manager& manager, const std::string& client) {
  const auto answer = [session = session_, manager, client] {
    session->call(
        client, manager.clientInterface, "EndSessionResponse",
        Glib::VariantContainerBase::create_tuple({Glib::Variant<bool>::create(true), text("")}),
        [](const auto& /*result*/) {}, manager.service);
  };
  const auto on = [&](const char* signal, std::function<void()> react) {
    subscriptions_.push_back(session_->signal_subscribe(
        [react = std::move(react)](const auto&, const auto&, const auto&, const auto&, const auto&,
                                   const auto&) { react(); },
        manager.service, manager.clientInterface, signal, client));
  };
  // Another program may still hold the session back: nothing ends here yet.
  on("QueryEndSession", answer);
  on("EndSession", [this, answer] {
    ending_();
    answer();
  });
  on("Stop", [this] { ending_(); });
}

}  // namespace orvanta::dbus
