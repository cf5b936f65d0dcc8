// The reports, and their export.
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

json::object unwritten(json::object answer, const std::string& problem) {
  answer["written"] = false;
  answer["message"] = "L’export n’a pas pu être écrit : " + problem + ".";
  return answer;
}

// The file is named by what was asked, whatever it was.
json::value exportCsv(Core& core, const Body& body) {
  const auto from = body.s("from").value_or(core.analytics.today().iso());
  const auto to = body.s("to").value_or(from);
  const auto file = core.shell.saveAs("lumaplan_" + from + "_" + to + ".csv");
  json::object answer{{"ok", file.has_value()}};
  if (!file) return answer;
  if (file->empty()) return unwritten(answer, "cet endroit n’est pas un dossier de cet ordinateur");
  const auto first = dateIn(core, body, "from");
  const auto last = body.s("to") ? dateIn(core, body, "to") : first;
  const auto written = writeCsv(core.analytics, first, last, *file);
  return written ? answer : unwritten(answer, written.problem);
}

constexpr Route kRoutes[]{
    {"day", RouteKind::Read, day},         {"week", RouteKind::Read, week},
    {"recap", RouteKind::Read, recap},     {"suggestions", RouteKind::Read, suggestions},
    {"export", RouteKind::Ask, exportCsv},
};

}  // namespace

RouteTable reportRoutes() {
  return kRoutes;
}

}  // namespace orvanta
