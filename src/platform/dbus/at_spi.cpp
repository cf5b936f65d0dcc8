#include "platform/dbus/at_spi.h"

#include <giomm/asyncresult.h>
#include <glibmm/main.h>

#include <tuple>
#include <utility>
#include <vector>

#include "base/processes.h"
#include "base/text.h"

namespace orvanta::dbus {
namespace {

constexpr auto kAccessible = "org.a11y.atspi.Accessible";
constexpr auto kProperties = "org.freedesktop.DBus.Properties";
constexpr auto kRegistry = "org.a11y.atspi.Registry";
constexpr auto kRoot = "/org/a11y/atspi/accessible/root";
constexpr auto kWindowEvents = "org.a11y.atspi.Event.Window";
constexpr unsigned kLookSeconds = 2;
constexpr int kPatienceMilliseconds = 2000;
constexpr guint32 kActive = 1U << 1U;  // ATSPI_STATE_ACTIVE

using Reference = std::tuple<Glib::ustring, Glib::DBusObjectPathString>;

std::string textIn(const Reply& reply) {
  const auto value = argument<Glib::VariantBase>(reply);
  return validUtf8(
      Glib::VariantBase::cast_dynamic<Glib::Variant<Glib::ustring>>(value).get().raw());
}

}  // namespace

AtSpi::AtSpi(const Bus& session, std::function<bool()> needed)
    : needed_(std::move(needed)),
      shell_(session, "org.gnome.Shell"),
      launcher_(session, "org.a11y.Bus") {
  launcher_.watch({}, [this] { disconnect(); });
  shell_.watch(
      [this] {
        timer_ = Glib::signal_timeout().connect_seconds(sigc::mem_fun(*this, &AtSpi::look),
                                                        kLookSeconds);
      },
      [this] {
        timer_.disconnect();
        disconnect();
      });
}

AtSpi::~AtSpi() {
  timer_.disconnect();
  disconnect();
}

// Titles are read again at each look: their changes are not told without telling every change of
// every label of every application.
bool AtSpi::look() {
  const bool closed = bus_ && bus_->is_closed();
  if (closed || !launcher_.present() || !needed_()) {
    disconnect();
  } else if (bus_) {
    readTitle();
  } else if (!std::exchange(connecting_, true)) {
    launcher_.call(
        "/org/a11y/bus", "org.a11y.Bus", "GetAddress", {},
        [this](const Reply& reply) { connect(argument<Glib::ustring>(reply)); },
        [this] { connecting_ = false; });
  }
  return true;
}

void AtSpi::connect(const std::string& address) {
  if (!connecting_) return;  // not wanted any more
  if (cancel_) cancel_->cancel();
  cancel_ = Gio::Cancellable::create();
  Gio::DBus::Connection::create_for_address(
      address,
      [this, cancel = cancel_](const Glib::RefPtr<Gio::AsyncResult>& result) {
        Bus bus;
        try {
          bus = Gio::DBus::Connection::create_for_address_finish(result);
        } catch (const Glib::Error&) {
          // Tried again at a later look.
        }
        if (cancel->is_cancelled()) return;
        connecting_ = false;
        bus_ = bus;
        if (!bus_) return;
        bus_->set_exit_on_close(false);
        for (const bool active : {true, false}) {
          subscriptions_.push_back(bus_->signal_subscribe(
              [this, active](const auto&, const Glib::ustring& sender, const Glib::ustring& path,
                             const auto&, const auto&, const auto&) {
                active ? activated({sender, path}) : deactivated({sender, path});
              },
              {}, kWindowEvents, active ? "Activate" : "Deactivate"));
          ask(kRegistry, "/org/a11y/atspi/registry", kRegistry, "RegisterEvent",
              arguments(Glib::ustring(active ? "window:activate" : "window:deactivate")), {});
        }
        setReadable(true);
        findActive();
      },
      cancel_,
      Gio::DBus::ConnectionFlags::AUTHENTICATION_CLIENT |
          Gio::DBus::ConnectionFlags::MESSAGE_BUS_CONNECTION);
}

void AtSpi::disconnect() {
  connecting_ = false;
  if (cancel_) cancel_->cancel();
  for (const auto subscription : subscriptions_) bus_->signal_unsubscribe(subscription);
  subscriptions_.clear();
  bus_.reset();
  active_ = {};
  setReadable(false);
}

void AtSpi::ask(const std::string& name, const std::string& path, const char* interface,
                const char* method, const Reply& arguments, Then then) {
  bus_->call(
      path, interface, method, arguments,
      [bus = bus_, cancel = cancel_,
       then = std::move(then)](const Glib::RefPtr<Gio::AsyncResult>& result) {
        try {
          const auto reply = bus->call_finish(result);
          if (then && !cancel->is_cancelled()) then(reply);
        } catch (const std::exception&) {
          // An application that has gone or hangs is not in front as far as we can know.
        }
      },
      cancel_, name, kPatienceMilliseconds);
}

// Which window is active already, before the first switch.
void AtSpi::findActive() {
  const auto eachChild = [this](const std::string& name, const std::string& path,
                                const std::function<void(const Frame&)>& then) {
    ask(name, path, kAccessible, "GetChildren", {}, [then](const Reply& reply) {
      for (const auto& [application, child] : argument<std::vector<Reference>>(reply)) {
        then({application, child});
      }
    });
  };
  eachChild(kRegistry, kRoot, [this, eachChild](const Frame& application) {
    eachChild(application.application, application.path, [this](const Frame& frame) {
      ask(frame.application, frame.path, kAccessible, "GetState", {},
          [this, frame](const Reply& reply) {
            const auto states = argument<std::vector<guint32>>(reply);
            const bool active = !states.empty() && (states.front() & kActive) != 0;
            if (active && active_ == Frame{}) activated(frame);
          });
    });
  });
}

void AtSpi::activated(const Frame& frame) {
  active_ = frame;
  claims_ = {};
  ask("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
      "GetConnectionUnixProcessID", arguments(Glib::ustring(frame.application)),
      [this, frame](const Reply& reply) {
        if (active_ != frame) return;
        const auto pid = argument<guint32>(reply);
        claims_.pid = static_cast<int32_t>(pid);
        claims_.names.push_back(validUtf8(commandNameOf(claims_.pid)));
        show();
      });
  ask(frame.application, kRoot, kProperties, "Get",
      arguments(Glib::ustring(kAccessible), Glib::ustring("Name")),
      [this, frame](const Reply& reply) {
        if (active_ != frame) return;
        const auto name = textIn(reply);
        if (name.empty()) return;
        claims_.names.insert(claims_.names.begin(), name);
        claims_.fallbackName = name;
        show();
      });
  readTitle();
}

void AtSpi::deactivated(const Frame& frame) {
  if (active_ != frame) return;
  active_ = {};
  publish({});
}

void AtSpi::readTitle() {
  if (active_ == Frame{}) return;
  ask(active_.application, active_.path, kProperties, "Get",
      arguments(Glib::ustring(kAccessible), Glib::ustring("Name")),
      [this, frame = active_](const Reply& reply) {
        if (active_ != frame) return;
        const auto title = textIn(reply);
        claims_.title = title.empty() ? std::nullopt : std::optional(title);
        show();
      });
}

void AtSpi::show() {
  if (claims_.fallbackName.empty() && !claims_.names.empty()) {
    claims_.fallbackName = claims_.names.front();
  }
  publish(claims_);
}

}  // namespace orvanta::dbus
