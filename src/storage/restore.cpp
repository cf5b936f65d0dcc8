#include "storage/restore.h"

#include <fmt/format.h>

#include <system_error>

#include "storage/coverage.h"
#include "storage/file_connection.h"
#include "storage/moving.h"
#include "storage/store_copy.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

// Active spans of `one` that lie, for a second or more, where the other has none. Absent when not
// all of them can be read.
std::optional<RestorePreview::Difference> onlyIn(const FileConnection& one, const Coverage& other) {
  constexpr double kWorthNaming = 1;  // second
  RestorePreview::Difference difference;
  const int code =
      one.each("SELECT start, end FROM events WHERE idle=0", {}, [&](const Cursor& row) {
        const double start = row.dbl(0);
        const double end = row.dbl(1);
        const double alone = end - start - other.covered(start, end);
        if (!(alone >= kWorthNaming)) return;
        ++difference.spans;
        difference.seconds += alone;
      });
  return code == SQLITE_DONE ? std::optional(difference) : std::nullopt;
}

// Also where the store is a link to another folder: what is beside it is beside the file.
fs::path realStore(const DataLocation& where) {
  std::error_code error;
  auto file = fs::weakly_canonical(where.file(), error);
  return error ? where.file() : file;
}

}  // namespace

RestorePreview restorePreview(const DataLocation& where, const fs::path& backup) {
  RestorePreview preview{.now = readStoreFacts(where.file()), .backup = checkStore(backup)};
  if (!preview.backup.whole) return preview;
  const auto today = FileConnection::reading(where.file());
  const auto earlier = FileConnection::reading(backup);
  if (!today || !earlier) return preview;
  preview.lost = onlyIn(today, coverageOf(earlier));
  if (preview.lost) preview.regained = onlyIn(earlier, coverageOf(today));
  return preview;
}

RestoreResult restoreStore(const DataLocation& where, const fs::path& backup,
                           const RestoreOptions& options) {
  const auto failed = [](std::string error) { return RestoreResult{.error = std::move(error)}; };
  const auto store = realStore(where);
  std::error_code error;
  if (!fs::is_regular_file(backup, error)) return failed("ce fichier n’existe pas");
  if (fs::equivalent(store, backup, error)) return failed("c’est la base elle-même");
  const auto check = checkStore(backup, {.stop = options.stop});
  if (!check.whole) {
    return failed(check.finished
                      ? "cette sauvegarde n’est pas utilisable : " + check.problems.front()
                      : "interrompu");
  }
  const fs::path ready = store.string() + ".restauration";
  removeDatabase(ready);  // of one that was killed
  const auto copy =
      copyStore(backup, ready, {.stop = options.stop, .freeSpace = options.freeSpace});
  if (!copy.made) return failed(copy.stopped ? "interrompu" : copy.error);
  options.afterStep();
  if (const auto why = makeOurs(ready); !why.empty()) {
    removeDatabase(ready);
    return failed("cette sauvegarde n’est pas utilisable : " + why);
  }
  options.afterStep();
  const auto swapped = replaceStore(store, ready,
                                    {.why = "avant-restauration",
                                     .now = options.now,
                                     .calendar = options.calendar,
                                     .afterStep = options.afterStep});
  fs::remove(ready, error);
  if (!swapped.done) return failed("le dossier de la base ne peut pas être modifié");
  return {.done = true, .kept = swapped.kept, .error = {}};
}

}  // namespace orvanta
