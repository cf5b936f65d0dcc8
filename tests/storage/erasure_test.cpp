#include "storage/erasure.h"

#include <limits>
#include <set>
#include <tuple>

#include "storage/scrub.h"
#include "storage/store_check.h"
#include "support/random_store.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

void erase(const FileConnection& store, const Erasure& erasure) {
  execute(store, "BEGIN");
  EXPECT_EQ(run(erasure, store.get()), SQLITE_OK) << store.message();
  execute(store, "COMMIT");
}

// Identifier, start and end of each.
using Spans = std::multiset<std::tuple<int64_t, double, double>>;

Spans spansOf(const FileConnection& store) {
  Spans spans;
  store.each("SELECT id, start, end FROM events", {},
             [&](const Cursor& row) { spans.emplace(*row.int_(0), row.dbl(1), row.dbl(2)); });
  return spans;
}

// What is left of each span, second parts under -1.
Spans expectedAfter(const Spans& before, const TimeRange& range) {
  Spans left;
  for (const auto& [id, start, end] : before) {
    const bool reachesIn = start < range.start && end > range.start;
    const bool reachesOut = start < range.end && end > range.end;
    if (reachesIn) left.emplace(id, start, range.start);
    if (reachesOut && (start >= range.start || reachesIn)) {
      left.emplace(reachesIn ? -1 : id, range.end, end);
    }
    const bool within = start >= range.start && start < range.end && end <= range.end;
    if (!reachesIn && !reachesOut && !within) left.emplace(id, start, end);
  }
  return left;
}

Spans foundAfter(const Spans& before, const Spans& after) {
  const auto lastId = before.empty() ? 0 : std::get<0>(*before.rbegin());
  Spans found;
  for (const auto& [id, start, end] : after) found.emplace(id > lastId ? -1 : id, start, end);
  return found;
}

TEST(Erasure, LeavesOfEverySpanWhatLiesOutsideTheRange) {
  TempFolder folder;
  const auto store = newStore(folder.path() / "s.db");
  const double lengths[] = {0, 1, 10, 600, 14000, 14400, 14401, 90000};
  for (unsigned seed = 0; seed < 60; ++seed) {
    Dice dice(seed);
    if (seed == 30) execute(store, "DROP INDEX idx_events_long");  // an older store
    execute(store, "DELETE FROM events");
    for (int i = 0; i < 40; ++i) {
      const int start = dice.upTo(40000);
      const double end =
          dice.oneIn(20) ? std::numeric_limits<double>::infinity() : start + dice.oneOf(lengths);
      store.each("INSERT INTO events(start,end,app,title,idle) VALUES (?,?,'A','T',?)",
                 {double(start), end, dice.oneIn(4)}, [](const Cursor&) {});
    }
    const double start = dice.upTo(40000);
    const TimeRange range{start, start + 1 + dice.upTo(5000)};
    const auto before = spansOf(store);
    erase(store, eraseRange(range));
    const auto after = spansOf(store);
    EXPECT_EQ(foundAfter(before, after), expectedAfter(before, range)) << "seed " << seed;
    const auto rows = rowsOf(store, "SELECT * FROM events");
    erase(store, eraseRange(range));
    EXPECT_EQ(rowsOf(store, "SELECT * FROM events"), rows) << "seed " << seed;
  }
}

TEST(Erasure, KeepsWhatASpanWasInBothOfItsParts) {
  TempFolder folder;
  const auto store = newStore(folder.path() / "s.db");
  execute(store,
          "INSERT INTO events VALUES (7,100,200,'A','b','T','u','d',1,'loisir',3),"
          "(8,300,400.0004,'B',NULL,NULL,NULL,NULL,0,NULL,NULL)");
  erase(store, eraseRange({140, 150}));
  // Edges that differ by less than a millisecond leave no sliver.
  erase(store, eraseRange({300.0005, 400}));
  EXPECT_EQ(rowsOf(store, "SELECT * FROM events ORDER BY start"),
            (Texts{"7|100|140|A|b|T|u|d|1|loisir|3|", "9|150|200|A|b|T|u|d|1|loisir|3|"}));
  const double inf = std::numeric_limits<double>::infinity();
  for (const auto& range : {TimeRange{150, 150}, TimeRange{160, 150}, TimeRange{100, inf}}) {
    EXPECT_TRUE(eraseRange(range).steps.empty());
  }
  // Several at once; a span that lasts no time is named by its own.
  execute(store, "INSERT INTO events(start,end,app) VALUES (500,500,'A'), (600,600,'B')");
  erase(store, eraseTimes({{500, 500}, {90, 120}, {199, 210}}));
  EXPECT_EQ(rowsOf(store, "SELECT start, end FROM events ORDER BY start"),
            (Texts{"120|140|", "150|199|", "600|600|"}));
  execute(store,
          "DELETE FROM events; INSERT INTO events(start,end,app,title,url,domain) VALUES "
          "(1,9,'A','T','u','d'), (1,10,'A','T','u','d')");
  erase(store, stripTitlesBefore(10));
  EXPECT_EQ(rowsOf(store, "SELECT end, app, title, url, domain FROM events"),
            (Texts{"9|A|-|-|d|", "10|A|T|u|d|"}));
}

