// What a search has found, as plain data. Durations are seconds, instants Unix seconds.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"

namespace orvanta {

struct Found {
  double seconds = 0;
  /// When the first of them began and the last ended; nothing when there are none.
  std::optional<double> first, last;

  struct Month {
    int number = 0;  ///< year * 12 + month - 1
    double seconds = 0;
  };
  std::vector<Month> months;  ///< those with some, in their order

  /// A project, site or application that has all the words in its name.
  struct Subject {
    enum class Kind : uint8_t { Project, Domain, App };
    Kind kind = Kind::App;
    std::string name;
    std::optional<int64_t> project;
    double seconds = 0;  ///< of it in what was found
  };
  std::vector<Subject> subjects;  ///< the largest, by falling seconds

  /// The spans of a day that are one activity.
  struct Row {
    double start = 0;  ///< of the first
    double end = 0;    ///< of the last
    double seconds = 0;
    std::string app;
    std::optional<std::string> domain, title, url;
    std::string cat;
    std::optional<int64_t> pid;
    std::vector<int64_t> ids;
  };
  /// A span is of the day on which it starts.
  struct Day {
    Date date;
    double seconds = 0;
    std::vector<Row> rows;  ///< the largest, by start
    std::size_t more = 0;   ///< rows that are not among them
  };
  std::vector<Day> days;  ///< the newest first
  bool more = false;      ///< there may be earlier days
  bool building = false;  ///< the oldest days were not looked through: their index is not there yet
  bool whole = true;      ///< false when some of the spans could not be read
};

}  // namespace orvanta
