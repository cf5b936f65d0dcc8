// Up to which numbers the history of changes may bring rows back.
#pragma once

#include <optional>

#include "storage/changeset.h"
#include "storage/transaction.h"

namespace orvanta {

/// Nothing where they were never marked, or cannot be understood.
std::optional<HighestIds> markedIds(Transaction& change);

/// The first marks, for all that the history holds.
void markIds(Transaction& change, const HighestIds& ids);

/// Leaves higher marks as they are, and does nothing where there are none: whoever makes the first
/// ones looks at the whole history.
void raiseMarks(Transaction& change, const HighestIds& ids);

}  // namespace orvanta
