#include "platform/dbus/accessibility_switch.h"

namespace orvanta::dbus {
namespace {

constexpr int kPatienceMilliseconds = 500;
constexpr auto kStatus = "org.a11y.Status";
constexpr auto kEnabled = "IsEnabled";

Glib::VariantContainerBase callProperties(const Glib::RefPtr<Gio::DBus::Connection>& session,
                                          const char* method,
                                          const std::vector<Glib::VariantBase>& arguments) {
  return session->call_sync("/org/a11y/bus", "org.freedesktop.DBus.Properties", method,
                            Glib::VariantContainerBase::create_tuple(arguments), "org.a11y.Bus",
                            kPatienceMilliseconds);
}

}  // namespace

bool switchAccessibilityOn(const Glib::RefPtr<Gio::DBus::Connection>& session) {
  if (!session) return false;
  const auto status = Glib::Variant<Glib::ustring>::create(kStatus);
  const auto enabled = Glib::Variant<Glib::ustring>::create(kEnabled);
  try {
    const auto on = Glib::Variant<bool>::create(true);
    callProperties(session, "Set", {status, enabled, Glib::Variant<Glib::VariantBase>::create(on)});
    Glib::Variant<Glib::VariantBase> value;
    callProperties(session, "Get", {status, enabled}).get_child(value, 0);
    return Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(value.get()).get();
  } catch (const std::exception&) {  // no such service
    return false;
  }
}

}  // namespace orvanta::dbus
