// Between which activities nobody was there.
#pragma once

#include <functional>
#include <optional>

#include "base/calendar.h"

namespace orvanta {

/// Is told of activities as they are recorded, and tells of the time between two of them when
/// somebody is back. Times are Unix seconds.
class Absences {
 public:
  /// Gets the time between the last activity and the new one. Any length.
  using Returned = std::function<void(const TimeRange& absence)>;

  void setReturned(Returned returned) { returned_ = std::move(returned); }

  void activityBegins(double at);
  void activityEnds(double at) { lastActivity_ = at; }
  /// What seemed to be activity since then was none.
  void activityEndedBy(double at);

  /// Somebody is there. Tells of the absence before, some seconds after it has ended.
  void somebodyIsThere(double now);

  /// What was is over, and no absence reaches into it: a pause, a clock that was set.
  void forget();

 private:
  double firstActivity_ = 0;  // since when there is activity without an interruption like these
  double lastActivity_ = 0;   // end of the last of it that has ended; 0: none has
  std::optional<TimeRange> absence_;  // that is over and has not been told
  Returned returned_;
};

}  // namespace orvanta
