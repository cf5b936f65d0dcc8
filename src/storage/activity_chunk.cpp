#include "storage/activity_chunk.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <cstring>
#include <utility>

#include "base/owned_fd.h"
#include "storage/activity_groups.h"

namespace orvanta {
namespace {

struct Head {
  std::array<char, 8> form{'O', 'r', 'v', 'A', 'c', 't', '1', '\n'};
  uint64_t checksum = 0;
  uint64_t days = 0;
  uint64_t activities = 0;
  uint64_t records = 0;
  uint64_t texts = 0;
  uint64_t textBytes = 0;

  uint64_t total() const {
    return sizeof(Head) + days * sizeof(ActivityChunk::Day) +
           activities * sizeof(ActivityChunk::Activity) + records * sizeof(ActivityChunk::Record) +
           texts * sizeof(uint64_t) + textBytes;
  }
};

// Tells what an accident has changed. Four sums side by side, for the processor's pipeline.
class Sum {
 public:
  template <class List>
  void add(const List& list) {
    const auto* bytes = reinterpret_cast<const char*>(list.data());
    std::size_t left = list.size() * sizeof(*list.data());
    lanes_[0] ^= left;
    std::array<uint64_t, kLanes> words{};
    for (; left >= sizeof(words); left -= sizeof(words), bytes += sizeof(words)) {
      std::memcpy(words.data(), bytes, sizeof(words));
      mix(words);
    }
    words = {};
    if (left > 0) std::memcpy(words.data(), bytes, left);
    mix(words);
  }
  uint64_t value() const {
    uint64_t sum = 0;
    for (const auto lane : lanes_) sum = (sum ^ lane) * kOdd;
    return sum;
  }

 private:
  static constexpr std::size_t kLanes = 4;
  static constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
  void mix(const std::array<uint64_t, kLanes>& words) {
    for (std::size_t i = 0; i < kLanes; ++i) {
      const auto mixed = (lanes_[i] ^ words[i]) * kOdd;
      lanes_[i] = mixed ^ (mixed >> 32);
    }
  }
  std::array<uint64_t, kLanes> lanes_{1, 2, 3, 4};
};

template <class List>
bool readInto(int file, uint64_t count, List& list) {
  list.resize(count);
  auto* bytes = reinterpret_cast<char*>(list.data());
  for (std::size_t left = count * sizeof(*list.data()); left > 0;) {
    const auto got = read(file, bytes, left);
    if (got <= 0) return false;
    bytes += got;
    left -= static_cast<std::size_t>(got);
  }
  return true;
}

struct OpenChunk {
  OwnedFd file;
  Head head;
};

std::optional<OpenChunk> openChunk(const std::filesystem::path& path) {
  OwnedFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
  struct stat info{};
  std::vector<Head> heads;
  if (!file || fstat(file.get(), &info) != 0 || !readInto(file.get(), 1, heads)) return {};
  const auto& head = heads.front();
  const auto size = static_cast<uint64_t>(info.st_size);
  for (const auto count : {head.days, head.activities, head.records, head.texts, head.textBytes}) {
    if (count > size) return {};
  }
  if (head.form != Head().form || head.total() != size) return {};
  return OpenChunk{std::move(file), head};
}

template <class List>
void append(std::string& bytes, const List& list) {
  bytes.append(reinterpret_cast<const char*>(list.data()), list.size() * sizeof(*list.data()));
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
  Sum sum;
  sum.add(days);
  sum.add(activities);
  sum.add(records);
  sum.add(textEnds);
  sum.add(texts);
  return sum.value();
}

bool ActivityChunk::read(const std::filesystem::path& path) {
  const auto file = openChunk(path);
  if (!file) return false;
  const auto& head = file->head;
  const int from = file->file.get();
  return readInto(from, head.days, days) && readInto(from, head.activities, activities) &&
         readInto(from, head.records, records) && readInto(from, head.texts, textEnds) &&
         readInto(from, head.textBytes, texts) && checksum() == head.checksum;
}

std::optional<StampedDays> ActivityChunk::daysOf(const std::filesystem::path& path) {
  const auto file = openChunk(path);
  std::vector<Day> days;
  if (!file || !readInto(file->file.get(), file->head.days, days)) return {};
  StampedDays stamped;
  for (const auto& day : days) stamped.push_back(day.stamped);
  return stamped;
}

std::string ActivityChunk::bytes() const {
  const Head head{.checksum = checksum(),
                  .days = days.size(),
                  .activities = activities.size(),
                  .records = records.size(),
                  .texts = textEnds.size(),
                  .textBytes = texts.size()};
  std::string all;
  all.reserve(head.total());
  append(all, std::array{head});
  append(all, days);
  append(all, activities);
  append(all, records);
  append(all, textEnds);
  append(all, texts);
  return all;
}

ChunkMaker::ChunkMaker(const StampedDays& days) : reader_(texts_) {
  for (const auto& day : days) chunk_.days.push_back({day, 0});
}

uint32_t ChunkMaker::numberOf(const Ev& ev) {
  const auto [at, isNew] =
      numbers_.try_emplace(hashOfActivity(ev), static_cast<uint32_t>(latest_.size()));
  if (!isNew) return at->second;
  const auto kept = reader_.kept(ev);
  list_.resize(texts_.size());
  const auto number = [&](Text text) {
    if (!text) return ActivityChunk::kNoText;
    list_[text.id()] = text;
    return text.id();
  };
  chunk_.activities.push_back({.app = number(kept.app),
                               .domain = number(kept.domain),
                               .title = number(kept.title),
                               .url = number(kept.url),
                               .category = number(kept.category),
                               .hasProject = kept.projectId ? 1U : 0U,
                               .project = kept.projectId.value_or(0)});
  latest_.push_back({-1, 0});
  return at->second;
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
  const auto activity = numberOf(ev);
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
  list_.resize(texts_.size());
  for (const auto text : list_) {
    chunk_.texts += text.view();
    chunk_.textEnds.push_back(chunk_.texts.size());
  }
  return std::move(chunk_);
}

}  // namespace orvanta
