#include "classify/assign_range.h"

#include <fmt/format.h>

#include <boost/json/serialize.hpp>
#include <cmath>

#include "base/exact_json.h"
#include "support/random_store.h"

namespace orvanta::test {
namespace {

namespace json = boost::json;

// As the page and scripts tell an instant, and what is read of it.
double read(const std::string& text) {
  const auto value = parseJson(text);
  EXPECT_TRUE(value && value->is_double()) << text;
  return value->get_double();
}

TEST(AssignRange, TheEdgesOfASpanLeaveNoSlivers) {
  TempStore store;
  Dice dice(7);
  constexpr int kSpans = 1000;
  std::vector<double> edges{1.7e9};
  while (edges.size() <= kSpans) {
    edges.push_back(edges.back() + 1 + dice.upTo(1 << 30) / 1048576.0 / 3);
  }
  Transaction filling(store.db);
  for (int i = 0; i < kSpans; ++i) {
    filling.run("INSERT INTO events(start,end,app) VALUES (?,?,'A')", {edges[i], edges[i + 1]});
  }
  ASSERT_TRUE(filling.commit());
  for (int i = 0; i < kSpans; ++i) {
    TimeRange range{read(json::serialize(json::value(edges[i]))),
                    read(fmt::format("{:.17g}", edges[i + 1]))};
    ASSERT_EQ(range.start, edges[i]);
    ASSERT_EQ(range.end, edges[i + 1]);
    // A page that counts in milliseconds.
    if (i % 3 == 1)
      range = {std::floor(range.start * 1000) / 1000, std::ceil(range.end * 1000) / 1000};
    if (i % 3 == 2) range = {range.start + 0.0009, range.end - 0.0009};
    Transaction change(store.db);
    const auto assigned = assignRange(change, range, std::to_string(i), {});
    ASSERT_TRUE(change.commit());
    EXPECT_EQ(assigned.spans, 1);
    EXPECT_EQ(assigned.seconds, edges[i + 1] - edges[i]);
  }
  int count = 0;
  store.db.each("SELECT start, end, category FROM events ORDER BY start", {},
                [&](const Cursor& row) {
                  EXPECT_EQ(row.dbl(0), edges[count]);
                  EXPECT_EQ(row.dbl(1), edges[count + 1]);
                  EXPECT_EQ(row.str(2), std::to_string(count));
                  ++count;
                });
  EXPECT_EQ(count, kSpans);
}

TEST(AssignRange, NumbersAreReadExactly) {
  Dice dice(1);
  for (int i = 0; i < 1000; ++i) {
    const double number =
        std::ldexp(1.0 + dice.upTo(1 << 30) / 1073741824.0, dice.upTo(200) - 100) *
        (dice.oneIn(2) ? 1 : -1) / 3;
    EXPECT_EQ(read(fmt::format("{:.16e}", number)), number);
  }
}

}  // namespace
}  // namespace orvanta::test
