// Timesheets: made now, as files, and as they were sent.
#include <fmt/format.h>

#include <boost/json/serialize.hpp>

#include "base/exact_json.h"
#include "base/text.h"
#include "base/whole_file.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "bridge/sheet_files.h"
#include "bridge/sheet_json.h"
#include "reports/csv_file.h"
#include "reports/spans.h"
#include "storage/sheet_archive.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr auto kNoSheet = "cette feuille n’existe pas";

json::object sheetNow(Core& core, const Body& body) {
  return sheetJson(core.analytics.sheet(sheetQuestion(body, datesIn(core, body))));
}

json::value sheet(Core& core, const Body& body) {
  return sheetNow(core, body);
}

FrozenSheet frozenIn(Core& core, const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  auto frozen = frozenSheet(core.db, *id);
  if (!frozen) throw AppError(troubleOr(core, kNoSheet));
  return std::move(*frozen);
}

json::object contentOf(const FrozenSheet& frozen) {
  constexpr std::size_t kDeepest = 32;
  auto content = parseJson(frozen.content, kDeepest);
  if (!content || !content->is_object()) throw AppError("cette feuille ne peut pas être lue");
  return std::move(content->get_object());
}

json::object told(const FrozenSheet& frozen) {
  return {{"id", frozen.id},          {"created", frozen.created}, {"title", frozen.title},
          {"client", frozen.client},  {"from", frozen.from},       {"to", frozen.to},
          {"version", frozen.version}};
}

// A sheet that is kept, or the one of now.
json::object sheetMeant(Core& core, const Body& body) {
  return body.find("id") ? contentOf(frozenIn(core, body)) : sheetNow(core, body);
}

struct File {
  std::string name;
  std::string text;
  bool whole = true;
};

File fileOf(Core& core, const Body& body) {
  const auto format = parsed<SheetFormat>(body.s("format").value_or("csv"));
  if (!format) throw AppError("format inconnu\u00a0: csv, csv_plain, text ou ics");
  if (*format == SheetFormat::Ics) {
    if (body.find("id")) throw AppError("une feuille figée ne garde pas ses plages de travail");
    const auto dates = datesIn(core, body);
    const auto entries = core.analytics.sheetEntries(sheetQuestion(body, dates));
    return {fmt::format("feuille_{}_{}.ics", dates.from.iso(), dates.to.iso()),
            calendarFile(entries.list, core.clock()), entries.whole};
  }
  const auto sheet = sheetMeant(core, body);
  return {fmt::format("feuille_{}_{}.{}", plainText(sheet.at("from")), plainText(sheet.at("to")),
                      suffixOf(*format)),
          sheetFile(sheet, *format), !sheet.contains("incomplete")};
}

json::value text(Core& core, const Body& body) {
  const auto file = fileOf(core, body);
  json::object answer{{"name", file.name}, {"text", file.text}};
  if (!file.whole) answer["incomplete"] = kIncomplete;
  return answer;
}

json::value exportFile(Core& core, const Body& body) {
  const auto made = fileOf(core, body);
  const auto path = core.shell.saveAs(made.name);
  json::object answer{{"ok", path.has_value()}};
  if (!path) return answer;
  std::string problem = "cet endroit n’est pas un dossier de cet ordinateur";
  if (!path->empty()) {
    WholeFile file(*path);
    file.write(made.text);
    problem = file.finish();
    if (problem.empty() && !made.whole) problem = kUnreadable;
  }
  if (!problem.empty()) {
    answer["written"] = false;
    answer["message"] = "L’export n’a pas pu être écrit\u00a0: " + problem + ".";
  }
  return answer;
}

json::value list(Core& core, const Body& /*body*/) {
  const auto sheets = frozenSheets(core.db);
  if (!sheets) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  json::array list;
  for (const auto& frozen : *sheets) list.push_back(told(frozen));
  return list;
}

json::value freeze(Core& core, const Body& body) {
  auto sheet = sheetNow(core, body);
  if (sheet.contains("incomplete")) throw AppError(plainText(sheet.at("incomplete")));
  if (const auto title = unlessBlank(body.s("title").value_or(""))) sheet["title"] = *title;
  const Body asked(sheet.at("request").get_object());
  auto client = asked.s("client").value_or("");
  const auto& rows = sheet.at("rows").get_array();
  if (!client.empty() && !rows.empty()) client = plainText(rows.front().at("client"));
  FrozenSheet frozen{.created = core.clock(),
                     .title = validUtf8(plainText(sheet.at("title"))),
                     .client = validUtf8(client),
                     .from = plainText(sheet.at("from")),
                     .to = plainText(sheet.at("to")),
                     .content = validUtf8(json::serialize(sheet))};
  const auto written = freezeSheet(core.db, frozen, asked.i("project_id"));
  if (!written) throw AppError(core.db.whyNot(written));
  return {{"ok", true}, {"id", frozen.id}, {"version", frozen.version}};
}

json::value get(Core& core, const Body& body) {
  const auto frozen = frozenIn(core, body);
  auto answer = told(frozen);
  answer["sheet"] = contentOf(frozen);
  return answer;
}

// What is asked for now is what was asked for then.
json::value diff(Core& core, const Body& body) {
  const auto frozen = frozenIn(core, body);
  const auto sent = contentOf(frozen);
  const auto* request = sent.if_contains("request");
  if (!request || !request->is_object()) throw AppError("cette feuille ne peut pas être lue");
  const auto now = sheetNow(core, Body(request->get_object()));
  auto answer = told(frozen);
  auto changes = sheetChanges(sent, now);
  answer["same"] = changes.empty();
  answer["changes"] = std::move(changes);
  answer["now"] = now;
  if (now.contains("incomplete")) answer["incomplete"] = now.at("incomplete");
  return answer;
}

json::value remove(Core& core, const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  bool found = false;
  const auto written = deleteSheet(core.db, *id, found);
  if (written && !found) throw AppError(kNoSheet);
  return orvanta::told(core, written);
}

constexpr Route kRoutes[]{
    {"sheet", RouteKind::Read, sheet,
     "from, to, columns, client, project_id, rounding, rounding_mode, rounding_scope, hours"},
    {"sheet.text", RouteKind::Read, text,
     "from, to, columns, client, project_id, rounding, rounding_mode, rounding_scope, hours, id, "
     "format"},
    {"sheet.export", RouteKind::Ask, exportFile,
     "from, to, columns, client, project_id, rounding, rounding_mode, rounding_scope, hours, id, "
     "format"},
    {"sheets.list", RouteKind::Read, list},
    {"sheets.freeze", RouteKind::Write, freeze,
     "from, to, columns, client, project_id, rounding, rounding_mode, rounding_scope, hours, "
     "title"},
    {"sheets.get", RouteKind::Read, get, "id"},
    {"sheets.diff", RouteKind::Read, diff, "id"},
    {"sheets.delete", RouteKind::Write, remove, "id"},
};

}  // namespace

RouteTable sheetRoutes() {
  return kRoutes;
}

}  // namespace orvanta
