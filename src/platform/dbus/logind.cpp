#include "platform/dbus/logind.h"

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
constexpr auto kSession = "org.freedesktop.login1.Session";
constexpr std::chrono::seconds kAskAgain{5};
constexpr std::chrono::seconds kRestart{10};
constexpr int kMostSilences = 2;  // of a logind that hangs while it is to tell of the wake

const Place& manager() {
  static const Place place{kService, "/org/freedesktop/login1", "org.freedesktop.login1.Manager"};
  return place;
}

}  // namespace

Logind::Logind(const Bus& system, SessionListener listener)
    : service_(system, kService),
      logind_(system, Conversation::Start::Yes),
      listener_(std::move(listener)) {
  logind_.onSignal(manager(), "PrepareForSleep", [this](const Signal& signal) {
    prepareForSleep(argument<bool>(signal.arguments));
  });
  logind_.onSignal(manager(), "SessionRemoved", [this](const Signal& signal) {
    const auto removed = argument<Glib::DBusObjectPathString>(signal.arguments, 1);
    if (removed.raw() == session_) listener_.sessionEnded();
  });
  logind_.onSignal(manager(), "SessionNew", [this](const Signal& /*signal*/) { findSession(); });
  logind_.onSignal(
      {kService, "", "org.freedesktop.DBus.Properties"}, "PropertiesChanged",
      [this](const Signal& signal) {
        if (signal.path != session_) return;
        const auto changed =
            argument<std::map<Glib::ustring, Glib::VariantBase>>(signal.arguments, 1);
        const auto hint = changed.find("LockedHint");
        if (hint != changed.end()) lockedHint(fromValue<bool>(hint->second));
      },
      kSession);
  service_.watch([this] { appeared(); }, [this] { vanished(); });
  askForSleep();  // also starts a logind that starts when it is asked
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

// The one that our environment names, then that of the user's display, then any at a seat: a
// program that the user's service manager started is told no number, or that of an older session.
void Logind::findSession() {
  const auto list = [this] { listSessions({}); };
  logind_.call(
      manager(), "GetUser", arguments(guint32{getuid()}),
      [this, list](const Reply& reply) {
        using Display = std::tuple<Glib::ustring, Glib::DBusObjectPathString>;
        const auto user = argument<Glib::DBusObjectPathString>(reply).raw();
        logind_.read<Display>(
            {kService, user, "org.freedesktop.login1.User"}, "Display",
            [this](const Display& display) { listSessions(std::get<1>(display).raw()); }, list);
      },
      list);
}

void Logind::listSessions(const std::string& display) {
  logind_.call(manager(), "ListSessions", {}, [this, display](const Reply& reply) {
    // id, uid, user, seat, path
    using Session = std::tuple<Glib::ustring, guint32, Glib::ustring, Glib::ustring,
                               Glib::DBusObjectPathString>;
    const char* told = std::getenv("XDG_SESSION_ID");
    std::multimap<int, std::string> byRank;
    for (const auto& [id, uid, user, seat, path] : argument<std::vector<Session>>(reply)) {
      if (uid != getuid()) continue;
      if (told && id.raw() == told) {
        byRank.emplace(0, path.raw());
      } else if (path.raw() == display) {
        byRank.emplace(1, path.raw());
      } else if (!seat.empty()) {
        byRank.emplace(2, path.raw());
      }
    }
    std::vector<std::string> candidates;
    for (const auto& [rank, path] : byRank) candidates.push_back(path);
    chooseSession(std::move(candidates), {});
  });
}

// A session that is closing may last as long as a program of it, and a text login beside the
// desktop is not where the user is. Where there is no other, as after startx, it is.
void Logind::chooseSession(std::vector<std::string> candidates, const std::string& textLogin) {
  if (candidates.empty()) {
    if (!textLogin.empty()) followSession(textLogin);
    return;
  }
  const auto path = candidates.front();
  candidates.erase(candidates.begin());
  logind_.call(
      {kService, path, "org.freedesktop.DBus.Properties"}, "GetAll", arguments(kSession),
      [this, path, candidates, textLogin](const Reply& reply) {
        const auto all = argument<std::map<Glib::ustring, Glib::VariantBase>>(reply);
        const auto text = [&all](const char* property) {
          return fromValue<std::string>(all.at(property));
        };
        // Neither a greeter's nor a service manager's; root's class is "user-early".
        const bool alive = text("Class").starts_with("user") && text("State") != "closing";
        const auto type = text("Type");
        if (alive && (type == "wayland" || type == "x11")) return followSession(path);
        chooseSession(candidates, alive && textLogin.empty() ? path : textLogin);
      },
      [this, candidates, textLogin] { chooseSession(candidates, textLogin); });
}

void Logind::followSession(const std::string& path) {
  session_ = path;
  logind_.read<bool>({kService, path, kSession}, "LockedHint",
                     [this](bool locked) { lockedHint(locked); });
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
  logind_.read<bool>(
      manager(), "PreparingForSleep",
      [this](bool asleep) {
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

// Where it is not allowed, or there is no logind, sleep is noticed by the gap that it leaves.
void Logind::holdDelayLock() {
  logind_.callForFile(manager(), "Inhibit",
                      arguments("sleep", "Orvanta", "Termine l’activité en cours", "delay"),
                      [this](OwnedFd lock) {
                        delayLock_ = std::move(lock);
                        if (asleep_) readyToSleep();
                      });
}

}  // namespace orvanta::dbus
