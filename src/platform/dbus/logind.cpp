#include "platform/dbus/logind.h"

#include <giomm/asyncresult.h>
#include <giomm/unixfdlist.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta::dbus {
namespace {

constexpr auto kService = "org.freedesktop.login1";
constexpr auto kPath = "/org/freedesktop/login1";
constexpr auto kManager = "org.freedesktop.login1.Manager";
constexpr auto kSession = "org.freedesktop.login1.Session";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";
constexpr int kPatienceMilliseconds = 5000;

Glib::VariantContainerBase texts(std::initializer_list<const char*> values) {
  std::vector<Glib::VariantBase> children;
  for (const auto* value : values) children.push_back(Glib::Variant<Glib::ustring>::create(value));
  return Glib::VariantContainerBase::create_tuple(children);
}

}  // namespace

Logind::Logind(Glib::RefPtr<Gio::DBus::Connection> system, SessionListener listener)
    : system_(std::move(system)), service_(system_, kService), listener_(std::move(listener)) {
  if (!system_) return;
  service_.watch();
  sleepSubscription_ = system_->signal_subscribe(
      [this](const auto&, const auto&, const auto&, const auto&, const auto&,
             const Reply& arguments) {
        if (!arguments.is_of_type(Glib::VariantType("(b)"))) return;
        Glib::Variant<bool> aboutToSleep;
        arguments.get_child(aboutToSleep, 0);
        prepareForSleep(aboutToSleep.get());
      },
      kService, kManager, "PrepareForSleep", kPath);
  holdDelayLock();
  findSession();
}

Logind::~Logind() {
  cancel_->cancel();
  if (sleepSubscription_ != 0) system_->signal_unsubscribe(sleepSubscription_);
  if (lockSubscription_ != 0) system_->signal_unsubscribe(lockSubscription_);
  if (endSubscription_ != 0) system_->signal_unsubscribe(endSubscription_);
  readyToSleep();
}

// `then` gets the answer, `otherwise` is for everything else: no logind, an error, an answer of
// another form. Neither is called once we are destroyed.
void Logind::ask(const std::string& path, const char* interface, const char* method,
                 const Reply& arguments, const std::function<void(const Reply&)>& then,
                 const std::function<void()>& otherwise) {
  system_->call(
      path, interface, method, arguments,
      [system = system_, cancel = cancel_, then,
       otherwise](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          then(system->call_finish(result));
        } catch (const std::exception&) {
          if (!cancel->is_cancelled()) otherwise();
        }
      },
      cancel_, kService, kPatienceMilliseconds);
}

// A program of the session is told its number; one that the user's service manager started is not,
// and then the user's session at a seat is the one.
void Logind::findSession() {
  const char* id = std::getenv("XDG_SESSION_ID");
  if (!id) return listSessions();
  ask(
      kPath, kManager, "GetSession", texts({id}),
      [this](const Reply& reply) {
        Glib::Variant<Glib::DBusObjectPathString> path;
        reply.get_child(path, 0);
        followSession(path.get());
      },
      [this] { listSessions(); });
}

void Logind::listSessions() {
  ask(
      kPath, kManager, "ListSessions", {},
      [this](const Reply& reply) {
        // id, uid, user, seat, path
        using Session = std::tuple<Glib::ustring, guint32, Glib::ustring, Glib::ustring,
                                   Glib::DBusObjectPathString>;
        Glib::Variant<std::vector<Session>> sessions;
        reply.get_child(sessions, 0);
        for (const auto& [id, uid, user, seat, path] : sessions.get()) {
          if (uid == getuid() && !seat.empty()) return followSession(path);
        }
      },
      [] {});
}

void Logind::followSession(const std::string& path) {
  using Changed = std::map<Glib::ustring, Glib::VariantBase>;
  lockSubscription_ = system_->signal_subscribe(
      [this](const auto&, const auto&, const auto&, const auto&, const auto&,
             const Reply& arguments) {
        if (!arguments.is_of_type(Glib::VariantType("(sa{sv}as)"))) return;
        Glib::Variant<Changed> changed;
        arguments.get_child(changed, 1);
        const auto properties = changed.get();
        const auto hint = properties.find("LockedHint");
        if (hint == properties.end() || !hint->second.is_of_type(Glib::VARIANT_TYPE_BOOL)) return;
        lockedHint(Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(hint->second).get());
      },
      kService, kProperties, "PropertiesChanged", path, kSession);
  endSubscription_ = system_->signal_subscribe(
      [this, path](const auto&, const auto&, const auto&, const auto&, const auto&,
                   const Reply& arguments) {
        if (!arguments.is_of_type(Glib::VariantType("(so)"))) return;
        Glib::Variant<Glib::DBusObjectPathString> removed;
        arguments.get_child(removed, 1);
        if (removed.get().raw() == path) listener_.sessionEnded();
      },
      kService, kManager, "SessionRemoved", kPath);
  ask(
      path, kProperties, "Get", texts({kSession, "LockedHint"}),
      [this](const Reply& reply) {
        Glib::Variant<Glib::VariantBase> value;
        reply.get_child(value, 0);
        lockedHint(Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(value.get()).get());
      },
      [] {});
}

void Logind::lockedHint(bool locked) {
  if (std::exchange(locked_, locked) != locked) listener_.lockChanged(locked);
}

void Logind::prepareForSleep(bool aboutToSleep) {
  if (aboutToSleep) {
    listener_.willSleep();
  } else {
    holdDelayLock();
    listener_.didWake();
  }
}

void Logind::holdDelayLock() {
  system_->call(
      kPath, kManager, "Inhibit",
      texts({"sleep", "Orvanta", "Termine l'activité en cours", "delay"}),
      [this, system = system_](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          Glib::RefPtr<Gio::UnixFDList> files;
          system->call_finish(result, files);
          readyToSleep();
          delayLock_ = files->get(0);
        } catch (const std::exception&) {
          // Not allowed, or no logind: sleep is then noticed by the gap that it leaves.
        }
      },
      cancel_, Glib::RefPtr<Gio::UnixFDList>(), kService, kPatienceMilliseconds);
}

void Logind::readyToSleep() {
  if (delayLock_ >= 0) close(std::exchange(delayLock_, -1));
}

}  // namespace orvanta::dbus
