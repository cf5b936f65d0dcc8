#include "export_memory.h"

#include <fmt/format.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "base/calendar.h"
#include "base/clock.h"
#include "store_maker/bench_stores.h"

namespace orvanta::bench {
namespace {

constexpr int kTenYears = 10 * kDaysPerYear;

// MiB; negative when the program failed.
double peakOfExport(int days) {
  const auto home = storeLocation(kTenYears).dir.parent_path().string();
  const auto last = Calendar().dateOf(wallClock());
  const auto from = last.plusDays(1 - days).iso();
  const auto to = last.iso();
  const auto child = fork();
  if (child == 0) {
    setenv("XDG_DATA_HOME", home.c_str(), 1);
    execl(ORVANTA_PROGRAM, ORVANTA_PROGRAM, "--export", from.c_str(), to.c_str(), "/dev/null",
          nullptr);
    _exit(1);
  }
  int status = 1;
  rusage usage{};
  constexpr double kKibPerMib = 1024;
  if (wait4(child, &status, 0, &usage) != child || status != 0) return -1;
  return static_cast<double>(usage.ru_maxrss) / kKibPerMib;
}

}  // namespace

void printExportMemory() {
  openStore(kTenYears);
  fmt::print("peak memory of an export: {:.1f} MiB for ten years, {:.1f} MiB for one day\n",
             peakOfExport(kTenYears), peakOfExport(1));
}

}  // namespace orvanta::bench
