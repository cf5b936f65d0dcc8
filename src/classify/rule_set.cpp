#include "classify/rule_set.h"

#include <fmt/format.h>
#include <glib.h>

#include <algorithm>
#include <functional>
#include <tuple>
#include <utility>

#include "base/text.h"

namespace orvanta {

namespace {

// What is not in `rules` yet comes after those that are as long.
constexpr auto kBefore =
    "SELECT count(*) FROM rules WHERE priority > 0 OR (priority = 0 AND length(pattern) >= ?)";

// As SQLite counts it: up to a NUL.
std::size_t lengthOf(const Rule& rule) {
  return codePoints(std::string_view(rule.pattern).substr(0, rule.pattern.find('\0')));
}

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
    order.push_back({rule.priority, lengthOf(rule), rule.id, order.size()});
  }
  std::sort(order.begin(), order.end(), [](const Place& a, const Place& b) {
    return std::tie(b.priority, b.length, a.id) < std::tie(a.priority, a.length, b.id);
  });
  std::vector<Rule> sorted;
  sorted.reserve(rules.size());
  for (const auto& place : order) sorted.push_back(std::move(rules[place.at]));
  return sorted;
}

using Visit = std::function<void(const Cursor&)>;

// Sorted here, since SQLite takes as long to sort them as to read them; but for a priority that is
// no integer, as another program may have written it: only SQLite knows where that belongs.
std::vector<Rule> rulesBy(const std::function<void(const std::string& sql, const Visit&)>& read) {
  constexpr std::size_t kUsual = 300;
  static const auto kSelect =
      fmt::format("SELECT {}, typeof(priority) = 'integer' FROM rules", Rule::kColumns);
  static const auto kSorted = kSelect + " ORDER BY priority DESC, length(pattern) DESC, id";
  std::vector<Rule> rules;
  rules.reserve(kUsual);
  bool sortable = true;
  const auto take = [&](const Cursor& row) {
    rules.push_back(Rule::read(row));
    sortable = sortable && row.int_(row.columns() - 1) == 1;
  };
  read(kSelect, take);
  if (sortable) return inMatchingOrder(std::move(rules));
  rules.clear();
  read(kSorted, take);
  return rules;
}

}  // namespace

std::vector<Rule> loadRules(Database& db, bool* whole) {
  return rulesBy([&](const std::string& sql, const Visit& take) {
    if (!db.scan(sql, {}, take) && whole) *whole = false;
  });
}

std::vector<Rule> loadRules(Transaction& change) {
  return rulesBy([&](const std::string& sql, const Visit& take) { change.each(sql, {}, take); });
}

std::size_t placeOf(Database& db, const Rule& saved) {
  int64_t before = 0;
  db.scan(kBefore, {static_cast<int64_t>(lengthOf(saved))},
          [&](const Cursor& row) { before = row.int_(0).value_or(0); });
  return static_cast<std::size_t>(before);
}

std::string ruleKey(std::string_view field, std::string_view pattern) {
  return std::string(field) + "|" + lowerCase(pattern);
}

bool replaces(const Rule& saved, const Rule& other) {
  return other.field == saved.field &&
         g_ascii_strcasecmp(other.pattern.c_str(), saved.pattern.c_str()) == 0;
}

namespace {

constexpr auto kProjects = "SELECT * FROM projects";

auto into(Projects& projects) {
  return [&](const Cursor& row) {
    auto project = Project::read(row);
    projects.insert_or_assign(project.id, std::move(project));
  };
}

}  // namespace

Projects loadProjects(Database& db, bool* whole) {
  Projects projects;
  if (!db.scan(kProjects, {}, into(projects)) && whole) *whole = false;
  spellClientsAlike(projects);
  return projects;
}

Projects loadProjects(Transaction& change) {
  Projects projects;
  change.each(kProjects, {}, into(projects));
  spellClientsAlike(projects);
  return projects;
}

}  // namespace orvanta
