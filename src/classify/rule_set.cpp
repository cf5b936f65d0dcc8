#include "classify/rule_set.h"

namespace orvanta {

std::vector<Rule> loadRules(Database& db) {
  std::vector<Rule> rules;
  for (const auto& row :
       db.query("SELECT * FROM rules ORDER BY priority DESC, length(pattern) DESC, id")) {
    rules.push_back(Rule::fromRow(row));
  }
  return rules;
}

Projects loadProjects(Database& db) {
  Projects projects;
  for (const auto& row : db.query("SELECT * FROM projects")) {
    auto project = Project::fromRow(row);
    projects.insert_or_assign(project.id, std::move(project));
  }
  return projects;
}

}  // namespace orvanta
