#include "app/follow_command.h"

#include <glib-unix.h>
#include <glibmm/main.h>
#include <unistd.h>

#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/bar.h"
#include "base/application_id.h"
#include "dbus/bus.h"
#include "dbus/service.h"

namespace orvanta {
namespace {

constexpr auto kActions = "org.gtk.Actions";
// Where Gio::Application has them: its id, dots being slashes.
constexpr auto kPath = "/fr/quellvane/orvanta";
constexpr int kWrongWords = 2;

// The state in the answer to Describe: (enabled, type of its argument, list of at most one state).
std::string describedState(const dbus::Reply& reply) {
  constexpr int kState = 2;
  Glib::VariantBase described;
  reply.get_child(described, 0);
  const auto states = dbus::argument<std::vector<Glib::VariantBase>>(
      Glib::VariantBase::cast_dynamic<dbus::Reply>(described), kState);
  return states.empty() ? std::string() : dbus::fromValue<std::string>(states.front());
}

class Follower {
 public:
  Follower(const dbus::Bus& bus, BarFormat format, bool once)
      : format_(format), once_(once), program_(bus, kApplicationId) {
    g_unix_fd_add(STDOUT_FILENO, static_cast<GIOCondition>(G_IO_ERR | G_IO_HUP | G_IO_NVAL),
                  outputClosed, this);
    bus->signal_closed().connect(
        [this](bool /*vanished*/, const Glib::Error& /*error*/) { loop_->quit(); });
    program_.onSignal(kPath, kActions, "Changed", [this](const auto& told) { changed(told); });
    program_.watch([this] { ask(); }, [this] { print(""); });
  }

  void run() { loop_->run(); }

 private:
  static gboolean outputClosed(gint /*fd*/, GIOCondition /*what*/, gpointer self) {
    static_cast<Follower*>(self)->loop_->quit();
    return G_SOURCE_REMOVE;
  }

  void ask() {
    program_.call(
        kPath, kActions, "Describe", dbus::arguments(kBarAction),
        [this](const auto& reply) { print(describedState(reply)); }, [this] { print(""); });
  }

  // (removed, enabled, states, added)
  void changed(const dbus::Reply& told) {
    constexpr int kStates = 2;
    using States = std::map<Glib::ustring, Glib::VariantBase>;
    const auto states = dbus::argument<States>(told, kStates);
    const auto state = states.find(kBarAction);
    if (state != states.end()) print(dbus::fromValue<std::string>(state->second));
  }

  void print(const std::string& state) {
    if (over_) return;
    const auto line = barLine(state, format_);
    if (line == printed_) return;
    printed_ = line;
    const bool written = std::puts(line.c_str()) >= 0 && std::fflush(stdout) == 0;
    over_ = once_ || !written;
    if (over_) loop_->quit();
  }

  const BarFormat format_;
  const bool once_;
  bool over_ = false;
  std::optional<std::string> printed_;
  Glib::RefPtr<Glib::MainLoop> loop_ = Glib::MainLoop::create();
  dbus::Service program_;
};

std::optional<BarFormat> formatIn(const Options& options) {
  const auto& words = options.words();
  if (options.has("watch")) {
    return words.empty() ? std::optional(BarFormat::Watch) : std::nullopt;
  }
  const auto format = words.size() == 1 ? parsed<BarFormat>(words.front()) : std::nullopt;
  return format != BarFormat::Watch ? format : std::nullopt;
}

}  // namespace

int followCommand(const Options& options) {
  const auto format = formatIn(options);
  if (!format) {
    std::fputs("usage\u00a0: orvanta --bar waybar|i3blocks|text [--once]\n", stderr);
    return kWrongWords;
  }
  const auto bus = connectBus(Gio::DBus::BusType::SESSION);
  if (!bus) {
    std::fputs("Orvanta\u00a0: pas de bus de session à suivre\n", stderr);
    return 1;
  }
  Follower(bus, *format, options.has("once")).run();
  return 0;
}

}  // namespace orvanta
