// The router's routes about the store itself: its changes and the way back, and erasing.
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <string>

#include "bridge/app_error.h"
#include "bridge/router.h"
#include "classify/rule_set.h"
#include "storage/json.h"

namespace orvanta {

namespace json = boost::json;

namespace {

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

}  // namespace

json::value Router::changesList(const Body& body) {
  constexpr int64_t kUsual = 50;
  const auto most = std::max<int64_t>(body.i("limit").value_or(kUsual), 0);
  json::array list;
  for (const auto& change : parts_.history.list(static_cast<std::size_t>(most))) {
    const auto& note = change.note;
    list.push_back(
        {{"id", change.id},
         {"kind", note.kind},
         {"label", note.label},
         {"at", change.at},
         {"spans", note.spans},
         {"seconds", note.seconds},
         {"learned", learnedRules(parts_.db, note.learnedRules)},
         {"learned_ids", json::array(note.learnedRules.begin(), note.learnedRules.end())},
         {"undone", change.undone}});
  }
  return list;
}

json::value Router::changesUndo(const Body& body) {
  return turned(parts_.history.undo(body.i("id").value_or(-1)), "annulé");
}

json::value Router::changesRedo(const Body& body) {
  return turned(parts_.history.redo(body.i("id").value_or(-1)), "rétabli");
}

json::value Router::turned(History::Outcome outcome, std::string_view done) {
  const std::string participle(done);
  switch (outcome) {
    case History::Outcome::Done:
      parts_.platform.refreshMenu();
      return orvanta::done();
    case History::Outcome::Unknown:
      throw AppError("ce changement ne peut plus être " + participle);
    case History::Outcome::Depends:
      throw AppError("ce changement ne peut pas être " + participle +
                     " : ce qu'il a touché a changé depuis");
    case History::Outcome::NotStored:
      break;
  }
  const auto condition = parts_.db.condition();
  throw AppError(condition ? std::string(sentenceOf(condition->trouble))
                           : "ce changement n'a pas pu être " + participle);
}

}  // namespace orvanta
