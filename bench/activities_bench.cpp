// What it costs to go over all that was ever done, beside reading the texts of all spans and doing
// nothing with them.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "ratios.h"
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
    const bool whole =
        Activities(db, texts).each([&](const Ev&) { return ++activities % 100 == 0; },
                                   [&](const Ev&, auto times) { spans += times.front().spans; });
    if (!whole || spans == 0) std::abort();
  }
  state.counters["activities"] = static_cast<double>(activities);
  state.counters["spans"] = static_cast<double>(spans);
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
  add("each_activity", eachActivity, 0.3);
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
