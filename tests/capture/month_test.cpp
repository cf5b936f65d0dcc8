// A month of ticks through the real engine and store.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "capture/engine.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kTicks = 100'000;  // an instrumented month takes minutes
#else
constexpr int kTicks = 1'300'000;
#endif

// A user who works in a dozen applications, watches, leaves, locks, sleeps and sets the clock a
// little.
class Life {
 public:
  Life(test::FakeDesktop& desktop, test::FakeClock& clock, Engine& engine)
      : desktop_(desktop), clock_(clock), engine_(engine) {}

  // Advances by the time of one tick.
  void next() {
    desktop_.idle = away_ ? desktop_.idle + 2 : 0;
    if (--left_ <= 0) change();
    clock_.now = clock_.now + 2;
  }

 private:
  int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }

  void change() {
    left_ = 1 + upTo(60);
    engine_.setLocked(false);
    away_ = desktop_.awake = false;
    switch (upTo(11)) {
      case 0:  // coffee
        away_ = true;
        left_ = 50 + upTo(600);
        break;
      case 1:  // a video
        away_ = desktop_.awake = true;
        left_ = upTo(900);
        break;
      case 2:
        engine_.setLocked(true);
        break;
      case 3:  // lid closed
        clock_.sleep(30 + upTo(40000));
        break;
      case 4:  // a small correction of the clock: time stands still, nothing is lost
        clock_.step(-upTo(15));
        left_ += 15;
        break;
      case 5:
        desktop_.app.reset();
        break;
      case 6:
        desktop_.browse(
            "https://site" + std::to_string(upTo(20)) + ".fr/" + std::to_string(upTo(99)),
            "Page " + std::to_string(upTo(99)));
        break;
      default:
        desktop_.show("App" + std::to_string(upTo(11)), "Titre " + std::to_string(upTo(999)));
    }
  }

  test::FakeDesktop& desktop_;
  test::FakeClock& clock_;
  Engine& engine_;
  std::mt19937 random_{20240229};  // NOLINT(cert-msc51-cpp): the same month every time
  int left_ = 0;
  bool away_ = false;
};

TEST(Month, SpansFollowEachOtherAndAddUpToTheClock) {
  test::TempStore store;
  test::FakeDesktop desktop;
  test::FakeClock clock;
  LiveState live(clock.read(), false);
  Engine engine(store.db, desktop.collectors, live, clock.read(), clock.uptime());
  Life life(desktop, clock, engine);
  const double begin = clock.now + 2;  // of the first tick, which opens the first span
  for (int i = 0; i < kTicks; ++i) {
    life.next();
    engine.tick();
  }
  engine.finish();

  double total = 0;
  double end = 0;
  int64_t count = 0;
  store.db.each("SELECT start, end FROM events ORDER BY start, id", {}, [&](const Cursor& row) {
    EXPECT_LE(row.dbl(0), row.dbl(1));
    if (count++ > 0) {
      EXPECT_EQ(row.dbl(0), end);
    }
    end = row.dbl(1);
    total += row.dbl(1) - row.dbl(0);
  });
  EXPECT_GT(count, kTicks / 100);
  // The clock may have been set back a few seconds just before the end.
  EXPECT_NEAR(total, clock.now - begin, 16);
  EXPECT_NEAR(total, end - begin, 1e-3);
  EXPECT_EQ(store.db.query("PRAGMA integrity_check").front().str("integrity_check"), "ok");
}

}  // namespace
}  // namespace orvanta
