#include "storage/repair.h"

#include <system_error>

#include "storage/file_connection.h"
#include "storage/store_swap.h"

namespace orvanta {
namespace fs = std::filesystem;
namespace {

// The file in the making and, under names that begin like its own, the copy that is worked on.
void removeLeftovers(const fs::path& fresh) {
  std::error_code error;
  for (fs::directory_iterator entry(fresh.parent_path(), error), end; !error && entry != end;
       entry.increment(error)) {
    std::error_code ignored;
    if (entry->path().filename().string().starts_with(fresh.filename().string())) {
      fs::remove_all(entry->path(), ignored);
    }
  }
}

}  // namespace

RepairResult repairStore(const fs::path& store, const SalvageOptions& options, double now,
                         const std::function<void()>& afterStep) {
  const fs::path fresh = store.string() + ".récupération";
  removeLeftovers(fresh);
  RepairResult result{.report = salvage(store, fresh, options)};
  afterStep();
  if (!result.report.made) return result;
  const auto swapped = replaceStore(
      store, fresh,
      {.why = "endommagé", .now = now, .calendar = options.calendar, .afterStep = afterStep});
  result.done = swapped.done;
  result.kept = swapped.kept;
  if (!result.done) {
    result.report.sentence = "La récupération a échoué : le dossier ne peut pas être modifié.";
    removeLeftovers(fresh);
  }
  return result;
}

}  // namespace orvanta
