// Somebody changes what was recorded while the recording goes on.
#include <algorithm>

#include "capture/engine.h"

namespace orvanta {

Written Engine::hold(const TimeRange& range, Changes what) {
  const double now = closingTime();
  if (open_) {
    describe();
    log_.extend(now);
  }
  auto written = log_.write();
  publish();
  if (!written) return written;
  log_.hold(now);
  cut_.reset();
  limit_.reset();
  if (what == Changes::Absences) {
    limit_ = open_ && !open_->sample().idle ? open_->start() : now;
    if (!open_ || !open_->sample().idle) return written;
  }
  if (!open_ || open_->start() >= range.end || now <= range.start || range.end <= range.start) {
    return written;
  }
  cut_ = {open_->start(), now};
  limit_ = now;
  // What comes next cannot have begun in what may be changed.
  lastEnd_ = std::max(lastEnd_, now);
  if (candidate_) candidate_->since = std::max(candidate_->since, now);
  return written;
}

void Engine::release(bool changed) {
  const auto cut = changed ? cut_ : std::nullopt;
  log_.release(cut ? std::optional(cut->at) : std::nullopt);
  cut_.reset();
  if (cut && open_ && open_->start() == cut->start) {
    open_->beginAgain(cut->at);
    log_.describe(open_->sample().title, open_->sample().url);
  }
  log_.write().forget();
  publish();
}

}  // namespace orvanta
