// What the user wants to reach, or not to go beyond.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/enum_text.h"
#include "storage/database.h"
#include "storage/transaction.h"

namespace orvanta {

enum class GoalSubject { Category, Project, App, Site };
template <>
inline constexpr std::array<std::string_view, 4> kTexts<GoalSubject>{"category", "project", "app",
                                                                     "site"};
enum class GoalPeriod { Day, Week };
template <>
inline constexpr std::array<std::string_view, 2> kTexts<GoalPeriod>{"day", "week"};

enum class GoalBound { Least, Most };
template <>
inline constexpr std::array<std::string_view, 2> kTexts<GoalBound>{"least", "most"};

/// A row of `goals`.
struct Goal {
  int64_t id = 0;
  GoalSubject subject = GoalSubject::Category;
  std::string name;                ///< of a category, an application or a site; "" of a project
  std::optional<int64_t> project;  ///< which may no longer exist
  GoalPeriod period = GoalPeriod::Day;
  GoalBound bound = GoalBound::Least;
  int64_t seconds = 0;
  double created = 0;  ///< Unix seconds

  friend bool operator==(const Goal&, const Goal&) = default;
};

/// In the order in which they were made, without what no version of ours has written. Absent when
/// they cannot be read.
std::optional<std::vector<Goal>> loadGoals(Database& db);

/// Inserts it, or replaces the one with its id. Yields the id.
int64_t saveGoal(Transaction& change, const Goal& goal);
void deleteGoal(Transaction& change, int64_t id);

// What the user has been told, in a table that no undo reaches: nothing is told twice.

/// How many percent of the goal were told of the day, or the week that begins on it ("yyyy-MM-dd");
/// 0 for nothing.
int64_t toldOfGoal(Database& db, int64_t goal, const std::string& day);
/// Forgets what was told of days before `oldest`.
Written setToldOfGoal(Database& db, int64_t goal, const std::string& day, int64_t percent,
                      const std::string& oldest);

}  // namespace orvanta
