// What a goal is called, in French.
#pragma once

#include <string>
#include <vector>

#include "reports/goals.h"

namespace orvanta {

/// Whom it is about: "Travail", a project's name, an application, a site. One line.
std::string nameOfGoal(const GoalFacts& facts);

/// "Travail, au moins 8 h 00 par jour".
std::string goalInWords(const GoalFacts& facts);

/// "Objectifs : Travail 6 h 24 sur 8 h 00 · Loisir 48 min sur 1 h 00, …", of the first few; ""
/// where there are none.
std::string goalsLine(const std::vector<GoalState>& states);

struct GoalNotice {
  std::string title;
  std::string sentence;
};
/// For those who come near a goal (80) or reach it (100).
GoalNotice noticeOf(const GoalState& state, int level);

}  // namespace orvanta
