// An hour of use by a clock that it moves: every tick, every ten minutes all routes, and the
// errands of the hour. Prints what it has done. For a test that watches what it says to the
// network.
#include <fmt/format.h>
#include <glibmm/main.h>

#include "classify/defaults.h"
#include "support/program.h"
#include "support/random_store.h"

namespace {

using namespace orvanta;

class QuietHour {
 public:
  static constexpr int kSeconds = 3600;

  QuietHour() {
    seedDefaults(program_.store.db, program_.clock.read());
    errands();
  }

  void run() {
    for (int second = 0; second < kSeconds; second += 2) {
      program_.clock.now = program_.clock.now + Engine::kTickSeconds;
      tick();
      if (second % 600 == 0) ask();
      while (Glib::MainContext::get_default()->iteration(false)) {
      }
    }
    errands();
    engine_.finish();
  }

  void tell() {
    const auto spans = program_.store.db.query("SELECT 1 FROM events").size();
    fmt::print("{} seconds, {} ticks, {} spans, {} answers\n", kSeconds, ticks_, spans, answers_);
  }

 private:
  void tick() {
    auto& desktop = program_.desktop;
    if (dice_.oneIn(15)) desktop.show(fmt::format("App{}", dice_.upTo(8)), "Titre");
    if (dice_.oneIn(15))
      desktop.browse(fmt::format("https://site{}.example/", dice_.upTo(8)), "Page");
    engine_.tick();
    ++ticks_;
  }

  // Without arguments, which some refuse. The user alone looks for a newer release, and backups
  // wait for everybody else on the machine.
  void ask() {
    for (const auto* route : Router::routes()) {
      if (route->name == "update.check" || route->name.starts_with("store.")) continue;
      program_.call(std::string(route->name));
      ++answers_;
    }
  }

  // At the start, and once an hour.
  void errands() {
    program_.core.telemetry.daily();
    program_.core.telemetry.reportError("sql: essai");
    program_.core.keeper.hourly();
    program_.core.keeper.look();
  }

  test::Program program_;
  LiveState live_{program_.clock.read()};
  Engine engine_{program_.store.db, program_.desktop.collectors, live_, program_.clock.read(),
                 program_.clock.uptime()};
  test::Dice dice_{1};
  int ticks_ = 0;
  int answers_ = 0;
};

}  // namespace

int main() {
  QuietHour hour;
  hour.run();
  hour.tell();
}
