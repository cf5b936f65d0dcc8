#include "storage/kept_stores.h"

#include <algorithm>
#include <system_error>

#include "storage/backups.h"
#include "storage/file_connection.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr auto kDamaged = ".endommagé-";

bool isDamaged(const fs::path& file) {
  return file.filename().string().find(kDamaged) != std::string::npos;
}

bool removeWithLog(const fs::path& file, const Log& log) {
  const bool gone = removeDatabase(file);
  log("Orvanta: " + file.filename().string() +
      (gone ? " retiré : il contenait ce qui a été effacé" : " ne peut pas être retiré"));
  return gone;
}

}  // namespace

std::vector<fs::path> keptStores(const DataLocation& where) {
  const auto store = where.file().filename().string();
  std::vector<fs::path> found;
  std::error_code error;
  for (fs::directory_iterator entry(where.dir, error), end; !error && entry != end;
       entry.increment(error)) {
    const auto name = entry->path().filename().string();
    const bool kept =
        name.starts_with(store + ".avant-restauration-") || name.starts_with(store + kDamaged);
    const bool companion =
        name.ends_with("-wal") || name.ends_with("-shm") || name.ends_with("-journal");
    std::error_code ignored;
    if (kept && !companion && fs::is_regular_file(entry->symlink_status(ignored))) {
      found.push_back(entry->path());
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

std::vector<fs::path> eraseFromKeptStores(const DataLocation& where, const Erasure& erasure,
                                          const Log& log) {
  std::vector<fs::path> left;
  for (const auto& file : keptStores(where)) {
    if (isDamaged(file) || eraseFromCopy(file, erasure)) continue;
    if (!removeWithLog(file, log)) left.push_back(file);
  }
  return left;
}

std::vector<fs::path> removeDamagedStores(const DataLocation& where, const Log& log) {
  std::vector<fs::path> left;
  for (const auto& file : keptStores(where)) {
    if (isDamaged(file) && !removeWithLog(file, log)) left.push_back(file);
  }
  return left;
}

}  // namespace orvanta
