// Finds again what was done, in all years.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "classify/current_rules.h"
#include "reports/found.h"
#include "reports/known_activities.h"
#include "storage/database.h"

namespace orvanta {

struct SearchQuestion {
  std::string text;            ///< see searchWords()
  std::optional<Date> before;  ///< of days, only those; all else is told of all
  std::size_t days = 10;       ///< at most
  bool wait = true;            ///< for what is not indexed, however long that takes
};

/// Looks for words in the project, site, application, title and address of each activity; absences
/// have none. What is found is what the store holds at that moment: of a past day what the index of
/// activities has while its stamp holds true, else its spans. Any thread.
class ActivitySearch {
 public:
  /// The references outlive it.
  ActivitySearch(Database& db, const CurrentRules& rules, const Calendar& calendar);

  /// Of a text without words nothing is found, but the next question is answered sooner.
  Found find(const SearchQuestion& question) const;

  /// Shows the spans that have all the words of `text`, classified, by their start. `visit` must
  /// not call into the database. False when some could not be read.
  bool each(const std::string& text, const std::function<void(const Ev&)>& visit) const;

  /// Gives back what is held, unless somebody has just searched.
  void releaseUnused() const;

 private:
  class Searching;
  const KnownActivities& known(const std::shared_ptr<const RuleBook>& book,
                               const StampedDays& stamps) const;

  Database& db_;
  const CurrentRules& rules_;
  const Calendar calendar_;
  mutable std::mutex mutex_;  // guards the next
  mutable std::unique_ptr<const KnownActivities> known_;
  mutable std::chrono::steady_clock::time_point used_;
};

}  // namespace orvanta
