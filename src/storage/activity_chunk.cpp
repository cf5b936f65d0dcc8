#include "storage/activity_chunk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <utility>

#include "base/owned_fd.h"
#include "storage/flat_file.h"

namespace orvanta {
namespace {

struct Head {
  std::array<char, 8> form{'O', 'r', 'v', 'A', 'c', 't', '2', '\n'};
  uint64_t checksum = 0;
  uint64_t part = 0;
  uint64_t days = 0;
  uint64_t records = 0;

  uint64_t total() const {
    return sizeof(Head) + days * sizeof(ActivityChunk::Day) +
           records * sizeof(ActivityChunk::Record);
  }
};

struct OpenChunk {
  OwnedFd file;
  Head head;
};

std::optional<OpenChunk> openChunk(const std::filesystem::path& path) {
  OwnedFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  struct stat info{};
  std::vector<Head> heads;
  if (!file || fstat(file.get(), &info) != 0 || !flat::readInto(file.get(), 1, heads)) return {};
  const auto& head = heads.front();
  const auto size = static_cast<uint64_t>(info.st_size);
  if (head.days > size || head.records > size) return {};
  if (head.form != Head().form || head.total() != size) return {};
  return OpenChunk{std::move(file), head};
}

// Months begin, by their zone, from 14 hours before to 12 hours after the UTC day does, and no zone
// is off by less than a quarter of an hour.
int64_t bucketOf(double start) {
  constexpr int64_t kQuarter = 900;
  constexpr int64_t kQuarters = 96;
  static_assert(kQuarter * kQuarters == static_cast<int64_t>(kSecondsOfDay));
  const auto beginsMonth = [](int64_t day) {
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(day))};
    return date.day() == std::chrono::day(1);
  };
  const auto day = dayOf(start);
  return beginsMonth(day) || beginsMonth(day + 1) ? static_cast<int64_t>(start) / kQuarter
                                                  : day * kQuarters;
}

}  // namespace

uint64_t ActivityChunk::checksum() const {
  return flat::Sum().add(days).add(records).value();
}

bool ActivityChunk::read(const std::filesystem::path& path) {
  const auto file = openChunk(path);
  if (!file) return false;
  const auto& head = file->head;
  const int from = file->file.get();
  part = head.part;
  return flat::readInto(from, head.days, days) && flat::readInto(from, head.records, records) &&
         checksum() == head.checksum;
}

std::optional<ActivityChunk::Facts> ActivityChunk::factsOf(const std::filesystem::path& path) {
  const auto file = openChunk(path);
  std::vector<Day> days;
  if (!file || !flat::readInto(file->file.get(), file->head.days, days)) return {};
  Facts facts{.part = file->head.part};
  for (const auto& day : days) facts.days.push_back(day.stamped);
  return facts;
}

std::string ActivityChunk::bytes() const {
  const Head head{
      .checksum = checksum(), .part = part, .days = days.size(), .records = records.size()};
  std::string all;
  all.reserve(head.total());
  flat::append(all, std::array{head});
  flat::append(all, days);
  flat::append(all, records);
  return all;
}

ChunkMaker::ChunkMaker(const StampedDays& days, ActivityNumbers& numbers)
    : numbers_(numbers), reader_(texts_) {
  for (const auto& day : days) chunk_.days.push_back({day, 0});
}

void ChunkMaker::add(const Cursor& row) {
  const auto ev = reader_.read(row);
  if (ev.idle) return;
  const auto day = dayOf(ev.start);
  auto& days = chunk_.days;
  for (; day_ < days.size() && days[day_].stamped.day < day; ++day_) {
    days[day_].end = chunk_.records.size();
  }
  if (day_ == days.size() || days[day_].stamped.day != day) return;
  const auto activity = numbers_.of(ev);
  const auto bucket = bucketOf(ev.start);
  auto& latest = latest_[activity];
  if (latest.bucket != bucket) {
    latest = {bucket, chunk_.records.size()};
    chunk_.records.push_back(
        {.activity = activity, .spans = 0, .seconds = 0, .first = ev.start, .example = ev.id});
  }
  auto& record = chunk_.records[latest.record];
  ++record.spans;
  record.seconds += ev.duration();
}

ActivityChunk ChunkMaker::finish() {
  for (; day_ < chunk_.days.size(); ++day_) chunk_.days[day_].end = chunk_.records.size();
  if (!chunk_.records.empty()) chunk_.part = numbers_.part();
  return std::move(chunk_);
}

}  // namespace orvanta
