#include "backup_cost.h"

#include <fmt/format.h>

#include <chrono>
#include <filesystem>

#include "base/files.h"
#include "storage/store_copy.h"
#include "store_maker/bench_stores.h"

namespace orvanta::bench {
namespace {

namespace fs = std::filesystem;

template <class Work>
double secondsOf(Work work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

void printOf(int days, const char* name) {
  openStore(days);
  const auto store = storeLocation(days).file();
  const fs::path copy = store.string() + ".copie";
  const fs::path backup = store.string() + ".sauvegarde";
  fs::remove(copy);
  fs::remove(backup);
  const double bare = secondsOf([&] {
    fs::copy_file(store, copy);
    syncToDisk(copy);
  });
  const auto made = copyStore(store, backup);
  constexpr double kMebi = 1 << 20;
  fmt::print("a backup of {}: {:.1f} MiB, {:.1f} s{}, a bare copy {:.1f} s\n", name,
             static_cast<double>(made.bytes) / kMebi, made.seconds, made.made ? "" : " (failed)",
             bare);
  fs::remove(copy);
  fs::remove(backup);
}

}  // namespace

void printBackupCost() {
  printOf(kDaysPerYear, "one year");
  printOf(10 * kDaysPerYear, "ten years");
}

}  // namespace orvanta::bench
