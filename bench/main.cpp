#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "backup_cost.h"
#include "export_memory.h"
#include "ratios.h"

namespace orvanta::bench {
namespace {

struct Expectation {
  std::string name, floor;
  double limit;
};

std::vector<Expectation>& expectations() {
  static std::vector<Expectation> list;
  return list;
}

// Keeps the fastest repetition of each benchmark, by processor time: noise only ever adds, and
// waiting for others is none of ours.
class Fastest : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      if (run.run_type != Run::RT_Iteration) continue;
      auto& best = seconds_.try_emplace(run.run_name.function_name, 1e9).first->second;
      best = std::min(best, run.cpu_accumulated_time / static_cast<double>(run.iterations));
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Whether every ratio that was measured keeps its limit.
  bool printRatios() const {
    bool kept = true;
    for (const auto& [name, floor, limit] : expectations()) {
      if (!seconds_.contains(name) || !seconds_.contains(floor)) continue;
      const double ratio = seconds_.at(name) / seconds_.at(floor);
      fmt::print("{:5.2f} times (at most {})  {} / {}\n", ratio, limit, name, floor);
      kept = kept && ratio <= limit;
    }
    return kept;
  }

 private:
  std::map<std::string, double> seconds_;
};

}  // namespace

void expectRatio(const std::string& name, const std::string& floor, double limit) {
  expectations().push_back({name, floor, limit});
}

}  // namespace orvanta::bench

int main(int argc, char** argv) {
  // The repetitions of all in turn: a slow moment of the machine falls on both sides of a ratio.
  std::string inTurn = "--benchmark_enable_random_interleaving=true";
  std::vector<char*> words(argv, argv + argc);
  words.insert(words.begin() + 1, inTurn.data());
  argc = static_cast<int>(words.size());
  benchmark::Initialize(&argc, words.data());
  orvanta::bench::Fastest reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  fmt::print("\n");
  orvanta::bench::printExportMemory();
  orvanta::bench::printBackupCost();
  return reporter.printRatios() ? 0 : 1;
}
