// The reports that the dashboard shows.
#pragma once

#include <functional>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "classify/current_rules.h"
#include "reports/report.h"
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

  /// The spans of the days `from` to `to`, both included, as CSV; `write` gets it piece by piece,
  /// so that a long range takes no more memory than a short one. Only the header when `to` is
  /// before `from`. `write` must not call into the database. False when some of the spans could not
  /// be read.
  bool exportCsv(const Date& from, const Date& to,
                 const std::function<void(std::string_view)>& write) const;

  /// Gives back what is held to be quick when more is asked.
  void releaseMemory() const;

 private:
  WeekSummary summary(SpanReader& reader, const Date& monday) const;

  Database& db_;
  const CurrentRules rules_;
  Clock clock_;
  Calendar calendar_;
};

}  // namespace orvanta
