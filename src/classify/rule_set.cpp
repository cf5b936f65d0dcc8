#include "classify/rule_set.h"

#include <fmt/format.h>

namespace orvanta {

std::vector<Rule> loadRules(Database& db) {
  static const auto kSelect = fmt::format(
      "SELECT {} FROM rules ORDER BY priority DESC, length(pattern) DESC, id", Rule::kColumns);
  std::vector<Rule> rules;
  db.scan(kSelect, {}, [&](const Cursor& row) { rules.push_back(Rule::read(row)); });
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
