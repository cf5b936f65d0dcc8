// The store itself: its condition, and its backups.
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "storage/file_connection.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::object factsJson(const StoreFacts& facts) {
  return {{"spans", facts.spans},
          {"first", jsonOrNull(facts.first)},
          {"last", jsonOrNull(facts.last)},
          {"projects", facts.projects},
          {"rules", facts.rules}};
}

// Only what is in our own list, or the user has picked: a page names no other file.
Backup knownBackup(Core& core, const Body& body) {
  const auto file = body.s("file").value_or("");
  if (auto picked = core.keeper.picked(); picked && picked->file.string() == file) return *picked;
  for (auto& backup : core.keeper.backups()) {
    if (backup.file.string() == file) return backup;
  }
  throw AppError("Cette sauvegarde n’existe plus.");
}

json::value status(Core& core, const Body& /*body*/) {
  auto& db = core.db;
  json::value first(nullptr);
  json::value last(nullptr);
  db.each("SELECT (SELECT min(start) FROM events), (SELECT max(end) FROM events)", {},
          [&](const Cursor& row) {
            if (const auto start = row.dbl(0); start > 0) first = start;
            if (const auto end = row.dbl(1); end > 0) last = end;
          });
  const auto backups = core.keeper.backups();
  const auto condition = db.condition();
  return {
      {"state", condition ? nameOf(condition->trouble) : "ok"},
      {"message", condition ? json::value(sentenceOf(condition->trouble)) : json::value(nullptr)},
      {"since", condition ? json::value(condition->since) : json::value(nullptr)},
      {"waiting", core.tracker.waiting()},
      {"size", bytesOf(db.location().file()) + bytesOf(walOf(db.location().file()))},
      {"first", std::move(first)},
      {"last", std::move(last)},
      {"notice", textOrNull(core.keeper.notice())},
      {"last_backup", backups.empty() ? json::value(nullptr) : json::value(backups.front().time)},
      {"backups", json::value_from(backups)}};
}

json::value backUp(Core& core, const Body& /*body*/) {
  const auto made = core.keeper.backUp();
  if (!made.backup) throw AppError("Sauvegarde impossible : " + made.error + ".");
  auto answer = json::value_from(*made.backup).as_object();
  answer["ok"] = true;
  return answer;
}

json::value takeAll(Core& core, const Body& /*body*/) {
  const auto file = core.shell.saveAs("orvanta_" + core.analytics.today().iso() + ".db");
  if (!file) return {{"ok", false}};
  if (file->empty()) return unwritten("cet endroit n’est pas un dossier de cet ordinateur");
  const auto copy = core.keeper.takeAll(*file);
  if (!copy.made) {
    throw AppError("Tout emporter : " + (copy.stopped ? "interrompu" : copy.error) + ".");
  }
  return {{"ok", true}, {"file", file->string()}, {"size", copy.bytes}};
}

json::value pick(Core& core, const Body& /*body*/) {
  const auto file = core.shell.chooseFile();
  if (!file) return {{"ok", false}};
  if (file->empty()) throw AppError("Ce fichier n’est pas sur cet ordinateur.");
  core.keeper.pick(*file);
  return {{"ok", true}, {"file", file->string()}};
}

json::value check(Core& core, const Body& /*body*/) {
  const auto check = core.keeper.check();
  if (!check.finished) throw AppError("La vérification n’a pas pu être menée à bien.");
  return {{"ok", check.whole},
          {"message", check.whole ? "Le fichier des données est intact."
                                  : "Le fichier des données est abîmé."},
          {"problems", json::array(check.problems.begin(), check.problems.end())}};
}

json::value restorePreview(Core& core, const Body& body) {
  const auto backup = knownBackup(core, body);
  const auto preview = core.keeper.preview(backup.file);
  if (!preview.backup.whole) {
    const auto& problems = preview.backup.problems;
    throw AppError("Ce fichier ne peut pas être repris\u00a0: " +
                   (problems.empty() ? "interrompu" : problems.front()) + ".");
  }
  auto answer = factsJson(preview.backup.facts);
  answer["file"] = backup.file.string();
  answer["time"] = backup.time;
  answer["lost_spans"] = preview.lost ? json::value(preview.lost->spans) : json::value(nullptr);
  answer["lost_seconds"] = preview.lost ? json::value(preview.lost->seconds) : json::value(nullptr);
  answer["current"] = factsJson(preview.now);
  return answer;
}

json::value restore(Core& core, const Body& body) {
  const auto backup = knownBackup(core, body);
  const auto result = core.keeper.restore(backup.file);
  if (!result.done) throw AppError("Restauration impossible : " + result.error + ".");
  core.shell.refreshMenu();
  return {{"ok", true},
          {"kept", result.kept ? json::value(result.kept->string()) : json::value(nullptr)}};
}

constexpr Route kRoutes[]{
    {"store.status", RouteKind::Read, status},
    {"store.backup", RouteKind::Ask, backUp},
    {"store.takeAll", RouteKind::Ask, takeAll},
    {"store.pick", RouteKind::Ask, pick},
    {"store.check", RouteKind::Ask, check},
    {"store.restorePreview", RouteKind::Ask, restorePreview, "file"},
    {"store.restore", RouteKind::Ask, restore, "file"},
};

}  // namespace

RouteTable storeRoutes() {
  return kRoutes;
}

}  // namespace orvanta
