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
  for (const auto& manager :
       {Manager{"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager",
                "org.gnome.SessionManager.ClientPrivate"},
        Manager{"org.xfce.SessionManager", "/org/xfce/SessionManager", "org.xfce.Session.Manager",
                "org.xfce.Session.Client"}}) {
    follow(manager);
    registerWith(manager, applicationId);
  }
}

SessionClient::~SessionClient() {
  cancel_->cancel();
  for (const auto subscription : subscriptions_) session_->signal_unsubscribe(subscription);
}

// Before it knows us, so that nothing it says to us is missed.
void SessionClient::follow(const Manager& manager) {
  const auto on = [&](const char* signal, const std::function<void()>& react) {
    subscriptions_.push_back(session_->signal_subscribe(
        [this, react](const auto&, const auto&, const Glib::ustring& path, const auto&, const auto&,
                      const auto&) {
          if (path.raw() == client_) react();
        },
        manager.service, manager.clientInterface, signal));
  };
  // Another program may still hold the session back: nothing ends here yet.
  on("QueryEndSession", [this, manager] { answer(manager); });
  on("EndSession", [this, manager] {
    ending_();
    answer(manager);
  });
  on("Stop", [this] { ending_(); });
}

void SessionClient::registerWith(const Manager& manager, const std::string& applicationId) {
  const char* startup = std::getenv("DESKTOP_AUTOSTART_ID");
  session_->call(
      manager.path, manager.interface, "RegisterClient",
      Glib::VariantContainerBase::create_tuple({text(applicationId), text(startup ? startup : "")}),
      [this, session = session_, cancel = cancel_](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          Glib::Variant<Glib::DBusObjectPathString> client;
          session->call_finish(result).get_child(client, 0);
          if (!cancel->is_cancelled()) client_ = client.get();
        } catch (const std::exception&) {
          // Not there, or one that does not take us as a client.
        }
      },
      cancel_, manager.service, -1, Gio::DBus::CallFlags::NO_AUTO_START);
}

void SessionClient::answer(const Manager& manager) {
  session_->call(
      client_, manager.clientInterface, "EndSessionResponse",
      Glib::VariantContainerBase::create_tuple({Glib::Variant<bool>::create(true), text("")}),
      [](const auto& /*result*/) {}, manager.service);
}

}  // namespace orvanta::dbus
