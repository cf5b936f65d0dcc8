// Rows that another program, or a damaged disk, left in the store: every report is JSON or CSV, and
// the reports agree with each other.
#include <cmath>
#include <utility>
#include <vector>

#include "fuzz/store.h"
#include "imports/import_text.h"
#include "imports/read_import.h"
#include "reports/spans.h"

namespace orvanta::fuzz {
namespace {

std::string someNumber(FuzzedDataProvider& choose) {
  static constexpr std::array kOdd{"9e999",  "-9e999", "1e300", "-1e18", "9223372036854775807",
                                   "'12.5'", "x'00'",  "-0.0",  "0",     "1e-300"};
  if (choose.ConsumeIntegralInRange(0, 15) == 0) return choose.PickValueInArray(kOdd);
  return fmt::format("{}", kStart + choose.ConsumeIntegralInRange(-80000, 80000) / 8.0);
}

std::string someText(FuzzedDataProvider& choose) {
  static constexpr std::array kUsual{
      "NULL", "'Code'",    "'travail'",   "'loisir'", "'app'",
      "''",   "'Inactif'", "'video.com'", "'domain'", "'Thèse; \"x\"'",
      "1",    "'étrange'", "0.5",         "'title'",  "'https://a.fr/'"};
  if (choose.ConsumeBool()) return choose.PickValueInArray(kUsual);
  const bool text = choose.ConsumeIntegralInRange(0, 7) > 0;
  return literal(choose.ConsumeRandomLengthString(24), text);
}

std::string someId(FuzzedDataProvider& choose) {
  static constexpr std::array kIds{"NULL", "1",   "2",   "0",
                                   "-1",   "1.5", "'1'", "9223372036854775807"};
  return choose.PickValueInArray(kIds);
}

std::string someRows(FuzzedDataProvider& choose) {
  std::string sql;
  for (int count = 0; count < 12 && choose.remaining_bytes() > 0; ++count) {
    const auto text = [&] { return someText(choose); };
    switch (choose.ConsumeIntegralInRange(0, 7)) {
      case 0:
        sql += fmt::format(
            "INSERT OR IGNORE INTO rules(field,pattern,category,project_id,priority,created) "
            "VALUES ({},{},{},{},{},{});",
            text(), text(), text(), someId(choose), someId(choose), someNumber(choose));
        break;
      case 1:
        sql += fmt::format(
            "INSERT OR IGNORE INTO projects(name,color,category,archived,created,client,keywords) "
            "VALUES ({},{},{},{},{},{},{});",
            text(), text(), text(), someId(choose), someNumber(choose), text(), text());
        break;
      case 2: {
        const auto settings = settingTable();
        const auto& setting =
            settings[choose.ConsumeIntegralInRange(std::size_t{0}, settings.size() - 1)];
        sql +=
            fmt::format("INSERT OR REPLACE INTO settings VALUES ('{}',{});", setting.key, text());
        break;
      }
      case 3:
        sql += fmt::format(
            "INSERT OR IGNORE INTO goals(subject,name,project_id,period,bound,seconds,created) "
            "VALUES ({},{},{},{},{},{},{});",
            text(), text(), someId(choose), text(), text(), someId(choose), someNumber(choose));
        break;
      default:
        sql += fmt::format(
            "INSERT OR IGNORE INTO events(start,end,app,bundle,title,url,domain,idle,category,"
            "project_id) VALUES ({},{},{},{},{},{},{},{},{},{});",
            someNumber(choose), someNumber(choose), text(), text(), text(), text(), text(),
            someId(choose), text(), someId(choose));
    }
  }
  return sql;
}

// Lists of what there is, and reports of days: some of them, which all take their time.
void ask(FuzzedDataProvider& choose) {
  static const json::object kDays{{"from", "2023-11-12"}, {"to", "2023-11-15"}};
  static const std::vector<std::pair<const char*, json::object>> kQuestions{
      {"status", {}},
      {"rules.list", {}},
      {"rules.origins", {}},
      {"rules.pending", {}},
      {"projects.list", {}},
      {"projects.terms", {}},
      {"projects.hours", {}},
      {"goals.list", {}},
      {"goals.history", kDays},
      {"sheets.list", {}},
      {"suggestions", {}},
      {"settings.get", {}},
      {"absence.get", {}},
      {"changes.list", {}},
      {"recap", {}},
      {"moments.gaps", kDays},
      {"period.days", kDays},
      {"sheet", kDays},
      {"sheet.text", {{"from", "2023-11-13"}, {"to", "2023-11-14"}, {"format", "ics"}}},
      {"search.find", {{"text", "e"}, {"wait", true}}},
      {"search.spans", {{"text", "code"}}},
      {"events.explain", {{"ids", json::array{1, 2, 3, 4, 5, 6}}}},
      {"exclusions.preview", {{"site", "video.com"}}},
      {"rules.preview",
       {{"field", "app"}, {"pattern", "code"}, {"category", "autre"}, {"all", true}}},
      {"period",
       {{"from", "2023-11-13"}, {"to", "2023-11-14"}, {"group", "category"}, {"by", "day"}}},
      {"period",
       {{"from", "2023-11-13"}, {"to", "2023-11-14"}, {"group", "client"}, {"by", "week"}}},
      {"period",
       {{"from", "2023-11-13"}, {"to", "2023-11-14"}, {"group", "site"}, {"by", "month"}}}};
  for (int count = 0; count < 6; ++count) {
    const auto& [route, body] =
        kQuestions[choose.ConsumeIntegralInRange(std::size_t{0}, kQuestions.size() - 1)];
    answered(route, body);
  }
}

double number(const json::value& value) {
  const auto seconds = value.to_number<double>();
  hold(std::isfinite(seconds) && seconds >= 0, "seconds are a number");
  return seconds;
}

// A report that JSON cannot express is empty.
void checkDay() {
  const auto day = answered("day", {{"date", "2023-11-13"}}).as_object();
  if (day.empty()) return;
  for (const auto& segment : day.at("segments").as_array()) {
    const auto start = number(segment.at("start"));
    const auto end = number(segment.at("end"));
    hold(start <= end && start >= number(day.at("start")) && end <= number(day.at("end")),
         "a segment lies in its day");
  }
  const auto week = answered("week", {{"date", "2023-11-13"}}).as_object();
  if (week.empty()) return;
  const auto& monday = week.at("days").at(0);
  hold(std::abs(number(monday.at("active")) - number(day.at("totals").at("active"))) < 1e-3,
       "week and day agree", json::serialize(monday) + json::serialize(day.at("totals")));
}

void checkCsv() {
  const Date from{2023, 11, 12};
  const Date to{2023, 11, 15};
  auto& core = program().core;
  std::string csv;
  core.analytics.exportCsv(from, to, [&](std::string_view text) { csv += text; });
  holdUtf8(csv, "an export is UTF-8");
  std::size_t spans = 0;
  SpanReader(program().store.db)
      .each({core.calendar.startOf(from), core.calendar.startOf(to.plusDays(1))},
            [&](const Ev&) { ++spans; });
  std::erase(csv, '\0');  // a line all the same
  const auto read = readImport(importText(std::string_view(csv)).text, core.calendar, {});
  auto lines = read.events.size();
  for (const auto& [reason, rejected] : read.rejected) lines += rejected.count;
  hold(lines == spans, "an export has a line for each span", csv);
  core.analytics.exportFound("e",
                             [](std::string_view text) { holdUtf8(text, "so is what was found"); });
}

}  // namespace

void target(std::string_view input) {
  auto choose = chooser(input);
  program().clock.now = kStart + 100000;
  // First, so that there is something left to choose by.
  const auto questions = choose.ConsumeBytes<uint8_t>(6);
  FuzzedDataProvider question(questions.data(), questions.size());
  reset(someRows(choose));
  ask(question);
  checkDay();
  checkCsv();
}

}  // namespace orvanta::fuzz
