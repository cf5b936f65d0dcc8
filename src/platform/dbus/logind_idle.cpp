#include "platform/dbus/logind_idle.h"

#include <algorithm>
#include <map>

#include "base/clock.h"

namespace orvanta::dbus {
namespace {

constexpr auto kPath = "/org/freedesktop/login1";
constexpr auto kManager = "org.freedesktop.login1.Manager";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";
constexpr double kMicrosecondsPerSecond = 1e6;

}  // namespace

LogindIdle::LogindIdle(const Bus& system) : logind_(system, "org.freedesktop.login1") {
  logind_.onSignal(kPath, kProperties, "PropertiesChanged",
                   [this](const Reply& /*changed*/) { read(); });
  logind_.watch([this] { read(); }, [this] { known_ = false; });
}

std::optional<double> LogindIdle::idleSeconds() {
  if (!known_) return {};
  const double since = idleSince_;
  return since > 0 ? std::max(0.0, wallClock() - since) : 0.0;
}

void LogindIdle::read() {
  logind_.call(kPath, kProperties, "GetAll", arguments(kManager), [this](const Reply& reply) {
    const auto all = argument<std::map<Glib::ustring, Glib::VariantBase>>(reply);
    const auto since = static_cast<double>(fromValue<guint64>(all.at("IdleSinceHint")));
    idleSince_ = fromValue<bool>(all.at("IdleHint")) ? since / kMicrosecondsPerSecond : 0;
    known_ = true;
  });
}

}  // namespace orvanta::dbus
