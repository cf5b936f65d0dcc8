// The router's routes that change what is stored.
#include <algorithm>
#include <array>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <string>
#include <vector>

#include "base/text.h"
#include "bridge/app_error.h"
#include "bridge/router.h"
#include "classify/assign_range.h"
#include "classify/defaults.h"
#include "classify/learning.h"
#include "storage/schema.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kDefaultColor = "#3b82f6";
constexpr auto kDefaultCategory = "travail";

std::optional<std::string> trimmed(const std::optional<std::string>& text) {
  if (!text) return {};
  return std::string(trimBlanks(*text));
}

std::vector<int64_t> idsOf(const json::value* list) {
  std::vector<int64_t> ids;
  if (!list || !list->is_array()) return ids;
  for (const auto& id : list->get_array()) {
    if (!id.is_int64()) return {};
    ids.push_back(id.get_int64());
  }
  return ids;
}

}  // namespace

json::value Router::projectsSave(const Body& body) {
  const auto name = trimmed(body.s("name")).value_or("");
  if (name.empty()) throw AppError("nom manquant");
  const auto keywords = trimmed(body.s("keywords"));
  const auto color = body.s("color").value_or(kDefaultColor);
  const auto category = body.s("category").value_or(kDefaultCategory);
  if (const auto id = body.i("id")) {
    parts_.db.run(
        "UPDATE projects SET name=?, color=?, category=?, archived=?, keywords=? WHERE id=?",
        {name, color, category, body.i("archived").value_or(0), keywords, *id});
    return {{"ok", true}, {"id", *id}};
  }
  const auto id = parts_.db.run(
      "INSERT INTO projects(name, color, category, created, keywords) VALUES (?,?,?,?,?)",
      {name, color, category, clock_(), keywords});
  if (id < 0) throw AppError("un projet porte déjà ce nom");
  return {{"ok", true}, {"id", id}};
}

json::value Router::projectsDelete(const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  parts_.db.run("DELETE FROM projects WHERE id=?", {*id});
  parts_.db.run("UPDATE rules SET project_id=NULL WHERE project_id=?", {*id});
  parts_.db.run("UPDATE events SET project_id=NULL WHERE project_id=?", {*id});
  if (parts_.tracker.currentProjectId() == id) parts_.tracker.setCurrentProjectId({});
  return done();
}

json::value Router::rulesSave(const Body& body) {
  constexpr std::array<std::string_view, 4> kFields{"app", "domain", "title", "url"};
  const auto field = body.s("field").value_or("");
  const auto pattern = trimmed(body.s("pattern")).value_or("");
  if (pattern.empty() || std::find(kFields.begin(), kFields.end(), field) == kFields.end()) {
    throw AppError("règle invalide");
  }
  parts_.db.run("DELETE FROM rules WHERE field=? AND lower(pattern)=lower(?)", {field, pattern});
  const auto id = parts_.db.run(
      "INSERT INTO rules(field, pattern, category, project_id, priority, created) "
      "VALUES (?,?,?,?,?,?)",
      {field, pattern, body.s("category"), body.i("project_id"), 0, clock_()});
  return {{"ok", true}, {"id", id}};
}

json::value Router::rulesDelete(const Body& body) {
  parts_.db.run("DELETE FROM rules WHERE id=?", {body.i("id").value_or(-1)});
  return done();
}

json::value Router::rulesDefaults(const Body& /*body*/) {
  return {{"ok", true}, {"added", seedDefaults(parts_.db, clock_, true)}};
}

json::value Router::eventsAssign(const Body& body) {
  const auto ids = idsOf(body.find("ids"));
  if (ids.empty()) throw AppError("aucun bloc");
  const bool clear = body.b("clear").value_or(false);
  const auto category = clear ? std::nullopt : body.s("category");
  const auto project = clear ? std::nullopt : body.i("project_id");
  parts_.db.run(
      "UPDATE events SET category=?, project_id=? WHERE id IN (SELECT value FROM json_each(?))",
      {category, project, json::serialize(*body.find("ids"))});
  if (clear) return done();
  json::array learned;
  for (const auto& rule : afterManualAssign(parts_.db, clock_, calendar_, ids, category, project)) {
    learned.push_back(rule.json());
  }
  return {{"ok", true}, {"learned", std::move(learned)}};
}

json::value Router::eventsAssignRange(const Body& body) {
  const auto start = body.d("start");
  const auto end = body.d("end");
  if (!start || !end) throw AppError("plage invalide");
  TimeRange range{*start, *end};
  // The span that is being recorded would grow back over what is cut off from it, or carry what it
  // is given out of the range.
  if (const auto now = parts_.tracker.splitOpenSpan(range)) range.end = std::min(range.end, *now);
  assignRange(parts_.db, range, body.s("category"), body.i("project_id"));
  return done();
}

json::value Router::settingsSet(const Body& body) {
  for (const auto& [key, value] : body.object()) {
    if (value.is_null() || !defaultSettings().contains(key)) continue;
    parts_.db.setSetting(key, plainText(value));
  }
  parts_.tracker.startRetention();
  return done();
}

json::value Router::onboardingDone(const Body& /*body*/) {
  parts_.db.setSetting("onboarded", "1");
  return done();
}

}  // namespace orvanta
