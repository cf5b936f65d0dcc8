#include "classify/rule_origins.h"

#include <fmt/ranges.h>

#include "classify/defaults.h"
#include "storage/rule.h"

namespace orvanta {
namespace {

// One of an earlier version of the program leaves the note of a rule that it deletes: the time
// tells another rule of this id.
constexpr auto kSources =
    "SELECT id, priority, created, origin, pending FROM rules "
    "LEFT JOIN rule_origins ON rule_id = id AND at IS created ORDER BY id";

// The rule was made in its transaction.
constexpr auto kTaughtBy =
    "SELECT max(changes.id) FROM changes, json_each(learned) WHERE value=? AND changes.at >= ?";

RuleOrigin impliedBy(std::optional<int64_t> priority) {
  if (priority == kAppRulePriority) return RuleOrigin::App;
  return priority == kDefaultPriority ? RuleOrigin::Builtin : RuleOrigin::User;
}

}  // namespace

std::vector<RuleSource> ruleSources(Database& db, bool* whole) {
  std::vector<RuleSource> sources;
  const bool all = db.scan(kSources, {}, [&](const Cursor& row) {
    const auto origin = parsed<RuleOrigin>(row.str(3).value_or(""));
    sources.push_back({.rule = row.int_(0).value_or(0),
                       .origin = origin ? *origin : impliedBy(row.int_(1)),
                       .at = row.dbl(2) > 0 ? std::optional(row.dbl(2)) : std::nullopt,
                       .pending = row.int_(4) == 1});
  });
  if (!all && whole) *whole = false;
  for (auto& source : sources) {
    if (source.origin != RuleOrigin::Learned) continue;
    db.scan(kTaughtBy, {source.rule, source.at},
            [&](const Cursor& row) { source.change = row.int_(0); });
  }
  return sources;
}

void noteLearned(Transaction& change, int64_t rule, double at) {
  change.run("INSERT OR REPLACE INTO rule_origins(rule_id, origin, at, pending) VALUES (?,?,?,1)",
             {rule, textOf(RuleOrigin::Learned), at});
}

void confirmRules(Transaction& change, const std::vector<int64_t>& rules) {
  change.run("UPDATE rule_origins SET pending=0 WHERE rule_id IN (SELECT value FROM json_each(?))",
             {fmt::format("[{}]", fmt::join(rules, ","))});
}

void forgetGoneRules(Transaction& change) {
  change.run("DELETE FROM rule_origins WHERE rule_id NOT IN (SELECT id FROM rules)");
}

}  // namespace orvanta
