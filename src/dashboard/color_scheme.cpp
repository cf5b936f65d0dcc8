#include "dashboard/color_scheme.h"

#include <gtkmm/settings.h>

#include <vector>

namespace orvanta {
namespace {

constexpr auto kNamespace = "org.freedesktop.appearance";
constexpr auto kKey = "color-scheme";

}  // namespace

ColorScheme::ColorScheme() {
  Gio::DBus::Proxy::create_for_bus(
      Gio::DBus::BusType::SESSION, "org.freedesktop.portal.Desktop",
      "/org/freedesktop/portal/desktop", "org.freedesktop.portal.Settings",
      [this](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          portal_ = Gio::DBus::Proxy::create_for_bus_finish(result);
        } catch (const Glib::Error&) {
          return;
        }
        portal_->signal_signal().connect([](const Glib::ustring& /*sender*/,
                                            const Glib::ustring& signal,
                                            Glib::VariantContainerBase arguments) {
          if (signal != "SettingChanged" || arguments.get_n_children() != 3) return;
          const auto text = [&](gsize i) {
            return Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(
                       arguments.get_child(i))
                .get();
          };
          if (text(0) == kNamespace && text(1) == kKey) apply(arguments.get_child(2));
        });
        read();
      });
}

void ColorScheme::read() {
  const auto arguments = Glib::VariantContainerBase::create_tuple(
      std::vector<Glib::VariantBase>{Glib::Variant<Glib::ustring>::create(kNamespace),
                                     Glib::Variant<Glib::ustring>::create(kKey)});
  portal_->call(
      "Read",
      [this](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          apply(portal_->call_finish(result).get_child(0));
        } catch (const Glib::Error&) {
        }
      },
      arguments);
}

void ColorScheme::apply(const Glib::VariantBase& wrapped) {
  constexpr guint32 kDark = 1;
  auto value = wrapped;
  while (value.get_type_string() == "v") {
    value = Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::VariantBase>>(value).get();
  }
  if (value.get_type_string() != "u") return;
  const auto scheme = Glib::VariantBase::cast_dynamic<Glib::Variant<guint32>>(value).get();
  Gtk::Settings::get_default()->property_gtk_application_prefer_dark_theme() = scheme == kDark;
}

}  // namespace orvanta
