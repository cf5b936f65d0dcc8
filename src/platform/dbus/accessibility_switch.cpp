#include "platform/dbus/accessibility_switch.h"

namespace orvanta::dbus {

bool switchAccessibilityOn(const Bus& session) {
  constexpr std::chrono::milliseconds kPatience{500};
  constexpr auto kStatus = "org.a11y.Status";
  constexpr auto kEnabled = "IsEnabled";
  const Place properties{"org.a11y.Bus", "/org/a11y/bus", "org.freedesktop.DBus.Properties"};
  const auto on = Glib::Variant<Glib::VariantBase>::create(toValue(true));
  callAndWait(session, properties, "Set",
              Reply::create_tuple({toValue(kStatus), toValue(kEnabled), on}), kPatience);
  const auto now = callAndWait(session, properties, "Get", arguments(kStatus, kEnabled), kPatience);
  try {
    return now && fromValue<bool>(argument<Glib::VariantBase>(*now));
  } catch (const std::exception&) {  // an answer of another form
    return false;
  }
}

}  // namespace orvanta::dbus
