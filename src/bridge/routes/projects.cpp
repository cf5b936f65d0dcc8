// The user's projects.
#include <algorithm>
#include <cmath>

#include "base/text.h"
#include "bridge/change_labels.h"
#include "bridge/routes/routes.h"
#include "bridge/terms.h"
#include "classify/kept_time.h"
#include "classify/rule_set.h"
#include "storage/free_id.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kNameTaken = "un projet porte déjà ce nom";

json::value list(Core& core, const Body& /*body*/) {
  return rowsOf(core, "SELECT * FROM projects ORDER BY archived, name");
}

// An id that was used is not used again: undoing would take one project for another.
void keepId(Core& core, int64_t id) {
  if (id < kIdLimit) core.highestProject = std::max<int64_t>(core.highestProject, id);
}

// What only some who save a project know of: left as it is where it is not sent.
void saveMore(Transaction& change, int64_t id, const Body& body,
              const std::optional<ProjectTerms>& terms) {
  if (body.find("client")) {
    const auto client = unlessBlank(body.trimmed("client").value_or(""));
    change.run("UPDATE projects SET client=? WHERE id=?", {client, id});
  }
  if (terms) saveTerms(change, id, *terms);
}

json::value save(Core& core, const Body& body) {
  const Project usual;
  const auto name = body.trimmed("name").value_or("");
  if (storedText(name).empty()) throw AppError("nom manquant");
  if (storedText(name) != name) throw AppError("nom invalide : il contient un caractère nul");
  const auto id = body.i("id");
  const Args common{name, body.s("color").value_or(usual.color),
                    body.s("category").value_or(usual.category), body.trimmed("keywords")};
  const auto terms = termsIn(body);
  int64_t added = 0;
  const auto written = core.history.record([&](Transaction& change) {
    auto args = common;
    if (id) {
      args.insert(args.end(), {body.i("archived").value_or(0), *id});
      change.run(
          "UPDATE projects SET name=?1, color=?2, category=?3, keywords=?4, archived=?5 "
          "WHERE id=?6",
          args);
    } else {
      args.insert(args.end(),
                  {std::max(core.highestProject + 1, freeId(change, "projects")), core.clock()});
      added = change.run(
          "INSERT INTO projects(name, color, category, keywords, id, created) VALUES (?1,?2,?3,?4,"
          "?5,?6)",
          args);
      dropTerms(change, added);  // of a project that had this number before
    }
    saveMore(change, id.value_or(added), body, terms);
    return ChangeNote{.kind = "project.save", .label = labels::projectSaved(name)};
  });
  if (id) {
    auto answer = told(core, written, {{"ok", true}, {"id", *id}});
    if (written.conflict()) answer["message"] = kNameTaken;
    return answer;
  }
  if (written.conflict()) throw AppError(kNameTaken);
  if (!written) throw AppError(core.db.whyNot(written));
  keepId(core, added);
  return {{"ok", true}, {"id", added}};
}

json::value terms(Core& core, const Body& /*body*/) {
  bool whole = true;
  const auto projects = loadProjects(core.db, &whole);
  const auto terms = loadTerms(core.db, &whole);
  if (!whole) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  json::array list;
  for (const auto& [id, project] : projects) {
    const auto found = terms.find(id);
    auto object = termsJson(found == terms.end() ? ProjectTerms() : found->second);
    object["project_id"] = id;
    object["client"] = project.client;
    list.push_back(std::move(object));
  }
  return list;
}

json::value hours(Core& core, const Body& /*body*/) {
  const auto terms = loadTerms(core.db);
  json::array list;
  for (const auto& hours : core.analytics.projectHours()) {
    const auto found = terms.find(hours.project);
    list.push_back(hoursJson(hours, found == terms.end() ? ProjectTerms() : found->second));
  }
  return list;
}

json::value remove(Core& core, const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  bool known = false;
  const auto written = core.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "project.delete", .label = labels::projectDeleted("")};
    change.each("SELECT name FROM projects WHERE id=?", {*id}, [&](const Cursor& row) {
      known = true;
      note.label = labels::projectDeleted(row.str(0).value_or(""));
    });
    change.each("SELECT count(*), sum(end - start) FROM events WHERE project_id=?", {*id},
                [&](const Cursor& row) {
                  note.spans = row.int_(0).value_or(0);
                  note.seconds = row.dbl(1);
                });
    change.run("DELETE FROM projects WHERE id=?", {*id});
    change.run("UPDATE rules SET project_id=NULL WHERE project_id=?", {*id});
    change.run("UPDATE events SET project_id=NULL WHERE project_id=?", {*id});
    return note;
  });
  if (written) {
    if (known) keepId(core, *id);
    core.tracker.forgetProject(*id);
  }
  return told(core, written);
}

json::value archive(Core& core, const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  const auto name = projectName(core, id);
  if (!name) throw AppError("projet inconnu");
  ChangeNote note{.kind = "project.archive", .label = labels::projectArchived(*name)};
  const auto written = core.history.record([&](Transaction& change) {
    if (body.b("keep").value_or(false)) {
      const auto kept = keepTime(change, *id);
      note.spans = kept.spans;
      note.seconds = kept.seconds;
    }
    change.run("UPDATE projects SET archived=1 WHERE id=?", {*id});
    return note;
  });
  if (!written) note = {};
  // Of a span that never ends no answer can tell.
  return told(core, written,
              {{"ok", true},
               {"spans", note.spans},
               {"seconds", std::isfinite(note.seconds) ? note.seconds : 0}});
}

constexpr Route kRoutes[]{
    {"projects.list", RouteKind::Read, list},
    {"projects.save", RouteKind::Write, save,
     "id, name, color, category, keywords, archived, client, terms"},
    {"projects.delete", RouteKind::Write, remove, "id"},
    {"projects.archive", RouteKind::Write, archive, "id, keep"},
    {"projects.terms", RouteKind::Read, terms},
    {"projects.hours", RouteKind::Read, hours},
};

}  // namespace

RouteTable projectRoutes() {
  return kRoutes;
}

}  // namespace orvanta
