#include "capture/open_span.h"

#include <algorithm>
#include <utility>

namespace orvanta {

OpenSpan::OpenSpan(Sample sample, double at)
    : lastFlush(at), key_(sample.key()), sample_(std::move(sample)), start_(at) {
  bestTitle_ = sample_.title;
  if (sample_.title) titleTime_[*sample_.title] = 0;
}

void OpenSpan::beginAgain(double at) {
  start_ = at;
  titleTime_.clear();
  bestTitle_ = sample_.title;
  bestTime_ = 0;
}

// A page may show another title at every tick, for hours: those seen least are then forgotten.
void OpenSpan::countTitle(double seconds) {
  constexpr std::size_t kMostTitles = 128;
  if (!sample_.title) return;
  const auto& title = *sample_.title;
  if (titleTime_.size() >= kMostTitles && !titleTime_.contains(title)) {
    const auto least =
        std::min_element(titleTime_.begin(), titleTime_.end(), [](const auto& a, const auto& b) {
          return a.second < b.second;
        })->second;
    std::erase_if(titleTime_, [&](const auto& seen) {
      return seen.second <= least && seen.first != bestTitle_;
    });
  }
  const double seen = titleTime_[title] += seconds;
  if (seen > bestTime_) {
    bestTime_ = seen;
    bestTitle_ = title;
  }
}

}  // namespace orvanta
