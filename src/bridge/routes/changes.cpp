// What a change would do, and the way back from changes.
#include <algorithm>
#include <array>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <vector>

#include "bridge/change_labels.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::array learnedRules(Database& db, const std::vector<int64_t>& ids) {
  json::array rules;
  if (ids.empty()) return rules;
  db.each(
      "SELECT field, pattern, rules.category, name FROM rules "
      "LEFT JOIN projects ON projects.id = project_id "
      "WHERE rules.id IN (SELECT value FROM json_each(?)) ORDER BY rules.id",
      {json::serialize(json::array(ids.begin(), ids.end()))}, [&](const Cursor& row) {
        rules.push_back({{"field", row.str(0).value_or("")},
                         {"pattern", row.str(1).value_or("")},
                         {"category", jsonOrNull(row.str(2))},
                         {"project", jsonOrNull(row.str(3))}});
      });
  return rules;
}

json::value effectOf(const std::string& text) {
  boost::system::error_code broken;
  auto effect = json::parse(text, broken);
  return !broken && effect.is_object() ? effect : json::value(nullptr);
}

json::value list(Core& core, const Body& body) {
  constexpr int64_t kUsual = 50;
  const auto most = std::max<int64_t>(body.i("limit").value_or(kUsual), 0);
  const auto known = core.history.list(static_cast<std::size_t>(most));
  if (!known) throw AppError(troubleOr(core, "l’historique des changements ne peut pas être lu"));
  json::array changes;
  for (const auto& change : *known) {
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
         {"undone", change.undone},
         {"undoable", change.undoable},
         {"effect", effectOf(change.effect)}});
  }
  return changes;
}

using Act = std::function<void()>;

// Only what record() makes, and nothing before it: else more would be done than can be taken back.
Act actOf(Core& core, const json::value* path, const json::value* arguments) {
  static constexpr std::array<std::string_view, 9> kRehearsable{
      "rules.save",       "rules.delete",  "rules.defaults",     "projects.save", "projects.delete",
      "projects.archive", "events.assign", "events.assignRange", "moments.add"};
  const auto* name = path ? path->if_string() : nullptr;
  const bool known = name && std::find(kRehearsable.begin(), kRehearsable.end(),
                                       std::string_view(*name)) != kRehearsable.end();
  const auto* route = known ? Router::find(*name) : nullptr;
  if (!route) throw AppError("ce changement ne peut pas être essayé");
  static const json::object kNothing;
  const auto* object = arguments ? arguments->if_object() : nullptr;
  return [&core, route, &body = object ? *object : kNothing] {
    const auto answer = route->answer(core, Body(body));
    // It says why nothing would have been stored.
    const auto* told = answer.is_object() ? answer.get_object().if_contains("message") : nullptr;
    if (told && told->is_string()) throw AppError(std::string(told->get_string()));
  };
}

std::vector<Act> actsIn(Core& core, const Body& body) {
  const auto* steps = body.find("steps");
  if (!steps) return {actOf(core, body.find("path"), body.find("body"))};
  std::vector<Act> acts;
  if (!steps->is_array()) throw AppError("étapes illisibles");
  for (const auto& step : steps->get_array()) {
    const auto* object = step.if_object();
    if (!object) throw AppError("étapes illisibles");
    acts.push_back(actOf(core, object->if_contains("path"), object->if_contains("body")));
  }
  return acts;
}

json::value preview(Core& core, const Body& body) {
  json::array learned;
  const auto rehearsal = core.history.rehearse(actsIn(core, body), [&](const ChangeNote& made) {
    for (auto& rule : learnedRules(core.db, made.learnedRules)) learned.push_back(rule);
  });
  if (!rehearsal.possible) throw AppError(core.db.whyNot(rehearsal.possible));
  auto answer = effectOf(rehearsal.effect);
  if (!answer.is_object()) answer = json::object();
  answer.get_object()["learned"] = std::move(learned);
  return answer;
}

// What stands in the store may be another than what the program goes by.
void follow(Core& core, std::string_view kind) {
  if (kind == kSettingsChange) core.tracker.startRetention();
  const auto project = core.tracker.currentProjectId();
  if (project && !projectName(core, project)) core.tracker.forgetProject(*project);
  core.shell.refreshMenu();
}

json::value turned(Core& core, const History::Outcome& outcome, std::string_view done) {
  using Kind = History::Outcome::Kind;
  const std::string participle(done);
  switch (outcome.kind) {
    case Kind::Done:
      follow(core, outcome.text);
      return orvanta::done();
    case Kind::Unknown:
      throw AppError("ce changement ne peut plus être " + participle);
    case Kind::Depends:
      throw AppError("ce changement ne peut pas être " + participle + " : " +
                     (outcome.text.empty() ? "ce qu’il a touché a changé depuis"
                                           : "« " + labels::inSentence(outcome.text) +
                                                 " » a changé la même chose depuis"));
    case Kind::NotStored:
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
    {"changes.preview", RouteKind::Read, preview, "path, body, steps"},
    {"changes.list", RouteKind::Read, list, "limit"},
    {"changes.undo", RouteKind::Write, undo, "id"},
    {"changes.redo", RouteKind::Write, redo, "id"},
};

}  // namespace

RouteTable changeRoutes() {
  return kRoutes;
}

}  // namespace orvanta
