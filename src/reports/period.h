// Any range of days: what they went to, bucket by bucket and hour by hour, beside the days before.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/enum_text.h"
#include "reports/date_range.h"
#include "reports/report.h"
#include "reports/wall_hours.h"

namespace orvanta {

class SpanReader;

enum class PeriodBy { Day, Week, Month };
template <>
inline constexpr std::array<std::string_view, 3> kTexts<PeriodBy>{"day", "week", "month"};

/// Days up to a month and a half, weeks up to half a year, then months.
PeriodBy usualBy(const DateRange& range);

/// The range in pieces; a week or a month at its edge is only the part that lies in it.
std::vector<DateRange> pieces(const DateRange& range, PeriodBy by);

/// What the buckets are broken down by.
enum class PeriodGroup { Category, Project, Client, App, Site };
template <>
inline constexpr std::array<std::string_view, 5> kTexts<PeriodGroup>{"category", "project",
                                                                     "client", "app", "site"};

struct PeriodQuestion {
  DateRange range;  ///< of at most kMostDays
  std::optional<PeriodBy> by;
  PeriodGroup group = PeriodGroup::Category;
  bool compare = true;  ///< with the range before, which takes as long again
};

struct ClientSum {
  std::string client;
  double seconds = 0;
};

/// Activity, without absences, as the reports of the days sum it up together.
struct PeriodSums {
  double active = 0;
  double withoutProject = 0;  ///< of it
  std::vector<CategorySum> byCategory;
  std::vector<ProjectSum> byProject;
  std::vector<ClientSum> byClient;  ///< by falling seconds; projects without a client are in none
};

struct PeriodBucket : PeriodSums {
  DateRange dates;
  TimeRange bounds;
  double pauses = 0;
  Extent extent;
  std::vector<double> parts;  ///< seconds of each of the report's groups, in their order
};

struct PeriodReport : PeriodSums {
  struct Group {
    std::string key;  ///< category, project's id, client, application, site; "" for none
    std::string name;
    std::string color;  ///< of a project
    double seconds = 0;
  };
  struct Rest {
    std::size_t count = 0;
    double seconds = 0;
  };
  struct BestDay {
    Date date;
    double active = 0;
  };
  /// The range before, up to the point in it that now is in this one.
  struct Before : PeriodSums {
    DateRange dates;
    double until = 0;
    std::vector<AppSum> apps;  ///< all of them, the largest first
  };

  DateRange dates;
  PeriodBy by = PeriodBy::Day;
  PeriodGroup group = PeriodGroup::Category;
  TimeRange bounds;
  bool running = false;  ///< now lies in it
  /// Absences between the first and the last activity of each day; the night is none.
  double pauses = 0;
  Extent extent;
  std::size_t daysActive = 0;
  std::optional<BestDay> bestDay;
  std::vector<AppSum> apps;  ///< the largest
  Rest otherApps;
  std::vector<DomainSum> domains;
  Rest otherDomains;
  std::vector<PeriodBucket> buckets;
  std::vector<Group> groups;  ///< the largest; when there are more, the last is what they make up
  std::size_t groupsInLast = 0;  ///< how many the last one stands for; 0 when it is one of its own
  HeatMap heat{};
  std::optional<Before> before;
  bool whole = true;
};

/// Reads each span once, of both ranges where they are compared.
PeriodReport periodReport(SpanReader& reader, const Calendar& calendar, double now,
                          const PeriodQuestion& question);

}  // namespace orvanta
