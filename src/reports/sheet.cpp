#include "reports/sheet.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

#include "base/folded.h"
#include "base/text.h"
#include "reports/local_days.h"
#include "reports/spans.h"

namespace orvanta {
namespace {

using DaySeconds = std::vector<double>;

// Whose hours a question is about.
class Wanted {
 public:
  Wanted(const SheetQuestion& question, const Projects& projects) {
    const auto client = question.client ? folded(trimBlanks(*question.client)) : "";
    for (const auto& [id, project] : projects) {
      const bool asked = (!question.project || id == *question.project) &&
                         (!question.client || folded(project.client) == client);
      if (asked) projects_.emplace(id, &project);
    }
  }

  const Project* of(const Ev& ev) const {
    const auto found = ev.pid ? projects_.find(*ev.pid) : projects_.end();
    return found == projects_.end() ? nullptr : found->second;
  }

 private:
  std::map<int64_t, const Project*> projects_;
};

bool waitsForProject(const Ev& ev, const Projects& projects) {
  if (ev.pid && projects.contains(*ev.pid)) return false;
  return ev.cat.view() != textOf(Category::Loisir) && ev.cat.view() != textOf(Category::Autre);
}

Rounding agreed(const ProjectTerms& terms, const std::optional<Rounding>& instead) {
  if (instead) return *instead;
  const auto minutes = terms.rounding.value_or(0);
  const Rounding usual;
  return {.minutes = isRoundingStep(minutes) ? static_cast<int>(minutes) : 0,
          .mode = parsed<RoundingMode>(terms.roundingMode.value_or("")).value_or(usual.mode),
          .scope = parsed<RoundingScope>(terms.roundingScope.value_or("")).value_or(usual.scope)};
}

// Which column each day stands in.
std::vector<std::size_t> columnOfDays(const std::vector<DateRange>& columns) {
  std::vector<std::size_t> list;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    list.insert(list.end(), static_cast<std::size_t>(columns[i].days()), i);
  }
  return list;
}

void count(SheetRow& row, const Sheet& sheet, const DaySeconds& seconds) {
  std::vector<int64_t> days;
  for (const double day : seconds) days.push_back(wholeSeconds(day));
  const auto columnOf = columnOfDays(sheet.columns);
  const auto unit = sheet.question.unit;
  auto raw = roundRow(days, columnOf, sheet.columns.size(), {}, unit);
  row.raw = std::move(raw.cells);
  row.rawTotal = raw.total;
  row.counted = roundRow(days, columnOf, sheet.columns.size(), row.rounding, unit);
  if (row.terms.billable && row.terms.rate) {
    row.cents = amountOf(row.counted.total, *row.terms.rate);
  }
}

SheetRow rowOf(const Project& project, const TermsByProject& terms, const Sheet& sheet,
               const DaySeconds& seconds) {
  const auto found = terms.find(project.id);
  SheetRow row{.project = project.id,
               .name = project.name,
               .color = project.color,
               .client = project.client,
               .archived = project.archived,
               .terms = found == terms.end() ? ProjectTerms() : found->second};
  row.rounding = agreed(row.terms, sheet.question.rounding);
  count(row, sheet, seconds);
  return row;
}

void sortRows(std::vector<SheetRow>& rows) {
  std::sort(rows.begin(), rows.end(), [](const SheetRow& a, const SheetRow& b) {
    return std::tuple(a.client.empty(), lowerCase(a.client), lowerCase(a.name), a.project) <
           std::tuple(b.client.empty(), lowerCase(b.client), lowerCase(b.name), b.project);
  });
}

std::string ruleOf(const Sheet& sheet) {
  const auto unit = sheet.question.unit;
  const bool same = std::all_of(sheet.rows.begin(), sheet.rows.end(), [&](const SheetRow& row) {
    return row.rounding == sheet.rows.front().rounding;
  });
  if (sheet.rows.empty()) return inWords(agreed({}, sheet.question.rounding), unit);
  if (same) return inWords(sheet.rows.front().rounding, unit);
  return "L’arrondi est celui de chaque projet\u00a0; le total général est la somme des totaux "
         "affichés.";
}

void addTo(std::vector<int64_t>& sums, const std::vector<int64_t>& cells) {
  sums.resize(std::max(sums.size(), cells.size()));
  for (std::size_t i = 0; i < cells.size(); ++i) sums[i] += cells[i];
}

}  // namespace

