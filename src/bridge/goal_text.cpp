#include "bridge/goal_text.h"

#include <fmt/format.h>

#include "base/display_text.h"
#include "bridge/change_labels.h"

namespace orvanta {
namespace {

constexpr std::size_t kLongest = 60;

std::string progress(const GoalState& state) {
  return fmt::format("{} sur {}", fmtDur(state.done()),
                     fmtDur(static_cast<double>(state.goal.seconds)));
}

}  // namespace

std::string nameOfGoal(const GoalFacts& facts) {
  const auto& goal = facts.goal;
  if (goal.subject == GoalSubject::Project) {
    return facts.missing ? "projet supprimé" : oneLine(facts.project, kLongest);
  }
  const auto category =
      goal.subject == GoalSubject::Category ? parsed<Category>(goal.name) : std::nullopt;
  return category ? std::string(labels::nameOf(*category)) : oneLine(goal.name, kLongest);
}

std::string goalInWords(const GoalFacts& facts) {
  const auto& goal = facts.goal;
  return fmt::format("{}, {} {} {}", nameOfGoal(facts),
                     goal.bound == GoalBound::Least ? "au moins" : "au plus",
                     fmtDur(static_cast<double>(goal.seconds)),
                     goal.period == GoalPeriod::Day ? "par jour" : "par semaine");
}

std::string goalsLine(const std::vector<GoalState>& states) {
  constexpr std::size_t kMost = 3;
  std::string line;
  std::size_t shown = 0;
  for (const auto& state : states) {
    if (state.missing) continue;
    if (shown++ == kMost) return line + ", …";
    line += line.empty() ? "Objectifs\u00a0: " : " · ";
    line += nameOfGoal(state) + " " + progress(state);
    if (state.weekly()) line += " cette semaine";
  }
  return line;
}

GoalNotice noticeOf(const GoalState& state, int level) {
  constexpr int kReached = 100;
  const std::string what = state.goal.bound == GoalBound::Least ? "Objectif" : "Limite";
  const std::string soon = state.goal.bound == GoalBound::Least ? "atteint" : "atteinte";
  return {what + (level >= kReached ? " " : " bientôt ") + soon,
          fmt::format("{}\u00a0: {} {}.", nameOfGoal(state), progress(state),
                      state.weekly() ? "cette semaine" : "aujourd’hui")};
}

}  // namespace orvanta
