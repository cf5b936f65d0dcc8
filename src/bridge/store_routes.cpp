// The router's routes about the store itself: its condition, backups, and the way back from
// changes.
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <string>

#include "bridge/app_error.h"
#include "bridge/router.h"
#include "classify/rule_set.h"
#include "storage/file_connection.h"
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

json::object backupJson(const Backup& backup) {
  return {{"file", backup.file.string()}, {"time", backup.time}, {"size", backup.bytes}};
}

json::object factsJson(const StoreFacts& facts) {
  return {{"spans", facts.spans},
          {"first", jsonOrNull(facts.first)},
          {"last", jsonOrNull(facts.last)},
          {"projects", facts.projects},
          {"rules", facts.rules}};
}

}  // namespace

json::value Router::storeStatus(const Body& /*body*/) {
  auto& db = parts_.db;
  json::value first(nullptr);
  json::value last(nullptr);
  db.each("SELECT (SELECT min(start) FROM events), (SELECT max(end) FROM events)", {},
          [&](const Cursor& row) {
            if (const auto start = row.dbl(0); start > 0) first = start;
            if (const auto end = row.dbl(1); end > 0) last = end;
          });
  json::array backups;
  for (const auto& backup : parts_.keeper.backups()) backups.push_back(backupJson(backup));
  const auto condition = db.condition();
  const auto notice = parts_.keeper.notice();
  json::value lastBackup = backups.empty() ? json::value(nullptr) : backups.front().at("time");
  return {
      {"state", condition ? nameOf(condition->trouble) : "ok"},
      {"message", condition ? json::value(sentenceOf(condition->trouble)) : json::value(nullptr)},
      {"since", condition ? json::value(condition->since) : json::value(nullptr)},
      {"waiting", parts_.tracker.waiting()},
      {"size", bytesOf(db.location().file()) + bytesOf(walOf(db.location().file()))},
      {"first", std::move(first)},
      {"last", std::move(last)},
      {"notice", notice.empty() ? json::value(nullptr) : json::value(notice)},
      {"last_backup", std::move(lastBackup)},
      {"backups", std::move(backups)}};
}

json::value Router::storeBackup(const Body& /*body*/) {
  const auto made = parts_.keeper.backUp();
  if (!made.backup) throw AppError("Sauvegarde impossible : " + made.error + ".");
  auto answer = backupJson(*made.backup);
  answer["ok"] = true;
  return answer;
}

json::value Router::storeCheck(const Body& /*body*/) {
  const auto check = parts_.keeper.check();
  if (!check.finished) throw AppError("La vérification n'a pas pu être menée à bien.");
  return {{"ok", check.whole},
          {"message", check.whole ? "Le fichier des données est intact."
                                  : "Le fichier des données est abîmé."},
          {"problems", json::array(check.problems.begin(), check.problems.end())}};
}

json::value Router::storeRestorePreview(const Body& body) {
  const auto backup = knownBackup(body);
  const auto preview = parts_.keeper.preview(backup.file);
  if (!preview.backup.whole) throw AppError("Cette sauvegarde ne peut pas être lue en entier.");
  auto answer = factsJson(preview.backup.facts);
  answer["file"] = backup.file.string();
  answer["time"] = backup.time;
  answer["lost_spans"] = preview.lost ? json::value(preview.lost->spans) : json::value(nullptr);
  answer["lost_seconds"] = preview.lost ? json::value(preview.lost->seconds) : json::value(nullptr);
  answer["current"] = factsJson(preview.now);
  return answer;
}

json::value Router::storeRestore(const Body& body) {
  const auto backup = knownBackup(body);
  const auto result = parts_.keeper.restore(backup.file);
  if (!result.done) throw AppError("Restauration impossible : " + result.error + ".");
  parts_.history.forgetAll();
  parts_.platform.refreshMenu();
  return {{"ok", true},
          {"kept", result.kept ? json::value(result.kept->string()) : json::value(nullptr)}};
}

// Only what is in our own list: a page names no other file.
Backup Router::knownBackup(const Body& body) {
  const auto file = body.s("file").value_or("");
  for (auto& backup : parts_.keeper.backups()) {
    if (backup.file.string() == file) return backup;
  }
  throw AppError("Cette sauvegarde n'existe plus.");
}

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
