// Shows what the desktop tells, as it changes, as lines of JSON: {"at", "app", "bundle", "title",
// "idle"}. At SIGTERM it prints the chosen sources and what a tick costs with them, and ends.
// `--own-name` takes the program's bus name, for services that answer only that. `--request` also
// asks for titles after two seconds, and shows the sentences for the user.
#include <giomm/dbusownname.h>
#include <giomm/init.h>
#include <glib-unix.h>
#include <glibmm/main.h>

#include <boost/json/serialize.hpp>
#include <chrono>
#include <csignal>
#include <iostream>
#include <string_view>

#include "base/clock.h"
#include "platform/desktop.h"

namespace {

using namespace orvanta;
namespace json = boost::json;

template <class Question>
json::object cost(const Question& question) {
  using Clock = std::chrono::steady_clock;
  using Microseconds = std::chrono::duration<double, std::micro>;
  constexpr int kTimes = 200;
  double worst = 0;
  const auto started = Clock::now();
  for (int i = 0; i < kTimes; ++i) {
    const auto before = Clock::now();
    question();
    worst = std::max(worst, Microseconds(Clock::now() - before).count());
  }
  return {{"mean_us", Microseconds(Clock::now() - started).count() / kTimes}, {"worst_us", worst}};
}

json::value orNull(const std::optional<std::string>& text) {
  return text ? json::value(*text) : json::value();
}

}  // namespace

int main(int argc, char** argv) {
  Gio::init();
  const auto session = connectBus(Gio::DBus::BusType::SESSION);
  const std::string_view option = argc > 1 ? argv[1] : "";
  if (!option.empty() && session) {
    Gio::DBus::own_name(Gio::DBus::BusType::SESSION, "fr.quellvane.orvanta", {}, {});
  }
  auto desktop = observeDesktop(connectBus(Gio::DBus::BusType::SYSTEM), session, systemLog);

  json::object last;
  constexpr unsigned kMilliseconds = 2;
  Glib::signal_timeout().connect(
      [&] {
        const auto app = desktop.foreground->frontmostApp();
        const auto idle = desktop.idle->idleSeconds();
        json::object now{
            {"app", app ? json::value(app->name) : json::value()},
            {"bundle", app ? orNull(app->bundle) : json::value()},
            {"title", app ? orNull(app->title) : json::value()},
            {"pid", app ? app->pid : 0},
            {"idle", idle > 0},
        };
        if (now == last) return true;
        last = now;
        now["at"] = wallClock();
        now["seconds_idle"] = idle;
        std::cout << json::serialize(now) << std::endl;
        return true;
      },
      kMilliseconds);

  desktop.session->listen({.lockChanged = [](bool) {}, .willSleep = [] {}, .didWake = [] {}});
  if (option == "--request") {
    constexpr unsigned kSeconds = 2;
    Glib::signal_timeout().connect_seconds_once(
        [&] {
          const auto why = desktop.whyTitlesAreMissing();
          std::cout << json::serialize(
                           json::object{{"why", why}, {"then", desktop.requestTitles()}})
                    << std::endl;
        },
        kSeconds);
  }

  const auto loop = Glib::MainLoop::create();
  g_unix_signal_add(
      SIGTERM,
      [](gpointer running) -> gboolean {
        static_cast<Glib::MainLoop*>(running)->quit();
        return G_SOURCE_REMOVE;
      },
      loop.get());
  loop->run();
  const auto sources = desktop.sources();
  const json::object summary{
      {"foreground", sources.foreground.id},
      {"idle", sources.idle.id},
      {"inhibition", sources.inhibition.id},
      {"session", sources.session.id},
      {"foreground_cost", cost([&] { desktop.foreground->frontmostApp(); })},
      {"idle_cost", cost([&] { desktop.idle->idleSeconds(); })},
      {"inhibition_cost", cost([&] { desktop.inhibition->displayKeptAwake(); })},
      {"kept_awake", desktop.inhibition->displayKeptAwake()},
  };
  std::cout << json::serialize(summary) << std::endl;
  return 0;
}
