// A file of the index of activities: the days of some weeks.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "storage/ev.h"

namespace orvanta {

/// A day in UTC, counted from 1970, as it was when the store gave it its stamp; see ActivityIndex.
struct StampedDay {
  int64_t day = 0;
  int64_t stamp = 0;

  friend auto operator<=>(const StampedDay&, const StampedDay&) = default;
};
using StampedDays = std::vector<StampedDay>;

inline constexpr double kSecondsOfDay = 86400;
inline constexpr int64_t kChunkDays = 16;

/// The day of an instant (Unix seconds) that is not before 1970.
inline int64_t dayOf(double instant) {
  return static_cast<int64_t>(instant) / static_cast<int64_t>(kSecondsOfDay);
}
inline double startOfDay(int64_t day) {
  return static_cast<double>(day) * kSecondsOfDay;
}

/// The activities of kChunkDays days, and of each the time that it took on each day. Numbers as
/// this machine writes them: the file is never taken elsewhere.
struct ActivityChunk {
  static constexpr uint32_t kNoText = UINT32_MAX;
  struct Activity {
    uint32_t app, domain, title, url, category;  // numbers of texts, or kNoText
    uint32_t hasProject;
    int64_t project;
  };
  /// The spans of an activity that started on one day. Where a month may begin in some time zone,
  /// those of one quarter of an hour: so that `first` tells the month of all of them, in any zone.
  struct Record {
    uint32_t activity;
    uint32_t spans;
    double seconds;
    double first;
    int64_t example;
  };
  struct Day {
    StampedDay stamped;
    uint64_t end;  // of its records; they begin where those of the day before end
  };

  std::vector<Day> days;
  std::vector<Activity> activities;
  std::vector<Record> records;
  std::vector<uint64_t> textEnds;
  std::string texts;

  std::string_view text(uint32_t number) const {
    const uint64_t begin = number == 0 ? 0 : textEnds[number - 1];
    return {texts.data() + begin, textEnds[number] - begin};
  }

  /// All of the file. False when there is none that bytes() has made.
  bool read(const std::filesystem::path& file);
  /// The days of a file whatever else is in it; absent when it is none.
  static std::optional<StampedDays> daysOf(const std::filesystem::path& file);
  std::string bytes() const;

 private:
  uint64_t checksum() const;
};

/// Makes a chunk of the rows of a statement over `events`, which come by their start.
class ChunkMaker {
 public:
  /// Spans of other days are passed over.
  explicit ChunkMaker(const StampedDays& days);

  void add(const Cursor& row);
  ActivityChunk finish();

 private:
  uint32_t numberOf(const Ev& ev);

  ActivityChunk chunk_;
  StringPool texts_;  // the chunk's, by the same numbers
  EvReader reader_;
  std::vector<Text> list_;
  boost::unordered_flat_map<uint64_t, uint32_t> numbers_;
  struct Latest {
    int64_t bucket;
    std::size_t record;
  };
  std::vector<Latest> latest_;  // by activity
  std::size_t day_ = 0;
};

}  // namespace orvanta
