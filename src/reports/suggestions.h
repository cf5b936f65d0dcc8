// Which unassigned activity looks like one of the user's projects.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "reports/report.h"
#include "reports/shares.h"
#include "reports/tally.h"
#include "storage/ev.h"
#include "storage/project.h"
#include "storage/rule.h"

namespace orvanta {

/// The words of a text that say something about what it is: lower-cased, without accents, of at
/// least 4 characters, none that every site and every project has ("www", "client").
std::set<std::string> tokens(std::string_view text);

/// Gathers activity without a project by domain (by application where there is none) and proposes
/// for each that took 20 minutes the first project, by id and not archived, that it resembles: one
/// with a common token, or with a token or keyword that occurs in it.
class SuggestionFinder {
 public:
  /// What a rule of `rules` already sends to a project is not proposed. `projects` outlives the
  /// finder.
  SuggestionFinder(const std::vector<Rule>& rules, const Projects& projects);

  /// Counts in a classified span. All spans have their texts in one pool.
  void add(const Ev& ev);

  /// By falling seconds.
  std::vector<Suggestion> suggestions() const;

 private:
  struct Group {
    std::string key;  // field|lower-cased value
    double seconds = 0;
    bool isDomain = false;
    std::string value;  // as first seen
  };

  // A project and what in a value would point to it.
  struct Candidate {
    const Project* project;
    std::set<std::string> marks;
  };

  const Project* resembling(const std::string& value) const;

  std::vector<Candidate> candidates_;
  std::set<std::string> known_;  // keys that rules send to a project
  Shares<TextSeconds> domains_;
  Shares<TextSeconds> apps_;
};

}  // namespace orvanta
