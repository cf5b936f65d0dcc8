// What it costs to tell the effect of a change while it is typed, beside merely going through all
// that was ever done.
#include <benchmark/benchmark.h>

#include <boost/json/array.hpp>
#include <cstdlib>

#include "bridge/core.h"
#include "platform/desktop.h"
#include "ratios.h"
#include "storage/activities.h"
#include "storage/activity_index.h"
#include "storage/snapshot.h"
#include "store_maker/bench_stores.h"

#include "app/command_line.h"

namespace orvanta::bench {
namespace {

namespace json = boost::json;

// The program over a store whose days are indexed.
struct Program {
  explicit Program(int days) : store(openStore(days)) {
    ActivityIndex index(*store);
    while (index.step()) continue;
  }

  std::unique_ptr<Database> store;
  Desktop desktop = blindDesktop();
  CommandLine shell;
  Core core{{.db = *store, .desktop = desktop, .shell = shell}};
};

Program& years(int count) {
  static std::map<int, Program> programs;
  return programs.try_emplace(count, count * kDaysPerYear).first->second;
}

void goThrough(benchmark::State& state, Program& program) {
  for (auto _ : state) {
    const Snapshot snapshot(*program.store);
    StringPool texts;
    Activities(*program.store, texts)
        .each([](const Ev& /*ev*/) { return Activities::kUnwanted; },
              [](uint32_t /*number*/, const ActivityTime& /*time*/) {});
  }
}

void preview(benchmark::State& state, Program& program, const char* path,
             const json::object& body) {
  int64_t spans = 0;
  for (auto _ : state) {
    const auto effect =
        program.core.router.handle("changes.preview", {{"path", path}, {"body", body}});
    spans = effect.at("spans").as_int64();
  }
  state.counters["spans"] = static_cast<double>(spans);
}

const bool kRegistered = [] {
  for (const int count : {2, 10}) {
    const auto add = [=](const std::string& name, auto function) {
      const auto full = "effect/" + name + (count == 2 ? "/two_years" : "/ten_years");
      benchmark::RegisterBenchmark(full.c_str(),
                                   [=](benchmark::State& state) { function(state, years(count)); })
          ->Unit(benchmark::kMillisecond)
          ->Repetitions(5);
      return full;
    };
    const auto floor = add("activities", goThrough);
    const auto addPreview = [&](const char* name, double limit, const char* path,
                                const json::object& body) {
      const auto full = add(name, [=](benchmark::State& state, Program& program) {
        preview(state, program, path, body);
      });
      expectRatio(full, floor, limit);
    };
    addPreview("site", 2.5, "rules.save",
               {{"field", "domain"}, {"pattern", "site12.fr"}, {"category", "loisir"}});
    addPreview("title", 4, "rules.save",
               {{"field", "title"}, {"pattern", "page 12"}, {"category", "loisir"}});
    addPreview("half", 10, "rules.save",
               {{"field", "app"}, {"pattern", "firefox"}, {"category", "loisir"}});
    addPreview("keywords", 6, "projects.save",
               {{"id", 3}, {"name", "Projet 3"}, {"keywords", "document 17, relecture du site"}});
    addPreview("archive", 3, "projects.archive", {{"id", 3}});
  }
  return true;
}();

}  // namespace
}  // namespace orvanta::bench
