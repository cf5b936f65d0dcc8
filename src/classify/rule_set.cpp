#include "classify/rule_set.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <tuple>
#include <utility>

#include "base/text.h"

namespace orvanta {

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

std::vector<Rule> loadRules(Database& db, bool* whole) {
  constexpr std::size_t kUsual = 300;
  static const auto kSelect = fmt::format("SELECT {} FROM rules", Rule::kColumns);
  std::vector<Rule> rules;
  rules.reserve(kUsual);
  const auto take = [&](const Cursor& row) { rules.push_back(Rule::read(row)); };
  if (!db.scan(kSelect, {}, take) && whole) *whole = false;
  return inMatchingOrder(std::move(rules));
}

bool replaces(const Rule& saved, const Rule& other) {
  return other.field == saved.field &&
         g_ascii_strcasecmp(other.pattern.c_str(), saved.pattern.c_str()) == 0;
}

Projects loadProjects(Database& db, bool* whole) {
  Projects projects;
  const auto take = [&](const Cursor& row) {
    auto project = Project::read(row);
    projects.insert_or_assign(project.id, std::move(project));
  };
  if (!db.each("SELECT * FROM projects", {}, take) && whole) *whole = false;
  return projects;
}

}  // namespace orvanta
