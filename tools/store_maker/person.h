// The days of an invented person.
#pragma once

#include <random>

#include "base/calendar.h"
#include "store_maker/activities.h"
#include "store_maker/span_writer.h"

namespace orvanta {

/// The same days give the same life. Weekdays are work with pauses, a lunch and some evenings,
/// weekends mostly free; the eighth day before the last is spent elsewhere, and what was corrected
/// by hand is older than three days.
class Person {
 public:
  /// `oddities`: every text that comes from the outside may be an unusual one, not only those of
  /// the thirtieth day before the last.
  explicit Person(bool oddities) : oddities_(oddities) {}

  /// Lives the day `ago` days before the last one.
  void live(SpanWriter& spans, const Date& date, int ago);

 private:
  double chance() { return std::uniform_real_distribution<double>(0, 1)(random_); }
  const Activity& pick(const std::vector<Activity>& from);
  double session(double from, double to, const std::vector<Activity>& mostly, double straying);
  void away(double from, double seconds);
  void workday(double midnight);
  void weekend(double midnight, bool sunday);
  MadeSpan spanOf(const Activity& activity, double start, double end);
  void correct(MadeSpan& span);

  SpanWriter* spans_ = nullptr;  // of the day that is lived
  const bool oddities_;
  const Calendar calendar_;
  int ago_ = 0;
  int count_ = 0;
  std::mt19937 random_{20261119};  // NOLINT(cert-msc51-cpp): the same life every time
};

/// The whole day up to `now` in `count` spans, each of another application than the one before.
void liveRestlessly(SpanWriter& spans, double midnight, double now, int count);

}  // namespace orvanta
