#include "platform/dbus/logind.h"

#include <giomm/asyncresult.h>
#include <giomm/unixfdlist.h>
#include <unistd.h>

#include <chrono>
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
constexpr std::chrono::seconds kAskAgain{5};
constexpr std::chrono::seconds kRestart{10};
constexpr int kMostSilences = 2;  // of a logind that hangs while it is to tell of the wake

Glib::VariantContainerBase texts(std::initializer_list<const char*> values) {
  std::vector<Glib::VariantBase> children;
  for (const auto* value : values) children.push_back(Glib::Variant<Glib::ustring>::create(value));
  return Glib::VariantContainerBase::create_tuple(children);
}

}  // namespace

Logind::Logind(Glib::RefPtr<Gio::DBus::Connection> system, SessionListener listener)
    : system_(std::move(system)), service_(system_, kService), listener_(std::move(listener)) {
  if (!system_) return;
  follow(kManager, "PrepareForSleep", kPath, [this](const auto& /*path*/, const Reply& arguments) {
    prepareForSleep(argument<bool>(arguments));
  });
  follow(kManager, "SessionRemoved", kPath, [this](const auto& /*path*/, const Reply& arguments) {
    const auto removed = argument<Glib::DBusObjectPathString>(arguments, 1);
    if (removed.raw() == session_) listener_.sessionEnded();
  });
  follow(
      kProperties, "PropertiesChanged", "",
      [this](const std::string& path, const Reply& arguments) {
        if (path != session_) return;
        const auto changed = argument<std::map<Glib::ustring, Glib::VariantBase>>(arguments, 1);
        const auto hint = changed.find("LockedHint");
        if (hint == changed.end()) return;
        lockedHint(Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(hint->second).get());
      },
      kSession);
  service_.watch([this] { appeared(); }, [this] { vanished(); });
  askForSleep();  // also starts a logind that starts when it is asked
}

Logind::~Logind() {
  cancel_->cancel();
  for (const auto subscription : subscriptions_) system_->signal_unsubscribe(subscription);
  readyToSleep();
}

// `about` is the first argument of the signals that count; any where it is empty.
void Logind::follow(const char* interface, const char* signal, const char* path,
                    std::function<void(const std::string& path, const Reply& arguments)> then,
                    const char* about) {
  subscriptions_.push_back(system_->signal_subscribe(
      [then = std::move(then)](const auto&, const auto&, const Glib::ustring& object, const auto&,
                               const auto&, const Reply& arguments) {
        try {
          then(object, arguments);
        } catch (const std::exception&) {
          // A signal of another form than its interface has says nothing.
        }
      },
      kService, interface, signal, path, about));
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

void Logind::appeared() {
  holdDelayLock();
  findSession();
  askForSleep();
}

// It may be restarting: then the screen is as locked as before.
void Logind::vanished() {
  if (asleep_) wake();
  mainThread_.after(kRestart, [this] {
    if (!service_.present()) lockedHint(false);
  });
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
  session_ = path;
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
    asleep_ = true;
    silences_ = 0;
    ++sleeps_;
    listener_.willSleep();
    askForSleepAgain();
  } else {
    wake();
  }
}

void Logind::wake() {
  asleep_ = false;
  if (service_.present()) holdDelayLock();
  listener_.didWake();
}

void Logind::askForSleep() {
  ask(
      kPath, kProperties, "Get", texts({kManager, "PreparingForSleep"}),
      [this](const Reply& reply) {
        const auto value = argument<Glib::VariantBase>(reply);
        const bool asleep = Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(value).get();
        if (asleep != asleep_) prepareForSleep(asleep);
      },
      [this] {
        if (asleep_ && ++silences_ == kMostSilences) wake();
      });
}

// The clock of this stands still while the machine sleeps.
void Logind::askForSleepAgain() {
  mainThread_.after(kAskAgain, [this, sleep = sleeps_] {
    if (!asleep_ || sleep != sleeps_) return;
    askForSleep();
    askForSleepAgain();
  });
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
          if (asleep_) readyToSleep();
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
