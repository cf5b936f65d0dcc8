#include "storage/activities.h"

#include <algorithm>
#include <boost/unordered/unordered_flat_map.hpp>
#include <optional>
#include <string>
#include <system_error>

#include "storage/activity_index.h"
#include "storage/snapshot.h"

namespace orvanta {
namespace {

constexpr auto kSpans =
    "SELECT id,start,end,app,domain,title,url,idle,category,project_id FROM events";

// Tells one file of days after the other.
class ChunkTeller {
 public:
  ChunkTeller(const ActivityList& list, StringPool& texts, const Calendar& calendar,
              const Activities::Sort& sort, const Activities::Take& take)
      : months_(calendar), take_(take) {
    parts_ =
        list.each(texts, [&](const Ev* ev) { sorted_.push_back(ev ? sort(*ev) : kErased); }).parts;
    std::sort(parts_.begin(), parts_.end());
  }

  /// Of the days that have these stamps. Adds those that were told to `told`.
  void tell(const std::filesystem::path& file, std::span<const StampedDay> stamps,
            std::vector<int64_t>& told);

 private:
  static constexpr uint32_t kErased = Activities::kUnwanted - 1;

  bool knowsAll() const;
  void tell(const ActivityChunk::Record& record);

  Months months_;
  const Activities::Take& take_;
  std::vector<uint32_t> sorted_;  // numbers of the caller, by number in the list
  std::vector<uint64_t> parts_;
  ActivityChunk chunk_;  // kept for its memory
};

// A list that is older than the file, or has lost texts since, is as good as none.
bool ChunkTeller::knowsAll() const {
  if (chunk_.part != 0 && !std::binary_search(parts_.begin(), parts_.end(), chunk_.part)) {
    return false;
  }
  return std::all_of(chunk_.records.begin(), chunk_.records.end(), [&](const auto& record) {
    return record.activity < sorted_.size() && sorted_[record.activity] != kErased;
  });
}

void ChunkTeller::tell(const ActivityChunk::Record& record) {
  const auto number = sorted_[record.activity];
  if (number == Activities::kUnwanted) return;
  take_(number, {.month = months_.of(record.first),
                 .seconds = record.seconds,
                 .spans = record.spans,
                 .first = record.first,
                 .example = record.example});
}

void ChunkTeller::tell(const std::filesystem::path& file, std::span<const StampedDay> stamps,
                       std::vector<int64_t>& told) {
  if (!chunk_.read(file)) {
    // If there is one, it is made again.
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return;
  }
  if (!knowsAll()) return;
  uint64_t begin = 0;
  for (const auto& [day, end] : chunk_.days) {
    if (std::binary_search(stamps.begin(), stamps.end(), day)) {
      told.push_back(day.day);
      for (auto i = begin; i < end; ++i) tell(chunk_.records[i]);
    }
    begin = end;
  }
}

}  // namespace

bool Activities::each(const Sort& sort, const Take& take) {
  const Snapshot moment(db_);
  const auto stamps =
      readStamps([&](std::string_view sql, const auto& visit) { return db_.scan(sql, {}, visit); });
  return eachOther(eachIndexed(stamps.value_or(StampedDays()), sort, take), sort, take);
}

std::vector<int64_t> Activities::eachIndexed(const StampedDays& stamps, const Sort& sort,
                                             const Take& take) {
  if (stamps.empty()) return {};
  ChunkTeller teller(activityList(db_.location()), texts_, calendar_, sort, take);
  std::vector<int64_t> told;
  for (auto begin = stamps.begin(); begin != stamps.end();) {
    const auto chunk = floorDivide(begin->day, kChunkDays);
    const auto end = std::find_if(begin, stamps.end(), [&](const StampedDay& day) {
      return floorDivide(day.day, kChunkDays) != chunk;
    });
    teller.tell(activityFile(db_.location(), chunk), {begin, end}, told);
    begin = end;
  }
  return told;
}

bool Activities::eachOther(const std::vector<int64_t>& indexed, const Sort& sort,
                           const Take& take) {
  Months months(calendar_);
  boost::unordered_flat_map<uint64_t, uint32_t> numbers;  // by hash of the activity
  EvReader reader(texts_);
  bool whole = true;
  const auto add = [&](const Ev& ev) {
    if (ev.idle) return;
    const auto [at, isNew] = numbers.try_emplace(hashOfActivity(ev), kUnwanted);
    if (isNew) {
      Ev activity = ev;
      activity.id = 0;
      activity.start = activity.end = 0;
      activity.bundle = {};
      at->second = sort(activity);
    }
    if (at->second == kUnwanted) return;
    take(at->second, {.month = months.of(ev.start),
                      .seconds = ev.duration(),
                      .spans = 1,
                      .first = ev.start,
                      .example = ev.id});
  };
  const auto scan = [&](const std::string& condition, const Args& args) {
    whole = db_.scan(kSpans + condition, args, [&](const Cursor& row) { add(reader.read(row)); }) &&
            whole;
  };
  std::optional<int64_t> from;  // all days before are told
  for (const auto day : indexed) {
    if (!from) {
      scan(" WHERE start < ?", {startOfDay(day)});
    } else if (*from < day) {
      scan(" WHERE start >= ? AND start < ?", {startOfDay(*from), startOfDay(day)});
    }
    from = day + 1;
  }
  if (from) {
    scan(" WHERE start >= ?", {startOfDay(*from)});
  } else {
    scan("", {});
  }
  return whole;
}

}  // namespace orvanta
