// How far the user's goals and limits are, today, this week, and how they were kept before.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "base/enum_text.h"
#include "reports/date_range.h"
#include "storage/goal.h"

namespace orvanta {

class SpanReader;

/// What goals and their reports have in common.
struct GoalFacts {
  Goal goal;
  bool missing = false;  ///< its project no longer exists: nothing counts, nothing is told
  std::string project;   ///< its name
  std::string color;
};

/// Activity only: absences count for no goal.
struct GoalState : GoalFacts {
  DateRange dates;   ///< the day or week that it is about now
  double today = 0;  ///< seconds
  double week = 0;   ///< seconds since Monday; 0 where nobody asked
  bool weekly() const { return goal.period == GoalPeriod::Week; }
  double done() const { return weekly() ? week : today; }
  /// Whole percent of the goal, at most a thousand.
  int percent() const;
};

/// What the user is told of: 80 and 100, 0 for neither.
int levelOf(const GoalState& state);

/// By goal, in their order. Without `week` only goals that are about weeks let more than today be
/// read.
std::vector<GoalState> goalStates(SpanReader& reader, const Calendar& calendar, double now,
                                  const std::vector<Goal>& goals, bool week);

enum class GoalOutcome {
  Before,  ///< over before the goal was made
  Off,     ///< without any activity
  Missed,
  Kept,
  Running  ///< not over, and neither reached nor gone beyond
};
template <>
inline constexpr std::array<std::string_view, 5> kTexts<GoalOutcome>{"before", "off", "missed",
                                                                     "kept", "running"};

struct GoalHistory : GoalFacts {
  struct Piece {
    DateRange dates;
    double seconds = 0;
    GoalOutcome outcome = GoalOutcome::Off;
  };
  std::vector<Piece> pieces;  ///< days or whole weeks of the range, none that is yet to come
  std::size_t kept = 0;
  std::size_t counted = 0;  ///< kept and missed
  std::size_t streak = 0;   ///< kept one after the other up to the last, days off left aside
};

/// Reads each span once.
std::vector<GoalHistory> goalHistory(SpanReader& reader, const Calendar& calendar, double now,
                                     const std::vector<Goal>& goals, const DateRange& range);

}  // namespace orvanta
