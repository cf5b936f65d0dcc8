// Which time is covered by spans.
#pragma once

#include <vector>

#include "base/calendar.h"
#include "storage/file_connection.h"

namespace orvanta {

/// A set of instants, built from spans in the order of their starts.
class Coverage {
 public:
  /// `start` is not before the one added last. Nothing is added by a span that does not last.
  void add(double start, double end);

  /// The seconds of a span that are covered.
  double covered(double start, double end) const;

  /// In order, without overlaps.
  const std::vector<TimeRange>& ranges() const { return ranges_; }

 private:
  std::vector<TimeRange> ranges_;
};

/// What the spans of a store cover, absences included.
Coverage coverageOf(const FileConnection& store);

}  // namespace orvanta
