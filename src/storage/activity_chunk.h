// A file of the index of activities: the days of some weeks.
#pragma once

#include <boost/unordered/unordered_flat_map.hpp>
#include <compare>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "storage/activity_list.h"

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

/// The time that each activity took on each of kChunkDays days.
struct ActivityChunk {
  /// The spans of an activity that started on one day. Where a month may begin in some time zone,
  /// those of one quarter of an hour: so that `first` tells the month of all of them, in any zone.
  struct Record {
    uint32_t activity;  // its number in the ActivityList
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
  std::vector<Record> records;
  /// The newest part of the list that these numbers are of; 0 when there are none.
  uint64_t part = 0;

  /// All of the file. False when there is none that bytes() has made.
  bool read(const std::filesystem::path& file);
  std::string bytes() const;

  /// What a file holds true for, whatever else is in it.
  struct Facts {
    StampedDays days;
    uint64_t part = 0;
  };
  static std::optional<Facts> factsOf(const std::filesystem::path& file);

 private:
  uint64_t checksum() const;
};

/// Makes a chunk of the rows of a statement over `events`, which come by their start.
class ChunkMaker {
 public:
  /// Spans of other days are passed over. `numbers` outlive it.
  ChunkMaker(const StampedDays& days, ActivityNumbers& numbers);

  void add(const Cursor& row);
  ActivityChunk finish();

 private:
  ActivityChunk chunk_;
  ActivityNumbers& numbers_;
  StringPool texts_;
  EvReader reader_;
  struct Latest {
    int64_t bucket = -1;
    std::size_t record = 0;
  };
  boost::unordered_flat_map<uint32_t, Latest> latest_;  // by activity
  std::size_t day_ = 0;
};

}  // namespace orvanta
