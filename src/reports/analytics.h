// The reports that the dashboard shows.
#pragma once

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "base/calendar.h"
#include "base/clock.h"
#include "storage/database.h"

namespace orvanta {

class SpanReader;

/// Builds each report from the store at the moment it is asked for. Reports never fail: missing
/// data gives empty lists and zero totals, and a report of a day, a week or two that could not read
/// all of its spans says so under "incomplete", in a French sentence. Holds no state; may be called
/// from any thread.
class Analytics {
 public:
  /// `db` outlives it.
  Analytics(Database& db, Clock clock, Calendar calendar = {});

  /// One local day: "date", "start", "end", "first", "last", "segments", "blocks", "totals",
  /// "projects". `date` is "yyyy-MM-dd"; today when absent or not a date.
  boost::json::object day(const std::optional<std::string>& date) const;

  /// Of the local day only "totals" and "projects", at half the price.
  boost::json::object totals(const std::optional<std::string>& date) const;

  /// The week, Monday to Sunday, that holds the date: "monday", "days" with "date", "active",
  /// "by_category", "first" and "last" each, "by_category", "by_project".
  boost::json::object week(const std::optional<std::string>& date) const;

  /// The week that holds the date beside the one before: "monday", "current", "previous". Each of
  /// the two has the week's totals and "days_active", "avg_per_day", "longest_session", "best_day".
  boost::json::object recap(const std::optional<std::string>& date) const;

  /// What of the last 14 days might belong to a project; see SuggestionFinder.
  boost::json::array suggestions() const;

  /// The spans of the days `from` to `to`, both included, as CSV; `write` gets it piece by piece,
  /// so that a long range takes no more memory than a short one. Only the header when `to` is
  /// before `from`. A date that is absent or none means today. `write` must not call into the
  /// database. False when some of the spans could not be read.
  bool exportCsv(const std::optional<std::string>& from, const std::optional<std::string>& to,
                 const std::function<void(std::string_view)>& write) const;

 private:
  Date parseDate(const std::optional<std::string>& text) const;
  boost::json::object summary(SpanReader& reader, const Date& monday) const;

  Database& db_;
  Clock clock_;
  Calendar calendar_;
};

}  // namespace orvanta
