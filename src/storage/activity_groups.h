// Spans gathered by what was done in them.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "base/calendar.h"
#include "storage/ev.h"

namespace orvanta {

/// What the spans of one activity add up to that start in one month.
struct ActivityTime {
  int month = 0;       ///< year * 12 + month - 1 of the span's start, local
  double seconds = 0;  ///< that they last
  int64_t spans = 0;
  double first = 0;     ///< start of the first of them, Unix seconds
  int64_t example = 0;  ///< id of that one
};

/// Adds what some spans add up to, to what the others of the month do.
void addTime(std::vector<ActivityTime>& times, const ActivityTime& some);

/// By which activities are told apart while the program runs, as StringPool::hashOf() does texts.
uint64_t hashOfActivity(const Ev& ev);

/// Finds the local month of instants (Unix seconds), quickly where they come in the order of time.
class Months {
 public:
  explicit Months(const Calendar& calendar) : calendar_(calendar.pinned()) {}
  int of(double instant);

 private:
  const Calendar calendar_;
  TimeRange range_;  // of the month asked for last
  int month_ = 0;
};

/// Spans that are no absences, by application, domain, title, address and what was set by hand.
/// Activities are told apart by a hash of these, so that those that are not wanted are not kept.
class ActivityGroups {
 public:
  using Wants = std::function<bool(const Ev&)>;
  using Take = std::function<void(const Ev&, std::span<const ActivityTime>)>;

  ActivityGroups(const Calendar& calendar, Wants wants)
      : months_(calendar), wants_(std::move(wants)) {}

  /// What it keeps has its application, domain and category where `ev` has them.
  void add(const Ev& ev);
  /// Each activity that is wanted, without times of its own, and its months in no order.
  void tell(const Take& take) const;

 private:
  struct Group {
    Ev activity;
    std::vector<ActivityTime> times;
  };
  static constexpr uint32_t kUnwanted = UINT32_MAX;
  uint32_t placeOf(const Ev& ev);

  Months months_;
  const Wants wants_;
  StringPool texts_;  // titles and addresses
  boost::unordered_flat_map<uint64_t, uint32_t> places_;
  std::vector<Group> groups_;
};

}  // namespace orvanta
