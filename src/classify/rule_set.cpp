#include "classify/rule_set.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <limits>
#include <tuple>
#include <utility>

#include "base/text.h"

namespace orvanta {

namespace {

// Sorted here: SQLite takes as long to sort them as to read them.
std::vector<Rule> inMatchingOrder(std::vector<Rule> rules) {
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

}  // namespace

std::vector<Rule> loadRules(Database& db) {
  constexpr std::size_t kUsual = 300;
  static const auto kSelect = fmt::format("SELECT {} FROM rules", Rule::kColumns);
  std::vector<Rule> rules;
  rules.reserve(kUsual);
  db.scan(kSelect, {}, [&](const Cursor& row) { rules.push_back(Rule::read(row)); });
  return inMatchingOrder(std::move(rules));
}

std::vector<Rule> withRuleSaved(const std::vector<Rule>& rules, Rule rule) {
  rule.id = std::numeric_limits<int64_t>::max();
  rule.priority = 0;
  std::vector<Rule> after;
  after.reserve(rules.size() + 1);
  for (const auto& other : rules) {
    const bool replaced = other.field == rule.field &&
                          g_ascii_strcasecmp(other.pattern.c_str(), rule.pattern.c_str()) == 0;
    if (!replaced) after.push_back(other);
  }
  after.push_back(std::move(rule));
  return inMatchingOrder(std::move(after));
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
