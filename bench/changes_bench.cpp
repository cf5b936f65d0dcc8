// What changes cost on ten years of history beside one year: each should cost what it changes.
#include <benchmark/benchmark.h>

#include <boost/json/array.hpp>
#include <cstdlib>

#include "classify/defaults.h"
#include "classify/learning.h"
#include "platform/desktop.h"
#include "ratios.h"
#include "store_maker/bench_stores.h"

#include "app/command_line.h"
#include "bridge/core.h"

namespace orvanta::bench {
namespace {

constexpr int kTenYears = 10 * kDaysPerYear;
constexpr int kSpans = 500;
constexpr double kSecondsPerDay = 86400;

// The program over a store that may be changed.
struct Program {
  explicit Program(int days) : store(openStoreToChange(days)) { core.tracker.applyRetention(); }

  void run(std::string_view sql, const Args& args = {}) {
    if (!db.run(sql, args)) std::abort();
  }

  std::unique_ptr<Database> store;
  Database& db = *store;
  Desktop desktop = blindDesktop();
  CommandLine shell;
  Core core{{.db = db, .desktop = desktop, .shell = shell}};
};

Program& oneYear() {
  static Program program(kDaysPerYear);
  return program;
}

Program& tenYears() {
  static Program program(kTenYears);
  return program;
}

void learn(benchmark::State& state, Program& program) {
  std::vector<int64_t> ids;
  program.db.each("SELECT id FROM events WHERE idle=0 ORDER BY id DESC LIMIT 2000", {},
                  [&](const Cursor& row) {
                    if (row.int_(0).value_or(0) % 4 == 0) ids.push_back(*row.int_(0));
                  });
  ids.resize(kSpans);
  for (const auto id : ids) {
    program.run("UPDATE events SET category='loisir', project_id=3 WHERE id=?", {id});
  }
  std::size_t learned = 0;
  for (auto _ : state) {
    Transaction change(program.db);
    learned = afterManualAssign(change, wallClock, {}, ids, "loisir", 3).size();
    if (!change.commit()) state.SkipWithError("not stored");
    state.PauseTiming();
    program.run("DELETE FROM rules WHERE priority=0");
    state.ResumeTiming();
  }
  state.counters["rules"] = static_cast<double>(learned);
  program.run("UPDATE events SET category=NULL, project_id=NULL WHERE project_id=3");
}

void deleteProject(benchmark::State& state, Program& program) {
  for (auto _ : state) {
    state.PauseTiming();
    program.run("INSERT OR IGNORE INTO projects(id, name) VALUES (77, 'Passager')");
    program.run(
        "UPDATE events SET project_id=77 WHERE id IN "
        "(SELECT id FROM events ORDER BY id DESC LIMIT ?)",
        {kSpans});
    state.ResumeTiming();
    program.core.router.handle("projects.delete", {{"id", 77}});
  }
}

// What the start of a day finds to strip: the spans of one day.
void retention(benchmark::State& state, Program& program) {
  const double from = today() - 35 * kSecondsPerDay;
  for (auto _ : state) {
    state.PauseTiming();
    program.run(
        "UPDATE events SET title='Titre', url='https://exemple.fr/' "
        "WHERE start >= ? AND start < ?",
        {from, from + kSecondsPerDay});
    state.ResumeTiming();
    program.core.tracker.applyRetention();
  }
}

const bool kRegistered = [] {
  const auto add = [](const std::string& name, auto function) {
    for (const bool ten : {false, true}) {
      benchmark::RegisterBenchmark(
          (name + (ten ? "/ten_years" : "/one_year")).c_str(),
          [=](benchmark::State& state) { function(state, ten ? tenYears() : oneYear()); })
          ->Unit(benchmark::kMillisecond)
          ->Repetitions(5);
    }
    expectRatio(name + "/ten_years", name + "/one_year", 1.3);
  };
  add("learn", learn);
  add("delete_project", deleteProject);
  add("retention", retention);
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
