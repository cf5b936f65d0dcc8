// What the status menu says, as text.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capture/tracker.h"
#include "reports/goals.h"
#include "reports/report.h"
#include "storage/category.h"
#include "storage/store_health.h"
#include "telemetry/telemetry.h"

namespace orvanta {

/// A project that can be picked in the menu.
struct ProjectChoice {
  int64_t id = 0;
  std::string name;

  friend bool operator==(const ProjectChoice&, const ProjectChoice&) = default;
};

/// Everything that the menu tells, as it was at one moment. Durations are seconds.
struct MenuFacts {
  struct Leader {
    std::string name;
    double seconds = 0;
  };

  bool paused = false;
  std::optional<StoreTrouble> trouble;  ///< nothing can be stored
  std::optional<Tracker::Current> current;
  double active = 0;
  std::array<double, kTexts<Category>.size()> byCategory{};
  std::optional<Leader> leader;         ///< today's main project
  std::vector<ProjectChoice> projects;  ///< not archived, by name
  std::optional<int64_t> currentProject;
  double onProject = 0;  ///< since when it is the current one
  std::optional<Update> update;
  std::vector<GoalState> goals;  ///< and limits, how far they are

  /// Takes over today's numbers and the projects.
  void take(const DayTotals& day);
};

/// The texts. An absent one is not shown.
struct MenuContent {
  std::string statusLine;
  std::string todayLine;
  std::string catLine;
  std::optional<std::string> projLine;
  std::string projectTitle;
  std::string toggleTitle;
  std::optional<std::string> updateTitle;
  std::string label;    ///< beside the icon
  std::string toolTip;  ///< the day and the goals, as markup
};

MenuContent menuContent(const MenuFacts& facts);

/// A name of the user's or of a program's, fit for a menu.
std::string menuName(std::string_view name);

}  // namespace orvanta
