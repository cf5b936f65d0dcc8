#include "dashboard/screen_reader.h"

#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace orvanta {
namespace {

constexpr auto kLauncher = "org.a11y.Bus";
constexpr auto kRegistry = "org.a11y.atspi.Registry";
constexpr auto kRegistryPath = "/org/a11y/atspi/registry";

// Who only asks which window is in front is no screen reader.
bool aboutObjects(std::string_view event) {
  return event.starts_with("Object:");
}

}  // namespace

ScreenReader::ScreenReader(std::function<void()> started)
    : started_(std::move(started)), launcher_(connectBus(Gio::DBus::BusType::SESSION), kLauncher) {
  launcher_.watch(
      [this] {
        launcher_.call("/org/a11y/bus", kLauncher, "GetAddress", {}, [this](const auto& reply) {
          connecting_ = std::make_unique<dbus::Connecting>(
              dbus::argument<std::string>(reply), [this](const dbus::Bus& bus) { listen(bus); });
        });
      },
      [this] {
        connecting_.reset();
        registry_.reset();
      });
}

void ScreenReader::listen(const dbus::Bus& bus) {
  known_.clear();
  registry_ = std::make_unique<dbus::Service>(bus, kRegistry);
  registry_->onSignal(
      kRegistryPath, kRegistry, "EventListenerRegistered", [this](const dbus::Reply& signal) {
        registered(dbus::argument<std::string>(signal), dbus::argument<std::string>(signal, 1));
      });
  using Registered = std::vector<std::tuple<Glib::ustring, Glib::ustring>>;
  registry_->call(kRegistryPath, kRegistry, "GetRegisteredEvents", {},
                  [this](const dbus::Reply& reply) {
                    for (const auto& [client, event] : dbus::argument<Registered>(reply)) {
                      if (aboutObjects(event.raw())) known_.insert(client);
                    }
                  });
}

// A reader asks for many events, again and again.
void ScreenReader::registered(const std::string& client, const std::string& event) {
  if (aboutObjects(event) && known_.insert(client).second) started_();
}

}  // namespace orvanta
