// When somebody was there last, kept in the store for the start after a run that was killed.
#pragma once

#include <cstdint>

#include "storage/transaction.h"

namespace orvanta::last_input {

/// The last input before which the span with this id is going on. Unix seconds.
struct Kept {
  int64_t span = 0;
  double at = 0;
  friend bool operator==(const Kept&, const Kept&) = default;
};

/// In the transaction that stores the span. One that is 0 says that somebody is there.
void keep(Transaction& change, const Kept& kept);

/// Ends with the last input what the run before recorded since, if that run was killed while
/// nobody was there: spans that began since are none, the one that was going on is cut. Before
/// anything is recorded.
void endKilledRun(Database& db);

}  // namespace orvanta::last_input
