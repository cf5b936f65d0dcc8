// The recorded spans of ranges of time.
#pragma once

#include <functional>
#include <vector>

#include "base/calendar.h"
#include "base/string_pool.h"
#include "classify/classifier.h"
#include "storage/database.h"
#include "storage/ev.h"
#include "storage/project.h"

namespace orvanta {

/// Reads and classifies spans for one request, with the rules and projects as they were when it
/// began. The texts of its spans live as long as it does. Not thread-safe.
class SpanReader {
 public:
  /// `db` outlives the reader.
  explicit SpanReader(Database& db);
  SpanReader(const SpanReader&) = delete;
  SpanReader& operator=(const SpanReader&) = delete;

  /// Shows to `visit`, by stored start, the spans that overlap `range`, clipped to it and
  /// classified. One that only touches the range is not among them. Costs what the range holds,
  /// whatever the history; shows nothing when the store cannot be read. `visit` must not call into
  /// the database.
  void each(const TimeRange& range, const std::function<void(const Ev&)>& visit);

  /// All of them, for reports that go over them more than once.
  std::vector<Ev> all(const TimeRange& range);

  const Projects& projects() const { return projects_; }
  const std::vector<Rule>& rules() const { return rules_; }

 private:
  Database& db_;
  const std::vector<Rule> rules_;
  const Projects projects_;
  StringPool pool_;
  EvReader reader_;
  Classifier classifier_;
};

}  // namespace orvanta
