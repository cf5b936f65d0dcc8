// The router's routes that change what is stored.
#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>
#include <string>
#include <vector>

#include "base/text.h"
#include "bridge/app_error.h"
#include "bridge/change_labels.h"
#include "bridge/router.h"
#include "classify/assign_range.h"
#include "classify/defaults.h"
#include "classify/learning.h"
#include "storage/project.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kNameTaken = "un projet porte déjà ce nom";

std::optional<std::string> trimmed(const std::optional<std::string>& text) {
  if (!text) return {};
  return std::string(trimBlanks(*text));
}

}  // namespace

json::value Router::projectsSave(const Body& body) {
  const auto name = trimmed(body.s("name")).value_or("");
  if (name.empty()) throw AppError("nom manquant");
  const auto keywords = trimmed(body.s("keywords"));
  const auto color = body.s("color").value_or(Project().color);
  const auto category = body.s("category").value_or(Project().category);
  const auto id = body.i("id");
  const auto archived = body.i("archived").value_or(0);
  int64_t added = 0;
  const auto written = parts_.history.record([&](Transaction& change) {
    if (id) {
      change.run(
          "UPDATE projects SET name=?, color=?, category=?, archived=?, keywords=? WHERE id=?",
          {name, color, category, archived, keywords, *id});
    } else {
      // An id that was used is not used again: undoing would take one project for another.
      added = change.run(
          "INSERT INTO projects(id, name, color, category, created, keywords) VALUES "
          "(1 + max(?, (SELECT coalesce(max(id), 0) FROM projects)),?,?,?,?,?)",
          {lastProject_, name, color, category, clock_(), keywords});
    }
    return ChangeNote{.kind = "project.save", .label = labels::projectSaved(name)};
  });
  if (id) {
    auto answer = told(written, {{"ok", true}, {"id", *id}});
    if (written.conflict()) answer["message"] = kNameTaken;
    return answer;
  }
  if (written.conflict()) throw AppError(kNameTaken);
  if (!written) throw AppError(parts_.db.whyNot(written));
  lastProject_ = std::max(lastProject_, added);
  return {{"ok", true}, {"id", added}};
}

json::value Router::projectsDelete(const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  const auto written = parts_.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "project.delete"};
    change.each("SELECT name FROM projects WHERE id=?", {*id}, [&](const Cursor& row) {
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
    lastProject_ = std::max(lastProject_, *id);
    parts_.tracker.forgetProject(*id);
  }
  return told(written);
}

json::value Router::rulesSave(const Body& body) {
  const auto rule = ruleOf(body);
  int64_t id = -1;
  const auto written = parts_.history.record([&](Transaction& change) {
    change.run("DELETE FROM rules WHERE field=? AND lower(pattern)=lower(?)",
               {rule.field, rule.pattern});
    id = change.run(
        "INSERT INTO rules(field, pattern, category, project_id, priority, created) "
        "VALUES (?,?,?,?,?,?)",
        {rule.field, rule.pattern, rule.category, rule.projectId, 0, clock_()});
    return ChangeNote{.kind = "rule.save", .label = labels::ruleSaved(rule.pattern)};
  });
  return told(written, {{"ok", true}, {"id", written ? id : -1}});
}

json::value Router::rulesDelete(const Body& body) {
  const auto id = body.i("id").value_or(-1);
  return told(parts_.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "rule.delete"};
    change.each("SELECT pattern FROM rules WHERE id=?", {id}, [&](const Cursor& row) {
      note.label = labels::ruleDeleted(row.str(0).value_or(""));
    });
    change.run("DELETE FROM rules WHERE id=?", {id});
    return note;
  }));
}

json::value Router::rulesDefaults(const Body& /*body*/) {
  int added = 0;
  const auto written = parts_.history.record([&](Transaction& change) {
    added = addDefaults(change, clock_);
    return ChangeNote{.kind = "rules.defaults", .label = labels::defaultsRestored(added)};
  });
  return told(written, {{"ok", true}, {"added", written ? added : 0}});
}

json::value Router::eventsAssign(const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucun bloc");
  const bool clear = body.b("clear").value_or(false);
  const auto category = clear ? std::nullopt : body.s("category");
  const auto project = clear ? std::nullopt : body.i("project_id");
  const auto list = json::serialize(*body.find("ids"));
  std::vector<LearnedRule> learned;
  const auto written = parts_.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "assign"};
    change.each(
        "SELECT count(*), sum(max(end - start, 0)) FROM events "
        "WHERE id IN (SELECT value FROM json_each(?))",
        {list}, [&](const Cursor& row) {
          note.spans = row.int_(0).value_or(0);
          note.seconds = row.dbl(1);
        });
    note.label = labels::assigned(category, projectName(project), note.spans);
    change.run(
        "UPDATE events SET category=?, project_id=? WHERE id IN (SELECT value FROM json_each(?))",
        {category, project, list});
    if (!clear) learned = afterManualAssign(change, clock_, calendar_, ids, category, project);
    for (const auto& rule : learned) note.learnedRules.push_back(rule.id);
    return note;
  });
  if (clear) return told(written);
  json::array rules;
  if (written) {
    for (const auto& rule : learned) rules.push_back(rule.json());
  }
  return told(written, {{"ok", true}, {"learned", std::move(rules)}});
}

// The span that is being recorded would grow back over what is cut off from it, or carry what it is
// given out of the range.
json::value Router::eventsAssignRange(const Body& body) {
  const auto category = body.s("category");
  const auto project = body.i("project_id");
  return told(parts_.tracker.changeRecorded(rangeOf(body), [&](const TimeRange& range) {
    return parts_.history.record([&](Transaction& change) {
      const auto assigned = assignRange(change, range, category, project);
      return ChangeNote{.kind = "assignRange",
                        .label = labels::assigned(category, projectName(project), range, calendar_),
                        .spans = assigned.spans,
                        .seconds = assigned.seconds};
    });
  }));
}

json::value Router::settingsSet(const Body& body) {
  SettingTexts values;
  for (const auto& [key, value] : body.object()) {
    if (value.is_null() || !defaultSettings().contains(key)) continue;
    values[key] = plainText(value);
  }
  const auto written = values.empty() ? Written::stored() : parts_.db.setSettings(values);
  parts_.tracker.startRetention();
  json::object answer{{"ok", true}};
  if (auto otherwise = readAs(values); !otherwise.empty()) {
    answer["read_as"] = std::move(otherwise);
  }
  return told(written, std::move(answer));
}

json::value Router::onboardingDone(const Body& /*body*/) {
  return told(parts_.db.setSettings({stored(&Settings::onboarded, true)}));
}

TimeRange Router::rangeOf(const Body& body) {
  const auto start = body.d("start");
  const auto end = body.d("end");
  if (!start || !end) throw AppError("plage invalide");
  return {*start, *end};
}

std::optional<std::string> Router::projectName(const std::optional<int64_t>& id) {
  std::optional<std::string> name;
  if (!id) return name;
  parts_.db.each("SELECT name FROM projects WHERE id=?", {*id},
                 [&](const Cursor& row) { name = row.str(0); });
  return name;
}

}  // namespace orvanta
