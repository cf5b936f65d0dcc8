// The way back from changes.
#include <algorithm>
#include <boost/json/serialize.hpp>
#include <vector>

#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "classify/rule_set.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::array learnedRules(Database& db, const std::vector<int64_t>& ids) {
  json::array rules;
  if (ids.empty()) return rules;
  const auto projects = loadProjects(db);
  db.each(
      "SELECT field, pattern, category, project_id FROM rules "
      "WHERE id IN (SELECT value FROM json_each(?)) ORDER BY id",
      {json::serialize(json::array(ids.begin(), ids.end()))}, [&](const Cursor& row) {
        const auto project = projects.find(row.int_(3).value_or(0));
        rules.push_back({{"field", row.str(0).value_or("")},
                         {"pattern", row.str(1).value_or("")},
                         {"category", jsonOrNull(row.str(2))},
                         {"project", project != projects.end() ? json::value(project->second.name)
                                                               : json::value(nullptr)}});
      });
  return rules;
}

json::value list(Core& core, const Body& body) {
  constexpr int64_t kUsual = 50;
  const auto most = std::max<int64_t>(body.i("limit").value_or(kUsual), 0);
  json::array changes;
  for (const auto& change : core.history.list(static_cast<std::size_t>(most))) {
    const auto& note = change.note;
    changes.push_back(
        {{"id", change.id},
         {"kind", note.kind},
         {"label", note.label},
         {"at", change.at},
         {"spans", note.spans},
         {"seconds", note.seconds},
         {"learned", learnedRules(core.db, note.learnedRules)},
         {"learned_ids", json::array(note.learnedRules.begin(), note.learnedRules.end())},
         {"undone", change.undone}});
  }
  return changes;
}

json::value turned(Core& core, History::Outcome outcome, std::string_view done) {
  const std::string participle(done);
  switch (outcome) {
    case History::Outcome::Done:
      core.shell.refreshMenu();
      return orvanta::done();
    case History::Outcome::Unknown:
      throw AppError("ce changement ne peut plus être " + participle);
    case History::Outcome::Depends:
      throw AppError("ce changement ne peut pas être " + participle +
                     " : ce qu’il a touché a changé depuis");
    case History::Outcome::NotStored:
      break;
  }
  throw AppError(troubleOr(core, "ce changement n’a pas pu être " + participle));
}

json::value undo(Core& core, const Body& body) {
  return turned(core, core.history.undo(body.i("id").value_or(-1)), "annulé");
}

json::value redo(Core& core, const Body& body) {
  return turned(core, core.history.redo(body.i("id").value_or(-1)), "rétabli");
}

constexpr Route kRoutes[]{
    {"changes.list", RouteKind::Read, list},
    {"changes.undo", RouteKind::Write, undo},
    {"changes.redo", RouteKind::Write, redo},
};

}  // namespace

RouteTable changeRoutes() {
  return kRoutes;
}

}  // namespace orvanta
