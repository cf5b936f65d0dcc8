// The span that is being recorded.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "capture/sample.h"

namespace orvanta {

/// Counts how long each title was seen: the span is called by the one seen longest. Times are Unix
/// seconds.
class OpenSpan {
 public:
  OpenSpan(Sample sample, double at);

  const std::string& key() const { return key_; }
  /// The latest that belongs to it.
  const Sample& sample() const { return sample_; }
  void see(Sample sample) { sample_ = std::move(sample); }

  double start() const { return start_; }
  /// Goes on as a span of its own.
  void beginAgain(double at);

  /// The title in front was seen so many seconds more.
  void countTitle(double seconds);
  /// The stored URL must be one that was seen with the stored title, so the pair is written only
  /// while the title seen longest is the one in front.
  bool describes() const { return sample_.title && sample_.title == bestTitle_; }

  double lastFlush = 0;  ///< when it was last brought into the store

 private:
  std::string key_;
  Sample sample_;
  double start_;
  std::map<std::string, double> titleTime_;  // seconds seen per title, of the latest and longest
  std::optional<std::string> bestTitle_;     // the title of titleTime_ with the most
  double bestTime_ = 0;
};

}  // namespace orvanta
