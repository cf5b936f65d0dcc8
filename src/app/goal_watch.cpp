#include "app/goal_watch.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace orvanta {

bool GoalWatch::due(const std::vector<Goal>& goals) {
  constexpr double kPeriod = 60;  // seconds
  const double now = clock_();
  const auto date = analytics_.today();
  const auto revision = db_.revision();
  const bool others = goals != goals_ || date != date_;
  if (!others && (revision == revision_ || std::abs(now - looked_) < kPeriod)) return false;
  looked_ = now;
  revision_ = revision;
  date_ = date;
  return true;
}

const std::vector<GoalState>& GoalWatch::look() {
  auto goals = loadGoals(db_);
  if (!goals || !due(*goals)) return states_;
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
