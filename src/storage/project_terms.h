// What is agreed for a project: what an hour costs, how many there are.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "storage/database.h"
#include "storage/transaction.h"

namespace orvanta {

/// The most that is agreed: a million an hour, 31 years. What is beyond it is none.
inline constexpr int64_t kMostCentsPerHour = 100'000'000;
inline constexpr int64_t kMostBudget = 1'000'000'000;

/// A row of `project_terms`. What is absent is not agreed.
struct ProjectTerms {
  std::string currency = "EUR";  ///< ISO 4217
  std::optional<int64_t> rate;   ///< cents per hour
  bool billable = true;
  std::optional<int64_t> budget;          ///< seconds
  std::optional<std::string> budgetFrom;  ///< "yyyy-MM-dd" from which it is used; always, if absent
  std::optional<int64_t> rounding;        ///< minutes; 0 for none
  std::optional<std::string> roundingMode;   ///< "nearest", "up"
  std::optional<std::string> roundingScope;  ///< "day", "total"
};

/// By project, also of those that no longer exist.
using TermsByProject = std::map<int64_t, ProjectTerms>;

/// As scans see them; `whole`, if given, becomes false when some could not be read.
TermsByProject loadTerms(Database& db, bool* whole = nullptr);

/// Replaces those of the project.
void saveTerms(Transaction& change, int64_t project, const ProjectTerms& terms);

/// For a new project: none of one that had its number before.
void dropTerms(Transaction& change, int64_t project);

}  // namespace orvanta