void SheetTotals::add(const SheetRow& row) {
  addTo(raw, row.raw);
  addTo(counted.cells, row.counted.cells);
  rawTotal += row.rawTotal;
  counted.total += row.counted.total;
  billable += row.billable();
  if (!row.cents) return;
  const auto same = std::find_if(amounts.begin(), amounts.end(), [&](const Amount& amount) {
    return amount.currency == row.terms.currency;
  });
  if (same == amounts.end()) {
    amounts.push_back({row.terms.currency, *row.cents});
  } else {
    same->cents += *row.cents;
  }
}

Sheet sheetReport(SpanReader& reader, const Calendar& calendar, const TermsByProject& terms,
                  const SheetQuestion& question) {
  Sheet sheet{.question = question, .by = question.columns.value_or(usualBy(question.range))};
  sheet.columns = pieces(question.range, sheet.by);
  LocalDays days(calendar, question.range);
  const Wanted wanted(question, reader.projects());
  std::map<const Project*, DaySeconds> seconds;
  DaySeconds waiting(days.size());
  reader.each(days.range(), [&](const Ev& ev) {
    if (ev.idle) return;
    const auto* project = wanted.of(ev);
    if (!project && !waitsForProject(ev, reader.projects())) return;
    auto& sums = project ? seconds[project] : waiting;
    sums.resize(days.size());
    days.split(ev, [&](std::size_t day, const Ev& part) { sums[day] += part.duration(); });
  });
  for (const auto& [project, sums] : seconds) {
    auto row = rowOf(*project, terms, sheet, sums);
    if (row.rawTotal > 0 || row.counted.total > 0) sheet.rows.push_back(std::move(row));
  }
  sortRows(sheet.rows);
  sheet.totals.raw.resize(sheet.columns.size());
  sheet.totals.counted.cells.resize(sheet.columns.size());
  for (const auto& row : sheet.rows) sheet.totals.add(row);
  if (!question.client && !question.project) {
    sheet.unassigned = SheetRow{.name = "Sans projet"};
    sheet.unassigned->terms.billable = false;
    count(*sheet.unassigned, sheet, waiting);
  }
  sheet.rule = ruleOf(sheet);
  sheet.whole = reader.whole();
  return sheet;
}

SheetEntries sheetEntries(SpanReader& reader, const Calendar& calendar,
                          const SheetQuestion& question) {
  constexpr double kInterruption = 300;
  constexpr double kShortest = 60;
  const Wanted wanted(question, reader.projects());
  std::map<const Project*, SheetEntry> open;
  std::vector<SheetEntry> entries;
  const auto close = [&](const SheetEntry& entry) {
    if (entry.seconds >= kShortest) entries.push_back(entry);
  };
  reader.each(question.range.bounds(calendar), [&](const Ev& ev) {
    const auto* project = ev.idle || ev.duration() <= 0 ? nullptr : wanted.of(ev);
    if (!project) return;
    const auto [found, isNew] = open.try_emplace(project);
    auto& entry = found->second;
    if (isNew || ev.start - entry.end > kInterruption) {
      if (!isNew) close(entry);
      entry = {ev.start, ev.end, 0, project->id, project->name, project->client};
    }
    entry.end = std::max(entry.end, ev.end);
    entry.seconds += ev.duration();
  });
  for (const auto& [project, entry] : open) close(entry);
  std::sort(entries.begin(), entries.end(), [](const SheetEntry& a, const SheetEntry& b) {
    return std::tie(a.start, a.project) < std::tie(b.start, b.project);
  });
  return {std::move(entries), reader.whole()};
}

}  // namespace orvanta
