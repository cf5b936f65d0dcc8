// What is erased from the store and still to be erased from its copies: kept in the store itself.
#pragma once

#include <vector>

#include "base/calendar.h"
#include "storage/erasure.h"
#include "storage/past.h"
#include "storage/transaction.h"

namespace orvanta::unfinished {

/// In the transaction that erases these from the store.
void add(Transaction& change, const std::vector<TimeRange>& times);
void add(Transaction& change, const Past& past);

/// For the copies; without steps when nothing is left to do.
Erasure erasure(Database& db);

/// All of it is done.
void clear(Database& db);

}  // namespace orvanta::unfinished
