// Adds up what a search finds, and lists its days.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "reports/found.h"
#include "storage/activity_time.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

class SearchSums {
 public:
  explicit SearchSums(const Calendar& calendar) : months_(calendar) {}

  /// Spans that start in one month, the first of them at `first`.
  void add(double first, double seconds);
  struct Subject {
    Found::Subject::Kind kind;
    std::string name;
    std::optional<int64_t> project;
    friend auto operator<=>(const Subject&, const Subject&) = default;
  };
  void add(const Subject& subject, double seconds) { subjects_[subject] += seconds; }

  /// All but the days.
  Found found() const;

 private:
  Months months_;
  double seconds_ = 0;
  std::optional<double> first_;
  std::map<int, double> byMonth_;
  std::pair<int, double*> latest_;  // of these
  std::map<Subject, double> subjects_;
};

/// Lists the days of what is found, the newest first.
class DayLister {
 public:
  /// Of at most `most` days, those before `before` where that is given.
  DayLister(const Calendar& calendar, const Projects& projects, const std::optional<Date>& before,
            std::size_t most)
      : calendar_(calendar.pinned()), projects_(projects), before_(before), most_(most) {}

  /// Shows what was found of the spans that start in a range, by their start.
  using Each = std::function<void(const TimeRange&, const std::function<void(const Ev&)>& visit)>;
  /// `days` in UTC, in their order, on which something was found.
  void list(const std::vector<int64_t>& days, const Each& each);

  void addTo(Found& found);

 private:
  void add(const Date& date, const Each& each);

  const Calendar calendar_;
  const Projects& projects_;
  const std::optional<Date> before_;
  const std::size_t most_;
  std::vector<Found::Day> days_;
  std::optional<double> last_;
  bool more_ = false;
};

}  // namespace orvanta
