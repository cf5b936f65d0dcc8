// Time that stays with a project when its keywords no longer count.
#pragma once

#include <cstdint>

#include "classify/assign_range.h"
#include "storage/transaction.h"

namespace orvanta {

/// Gives to the project, by hand, all activity that counts to it by a keyword as the transaction
/// has left the store: its project, and no category, so that each span still counts as before, also
/// when the project is archived or its keywords change. What counts to it by a rule needs nothing:
/// rules hold for an archived project, too. Looks at every span.
AssignedTime keepTime(Transaction& change, int64_t project);

}  // namespace orvanta
