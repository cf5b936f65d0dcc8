#include "app/goal_watch.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace orvanta {

const std::vector<GoalState>& GoalWatch::look() {
  constexpr double kPeriod = 60;  // seconds
  const double now = clock_();
  const auto date = analytics_.today();
  const auto revision = db_.revision();
  const bool due = date != date_ || (revision != revision_ && std::abs(now - looked_) >= kPeriod);
  if (!due && revision == goalsRevision_) return states_;
  auto goals = loadGoals(db_);
  if (!goals) return states_;
  goalsRevision_ = revision;
  if (!due && *goals == goals_) return states_;
  looked_ = now;
  revision_ = revision;
  date_ = date;
  goals_ = std::move(*goals);
  states_ = analytics_.goals(goals_, false);
  for (const auto& state : states_) tell(state);
  return states_;
}

void GoalWatch::tell(const GoalState& state) {
  constexpr int kRemembered = 60;  // days: further back no clock and no time zone goes
  const int level = levelOf(state);
  if (level == 0) return;
  const auto day = state.dates.from.iso();
  auto [told, unknown] = told_.try_emplace({state.goal.id, day}, 0);
  if (unknown) told->second = toldOfGoal(db_, state.goal.id, day);
  if (level <= told->second) return;
  told->second = level;
  // Before it is told: better not at all than twice.
  setToldOfGoal(db_, state.goal.id, day, level, date_.plusDays(-kRemembered).iso()).forget();
  show_("goal-" + std::to_string(state.goal.id), noticeOf(state, level));
}

}  // namespace orvanta
