// Writes imported time into the store.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "imports/import_plan.h"
#include "storage/settings.h"
#include "storage/transaction.h"

namespace orvanta {

/// What all of its spans have as `bundle`.

/// Projects by name.
using ProjectIds = std::map<std::string, int64_t, std::less<>>;

/// Writes the spans of a plan as the capture would under these settings: of excluded sites neither
/// title nor address, and none that retention would have emptied by `now`. An absence (category
/// "inactif") is stored as one; a category that is none of ours is left out.
void storeImport(Transaction& change, const ImportPlan& plan, const ProjectIds& projects,
                 const Settings& settings, double now);

}  // namespace orvanta
