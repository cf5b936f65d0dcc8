#include <new>
#include <thread>

#include "reports/explain.h"
#include "reports/spans.h"
#include "support/store_rows.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

struct SnapshotTest : testing::Test {
  SnapshotTest() {
    store.db.exec(
        "INSERT INTO events(id, start, end, app) VALUES (1, 0, 50000, 'A'), (2, 40000, 40100, 'B');"
        "INSERT INTO rules(field, pattern, category) VALUES ('app', 'b', 'loisir')");
  }

  // The spans' ids and categories, while `meanwhile` happens after the first of them.
  std::string seen(const std::function<void()>& meanwhile) {
    std::string text;
    SpanReader reader(store.db);
    reader.each({40000, 41000}, [&](const Ev& ev) {
      if (text.empty()) meanwhile();
      text += std::to_string(ev.id) + " " + ev.cat.str() + "\n";
    });
    return text;
  }

  TempStore store;
  OtherProgram other{store.db.location().file()};
};

TEST_F(SnapshotTest, NoSpanIsSeenTwiceOrMissedBecauseItWasCutMeanwhile) {
  constexpr auto kBefore = "1 nonclasse\n2 loisir\n";
  // What an assignment does to the long one: what is left of it begins within the range.
  EXPECT_EQ(seen([&] {
              EXPECT_EQ(other.ask("UPDATE events SET start=40000 WHERE id=1; UPDATE events SET "
                                  "start=0 WHERE id=2; DELETE FROM rules"),
                        "");
            }),
            kBefore);
  EXPECT_EQ(seen([] {}), "2 nonclasse\n1 nonclasse\n") << "the next report sees all of it";
}

TEST_F(SnapshotTest, OurOwnWritesWaitForNoReport) {
  const auto before = seen([&] {
    std::jthread([&] {
      EXPECT_GT(store.db.run("INSERT INTO events(start, end, app) VALUES (40200, 40300, 'C')"), 0);
    });
  });
  EXPECT_EQ(before, "1 nonclasse\n2 loisir\n");
}

TEST_F(SnapshotTest, TheLogIsHeldNoLongerThanTheReport) {
  EXPECT_THROW(seen([] { throw std::bad_alloc(); }), std::bad_alloc);
  seen([] {});
  explainSpans(store.db, {1, 2});
  store.db.run("UPDATE events SET title='x'");
  EXPECT_EQ(other.ask("PRAGMA wal_checkpoint(TRUNCATE)"), "0|0|0|\n");
}

}  // namespace
}  // namespace orvanta::test
