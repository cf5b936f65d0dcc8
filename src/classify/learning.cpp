#include "classify/learning.h"

#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <set>
#include <string_view>
#include <utility>

#include "classify/rule_origins.h"
#include "classify/rule_set.h"
#include "storage/ev.h"
#include "storage/free_id.h"
#include "storage/rule.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// Field and value of what an assignment may teach.
using Key = std::pair<RuleField, std::string>;

std::set<Key> keysOf(Transaction& change, const std::vector<int64_t>& ids) {
  std::set<Key> keys;
  change.each(
      "SELECT app, domain FROM events WHERE id IN (SELECT value FROM json_each(?)) "
      "AND bundle IS NOT ?",
      {json::serialize(json::array(ids.begin(), ids.end())), kManualBundle},
      [&](const Cursor& row) {
        const auto app = row.str(0);
        const auto domain = row.str(1);
        const auto value = domain ? domain : app;
        if (value && !value->empty())
          keys.emplace(domain ? RuleField::Domain : RuleField::App, *value);
      });
  return keys;
}

bool userHasRule(Transaction& change, const Key& key) {
  bool found = false;
  change.each("SELECT 1 FROM rules WHERE field=? AND lower(pattern)=lower(?) AND priority>=0",
              {textOf(key.first), key.second}, [&](const Cursor&) { found = true; });
  return found;
}

// Whether spans of the key carry this very assignment on two local days: those of the first and the
// last of them.
bool isHabit(Transaction& change, const Calendar& calendar, const Key& key,
             const std::optional<std::string>& category, std::optional<int64_t> projectId) {
  constexpr auto kOfDomain =
      "SELECT min(start), max(start) FROM events WHERE domain=? AND category IS ? "
      "AND project_id IS ? AND (category IS NOT NULL OR project_id IS NOT NULL)";
  constexpr auto kOfApp =
      "SELECT min(start), max(start) FROM events WHERE app=? AND domain IS NULL AND category IS ? "
      "AND project_id IS ? AND (category IS NOT NULL OR project_id IS NOT NULL)";
  bool habit = false;
  change.each(key.first == RuleField::Domain ? kOfDomain : kOfApp,
              {key.second, category, projectId}, [&](const Cursor& row) {
                habit = calendar.dateOf(row.dbl(0)) != calendar.dateOf(row.dbl(1));
              });
  return habit;
}

}  // namespace

std::vector<LearnedRule> afterManualAssign(Transaction& change, const Clock& clock,
                                           const Calendar& calendar,
                                           const std::vector<int64_t>& ids,
                                           const std::optional<std::string>& category,
                                           std::optional<int64_t> projectId) {
  if (!category && !projectId) return {};
  if (category && category->find('\'') != std::string::npos) return {};

  std::optional<std::string> project;
  if (projectId) {
    const auto projects = loadProjects(change);
    const auto found = projects.find(*projectId);
    if (found != projects.end()) project = found->second.name;
  }
  std::vector<LearnedRule> learned;
  for (const auto& key : keysOf(change, ids)) {
    if (userHasRule(change, key) || !isHabit(change, calendar, key, category, projectId)) continue;
    const auto now = clock();
    const auto id = change.run(
        "INSERT INTO rules(id, field, pattern, category, project_id, priority, created) "
        "VALUES (?,?,?,?,?,0,?)",
        {freeId(change, "rules"), textOf(key.first), key.second, category, projectId, now});
    noteLearned(change, id, now);
    learned.push_back({id, std::string(textOf(key.first)), key.second, category, project});
  }
  return learned;
}

}  // namespace orvanta
