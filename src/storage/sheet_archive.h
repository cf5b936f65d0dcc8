// Timesheets as they were sent.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "storage/database.h"

namespace orvanta {

/// A row of `sheets`: nothing that happens later changes it. One without content was deleted.
struct FrozenSheet {
  int64_t id = 0;
  double created = 0;  ///< Unix seconds
  std::string title;
  std::string client;  ///< "" for all
  std::string from;    ///< "yyyy-MM-dd", as `to`, both included
  std::string to;
  int64_t version = 1;  ///< counts those of the same client, project and days
  std::string content;  ///< JSON
};

/// Stores it as the next version.
Written freezeSheet(Database& db, FrozenSheet& sheet, const std::optional<int64_t>& project);

/// The newest first, without their content; absent when they cannot be read.
std::optional<std::vector<FrozenSheet>> frozenSheets(Database& db);

/// Absent when there is none.
std::optional<FrozenSheet> frozenSheet(Database& db, int64_t id);

/// For good, but for its number where that is the highest: none is given again. `found` tells
/// whether there was one.
Written deleteSheet(Database& db, int64_t id, bool& found);

}  // namespace orvanta
