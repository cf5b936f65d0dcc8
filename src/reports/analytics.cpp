#include "reports/analytics.h"

#include <algorithm>
#include <boost/json/array.hpp>
#include <utility>

#include "base/text.h"
#include "reports/agg.h"
#include "reports/spans.h"
#include "reports/timeline.h"
#include "storage/json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

/// When the activity of a list of spans began and ended; nothing without activity.
struct Extent {
  std::optional<double> first;
  std::optional<double> last;
};

Extent extentOf(const std::vector<Ev>& events) {
  Extent extent;
  for (const auto& ev : events) {
    if (ev.idle) continue;
    extent.first = std::min(extent.first.value_or(ev.start), ev.start);
    extent.last = std::max(extent.last.value_or(ev.end), ev.end);
  }
  return extent;
}

json::array byName(const Projects& projects) {
  std::vector<const Project*> sorted;
  for (const auto& [id, project] : projects) sorted.push_back(&project);
  std::sort(sorted.begin(), sorted.end(),
            [](const Project* a, const Project* b) { return a->name < b->name; });
  json::array list;
  for (const auto* project : sorted) list.push_back(project->json());
  return list;
}

}  // namespace

Analytics::Analytics(Database& db, Clock clock, Calendar calendar)
    : db_(db), clock_(std::move(clock)), calendar_(std::move(calendar)) {}

Date Analytics::parseDate(const std::optional<std::string>& text) const {
  const auto date = text ? Date::parse(*text) : std::nullopt;
  return date ? *date : calendar_.dateOf(clock_());
}

json::object Analytics::day(const std::optional<std::string>& text) const {
  constexpr double kShortestBlock = 60;
  const auto date = parseDate(text);
  const auto bounds = calendar_.dayBounds(date);
  const auto spans = loadSpans(db_, bounds);
  const double minSeconds = parseNumber(db_.setting("min_block_seconds")).value_or(kShortestBlock);
  const auto extent = extentOf(spans.list);
  return {{"date", date.iso()},
          {"start", bounds.start},
          {"end", bounds.end},
          {"first", jsonOrNull(extent.first)},
          {"last", jsonOrNull(extent.last)},
          {"segments", segments(spans.list)},
          {"blocks", blocks(spans.list, minSeconds)},
          {"totals", aggJson(aggregate(spans.list), spans.projects)},
          {"projects", byName(spans.projects)}};
}

}  // namespace orvanta
