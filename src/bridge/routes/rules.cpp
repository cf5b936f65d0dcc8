// The rules by which time is sorted.
#include "bridge/change_labels.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "classify/defaults.h"
#include "classify/rule_origins.h"
#include "reports/rule_preview.h"
#include "storage/free_id.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value list(Core& core, const Body& /*body*/) {
  return rowsOf(core, "SELECT * FROM rules ORDER BY priority DESC, length(pattern) DESC, id");
}

Rule ruleIn(const Body& body) {
  Rule rule{.field = body.s("field").value_or(""),
            .pattern = body.trimmed("pattern").value_or(""),
            .category = body.s("category"),
            .projectId = body.i("project_id")};
  if (rule.pattern.empty() || storedText(rule.pattern) != rule.pattern ||
      !parsed<RuleField>(rule.field)) {
    throw AppError("règle invalide");
  }
  if (rule.category) rule.category = storedText(*rule.category);
  return rule;
}

json::value preview(Core& core, const Body& body) {
  constexpr int kUsualDays = 30;
  // Wider than any calendar's days, and yet finite: a damaged span gives no infinite sum.
  constexpr TimeRange kAllHistory{-1e11, 1e11};
  const auto rule = ruleIn(body);
  const bool all = body.b("all").value_or(false);
  const auto to = dateIn(core, body, "to");
  const auto from = Date::parse(body.s("from").value_or("")).value_or(to.plusDays(1 - kUsualDays));
  const TimeRange days{core.calendar.startOf(from), core.calendar.startOf(to.plusDays(1))};
  auto answer =
      json::value_from(previewRule(core.db, rule, body.i("replaces"), all ? kAllHistory : days))
          .as_object();
  answer["from"] = all ? json::value(nullptr) : json::value(from.iso());
  answer["to"] = all ? json::value(nullptr) : json::value(to.iso());
  return answer;
}

json::value save(Core& core, const Body& body) {
  const auto rule = ruleIn(body);
  int64_t id = -1;
  const auto written = core.history.record([&](Transaction& change) {
    change.run("DELETE FROM rules WHERE field=? AND lower(pattern)=lower(?)",
               {rule.field, rule.pattern});
    forgetGoneRules(change);
    id = change.run(
        "INSERT INTO rules(id, field, pattern, category, project_id, priority, created) "
        "VALUES (?,?,?,?,?,?,?)",
        {freeId(change, "rules"), rule.field, rule.pattern, rule.category, rule.projectId, 0,
         core.clock()});
    return ChangeNote{.kind = "rule.save", .label = labels::ruleSaved(rule.pattern)};
  });
  return told(core, written, {{"ok", true}, {"id", written ? id : -1}});
}

json::value remove(Core& core, const Body& body) {
  const auto id = body.i("id").value_or(-1);
  return told(core, core.history.record([&](Transaction& change) {
    ChangeNote note{.kind = "rule.delete"};
    change.each("SELECT pattern FROM rules WHERE id=?", {id}, [&](const Cursor& row) {
      note.label = labels::ruleDeleted(row.str(0).value_or(""));
    });
    change.run("DELETE FROM rules WHERE id=?", {id});
    forgetGoneRules(change);
    return note;
  }));
}

json::value defaults(Core& core, const Body& /*body*/) {
  int added = 0;
  const auto written = core.history.record([&](Transaction& change) {
    added = addDefaults(change, core.clock);
    return ChangeNote{.kind = "rules.defaults", .label = labels::defaultsRestored(added)};
  });
  return told(core, written, {{"ok", true}, {"added", written ? added : 0}});
}

json::value origins(Core& core, const Body& /*body*/) {
  bool whole = true;
  auto sources = ruleSources(core.db, &whole);
  if (!whole) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  return json::value_from(sources);
}

json::value pending(Core& core, const Body& /*body*/) {
  return json::value_from(pendingRules(core.db, core.calendar));
}

json::value confirm(Core& core, const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucune règle");
  Transaction change(core.db);
  confirmRules(change, ids);
  return told(core, change.commit());
}

constexpr Route kRoutes[]{
    {"rules.list", RouteKind::Read, list},
    {"rules.preview", RouteKind::Read, preview,
     "field, pattern, category, project_id, replaces, from, to, all"},
    {"rules.save", RouteKind::Write, save, "field, pattern, category, project_id"},
    {"rules.delete", RouteKind::Write, remove, "id"},
    {"rules.defaults", RouteKind::Write, defaults},
    {"rules.origins", RouteKind::Read, origins},
    {"rules.pending", RouteKind::Read, pending},
    {"rules.confirm", RouteKind::Write, confirm, "ids"},
};

}  // namespace

RouteTable ruleRoutes() {
  return kRoutes;
}

}  // namespace orvanta
