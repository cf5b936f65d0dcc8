// The reports that the dashboard shows.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "classify/current_rules.h"
#include "reports/activity_search.h"
#include "reports/gaps.h"
#include "reports/goals.h"
#include "reports/period.h"
#include "reports/period_days.h"
#include "reports/report.h"
#include "reports/sheet.h"
#include "storage/database.h"

namespace orvanta {

class SpanReader;

/// Builds each report from the store of the moment it is asked for. Reports never fail: missing
/// data gives empty lists and zero totals, and a report of a day, a week or two that could not read
/// all of its spans says so. May be called from any thread.
class Analytics {
 public:
  /// `db` outlives it.
  Analytics(Database& db, Clock clock, Calendar calendar = {});

  /// The local day that it is now.
  Date today() const { return calendar_.dateOf(clock_()); }

  DayReport day(const Date& date) const;
  /// What the menu tells of it, at half the price.
  DayTotals totals(const Date& date) const;
  /// The week that holds the date.
  WeekReport week(const Date& date) const;
  /// That week beside the one before.
  Recap recap(const Date& date) const;
  /// What of the last 14 days might belong to a project; see SuggestionFinder.
  std::vector<Suggestion> suggestions() const;

  /// Any days; see period.h.
  PeriodReport period(const PeriodQuestion& question) const;
  PeriodDays periodDays(const DateRange& range, const ActivityFilter& filter) const;

  /// See gaps.h.
  GapReport gaps(const DateRange& dates, double least, const std::vector<TimeRange>& skipped) const;
  std::vector<Project> likelyProjects(const TimeRange& gap) const;

  /// See goals.h.
  std::vector<GoalState> goals(const std::vector<Goal>& goals, bool week) const;
  std::vector<GoalHistory> goalHistory(const std::vector<Goal>& goals,
                                       const DateRange& range) const;

  Sheet sheet(const SheetQuestion& question) const;
  SheetEntries sheetEntries(const SheetQuestion& question) const;
  std::vector<ProjectHours> projectHours() const;

  /// See activity_search.h.
  const ActivitySearch& search() const { return search_; }

  /// The spans of the days `from` to `to`, both included, as CSV; `write` gets it piece by piece,
  /// so that a long range takes no more memory than a short one. Only the header when `to` is
  /// before `from`. `write` must not call into the database. False when some of the spans could not
  /// be read.
  bool exportCsv(const Date& from, const Date& to,
                 const std::function<void(std::string_view)>& write) const;

  /// The spans that have all these words, in the same form.
  bool exportFound(const std::string& text,
                   const std::function<void(std::string_view)>& write) const;

  /// Gives back what is held to be quick when more is asked.
  void releaseMemory() const;

 private:
  WeekSummary summary(SpanReader& reader, const Date& monday) const;

  Database& db_;
  const CurrentRules rules_;
  Clock clock_;
  Calendar calendar_;
  const ActivitySearch search_;
};

}  // namespace orvanta
