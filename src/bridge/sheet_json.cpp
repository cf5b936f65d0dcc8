#include "bridge/sheet_json.h"

#include <fmt/format.h>

#include <map>

#include "bridge/app_error.h"
#include "bridge/report_json.h"
#include "reports/french_text.h"
#include "reports/spans.h"

namespace orvanta {

namespace json = boost::json;

namespace {

class SheetWriter {
 public:
  explicit SheetWriter(const Sheet& sheet) : sheet_(sheet) {}
  json::object object() const;

 private:
  std::string hours(int64_t seconds) const {
    return sheet_.question.unit == HourUnit::Clock ? clockHours(seconds) : decimalHours(seconds);
  }
  json::object time(int64_t raw, int64_t counted) const {
    return {{"raw", raw}, {"raw_text", hours(raw)}, {"seconds", counted}, {"text", hours(counted)}};
  }
  json::array cells(const std::vector<int64_t>& raw, const std::vector<int64_t>& counted) const;
  json::array columns() const;
  json::object row(const SheetRow& row) const;
  json::object totals(const SheetTotals& totals) const;
  json::array clients() const;
  json::object request() const;

  const Sheet& sheet_;
};

// An empty cell is null: nothing was done then.
json::array SheetWriter::cells(const std::vector<int64_t>& raw,
                               const std::vector<int64_t>& counted) const {
  json::array list;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const bool empty = raw[i] == 0 && counted[i] == 0;
    list.push_back(empty ? json::value(nullptr) : json::value(time(raw[i], counted[i])));
  }
  return list;
}

std::string labelOf(const DateRange& dates, PeriodBy by) {
  const auto first = shortDate(dates.from);
  const auto last = shortDate(dates.to);
  if (dates.from == dates.to) return first;
  return by == PeriodBy::Month && dates == monthOf(dates.from) ? first.substr(3)
                                                               : first.substr(0, 5) + "–" + last;
}

json::array SheetWriter::columns() const {
  json::array list;
  for (const auto& dates : sheet_.columns) {
    list.push_back({{"from", dates.from.iso()},
                    {"to", dates.to.iso()},
                    {"label", labelOf(dates, sheet_.by)},
                    {"name", nameOf(dates)}});
  }
  return list;
}

json::array amountsOf(const SheetTotals& totals) {
  json::array list;
  for (const auto& [currency, cents] : totals.amounts) {
    list.push_back(
        {{"currency", currency}, {"cents", cents}, {"text", moneyText(cents, currency)}});
  }
  return list;
}

json::object SheetWriter::row(const SheetRow& row) const {
  auto object = time(row.rawTotal, row.counted.total);
  const auto& terms = row.terms;
  object["project_id"] = row.project > 0 ? json::value(row.project) : json::value(nullptr);
  object["name"] = row.name;
  object["color"] = row.color;
  object["client"] = row.client;
  object["archived"] = row.archived;
  object["billable"] = terms.billable;
  object["currency"] = terms.currency;
  object["rate"] = jsonOrNull(terms.rate);
  object["rate_text"] = terms.rate ? json::value(moneyText(*terms.rate, terms.currency) + "/h")
                                   : json::value(nullptr);
  object["rounding"] = {{"minutes", row.rounding.minutes},
                        {"mode", textOf(row.rounding.mode)},
                        {"scope", textOf(row.rounding.scope)},
                        {"text", inWords(row.rounding, sheet_.question.unit)}};
  object["cells"] = cells(row.raw, row.counted.cells);
  object["cents"] = jsonOrNull(row.cents);
  object["amount"] =
      row.cents ? json::value(moneyText(*row.cents, terms.currency)) : json::value(nullptr);
  return object;
}

json::object SheetWriter::totals(const SheetTotals& totals) const {
  auto object = time(totals.rawTotal, totals.counted.total);
  object["cells"] = cells(totals.raw, totals.counted.cells);
  object["billable"] = totals.billable;
  object["billable_text"] = hours(totals.billable);
  object["amounts"] = amountsOf(totals);
  return object;
}

// The rows stand by client already.
json::array SheetWriter::clients() const {
  json::array list;
  std::vector<std::pair<std::string, SheetTotals>> sums;
  for (const auto& row : sheet_.rows) {
    if (sums.empty() || sums.back().first != row.client)
      sums.emplace_back(row.client, SheetTotals());
    sums.back().second.add(row);
  }
  for (const auto& [client, sum] : sums) {
    auto object = totals(sum);
    object["client"] = client;
    list.push_back(std::move(object));
  }
  return list;
}

// The arguments that ask for this very sheet.
json::object SheetWriter::request() const {
  const auto& question = sheet_.question;
  json::object object{{"from", question.range.from.iso()},
                      {"to", question.range.to.iso()},
                      {"columns", textOf(sheet_.by)},
                      {"hours", textOf(question.unit)}};
  if (question.client) object["client"] = *question.client;
  if (question.project) object["project_id"] = *question.project;
  if (const auto& rounding = question.rounding) {
    object["rounding"] = rounding->minutes;
    object["rounding_mode"] = textOf(rounding->mode);
    object["rounding_scope"] = textOf(rounding->scope);
  }
  return object;
}

json::object SheetWriter::object() const {
  const auto& range = sheet_.question.range;
  json::array rows;
  for (const auto& one : sheet_.rows) rows.push_back(row(one));
  const auto name = nameOf(range);
  json::object object{{"from", range.from.iso()},
                      {"to", range.to.iso()},
                      {"kind", textOf(kindOf(range))},
                      {"name", name},
                      {"title", "Feuille de temps, " + name},
                      {"hours", textOf(sheet_.question.unit)},
                      {"by", textOf(sheet_.by)},
                      {"request", request()},
                      {"columns", columns()},
                      {"rows", std::move(rows)},
                      {"clients", clients()},
                      {"totals", totals(sheet_.totals)},
                      {"unassigned", sheet_.unassigned ? json::value(row(*sheet_.unassigned))
                                                       : json::value(nullptr)},
                      {"rule", sheet_.rule}};
  if (!sheet_.whole) object["incomplete"] = kIncomplete;
  return object;
}

std::optional<Rounding> roundingIn(const Body& body) {
  const auto minutes = body.i("rounding");
  if (!minutes) return {};
  if (!isRoundingStep(*minutes)) {
    throw AppError("arrondi inconnu\u00a0: 0, 5, 6, 10, 15 ou 30 minutes");
  }
  const Rounding usual;
  return Rounding{
      .minutes = static_cast<int>(*minutes),
      .mode = parsed<RoundingMode>(body.s("rounding_mode").value_or("")).value_or(usual.mode),
      .scope = parsed<RoundingScope>(body.s("rounding_scope").value_or("")).value_or(usual.scope)};
}

}  // namespace

SheetQuestion sheetQuestion(const Body& body, const DateRange& dates) {
  return {.range = dates,
          .columns = parsed<PeriodBy>(body.s("columns").value_or("")),
          .client = body.s("client"),
          .project = body.i("project_id"),
          .rounding = roundingIn(body),
          .unit = parsed<HourUnit>(body.s("hours").value_or("")).value_or(HourUnit::Clock)};
}

json::object sheetJson(const Sheet& sheet) {
  return SheetWriter(sheet).object();
}

}  // namespace orvanta
