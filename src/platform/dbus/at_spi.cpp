#include "platform/dbus/at_spi.h"

#include <glibmm/main.h>

#include <tuple>
#include <utility>
#include <vector>

#include "base/processes.h"
#include "base/text.h"

namespace orvanta::dbus {
namespace {

constexpr auto kAccessible = "org.a11y.atspi.Accessible";
constexpr auto kRegistry = "org.a11y.atspi.Registry";
constexpr auto kRoot = "/org/a11y/atspi/accessible/root";
constexpr auto kWindowEvents = "org.a11y.atspi.Event.Window";
constexpr unsigned kLookSeconds = 2;
constexpr std::chrono::seconds kPatience{2};
constexpr guint32 kActive = 1U << 1U;  // ATSPI_STATE_ACTIVE

using Reference = std::tuple<Glib::ustring, Glib::DBusObjectPathString>;

const Place& daemon() {
  static const Place place{"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"};
  return place;
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
  const bool closed = talk_ && talk_->bus()->is_closed();
  if (closed || !launcher_.present() || !needed_()) {
    disconnect();
  } else if (talk_) {
    readTitle();
  } else if (!std::exchange(asked_, true)) {
    launcher_.call(
        "/org/a11y/bus", "org.a11y.Bus", "GetAddress", {},
        [this](const Reply& reply) { connect(argument<std::string>(reply)); },
        [this] { asked_ = false; });
  }
  return true;
}

void AtSpi::connect(const std::string& address) {
  if (!asked_) return;  // not wanted any more
  connecting_ = std::make_unique<Connecting>(address, [this](const Bus& bus) {
    asked_ = false;
    if (bus) connected(bus);  // otherwise tried again at a later look
  });
}

void AtSpi::connected(const Bus& bus) {
  talk_ = std::make_unique<Conversation>(bus, Conversation::Start::Yes, kPatience);
  const Place anybody{.interface = kWindowEvents};
  talk_->onSignal(anybody, "Activate",
                  [this](const Signal& of) { activated({of.sender, of.path}); });
  talk_->onSignal(anybody, "Deactivate",
                  [this](const Signal& of) { deactivated({of.sender, of.path}); });
  // Of a crash nothing else tells.
  talk_->onSignal(daemon(), "NameOwnerChanged", [this](const Signal& of) {
    const auto left = argument<std::string>(of.arguments);
    if (left == active_.application) deactivated(active_);
  });
  for (const auto* event : {"window:activate", "window:deactivate"}) {
    talk_->call({kRegistry, "/org/a11y/atspi/registry", kRegistry}, "RegisterEvent",
                arguments(event));
  }
  setReadable(true);
  findActive();
}

void AtSpi::disconnect() {
  asked_ = false;
  connecting_.reset();
  talk_.reset();
  active_ = {};
  setReadable(false);
}

// An application that has gone or hangs is not in front as far as we can know.
void AtSpi::children(const std::string& name, const std::string& path,
                     std::function<void(const Frame&)> then) {
  talk_->call({name, path, kAccessible}, "GetChildren", {},
              [then = std::move(then)](const Reply& reply) {
                for (const auto& [application, child] : argument<std::vector<Reference>>(reply)) {
                  then({application, child});
                }
              });
}

// Which window is active already, before the first switch.
void AtSpi::findActive() {
  children(kRegistry, kRoot, [this](const Frame& application) {
    children(application.application, application.path, [this](const Frame& frame) {
      talk_->call({frame.application, frame.path, kAccessible}, "GetState", {},
                  [this, frame](const Reply& reply) {
                    const auto states = argument<std::vector<guint32>>(reply);
                    const bool active = !states.empty() && (states.front() & kActive) != 0;
                    if (active && active_ == Frame{}) activated(frame);
                  });
    });
  });
}

// Of an object of the active application, while that is active.
void AtSpi::readName(const std::string& path, std::function<void(const std::string&)> then) {
  talk_->read<std::string>(
      {active_.application, path, kAccessible}, "Name",
      [this, frame = active_, then = std::move(then)](const std::string& name) {
        if (active_ == frame) then(validUtf8(name));
      });
}

void AtSpi::activated(const Frame& frame) {
  active_ = frame;
  claims_ = {};
  talk_->call(daemon(), "GetConnectionUnixProcessID", arguments(frame.application),
              [this, frame](const Reply& reply) {
                if (active_ != frame) return;
                claims_.pid = static_cast<int32_t>(argument<guint32>(reply));
                claims_.names.push_back(validUtf8(commandNameOf(claims_.pid)));
                show();
              });
  readName(kRoot, [this](const std::string& name) {
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
  readName(active_.path, [this](const std::string& title) {
    claims_.title = title.empty() ? std::nullopt : std::optional(title);
    show();
  });
}

// Not before the process is known: by that a browser is recognised, whose title may be private.
void AtSpi::show() {
  if (claims_.pid == 0) return publish({});
  if (claims_.fallbackName.empty() && !claims_.names.empty()) {
    claims_.fallbackName = claims_.names.front();
  }
  publish(claims_);
}

}  // namespace orvanta::dbus
