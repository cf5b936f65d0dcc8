// The timesheet that a bill is made from: projects by days, as they are and as they are counted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reports/period.h"
#include "reports/rounding.h"
#include "storage/project_terms.h"

namespace orvanta {

class SpanReader;

struct SheetQuestion {
  DateRange range;  ///< of at most kMostDays
  std::optional<PeriodBy> columns;
  std::optional<std::string> client;  ///< only this one's projects, whatever the case
  std::optional<int64_t> project;     ///< only this one
  std::optional<Rounding> rounding;   ///< instead of what is agreed for each project
  HourUnit unit = HourUnit::Clock;
};

/// Seconds, as printed in the sheet's unit of hours.
struct SheetRow {
  int64_t project = 0;  ///< 0 for what has none
  std::string name;
  std::string color;
  std::string client;  ///< "" for none
  bool archived = false;
  ProjectTerms terms;
  Rounding rounding;
  std::vector<int64_t> raw;  ///< by column, not rounded
  int64_t rawTotal = 0;
  RoundedRow counted;
  std::optional<int64_t> cents;  ///< absent when not billable or without a rate

  /// What this and others of its kind come to, of counted time.
  int64_t billable() const { return terms.billable ? counted.total : 0; }
};

struct Amount {
  std::string currency;
  int64_t cents = 0;
};

/// Sums of rows as they are printed: no total is anything but the sum of what stands beside it.
struct SheetTotals {
  std::vector<int64_t> raw;
  int64_t rawTotal = 0;
  RoundedRow counted;  ///< its total is that of the rows' totals
  int64_t billable = 0;
  std::vector<Amount> amounts;  ///< by currency

  void add(const SheetRow& row);
};

struct Sheet {
  SheetQuestion question;
  PeriodBy by = PeriodBy::Day;
  std::vector<DateRange> columns;
  std::vector<SheetRow> rows;  ///< by client and name, those without a client last
  SheetTotals totals;          ///< of the rows
  /// Work without a project, which waits for one: activity that is neither leisure nor other. Not
  /// in the totals; absent where one client or project was asked for.
  std::optional<SheetRow> unassigned;
  std::string rule;  ///< how it is rounded, in French
  bool whole = true;
};

/// Counts activity only: absences are nobody's hours.
Sheet sheetReport(SpanReader& reader, const Calendar& calendar, const TermsByProject& terms,
                  const SheetQuestion& question);

/// A stretch of work on a project, interrupted for no more than five minutes.
struct SheetEntry {
  double start = 0;
  double end = 0;
  double seconds = 0;  ///< of work in it
  int64_t project = 0;
  std::string name;
  std::string client;
};

struct SheetEntries {
  std::vector<SheetEntry> list;  ///< of at least a minute, by start
  bool whole = true;
};

/// Those of the sheet's projects.
SheetEntries sheetEntries(SpanReader& reader, const Calendar& calendar,
                          const SheetQuestion& question);

/// What a project took, and what is left of its hours.
struct ProjectHours {
  int64_t project = 0;
  double thisMonth = 0;
  double lastMonth = 0;
  double used = 0;     ///< of the budget, from the day on that it counts from
  double perWeek = 0;  ///< on average of the last four
  std::optional<double> left;
  std::optional<Date>
      runsOut;  ///< at that pace; absent when nothing is left, or nobody works on it
};

/// Of every project. Reads back to where the oldest budget begins, which may be all there is.
std::vector<ProjectHours> projectHours(SpanReader& reader, const Calendar& calendar, double now,
                                       const TermsByProject& terms);

}  // namespace orvanta
