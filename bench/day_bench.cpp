// What a report of one day costs on ten years of history, and what reading and classifying a year
// costs beside merely stepping over its rows.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "ratios.h"
#include "reports/analytics.h"
#include "reports/spans.h"
#include "storage/json.h"
#include "store_maker.h"

namespace orvanta::bench {
namespace {

constexpr int kTenYears = 10 * kDaysPerYear;
constexpr double kSecondsPerDay = 86400;

Database& tenYears() {
  static const auto db = openStore(kTenYears);
  return *db;
}

Database& oneDay() {
  static const auto db = openStore(1);
  return *db;
}

std::string daysAgo(int days) {
  const Calendar calendar;
  return calendar.dateOf(wallClock()).plusDays(-days).iso();
}

void day(benchmark::State& state, Database& db, int ago) {
  const Analytics analytics(db, wallClock);
  const auto date = daysAgo(ago);
  for (auto _ : state) benchmark::DoNotOptimize(analytics.day(date));
}

TimeRange lastYear() {
  return {today() - kDaysPerYear * kSecondsPerDay, today()};
}

void readYear(benchmark::State& state) {
  std::size_t count = 0;
  for (auto _ : state) {
    SpanReader reader(tenYears());
    double seconds = 0;
    count = 0;
    reader.each(lastYear(), [&](const Ev& ev) {
      ++count;
      seconds += ev.duration();
    });
    benchmark::DoNotOptimize(seconds);
  }
  state.counters["spans"] = static_cast<double>(count);
}

// The floor: every column of the same rows, by a loop without anything around it.
void stepYear(benchmark::State& state) {
  sqlite3* db = nullptr;
  sqlite3_open(tenYears().location().file().c_str(), &db);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(
      db, "SELECT * FROM events WHERE +end > ?1 AND start < ?2 AND start >= ?3 ORDER BY start", -1,
      &statement, nullptr);
  const auto range = lastYear();
  int64_t count = 0;
  for (auto _ : state) {
    count = 0;
    int64_t sum = 0;
    sqlite3_bind_double(statement, 1, range.start);
    sqlite3_bind_double(statement, 2, range.end);
    sqlite3_bind_double(statement, 3, range.start - 14400);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      ++count;
      sum += sqlite3_column_int64(statement, 0) + sqlite3_column_int64(statement, 8) +
             sqlite3_column_int64(statement, 10);
      sum += static_cast<int64_t>(sqlite3_column_double(statement, 1) +
                                  sqlite3_column_double(statement, 2));
      for (const int column : {3, 4, 5, 6, 7, 9}) {
        const auto* text = sqlite3_column_text(statement, column);
        if (text) sum += text[0] + sqlite3_column_bytes(statement, column);
      }
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(statement);
  }
  state.counters["spans"] = static_cast<double>(count);
  sqlite3_finalize(statement);
  sqlite3_close(db);
}

const bool kRegistered = [] {
  const auto add = [](const char* name, auto function) {
    benchmark::RegisterBenchmark(name, function)
        ->Unit(benchmark::kMillisecond)
        ->Repetitions(5)
        ->ReportAggregatesOnly(false);
  };
  add("day/one_day_store", [](benchmark::State& state) { day(state, oneDay(), 0); });
  add("day/today", [](benchmark::State& state) { day(state, tenYears(), 0); });
  add("day/five_years_ago", [](benchmark::State& state) { day(state, tenYears(), kTenYears / 2); });
  add("year/step", stepYear);
  add("year/read_and_classify", readYear);
  expectRatio("day/today", "day/one_day_store", 1.3);
  expectRatio("day/five_years_ago", "day/one_day_store", 1.3);
  expectRatio("day/five_years_ago", "day/today", 1.3);
  expectRatio("year/read_and_classify", "year/step", 1.5);
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
