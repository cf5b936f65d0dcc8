#include "classify/rule_set.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "base/text.h"

namespace orvanta {

// Sorted here: SQLite takes as long to sort them as to read them.
std::vector<Rule> loadRules(Database& db) {
  constexpr std::size_t kUsual = 300;
  static const auto kSelect = fmt::format("SELECT {} FROM rules", Rule::kColumns);
  std::vector<Rule> rules;
  rules.reserve(kUsual);
  db.scan(kSelect, {}, [&](const Cursor& row) { rules.push_back(Rule::read(row)); });

  struct Place {
    int64_t priority;
    std::size_t length;
    int64_t id;
    std::size_t at;
  };
  std::vector<Place> order;
  order.reserve(rules.size());
  for (const auto& rule : rules) {
    order.push_back({rule.priority, codePoints(rule.pattern), rule.id, order.size()});
  }
  std::sort(order.begin(), order.end(), [](const Place& a, const Place& b) {
    return std::tie(b.priority, b.length, a.id) < std::tie(a.priority, a.length, b.id);
  });
  std::vector<Rule> sorted;
  sorted.reserve(rules.size());
  for (const auto& place : order) sorted.push_back(std::move(rules[place.at]));
  return sorted;
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
