// The store's tables, and how a file of any age is brought up to date.
#pragma once

#include <sqlite3.h>

#include <optional>
#include <string>

#include "storage/written.h"

namespace orvanta {

class Database;

/// Spans longer than this many seconds are found through an index of their own, see
/// SpanReader. A night away from the machine is one; a working day has none.
inline constexpr double kLongSpan = 14400;
/// What that index holds, in SQL. A little less, so that rounding loses none.
inline constexpr auto kIsLong = "end - start > 14000";

/// The form of the tables, as PRAGMA user_version holds it. A file of a later form is left as it
/// is.
inline constexpr int kSchemaVersion = 2;

/// Creates the tables and indexes in an empty file. False when that fails.
bool createSchema(sqlite3* connection);

enum class StoreAge {
  New,      ///< nothing in it yet
  Older,    ///< of an earlier form
  Unkempt,  ///< something else is missing, or an old setting too many
  Current,  ///< nothing is to be written
};

/// Only reads. Absent when that fails.
std::optional<StoreAge> ageOf(Database& db);

/// Creates what is missing, adds columns of later versions, fills missing settings and drops what
/// no version reads any more: all of it or, where that fails, nothing. Never overwrites a stored
/// value. Does not wait for another program: it fails then, and is to be repeated.
Written migrate(Database& db);

}  // namespace orvanta
