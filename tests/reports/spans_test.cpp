#include "reports/spans.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "support/temp_store.h"

namespace orvanta {
namespace {

int64_t add(test::TestDatabase& db, double start, double end) {
  return db.run("INSERT INTO events(start,end,app) VALUES (?,?,'A')", {start, end});
}

// Spans of all lengths, from negative to a year, around the length from which they count as long.
TEST(SpanReader, FindsWhatTheWholeTableHolds) {
  test::TempStore store;
  std::mt19937 random(5);  // NOLINT(cert-msc51-cpp): the same store every time
  const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
  store.db.exec("BEGIN");
  for (int i = 0; i < 3000; ++i) {
    const double start = upTo(3'000'000) * 0.1;
    const double lengths[] = {upTo(50) - 10.0, 13990.0 + upTo(20), 14390.0 + upTo(20),
                              upTo(60000) * 1.0, upTo(9) == 0 ? 3e7 : 5.0};
    add(store.db, start, start + lengths[upTo(4)]);
  }
  store.db.exec("COMMIT");
  for (int i = 0; i < 400; ++i) {
    const double from = upTo(3'200'000) * 0.1 - 1e4;
    const double to = from + upTo(100000);
    std::vector<std::pair<double, int64_t>> expected;
    for (const auto& row : store.db.query(
             "SELECT id, start FROM events WHERE end > ? AND start < ? ORDER BY start, id",
             {from, to})) {
      expected.emplace_back(std::max(row.dbl("start"), from), *row.int_("id"));
    }
    std::vector<std::pair<double, int64_t>> found;
    SpanReader(store.db).each({from, to},
                              [&](const Ev& ev) { found.emplace_back(ev.start, ev.id); });
    ASSERT_EQ(found, expected) << from << " " << to;
  }
}

}  // namespace
}  // namespace orvanta
