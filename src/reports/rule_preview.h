// What a rule would change, before it is saved.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "reports/text_shares.h"
#include "storage/database.h"
#include "storage/rule.h"

namespace orvanta {

/// What saving a rule would do to the recorded activity; idle spans are no part of it.
struct RulePreview {
  /// Spans that would count as something else in one and the same way.
  struct Change {
    std::string fromCategory;
    std::string toCategory;
    std::optional<int64_t> fromProject;
    std::optional<int64_t> toProject;
    SpanCount count;
  };
  /// A text of the rule's field that the pattern catches.
  struct Example {
    std::string text;
    SpanCount count;
    std::vector<TextShare> titles;  ///< the 10 largest
    std::vector<TextShare> urls;    ///< the 10 largest
  };

  SpanCount caught;
  SpanCount changed;  ///< those that get another category or project; of a rule that is edited,
                      ///< also what it catches now and would no longer
  SpanCount kept;     ///< of what is caught: those that do not, being decided by hand
  std::vector<Change> changes;    ///< by falling seconds, at most 8
  std::vector<Example> examples;  ///< the 5 largest
  bool whole = true;              ///< false when not all spans could be read
};

/// The preview of saving `rule`, with priority 0 and in the place of those that it replaces(), over
/// the spans that overlap `range`, clipped to it; `edited` is the id of one more rule that goes.
/// Only spans that its pattern or the edited one's catches are classified, as before and after: all
/// rules that come or go have one of these. Of a long range it holds a few numbers for each
/// distinct text that was caught, not the texts, which are told apart by their hashes. Any thread;
/// throws nothing.
RulePreview previewRule(Database& db, const Rule& rule, std::optional<int64_t> edited,
                        const TimeRange& range);

}  // namespace orvanta
