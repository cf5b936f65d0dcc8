// What Camille, free-lance developer in Nantes who studies typography in the evening, does at the
// computer; and what nobody does, but every page must bear.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvanta {

struct Activity {
  int weight;  ///< how often, beside the others of its list
  const char* app;
  const char* domain;  ///< null but in a browser
  std::vector<std::string_view> titles;
  double shortest;  ///< seconds
  double longest;
};

/// By the time of day.
const std::vector<Activity>& workActivities();
const std::vector<Activity>& pauseActivities();
const std::vector<Activity>& eveningActivities();

/// Texts that attack, turn the direction of what follows, are far too long or hardly text at all.
const std::vector<std::string>& unusualTexts();

struct MadeProject {
  const char* name;
  const char* color;
  const char* category;
  bool archived;
  const char* keywords;
};

/// Their ids run from 1.
const std::vector<MadeProject>& madeProjects();

}  // namespace orvanta
