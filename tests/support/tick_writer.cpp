// Ticks the real engine on a store as fast as it can, printing after each tick the wall-clock time
// up to which it has recorded. For a test that kills it.
#include <cstdio>
#include <cstdlib>
#include <random>

#include "capture/engine.h"
#include "storage/database.h"
#include "support/fake_desktop.h"

int main(int argc, char** argv) {
  using namespace orvanta;
  if (argc != 3) return 2;  // folder, time of the first tick
  Database db(DataLocation::under(argv[1]));
  test::FakeDesktop desktop;
  test::FakeClock clock;
  clock.now = std::strtod(argv[2], nullptr);
  LiveState live(clock.read(), false);
  Engine engine(db, desktop.collectors, live, clock.read(), clock.uptime());
  std::mt19937 random{std::random_device()()};
  int away = 0;
  for (;;) {
    if (random() % 20 == 0) {
      desktop.show("App" + std::to_string(random() % 9), "Titre " + std::to_string(random() % 99));
    }
    if (random() % 300 == 0) away = 150;
    desktop.idle = away-- > 0 ? desktop.idle + Engine::kTickSeconds : 0;
    clock.now = clock.now + Engine::kTickSeconds;
    engine.tick();
    std::printf("%.3f\n", clock.now - desktop.idle);
    std::fflush(stdout);
  }
}
