// Watches the goals and limits while the program records.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "bridge/goal_text.h"
#include "reports/analytics.h"
#include "storage/database.h"

namespace orvanta {

/// Tells the user once when 80 % of a goal are reached and once when all of it is, of each day or
/// week, whatever happens in between: that is kept in the store. Used by one thread, any.
class GoalWatch {
 public:
  /// Shows the user a notice, in the place of what was last shown in its slot.
  using Tell = std::function<void(const std::string& slot, const GoalNotice& notice)>;

  /// `db` and `analytics` outlive it.
  GoalWatch(Database& db, const Analytics& analytics, Tell show, Clock clock)
      : db_(db), analytics_(analytics), show_(std::move(show)), clock_(std::move(clock)) {}

  /// To be called every few seconds. Reads nothing while nothing is written, and spans at most once
  /// a minute, unless the goals or the day are others. Yields how far the goals were then.
  const std::vector<GoalState>& look();

 private:
  void tell(const GoalState& state);

  Database& db_;
  const Analytics& analytics_;
  const Tell show_;
  const Clock clock_;

  double looked_ = 0;           // Unix seconds
  int64_t revision_ = -1;       // of the store, when spans were read
  int64_t goalsRevision_ = -1;  // when the goals were
  Date date_;
  std::vector<Goal> goals_;
  std::vector<GoalState> states_;
  // By goal and day; what could not be stored is not told again all the same.
  std::map<std::pair<int64_t, std::string>, int64_t> told_;
};

}  // namespace orvanta
