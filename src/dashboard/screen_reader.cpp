#include "dashboard/screen_reader.h"

#include <glibmm/main.h>

#include <utility>

namespace orvanta {

ScreenReader::ScreenReader(std::function<void()> started) {
  Gio::DBus::Proxy::create_for_bus(
      Gio::DBus::BusType::SESSION, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status",
      [this, started = std::move(started)](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          status_ = Gio::DBus::Proxy::create_for_bus_finish(result);
        } catch (const Glib::Error&) {  // there is no session bus
          return;
        }
        status_->signal_properties_changed().connect(
            [started](const Gio::DBus::Proxy::MapChangedProperties& changed, const auto& /*gone*/) {
              const auto enabled = changed.find("ScreenReaderEnabled");
              if (enabled == changed.end() || enabled->second.get_type_string() != "b") return;
              if (Glib::VariantBase::cast_dynamic<Glib::Variant<bool>>(enabled->second).get()) {
                started();
              }
            });
      },
      {}, {}, Gio::DBus::ProxyFlags::DO_NOT_AUTO_START);
}

}  // namespace orvanta
