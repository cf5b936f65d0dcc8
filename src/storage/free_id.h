// Numbers that nobody else has, or may have again.
#pragma once

#include <cstdint>
#include <string_view>

#include "storage/changeset.h"
#include "storage/transaction.h"

namespace orvanta {

/// For a new row of `rules`, `projects` or `goals`: above those that there are, and above those
/// that the history of changes may bring back, and above those of projects that a kept timesheet is
/// about. Else what is taken back or made again would take the new one for another.
int64_t freeId(Transaction& change, std::string_view table);

}  // namespace orvanta
