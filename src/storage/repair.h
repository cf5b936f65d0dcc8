// A damaged store replaced by what can be saved of it.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "storage/salvage.h"

namespace orvanta {

struct RepairResult {
  bool done = false;  ///< the store is a whole file again; otherwise it is as it was
  std::optional<std::filesystem::path> kept;  ///< the damaged file, as it is
  SalvageReport report;                       ///< what was saved, and the sentence for the user
};

/// Salvages the store into a new file beside it, then swaps the two, see store_swap.h: the damaged
/// one is kept as "orvanta.db.endommagé-DATE". Killed before the swap it leaves the damaged store
/// in its place, and the next call begins anew; what a killed one left is removed first. Nobody,
/// this process included, may have the store open. `now` in Unix seconds; `afterStep` as in Aside.
RepairResult repairStore(
    const std::filesystem::path& store, const SalvageOptions& options, double now,
    const std::function<void()>& afterStep = [] {});

}  // namespace orvanta
