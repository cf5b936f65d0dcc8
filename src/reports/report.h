// What the reports say, as plain data. Durations are seconds, instants Unix seconds; lists of sums
// fall by seconds, those by category are in the order in which the categories came.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/calendar.h"
#include "storage/project.h"

namespace orvanta {

struct CategorySum {
  std::string category;
  double seconds = 0;
};

struct ProjectSum {
  int64_t id = 0;
  std::string name;
  std::string color;
  double seconds = 0;
};

struct AppSum {
  std::string name;
  double seconds = 0;
  std::vector<CategorySum> cats;  ///< the five largest
};

struct DomainSum : AppSum {
  std::string app;  ///< that of its first span
};

/// Time by category and by project, absences included; `active` and the other two without them.
struct Totals {
  double active = 0;
  std::vector<CategorySum> byCategory;
  std::vector<ProjectSum> byProject;
  std::vector<AppSum> apps;
  std::vector<DomainSum> domains;
};

/// A stretch of the day's band: one category and project.
struct Segment {
  double start = 0;
  double end = 0;
  std::string cat;
  std::optional<int64_t> pid;
  std::vector<std::string> top;  ///< its three largest domains, or applications
};

/// A row of the day's list: one application, domain, category and project, or one absence.
struct Block {
  double start = 0;
  double end = 0;
  std::string app;
  std::optional<std::string> domain;
  std::string cat;
  std::optional<int64_t> pid;
  bool idle = false;
  std::vector<int64_t> ids;  ///< of its spans
  bool manual = false;
  std::optional<std::string> title;  ///< the one seen longest
};

/// Activity too short to be a row of the day's list.
struct Brief {
  int64_t count = 0;   ///< of the rows that it would have been
  double seconds = 0;  ///< as the totals count it
};

/// When activity began and ended; nothing without activity.
struct Extent {
  std::optional<double> first;
  std::optional<double> last;
};

/// Of a local day what the menu tells.
struct DayTotals {
  Totals totals;
  std::vector<Project> projects;  ///< all, by name
};

struct DayReport : DayTotals {
  Date date;
  TimeRange bounds;
  Extent extent;
  std::vector<Segment> segments;
  std::vector<Block> blocks;
  Brief brief;
  bool whole = true;  ///< false when some of the spans could not be read
};

/// Monday to Sunday.
struct WeekReport {
  struct Day {
    Date date;
    double active = 0;
    std::vector<CategorySum> byCategory;
    Extent extent;
  };

  Date monday;
  std::vector<Day> days;
  std::vector<CategorySum> byCategory;
  std::vector<ProjectSum> byProject;
  bool whole = true;
};

struct WeekSummary : Totals {
  struct BestDay {
    std::string date;
    double active = 0;
  };

  std::size_t daysActive = 0;
  double longestSession = 0;
  std::optional<BestDay> bestDay;
};

/// A week beside the one before.
struct Recap {
  Date monday;
  WeekSummary current;
  WeekSummary previous;
  bool whole = true;
};

/// A domain or application whose time might belong to a project.
struct Suggestion {
  std::string name;
  std::string field;  ///< "domain" or "app"
  double seconds = 0;
  int64_t projectId = 0;
  std::string project;
  std::string color;
};

}  // namespace orvanta
