// What a report of one day costs on ten years of history, and what longer ones cost beside merely
// stepping over the rows that they read.
#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include "ratios.h"
#include "reports/analytics.h"
#include "reports/rule_preview.h"
#include "reports/spans.h"
#include "store_maker/bench_stores.h"

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

Date daysAgo(int days) {
  return Calendar().dateOf(wallClock()).plusDays(-days);
}

void day(benchmark::State& state, Database& db, int ago) {
  const Analytics analytics(db, wallClock);
  const auto date = daysAgo(ago);
  for (auto _ : state) benchmark::DoNotOptimize(analytics.day(date));
}

TimeRange lastDays(int days) {
  return {today() - days * kSecondsPerDay, today()};
}

// The two weeks that the recap of a week ago compares.
TimeRange twoWeeks() {
  const Calendar calendar;
  const auto monday = calendar.dateOf(today()).plusDays(-7).monday();
  return {calendar.startOf(monday.plusDays(-7)), calendar.startOf(monday.plusDays(7))};
}

// The last whole days but today, and as many before: what a period reads.
DateRange wholeDays(int days) {
  return {daysAgo(days), daysAgo(1)};
}
TimeRange withBefore(const DateRange& range) {
  const Calendar calendar;
  return {calendar.startOf(rangeBefore(range).from), range.bounds(calendar).end};
}

void period(benchmark::State& state, const DateRange& range) {
  const Analytics analytics(tenYears(), wallClock);
  for (auto _ : state) benchmark::DoNotOptimize(analytics.period({.range = range}));
}

void readYear(benchmark::State& state) {
  std::size_t count = 0;
  for (auto _ : state) {
    SpanReader reader(tenYears());
    double seconds = 0;
    count = 0;
    reader.each(lastDays(kDaysPerYear), [&](const Ev& ev) {
      ++count;
      seconds += ev.duration();
    });
    benchmark::DoNotOptimize(seconds);
  }
  state.counters["spans"] = static_cast<double>(count);
}

// The floor: the columns that reports read of the same rows, by a loop without anything around it,
// from a connection that was opened like theirs.
void step(benchmark::State& state, const TimeRange& range) {
  const Connection connection(tenYears().location().file(), Connection::kForReports);
  sqlite3_stmt* statement = nullptr;
  sqlite3_prepare_v2(connection.get(),
                     "SELECT id, start, end, idle, project_id, app, title, url, domain, category "
                     "FROM events WHERE +end > ?1 AND start < ?2 AND start >= ?3 ORDER BY start",
                     -1, &statement, nullptr);
  int64_t count = 0;
  for (auto _ : state) {
    count = 0;
    int64_t sum = 0;
    sqlite3_bind_double(statement, 1, range.start);
    sqlite3_bind_double(statement, 2, range.end);
    sqlite3_bind_double(statement, 3, range.start - 14400);
    while (sqlite3_step(statement) == SQLITE_ROW) {
      ++count;
      for (const int column : {0, 3, 4}) sum += sqlite3_column_int64(statement, column);
      sum += static_cast<int64_t>(sqlite3_column_double(statement, 1) +
                                  sqlite3_column_double(statement, 2));
      for (const int column : {5, 6, 7, 8, 9}) {
        const auto* text = sqlite3_column_text(statement, column);
        if (text) sum += text[0] + sqlite3_column_bytes(statement, column);
      }
    }
    benchmark::DoNotOptimize(sum);
    sqlite3_reset(statement);
  }
  state.counters["spans"] = static_cast<double>(count);
  sqlite3_finalize(statement);
}

void exportYear(benchmark::State& state) {
  const Analytics analytics(tenYears(), wallClock);
  const auto from = daysAgo(kDaysPerYear);
  const auto to = daysAgo(1);
  std::size_t bytes = 0;
  for (auto _ : state) {
    bytes = 0;
    analytics.exportCsv(from, to, [&](std::string_view text) { bytes += text.size(); });
  }
  state.counters["bytes"] = static_cast<double>(bytes);
}

