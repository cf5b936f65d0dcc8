// The recorded spans of ranges of time.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <vector>

#include "base/calendar.h"
#include "base/string_pool.h"
#include "classify/classifier.h"
#include "classify/current_rules.h"
#include "storage/database.h"
#include "storage/ev.h"
#include "storage/project.h"
#include "storage/snapshot.h"

namespace orvanta {

/// What is said of a report that could not read all of its spans.
inline constexpr auto kIncomplete =
    "Une partie du fichier des données est illisible : ce rapport n’est pas complet.";

/// Whether a span has a part in `range`; touching it is not enough.
inline bool overlaps(const Ev& ev, const TimeRange& range) {
  return ev.end > range.start && ev.start < range.end;
}

/// Leaves of an overlapping span the part that lies in `range`.
inline void clip(Ev& ev, const TimeRange& range) {
  ev.start = std::max(ev.start, range.start);
  ev.end = std::min(ev.end, range.end);
}
inline Ev clipped(Ev ev, const TimeRange& range) {
  clip(ev, range);
  return ev;
}

/// Reads and classifies spans for one report: spans, rules and projects as they were when it began,
/// whatever is written meanwhile, so it lasts no longer than that (see Snapshot). The texts of its
/// spans live as long as it does, but for titles and addresses where that is said. Used by one
/// thread.
class SpanReader {
 public:
  /// `db` outlives the reader.
  SpanReader(Database& db, const CurrentRules& rules);
  explicit SpanReader(Database& db);
  SpanReader(const SpanReader&) = delete;
  SpanReader& operator=(const SpanReader&) = delete;

  /// Shows to `visit`, by stored start, the spans that overlap `range`, clipped to it and
  /// classified. One that only touches the range is not among them. Costs what the range holds,
  /// whatever the history; shows nothing when the store cannot be read. A title or address is
  /// valid during its visit only, so that the memory taken hardly grows with the range. `visit`
  /// must not call into the database.
  void each(const TimeRange& range, const std::function<void(const Ev&)>& visit);

  /// All of them, for reports that go over them more than once.
  std::vector<Ev> all(const TimeRange& range);

  /// These spans by stored start, whole and classified; what is no span's id is passed over.
  void eachOf(const std::vector<int64_t>& ids, const std::function<void(const Ev&)>& visit);

  /// Like each, but the rows as they are stored, neither clipped nor classified.
  void walk(const TimeRange& range, const std::function<void(const Cursor&)>& visit);

  /// Why one of the spans shown counts as it does.
  Decision explain(const Ev& ev) { return classifier_.decide(ev); }

  /// False once something could not be read: what was shown is not all.
  bool whole() const { return whole_; }

  const Projects& projects() const { return book_->projects(); }
  const std::vector<Rule>& rules() const { return book_->rules(); }

 private:
  Ev read(const Cursor& row, const TimeRange& range);

  Database& db_;
  const Snapshot snapshot_;
  bool whole_ = true;
  const std::shared_ptr<const RuleBook> book_;
  StringPool texts_;
  EvReader reader_;
  Classifier classifier_;
};

}  // namespace orvanta
