#include "storage/activities.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <system_error>

#include "storage/activity_index.h"
#include "storage/snapshot.h"

namespace orvanta {
namespace {

// Tells one chunk after the other.
class ChunkTeller {
 public:
  ChunkTeller(StringPool& texts, const Calendar& calendar, const ActivityGroups::Wants& wants,
              const ActivityGroups::Take& take)
      : pool_(texts), months_(calendar), wants_(wants), take_(take) {}

  /// What lies in the file of the days that have these stamps; false when it is no good. Adds them
  /// to `told`.
  bool tell(const std::filesystem::path& file, std::span<const StampedDay> stamps,
            std::vector<int64_t>& told);

 private:
  using Chunk = ActivityChunk;
  static constexpr uint32_t kUnwanted = UINT32_MAX;
  static constexpr uint32_t kUnseen = UINT32_MAX - 1;

  uint32_t placeOf(uint32_t number);
  Ev activityOf(const Chunk::Activity& activity);
  Text pooled(uint32_t text);
  void add(const Chunk::Record& record);

  StringPool& pool_;
  Months months_;
  const ActivityGroups::Wants& wants_;
  const ActivityGroups::Take& take_;
  // All of them kept for their memory.
  Chunk chunk_;
  std::vector<Text> pooled_;      // by text
  std::vector<uint32_t> places_;  // by activity
  std::vector<uint32_t> wanted_;  // activities
  std::vector<std::vector<ActivityTime>> times_;
};

Text ChunkTeller::pooled(uint32_t text) {
  if (text == Chunk::kNoText) return {};
  if (!pooled_[text]) pooled_[text] = pool_.intern(chunk_.text(text));
  return pooled_[text];
}

Ev ChunkTeller::activityOf(const Chunk::Activity& activity) {
  const auto borrowed = [&](uint32_t text) {
    return text == Chunk::kNoText ? Text() : Text::borrowed(chunk_.text(text));
  };
  Ev ev;
  ev.app = pooled(activity.app);
  ev.domain = pooled(activity.domain);
  ev.title = borrowed(activity.title);
  ev.url = borrowed(activity.url);
  ev.category = pooled(activity.category);
  if (activity.hasProject != 0) ev.projectId = activity.project;
  return ev;
}

uint32_t ChunkTeller::placeOf(uint32_t number) {
  auto& place = places_[number];
  if (place != kUnseen) return place;
  place = kUnwanted;
  if (!wants_(activityOf(chunk_.activities[number]))) return place;
  place = static_cast<uint32_t>(wanted_.size());
  wanted_.push_back(number);
  if (times_.size() < wanted_.size()) times_.emplace_back();
  times_[place].clear();
  return place;
}

void ChunkTeller::add(const Chunk::Record& record) {
  const auto place = placeOf(record.activity);
  if (place != kUnwanted) {
    addTime(times_[place], {.month = months_.of(record.first),
                            .seconds = record.seconds,
                            .spans = record.spans,
                            .first = record.first,
                            .example = record.example});
  }
}

bool ChunkTeller::tell(const std::filesystem::path& file, std::span<const StampedDay> stamps,
                       std::vector<int64_t>& told) {
  if (!chunk_.read(file)) return false;
  pooled_.assign(chunk_.textEnds.size(), {});
  places_.assign(chunk_.activities.size(), kUnseen);
  wanted_.clear();
  uint64_t begin = 0;
  for (const auto& [day, end] : chunk_.days) {
    if (std::binary_search(stamps.begin(), stamps.end(), day)) {
      told.push_back(day.day);
      for (auto i = begin; i < end; ++i) add(chunk_.records[i]);
    }
    begin = end;
  }
  for (std::size_t i = 0; i < wanted_.size(); ++i) {
    take_(activityOf(chunk_.activities[wanted_[i]]), times_[i]);
  }
  return true;
}

}  // namespace

bool Activities::each(const Wants& wants, const Take& take) {
  const Snapshot moment(db_);
  const auto stamps =
      readStamps([&](std::string_view sql, const auto& visit) { return db_.scan(sql, {}, visit); });
  return eachOther(eachIndexed(stamps.value_or(StampedDays()), wants, take), wants, take);
}

std::vector<int64_t> Activities::eachIndexed(const StampedDays& stamps, const Wants& wants,
                                             const Take& take) {
  ChunkTeller teller(texts_, calendar_, wants, take);
  std::vector<int64_t> told;
  for (auto begin = stamps.begin(); begin != stamps.end();) {
    const auto chunk = floorDivide(begin->day, kChunkDays);
    const auto end = std::find_if(begin, stamps.end(), [&](const StampedDay& day) {
      return floorDivide(day.day, kChunkDays) != chunk;
    });
    const auto file = activityFile(db_.location(), chunk);
    if (!teller.tell(file, {begin, end}, told)) {
      // If there is one, it is made again.
      std::error_code ignored;
      std::filesystem::remove(file, ignored);
    }
    begin = end;
  }
  return told;
}

bool Activities::eachOther(const std::vector<int64_t>& indexed, const Wants& wants,
                           const Take& take) {
  constexpr auto kSpans =
      "SELECT id,start,end,app,domain,title,url,idle,category,project_id FROM events";
  ActivityGroups groups(calendar_, wants);
  EvReader reader(texts_);
  bool whole = true;
  const auto scan = [&](const std::string& condition, const Args& args) {
    whole = db_.scan(kSpans + condition, args, [&](const Cursor& row) {
      groups.add(reader.read(row));
    }) && whole;
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
  groups.tell(take);
  return whole;
}

}  // namespace orvanta
