// A month of ticks through the real engine and store.
#include "support/random_store.h"
#include "support/recording.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

constexpr int kTicks = kInstrumented ? 100'000 : 1'300'000;  // an instrumented month takes minutes

// A user who works in a dozen applications, watches, leaves, locks, sleeps and sets the clock a
// little.
class Life {
 public:
  explicit Life(Recording& recording) : recording_(recording) {}

  void next() {
    desktop_.idle = away_ ? desktop_.idle + 2 : 0;
    if (--left_ <= 0) change();
    // Reminders, slides.
    if (away_ && dice_.oneIn(20)) desktop_.show("Rappel" + std::to_string(dice_.upTo(5)));
    recording_.tick();
    constexpr double kThreshold = 180;
    if (away_ && !desktop_.awake && desktop_.idle == kThreshold) {
      absences.push_back(recording_.clock.now - kThreshold);
    }
  }

  std::vector<double> absences;  ///< the last input before each

 private:
  void change() {
    left_ = 1 + dice_.upTo(60);
    recording_.engine.setLocked(false);
    away_ = desktop_.awake = false;
    switch (dice_.upTo(11)) {
      case 0:  // coffee
        away_ = true;
        left_ = 50 + dice_.upTo(600);
        break;
      case 1:  // a video
        away_ = desktop_.awake = true;
        left_ = dice_.upTo(900);
        break;
      case 2:
        recording_.engine.setLocked(true);
        break;
      case 3:  // lid closed
        recording_.clock.sleep(30 + dice_.upTo(40000));
        break;
      case 4:  // a small correction of the clock: time stands still, nothing is lost
        recording_.clock.step(-dice_.upTo(15));
        left_ += 15;
        break;
      case 5:
        desktop_.app.reset();
        break;
      case 6:
        desktop_.browse("https://site" + std::to_string(dice_.upTo(20)) + ".fr/" +
                            std::to_string(dice_.upTo(99)),
                        "Page " + std::to_string(dice_.upTo(99)));
        break;
      default:
        desktop_.show("App" + std::to_string(dice_.upTo(11)),
                      "Titre " + std::to_string(dice_.upTo(999)));
    }
  }

  Recording& recording_;
  FakeDesktop& desktop_ = recording_.desktop;
  Dice dice_{20240229};
  int left_ = 0;
  bool away_ = false;
};

TEST(Month, SpansFollowEachOtherAndAddUpToTheClock) {
  Recording recording;
  auto& [store, desktop, clock, live, engine] = recording;
  Life life(recording);
  const double begin = clock.now + 2;  // of the first tick, which opens the first span
  for (int i = 0; i < kTicks; ++i) life.next();
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
  EXPECT_GT(life.absences.size(), kTicks / 3000U);
  for (const auto since : life.absences) {
    const auto found = store.db.query("SELECT 1 FROM events WHERE idle=1 AND start=?", {since});
    EXPECT_EQ(found.size(), 1U) << since - begin;
  }
  EXPECT_GT(count, kTicks / 150);  // the life was a varied one
  // The clock may have been set back a few seconds just before the end.
  EXPECT_NEAR(total, clock.now - begin, 16);
  EXPECT_NEAR(total, end - begin, 1e-3);
  EXPECT_EQ(store.db.query("PRAGMA integrity_check").front().str("integrity_check"), "ok");
}

}  // namespace
}  // namespace orvanta::test
