// Stores of any age to measure on.
#pragma once

#include <filesystem>
#include <memory>

#include "storage/database.h"

namespace orvanta::bench {

inline constexpr int kSpansPerDay = 800;
inline constexpr int kDaysPerYear = 365;

/// A store with `days` days of spans, the last of them today, made once and kept in the temporary
/// folder: a working day of 15 hours in a dozen applications and some hundred sites and titles a
/// week, with the built-in rules, ten projects with keywords, and one idle span a night.
std::unique_ptr<Database> openStore(int days);

/// A copy of that store for changing it, with titles and addresses stripped but for the last 30
/// days, as a retention of 30 days leaves it.
std::unique_ptr<Database> openStoreToChange(int days);

/// Where openStore() keeps its store.
DataLocation storeLocation(int days);

/// Local midnight of today, Unix seconds.
double today();

}  // namespace orvanta::bench
