// The past as it is searched: what the index of activities tells, kept in memory for a while.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "classify/rule_book.h"
#include "reports/search_words.h"
#include "storage/activities.h"

namespace orvanta {

/// The activities of the days that the index has, their titles and addresses folded, and their time
/// on each of these days. Ten years are some tens of MB. Used by one thread at a time.
class KnownActivities {
 public:
  /// To be made within a Snapshot of the caller's.
  KnownActivities(Database& db, std::shared_ptr<const RuleBook> book, const StampedDays& stamps);

  /// These days; whoever uses what is known of a day looks whether it still has this stamp.
  const StampedDays& days() const { return days_; }
  const RuleBook& book() const { return *book_; }

  struct Activity {
    uint32_t app = 0;     // text
    uint32_t domain = 0;  // text, kNone of none
    int32_t project = -1;
    uint64_t texts = 0;  // where title and address begin
  };
  /// Which words each activity has, by its number.
  std::vector<SearchedWords::Mask> wordsIn(const std::vector<std::string>& words,
                                           const Projects& projects) const;
  const Activity& activity(std::size_t number) const { return activities_[number]; }
  Text text(uint32_t id) const { return id == kNone ? Text() : named_[id]; }
  std::optional<int64_t> project(const Activity& activity) const;

  /// The spans of an activity that started on one day, as ActivityTime.
  struct Record {
    uint32_t activity;
    uint32_t first;  // Unix seconds
    float seconds;
  };
  /// Those of a day by its place among days().
  std::span<const Record> records(std::size_t day) const;

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  uint32_t add(Ev ev, class Classifier& classifier);
  uint32_t keep(Text text);

  const std::shared_ptr<const RuleBook> book_;
  StringPool pool_;
  std::vector<Text> named_;  // by id in the pool
  std::vector<int64_t> projects_;
  std::vector<Activity> activities_;
  std::string texts_;  // title and address of each activity, a line each
  StampedDays days_;
  std::vector<std::size_t> ends_;  // of the records of each day
  std::vector<Record> records_;
};

}  // namespace orvanta
