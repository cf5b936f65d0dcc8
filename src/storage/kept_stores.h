// The files that were put aside beside the store.
#pragma once

#include <filesystem>
#include <vector>

#include "base/log.h"
#include "storage/data_location.h"
#include "storage/erasure.h"

namespace orvanta {

/// Those that restoring or repairing left: "orvanta.db.avant-restauration-…" and
/// "orvanta.db.endommagé-…", without their logs.
std::vector<std::filesystem::path> keptStores(const DataLocation& where);

/// Erases from the intact ones like from a backup; one that cannot be rewritten is removed. Damaged
/// ones stay as they are. Yields those that still hold what was to be erased.
std::vector<std::filesystem::path> eraseFromKeptStores(const DataLocation& where,
                                                       const Erasure& erasure, const Log& log);

/// Removes the damaged ones: nothing can be erased from them reliably. Yields those that are left.
std::vector<std::filesystem::path> removeDamagedStores(const DataLocation& where, const Log& log);

}  // namespace orvanta
