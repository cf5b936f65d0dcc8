// An earlier store in the place of today's.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>

#include "base/calendar.h"
#include "base/files.h"
#include "storage/data_location.h"
#include "storage/store_check.h"
#include "storage/store_swap.h"

namespace orvanta {

/// What restoring a backup would change.
struct RestorePreview {
  StoreFacts now;
  StoreCheck backup;
  // Activity (no absences) that only one of the two has recorded, by time. Absent when one of them
  // cannot be read in full.
  struct Difference {
    int64_t spans = 0;
    double seconds = 0;
  };
  std::optional<Difference> lost;      ///< recorded now, but not in the backup
  std::optional<Difference> regained;  ///< only in the backup
};

/// Reads both; may be called while the store is open, from any thread. Takes a second or two for
/// years of spans.
RestorePreview restorePreview(const DataLocation& where, const std::filesystem::path& backup);

struct RestoreResult {
  bool done = false;
  std::optional<std::filesystem::path>
      kept;           ///< today's file, put aside; absent when there was none
  std::string error;  ///< French sentence without full stop
};

struct RestoreOptions {
  double now = 0;  ///< Unix seconds
  Calendar calendar;
  FreeSpace freeSpace = orvanta::freeSpace;
  std::stop_token stop;
  std::function<void()> afterStep = [] {};  ///< see Aside
};

/// Checks the backup, which may be anybody's file, copies it beside the store, makes the copy ours
/// (see moving.h) and then swaps the two, see store_swap.h: today's file is kept as
/// "orvanta.db.avant-restauration-DATE". Until the swap nothing is changed, and a
/// kill during it loses neither. The backup stays. Nobody may have the store open.
RestoreResult restoreStore(const DataLocation& where, const std::filesystem::path& backup,
                           const RestoreOptions& options);

}  // namespace orvanta
