// What was ever done, without the times when: some percent of the spans that it was done in.
#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "base/calendar.h"
#include "base/string_pool.h"
#include "storage/activity_chunk.h"
#include "storage/activity_time.h"
#include "storage/database.h"

namespace orvanta {

/// The distinct activities of all spans that are no absences: application, domain, title, address,
/// and the category and project set by hand. From the index where that holds true, else from the
/// spans themselves: without one it takes seconds for years of them. Used by one thread, any;
/// throws nothing.
class Activities {
 public:
  static constexpr uint32_t kUnwanted = UINT32_MAX;
  using Sort = std::function<uint32_t(const Ev&)>;
  using Take = std::function<void(uint32_t number, const ActivityTime&)>;

  /// `db` and `texts` outlive it. Applications, domains and categories that it shows are in
  /// `texts`, as a Classifier needs them; months are those of `calendar`.
  Activities(Database& db, StringPool& texts, Calendar calendar = {})
      : db_(db), texts_(texts), calendar_(std::move(calendar)) {}

  /// Shows each activity, as a span without times and id, to `sort`, which yields a number for it,
  /// kUnwanted where nothing else is asked. Under that number its spans are told to `take`, some at
  /// a time and each span once, as a Snapshot of this thread sees the store. One activity may be
  /// shown more than once, and one that has no spans any more. Titles and addresses are valid
  /// during the call only. Neither may call into the database. False when not all could be read.
  bool each(const Sort& sort, const Take& take);

  /// The same of the spans that start on the days of these stamps, as far as the index has them.
  /// Yields the days that it had; they come in their order.
  std::vector<int64_t> eachIndexed(const StampedDays& stamps, const Sort& sort, const Take& take);

 private:
  bool eachOther(const std::vector<int64_t>& indexed, const Sort& sort, const Take& take);

  Database& db_;
  StringPool& texts_;
  const Calendar calendar_;
};

}  // namespace orvanta