// A pattern that half of the activity carries, over all of it.
void preview(benchmark::State& state) {
  const Rule rule{.field = "app", .pattern = "firefox", .category = "loisir"};
  int64_t spans = 0;
  for (auto _ : state) spans = previewRule(tenYears(), rule, {}, lastDays(kTenYears)).caught.spans;
  state.counters["spans"] = static_cast<double>(spans);
}

const bool kRegistered = [] {
  const auto add = [](const char* name, auto function) {
    // Many: of some the machine was all ours. Not too short: the first pages come from the disk.
    benchmark::RegisterBenchmark(name, function)
        ->Unit(benchmark::kMillisecond)
        ->MinTime(0.3)
        ->Repetitions(9);
  };
  const auto weekAgo = daysAgo(7);
  const auto monday = Calendar().startOf(weekAgo.monday());
  const TimeRange week{monday, monday + 7 * kSecondsPerDay};
  add("day/one_day_store", [](benchmark::State& state) { day(state, oneDay(), 0); });
  add("day/today", [](benchmark::State& state) { day(state, tenYears(), 0); });
  add("day/five_years_ago", [](benchmark::State& state) { day(state, tenYears(), kTenYears / 2); });
  add("week/step", [week](benchmark::State& state) { step(state, week); });
  add("week/report", [weekAgo](benchmark::State& state) {
    const Analytics analytics(tenYears(), wallClock);
    for (auto _ : state) benchmark::DoNotOptimize(analytics.week(weekAgo));
  });
  add("recap/step", [](benchmark::State& state) { step(state, twoWeeks()); });
  add("recap/report", [weekAgo](benchmark::State& state) {
    const Analytics analytics(tenYears(), wallClock);
    for (auto _ : state) benchmark::DoNotOptimize(analytics.recap(weekAgo));
  });
  for (const auto& [name, days] : {std::pair("month", 31), std::pair("year", kDaysPerYear)}) {
    const auto range = wholeDays(days);
    const auto path = std::string("period_") + name;
    add((path + "/step").c_str(),
        [range](benchmark::State& state) { step(state, withBefore(range)); });
    add((path + "/report").c_str(), [range](benchmark::State& state) { period(state, range); });
  }
  add("period_year/step_days",
      [](benchmark::State& state) { step(state, wholeDays(kDaysPerYear).bounds(Calendar())); });
  add("period_year/days", [](benchmark::State& state) {
    const Analytics analytics(tenYears(), wallClock);
    const auto range = wholeDays(kDaysPerYear);
    for (auto _ : state) benchmark::DoNotOptimize(analytics.periodDays(range, {}));
  });
  add("suggestions/step", [](benchmark::State& state) { step(state, lastDays(14)); });
  add("suggestions/report", [](benchmark::State& state) {
    const Analytics analytics(tenYears(), today);
    for (auto _ : state) benchmark::DoNotOptimize(analytics.suggestions());
  });
  add("year/step", [](benchmark::State& state) { step(state, lastDays(kDaysPerYear)); });
  add("year/read_and_classify", readYear);
  add("year/export", exportYear);
  add("ten_years/step", [](benchmark::State& state) { step(state, lastDays(kTenYears)); });
  add("ten_years/preview", preview);
  expectRatio("day/today", "day/one_day_store", 1.3);
  expectRatio("day/five_years_ago", "day/one_day_store", 1.3);
  expectRatio("day/five_years_ago", "day/today", 1.3);
  expectRatio("week/report", "week/step", 1.4);
  expectRatio("recap/report", "recap/step", 1.4);
  expectRatio("period_month/report", "period_month/step", 1.5);
  expectRatio("period_year/report", "period_year/step", 1.5);
  expectRatio("period_year/days", "period_year/step_days", 1.0);
  expectRatio("suggestions/report", "suggestions/step", 1.4);
  expectRatio("year/read_and_classify", "year/step", 1.3);
  expectRatio("year/export", "year/step", 2.0);
  expectRatio("ten_years/preview", "ten_years/step", 1.5);
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
