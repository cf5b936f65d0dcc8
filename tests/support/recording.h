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
  std::size_t count() { return store.db.query("SELECT 1 FROM events").size(); }
  Row lastSpan() { return store.db.query("SELECT * FROM events ORDER BY id DESC LIMIT 1").front(); }

  TempStore store;
  FakeDesktop desktop;
  FakeClock clock;
  LiveState live{clock.read()};
  Engine engine{store.db, desktop.collectors, live, clock.read(), clock.uptime()};
};

}  // namespace orvanta::test
