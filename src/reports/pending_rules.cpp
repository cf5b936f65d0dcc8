#include "reports/pending_rules.h"

#include <algorithm>
#include <set>
#include <utility>

#include "classify/current_rules.h"
#include "classify/rule_origins.h"
#include "storage/snapshot.h"

namespace orvanta {
namespace {

double taughtSeconds(Database& db, const Rule& rule) {
  constexpr auto kOfDomain =
      "SELECT sum(end - start) FROM events WHERE domain=? AND category IS ? AND project_id IS ? "
      "AND (category IS NOT NULL OR project_id IS NOT NULL) AND end > start AND idle IS NOT 1";
  constexpr auto kOfApp =
      "SELECT sum(end - start) FROM events WHERE app=? AND domain IS NULL AND category IS ? "
      "AND project_id IS ? AND (category IS NOT NULL OR project_id IS NOT NULL) AND end > start "
      "AND idle IS NOT 1";
  double seconds = 0;
  db.scan(rule.field == textOf(RuleField::Domain) ? kOfDomain : kOfApp,
          {rule.pattern, rule.category, rule.projectId},
          [&](const Cursor& row) { seconds = row.dbl(0); });
  return seconds;
}

std::shared_ptr<const RuleBook> without(const RuleBook& book, int64_t rule) {
  auto rules = book.rules();
  std::erase_if(rules, [&](const Rule& one) { return one.id == rule; });
  return std::make_shared<const RuleBook>(std::move(rules), book.projects());
}

PendingRule::Doubt doubtOf(const PendingRule& pending, std::set<int64_t> projects) {
  using Doubt = PendingRule::Doubt;
  if (pending.rule.projectId) projects.insert(*pending.rule.projectId);
  if (projects.size() > 1) return Doubt::Projects;
  return pending.effect.changed.seconds > pending.taught ? Doubt::More : Doubt::None;
}

}  // namespace

std::vector<PendingRule> pendingRules(Database& db, const Calendar& calendar) {
  const Snapshot snapshot(db);
  const auto book = CurrentRules(db).book();
  std::vector<PendingRule> list;
  std::vector<BookChange> changes;
  for (const auto& source : ruleSources(db)) {
    if (!source.pending) continue;
    const auto rule = std::find_if(book->rules().begin(), book->rules().end(),
                                   [&](const Rule& one) { return one.id == source.rule; });
    if (rule == book->rules().end()) continue;
    const auto project = book->projects().find(rule->projectId.value_or(0));
    list.push_back({.rule = *rule,
                    .project = project != book->projects().end()
                                   ? std::optional(project->second.name)
                                   : std::nullopt,
                    .at = source.at.value_or(0),
                    .taught = taughtSeconds(db, *rule)});
    changes.push_back({without(*book, rule->id), book});
  }
  if (list.empty()) return list;
  auto effects = effectsOf(db, calendar, changes);
  for (std::size_t i = 0; i < list.size(); ++i) {
    const auto& projects = effects[i].projectsBefore;
    list[i].effect = std::move(static_cast<Effect&>(effects[i]));
    list[i].doubt = doubtOf(list[i], {projects.begin(), projects.end()});
  }
  return list;
}

}  // namespace orvanta