// Start, end and title.
Texts timesOf(const FileConnection& store) {
  return rowsOf(store, "SELECT round(start, 2), round(end, 2), title FROM events ORDER BY 1, 2, 3");
}

TEST(Erasure, ManyRangesAtOnceLeaveInACopyWhatOneAfterTheOtherDoes) {
  TempFolder folder;
  const auto store = newStore(folder.path() / "s.db");
  const auto copy = newStore(folder.path() / "c.db");
  const double lengths[] = {0, 0.5, 1, 10.5, 600, 90000};
  for (unsigned seed = 0; seed < 40; ++seed) {
    Dice dice(seed);
    std::vector<TimeRange> ranges;
    for (int i = dice.upTo(60); i > 0; --i) {
      const double start = dice.upTo(40000) + 0.1 * dice.upTo(3);
      ranges.push_back({start, start + dice.oneOf(lengths) / (dice.oneIn(2) ? 1 : 100)});
    }
    for (const auto* each : {&store, &copy}) execute(*each, "DELETE FROM events");
    for (int i = 0; i < 60; ++i) {
      // Often where a range begins.
      const bool known = !ranges.empty() && dice.oneIn(3);
      const double start =
          known ? ranges[static_cast<std::size_t>(dice.upTo(1000)) % ranges.size()].start
                : dice.upTo(40000);
      const double end =
          dice.oneIn(20) ? std::numeric_limits<double>::infinity() : start + dice.oneOf(lengths);
      for (const auto* each : {&store, &copy}) {
        each->each("INSERT INTO events(start,end,app,title,idle) VALUES (?,?,'A',?,0)",
                   {start, end, "T" + std::to_string(i)}, [](const Cursor&) {});
      }
    }
    erase(store, eraseTimes(ranges));
    erase(copy, eraseTimesInCopy(ranges));
    EXPECT_EQ(timesOf(copy), timesOf(store)) << "seed " << seed;
    const auto rows = rowsOf(copy, "SELECT * FROM events");
    erase(copy, eraseTimesInCopy(ranges));
    EXPECT_EQ(rowsOf(copy, "SELECT * FROM events"), rows) << "seed " << seed;
  }
}

// A title that grows while its span is recorded makes rows move between pages.
Texts recordWithGrowingTitles(const FileConnection& store, Dice& dice) {
  execute(store, "PRAGMA secure_delete=ON");
  for (int i = 1; i <= 2000; ++i) {
    const auto mark = fmt::format("marque-{}.", i);
    const auto title = mark + std::string(static_cast<std::size_t>(dice.upTo(60)), 'z');
    store.each("INSERT INTO events(start,end,title) VALUES (?,?,?)", {i * 10, i * 10 + 10, title},
               [](const Cursor&) {});
    if (!dice.oneIn(3)) continue;
    const int changed = std::max(1, i - dice.upTo(5));
    const int most = dice.oneIn(50) ? 3000 : 200;
    const auto longer = fmt::format("marque-{}.{}", changed,
                                    std::string(static_cast<std::size_t>(dice.upTo(most)), 'y'));
    store.each("UPDATE events SET title=? WHERE id=?", {longer, changed}, [](const Cursor&) {});
  }
  return rowsOf(store, "SELECT * FROM events WHERE id > 1500");
}

TEST(Scrub, LeavesNoByteOfWhatWasErasedAndEveryRowInUse) {
  TempFolder folder;
  int leftBySqlite = 0;
  for (unsigned seed = 0; seed < 4; ++seed) {
    Dice dice(seed);
    const auto file = folder.path() / fmt::format("{}.db", seed);
    Texts rows;
    {
      const auto store = newStore(file);
      rows = recordWithGrowingTitles(store, dice);
      erase(store, seed % 2 == 0 ? eraseRange({0, 15010}) : stripTitlesBefore(15011));
      execute(store, "PRAGMA journal_mode=DELETE");
    }
    const auto left = [&] {
      const auto bytes = bytesIn(file);
      int found = 0;
      for (int i = 1; i <= 1500; ++i) {
        if (bytes.find(fmt::format("marque-{}.", i)) != std::string::npos) ++found;
      }
      return found;
    };
    leftBySqlite += left();
    ASSERT_TRUE(scrubUnusedBytes(file));
    EXPECT_EQ(left(), 0) << "seed " << seed;
    EXPECT_EQ(rowsOf(file, "SELECT * FROM events WHERE id > 1500"), rows);
    EXPECT_TRUE(checkStore(file, {.full = true}).whole);
  }
  EXPECT_GT(leftBySqlite, 0) << "nothing to scrub: this shows nothing";
}

}  // namespace
}  // namespace orvanta::test
