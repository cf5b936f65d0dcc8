#include "capture/absences.h"

#include <algorithm>
#include <utility>

namespace orvanta {

void Absences::activityBegins(double at) {
  if (lastActivity_ == 0) {
    firstActivity_ = at;
  } else if (at > lastActivity_) {
    absence_ = {absence_ ? absence_->start : lastActivity_, at};
  }
}

void Absences::activityEndedBy(double at) {
  lastActivity_ = at > firstActivity_ ? std::min(lastActivity_, at) : 0;
}

void Absences::somebodyIsThere(double now) {
  constexpr double kIsBack = 4.0;  // the screen may be locked a moment after waking
  if (!absence_ || now - absence_->end < kIsBack) return;
  const auto absence = *std::exchange(absence_, std::nullopt);
  if (returned_) returned_(absence);
}

void Absences::forget() {
  absence_.reset();
  lastActivity_ = 0;
}

}  // namespace orvanta
