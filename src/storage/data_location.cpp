#include "storage/data_location.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <system_error>

namespace orvanta {
namespace fs = std::filesystem;
namespace {

void moveLegacyData(const DataLocation& where, const Log& log) {
  std::error_code ignored;
  fs::rename(where.legacyDir, where.dir, ignored);
  for (const std::string suffix : {"", "-wal", "-shm"}) {
    fs::rename(where.dir / ("lumaplan.db" + suffix), where.dir / ("orvanta.db" + suffix), ignored);
  }
  log("Orvanta: données migrées depuis Lumaplan");
}

}  // namespace

DataLocation DataLocation::under(const fs::path& base) {
  return {base / "Orvanta", base / "Lumaplan"};
}

DataLocation DataLocation::ofUser() {
  return under(g_get_user_data_dir());
}

void prepare(const DataLocation& where, const Log& log) {
  std::error_code ignored;
  if (!fs::exists(where.dir, ignored) && fs::exists(where.legacyDir, ignored)) {
    moveLegacyData(where, log);
  }
  g_mkdir_with_parents(where.dir.c_str(), S_IRWXU);
  chmod(where.dir.c_str(), S_IRWXU);
  // SQLite gives the -wal and -shm files the mode of the database file.
  constexpr mode_t kOwnerOnly = S_IRUSR | S_IWUSR;
  // One that is there is not opened: closing it would end the locks that SQLite has on it.
  const int made = open(where.file().c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnerOnly);
  if (made >= 0) close(made);
  chmod(where.file().c_str(), kOwnerOnly);
}

}  // namespace orvanta
