// Stores of made-up data, the same every time: for tests, pictures, measuring and looking around.
#pragma once

#include <optional>
#include <string_view>

#include "storage/data_location.h"

namespace orvanta {

enum class StoreKind {
  Person,  ///< a free-lance developer's days, with projects, rules and corrections
  Odd,     ///< the same with unusual text wherever text comes from the outside
  Empty,   ///< nothing recorded yet
  New      ///< the same, and the welcome not seen
};

/// "person", "odd", "empty", "new".
std::optional<StoreKind> storeKind(std::string_view name);

struct StorePlan {
  StoreKind kind = StoreKind::Person;
  double now = 0;  ///< nothing is later; Unix seconds
  int days = 31;   ///< the last of them today
  int blocks = 0;  ///< where not 0, the last day is as many blocks
};

/// Makes the store, where there must be none. False when it could not be written.
bool makeStore(const DataLocation& where, const StorePlan& plan);

}  // namespace orvanta
