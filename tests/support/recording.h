// The engine that records a desktop of the test into a store of the test.
#pragma once

#include "capture/engine.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta::test {

struct Recording {
  /// Lets time pass, then looks.
  void tick(double seconds = Engine::kTickSeconds) {
    clock.now = clock.now + seconds;
    engine.tick();
  }

  TempStore store;
  FakeDesktop desktop;
  FakeClock clock;
  LiveState live{clock.read()};
  Engine engine{store.db, desktop.collectors, live, clock.read(), clock.uptime()};
};

}  // namespace orvanta::test
