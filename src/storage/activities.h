// What was ever done, without the times when: some percent of the spans that it was done in.
#pragma once

#include <cstdint>
#include <vector>

#include "base/calendar.h"
#include "base/string_pool.h"
#include "storage/activity_chunk.h"
#include "storage/activity_groups.h"
#include "storage/database.h"

namespace orvanta {

/// The distinct activities of all spans that are no absences: application, domain, title, address,
/// and the category and project set by hand. From the index where that holds true, else from the
/// spans themselves: without one it takes seconds for years of them. Used by one thread, any;
/// throws nothing.
class Activities {
 public:
  using Wants = ActivityGroups::Wants;
  using Take = ActivityGroups::Take;

  /// `db` and `texts` outlive it. Applications, domains and categories that it shows are in
  /// `texts`, as a Classifier needs them; months are those of `calendar`.
  Activities(Database& db, StringPool& texts, const Calendar& calendar = {})
      : db_(db), texts_(texts), calendar_(calendar) {}

  /// Shows each activity, as a span without times and id, to `wants`, and those that it wants to
  /// `take` with their months. One activity may be shown more than once, with a part of its spans
  /// each time; each span is counted once, as a Snapshot of this thread sees the store. Titles,
  /// addresses and months are valid during the call only. Neither may call into the database.
  /// False when not all could be read.
  bool each(const Wants& wants, const Take& take);

 private:
  // Yields the days that were told, in their order.
  std::vector<int64_t> eachIndexed(const StampedDays& stamps, const Wants& wants, const Take& take);
  bool eachOther(const std::vector<int64_t>& indexed, const Wants& wants, const Take& take);

  Database& db_;
  StringPool& texts_;
  const Calendar calendar_;
};

}  // namespace orvanta
