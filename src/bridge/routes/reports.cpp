// The reports, and their export.
#include "bridge/period_json.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "reports/csv_file.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value day(Core& core, const Body& body) {
  return json::value_from(core.analytics.day(dateIn(core, body)));
}

json::value week(Core& core, const Body& body) {
  return json::value_from(core.analytics.week(dateIn(core, body)));
}

json::value recap(Core& core, const Body& body) {
  return json::value_from(core.analytics.recap(dateIn(core, body)));
}

json::value suggestions(Core& core, const Body& /*body*/) {
  return json::value_from(core.analytics.suggestions());
}

json::value period(Core& core, const Body& body) {
  PeriodQuestion question{.range = datesIn(core, body),
                          .compare = body.b("compare").value_or(true)};
  if (const auto by = body.s("by")) question.by = parsed<PeriodBy>(*by);
  if (const auto group = body.s("group")) {
    question.group = parsed<PeriodGroup>(*group).value_or(question.group);
  }
  return json::value_from(core.analytics.period(question));
}

std::optional<int> smallNumber(const Body& body, std::string_view key, int64_t largest) {
  const auto number = body.i(key);
  if (!number || *number < 0 || *number > largest) return {};
  return static_cast<int>(*number);
}

json::value periodDays(Core& core, const Body& body) {
  constexpr int kSunday = 6;
  constexpr int kLastHour = 23;
  const auto* project = body.find("project_id");
  const ActivityFilter filter{.category = body.s("category"),
                              .project = body.i("project_id"),
                              .withoutProject = project && project->is_null(),
                              .client = body.s("client"),
                              .app = body.s("app"),
                              .domain = body.s("domain"),
                              .weekday = smallNumber(body, "weekday", kSunday),
                              .hour = smallNumber(body, "hour", kLastHour)};
  return json::value_from(core.analytics.periodDays(datesIn(core, body), filter));
}

// The file is named by what was asked, whatever it was.
json::value exportCsv(Core& core, const Body& body) {
  const auto from = body.s("from").value_or(core.analytics.today().iso());
  const auto to = body.s("to").value_or(from);
  const auto file = core.shell.saveAs("lumaplan_" + from + "_" + to + ".csv");
  json::object answer{{"ok", file.has_value()}};
  if (!file) return answer;
  if (file->empty()) return unwritten("cet endroit n’est pas un dossier de cet ordinateur");
  const auto first = dateIn(core, body, "from");
  const auto last = body.s("to") ? dateIn(core, body, "to") : first;
  const auto written = writeCsv(core.analytics, first, last, *file);
  return written ? answer : unwritten(written.problem);
}

constexpr Route kRoutes[]{
    {"day", RouteKind::Read, day, "date"},
    {"week", RouteKind::Read, week, "date"},
    {"recap", RouteKind::Read, recap, "date"},
    {"suggestions", RouteKind::Read, suggestions},
    {"period", RouteKind::Read, period, "from, to, by, group, compare"},
    {"period.days", RouteKind::Read, periodDays,
     "from, to, category, project_id, client, app, domain, weekday, hour"},
    {"export", RouteKind::Ask, exportCsv, "from, to"},
};

}  // namespace

RouteTable reportRoutes() {
  return kRoutes;
}

}  // namespace orvanta
