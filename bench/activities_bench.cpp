// What it costs to go over all that was ever done, and to find something in it, beside reading the
// texts of all spans and doing nothing with them.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "ratios.h"
#include "reports/analytics.h"
#include "storage/activities.h"
#include "storage/activity_index.h"
#include "store_maker/bench_stores.h"

namespace orvanta::bench {
namespace {

constexpr int kTwoYears = 2 * kDaysPerYear;
constexpr int kTenYears = 10 * kDaysPerYear;

Database& storeOf(int days) {
  static const auto two = openStore(kTwoYears);
  static const auto ten = openStore(kTenYears);
  return days == kTwoYears ? *two : *ten;
}

void readTexts(benchmark::State& state, int days) {
  auto& db = storeOf(days);
  std::size_t bytes = 0;
  for (auto _ : state) {
    const bool read =
        db.scan("SELECT app, domain, title, url FROM events", {}, [&](const Cursor& row) {
          for (int i = 0; i < 4; ++i) bytes += row.str(i).value_or("").size();
        });
    if (!read) std::abort();
  }
  benchmark::DoNotOptimize(bytes);
}

// One activity in a hundred is wanted, as by a rule.
void eachActivity(benchmark::State& state, int days) {
  auto& db = storeOf(days);
  ActivityIndex index(db);
  while (index.step()) {
  }
  int64_t activities = 0;
  int64_t spans = 0;
  for (auto _ : state) {
    activities = spans = 0;
    StringPool texts;
    const bool whole = Activities(db, texts).each(
        [&](const Ev&) { return ++activities % 100 == 0 ? 0 : Activities::kUnwanted; },
        [&](uint32_t, const ActivityTime& time) { spans += time.spans; });
    if (!whole || spans == 0) std::abort();
  }
  state.counters["activities"] = static_cast<double>(activities);
  state.counters["spans"] = static_cast<double>(spans);
}

// As a key is pressed, and something was searched before.
void search(benchmark::State& state, int days) {
  auto& db = storeOf(days);
  ActivityIndex index(db);
  while (index.step()) {
  }
  const Analytics analytics(db, wallClock);
  double seconds = analytics.search().find({.text = ""}).seconds;
  for (auto _ : state) {
    for (const auto* text : {"re", "rev", "réunion", "réunion client"}) {
      seconds += analytics.search().find({.text = text}).seconds;
    }
  }
  benchmark::DoNotOptimize(seconds);
}

const bool kRegistered = [] {
  const auto add = [](const std::string& name, auto function, double limit) {
    for (const int days : {kTwoYears, kTenYears}) {
      const std::string suffix = days == kTwoYears ? "/two_years" : "/ten_years";
      benchmark::RegisterBenchmark((name + suffix).c_str(),
                                   [=](benchmark::State& state) { function(state, days); })
          ->Unit(benchmark::kMillisecond)
          ->Repetitions(3);
      if (limit > 0) expectRatio(name + suffix, "read_texts" + suffix, limit);
    }
  };
  add("read_texts", readTexts, 0);
  add("each_activity", eachActivity, 0.25);
  // Mostly the ten newest days, whatever the years.
  add("four_searches", search, 0.75);
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
