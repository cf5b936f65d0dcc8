// The reports, summed up anew for every line of them.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <utility>

#include "bridge/report_json.h"
#include "support/naive_calendar.h"
#include "support/naive_spans.h"

namespace orvanta::test {

namespace json = boost::json;

/// Seconds by key, in the order in which the keys came.
template <class Key>
using NaiveSums = std::vector<std::pair<Key, double>>;

template <class Key>
void naiveAdd(NaiveSums<Key>& sums, const Key& key, double seconds) {
  for (auto& [known, sum] : sums) {
    if (known != key) continue;
    sum += seconds;
    return;
  }
  sums.emplace_back(key, seconds);
}

template <class KeyOf>
auto naiveSums(const NaiveSpans& spans, const KeyOf& keyOf) {
  NaiveSums<decltype(keyOf(spans.front()))> sums;
  for (const auto& span : spans) naiveAdd(sums, keyOf(span), span.duration());
  return sums;
}

template <class Key>
NaiveSums<Key> naiveLargest(NaiveSums<Key> sums, std::size_t most = SIZE_MAX) {
  std::stable_sort(sums.begin(), sums.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  if (sums.size() > most) sums.resize(most);
  return sums;
}

template <class T>
json::value naiveOrNull(const std::optional<T>& maybe) {
  return maybe ? json::value(*maybe) : json::value(nullptr);
}

inline std::string naiveCat(const NaiveSpan& span) {
  return span.cat;
}

inline json::object naiveByCategory(const NaiveSums<std::string>& sums) {
  json::object object;
  for (const auto& [cat, seconds] : sums) object[cat] = seconds;
  return object;
}

inline NaiveSums<int64_t> naiveProjectSums(const NaiveSpans& spans) {
  return naiveSums(naiveFilter(spans, [](const NaiveSpan& span) { return span.pid.has_value(); }),
                   [](const NaiveSpan& span) { return *span.pid; });
}

inline json::array naiveByProject(const NaiveSums<int64_t>& sums, const Projects& projects) {
  json::array list;
  for (const auto& [id, seconds] : naiveLargest(sums)) {
    if (!projects.contains(id)) continue;
    const auto& project = projects.at(id);
    list.push_back(
        {{"id", id}, {"name", project.name}, {"color", project.color}, {"duration", seconds}});
  }
  return list;
}

inline json::array naiveCats(const NaiveSpans& spans) {
  json::array list;
  for (const auto& [cat, seconds] : naiveLargest(naiveSums(spans, naiveCat), 5)) {
    list.push_back(json::array{cat, seconds});
  }
  return list;
}

inline double naiveSeconds(const NaiveSpans& spans) {
  double seconds = 0;
  for (const auto& span : spans) seconds += span.duration();
  return seconds;
}

/// Active time by what they have in common; with the application that they were first seen in.
template <class NameOf>
json::array naiveShares(const NaiveSpans& spans, const NameOf& nameOf, bool withApp) {
  json::array list;
  for (const auto& sum : naiveLargest(naiveSums(spans, nameOf))) {
    const auto own =
        naiveFilter(spans, [&](const NaiveSpan& span) { return nameOf(span) == sum.first; });
    json::object share{{"name", sum.first}, {"duration", sum.second}, {"cats", naiveCats(own)}};
    if (withApp) share["app"] = own.front().app;
    list.push_back(std::move(share));
  }
  return list;
}

inline json::object naiveTotals(const NaiveSpans& spans, const Projects& projects) {
  const auto active = naiveActive(spans);
  const auto web = naiveFilter(active, [](const NaiveSpan& span) { return span.domain; });
  const auto appOf = [](const NaiveSpan& span) { return span.app; };
  const auto domainOf = [](const NaiveSpan& span) { return *span.domain; };
  return {{"active", naiveSeconds(active)},
          {"by_category", naiveByCategory(naiveSums(spans, naiveCat))},
          {"by_project", naiveByProject(naiveProjectSums(spans), projects)},
          {"apps", naiveShares(active, appOf, false)},
          {"domains", naiveShares(web, domainOf, true)}};
}

inline json::array naiveSegments(const NaiveSpans& spans) {
  const auto drawn = naiveFilter(
      spans, [](const NaiveSpan& span) { return !span.idle && span.end - span.start >= 1; });
  const auto continues = [](const NaiveSpans& run, const NaiveSpan& span) {
    return span.cat == run.front().cat && span.pid == run.front().pid &&
           span.start - run.back().end < 3;
  };
  json::array list;
  for (const auto& run : naiveRuns(drawn, continues)) {
    json::array top;
    const auto label = [](const NaiveSpan& span) { return span.domain.value_or(span.app); };
    for (const auto& [text, seconds] : naiveLargest(naiveSums(run, label), 3)) {
      top.push_back(json::value(text));
    }
    list.push_back({{"start", run.front().start},
                    {"end", run.back().end},
                    {"cat", run.front().cat},
                    {"pid", naiveOrNull(run.front().pid)},
                    {"top", std::move(top)}});
  }
  return list;
}

/// What is too short is added to `brief`.
inline json::array naiveBlocks(const NaiveSpans& spans, double minSeconds, NaiveSpans& brief,
                               int& briefBlocks) {
  const auto key = [](const NaiveSpan& span) {
    return span.app + "|" + span.domain.value_or("") + "|" + span.cat + "|" +
           std::to_string(span.pid.value_or(-1)) + "|" + (span.idle ? "true" : "false");
  };
  const auto continues = [&](const NaiveSpans& run, const NaiveSpan& span) {
    return key(span) == key(run.front()) && span.start - run.back().end < 5;
  };
  json::array list;
  for (const auto& run : naiveRuns(spans, continues)) {
    const auto& first = run.front();
    const double seconds = run.back().end - first.start;
    if (!first.idle && seconds < minSeconds) {
      ++briefBlocks;
      brief.insert(brief.end(), run.begin(), run.end());
      continue;
    }
    json::array ids;
    for (const auto& span : run) ids.push_back(json::value(span.id));
    const auto titled = naiveFilter(run, [](const NaiveSpan& span) { return span.title; });
    const auto titles =
        naiveLargest(naiveSums(titled, [](const NaiveSpan& span) { return *span.title; }));
    list.push_back({{"start", first.start},
                    {"end", run.back().end},
                    {"duration", seconds},
                    {"app", first.app},
                    {"domain", naiveOrNull(first.domain)},
                    {"cat", first.cat},
                    {"pid", naiveOrNull(first.pid)},
                    {"idle", first.idle},
                    {"ids", std::move(ids)},
                    {"manual", first.manual},
                    {"title", titles.empty() ? json::value() : json::value(titles[0].first)}});
  }
  return list;
}

/// The first start and the last end of what is active.
inline std::pair<json::value, json::value> naiveEdges(const NaiveSpans& spans) {
  std::optional<double> first;
  std::optional<double> last;
  for (const auto& span : naiveActive(spans)) {
    first = std::min(first.value_or(span.start), span.start);
    last = std::max(last.value_or(span.end), span.end);
  }
  return {naiveOrNull(first), naiveOrNull(last)};
}

inline json::object naiveDayReport(Database& db, int day) {
  const double start = naiveStart(day);
  const double end = naiveStart(day + 1);
  const auto spans = naiveSpans(db, start, end);
  const auto projects = loadProjects(db);
  const auto setting = db.setting("min_block_seconds");
  char* rest = nullptr;
  double minSeconds = std::max(strtod(setting.c_str(), &rest), 0.0);
  if (setting.empty() || *rest != '\0') minSeconds = 60;
  std::map<std::string, json::object> byName;
  for (const auto& [id, project] : projects)
    byName[project.name] = json::value_from(project).as_object();
  json::array projectList;
  for (const auto& [name, project] : byName) projectList.push_back(project);
  NaiveSpans brief;
  int briefBlocks = 0;
  auto blocks = naiveBlocks(spans, minSeconds, brief, briefBlocks);
  return {{"date", naiveIso(day)},
          {"start", start},
          {"end", end},
          {"first", naiveEdges(spans).first},
          {"last", naiveEdges(spans).second},
          {"segments", naiveSegments(spans)},
          {"blocks", std::move(blocks)},
          {"brief", {{"count", briefBlocks}, {"seconds", naiveSeconds(brief)}}},
          {"totals", naiveTotals(spans, projects)},
          {"projects", std::move(projectList)}};
}

inline json::object naiveWeekReport(Database& db, int day) {
  const int monday = naiveMonday(day);
  NaiveSums<std::string> byCat;
  NaiveSums<int64_t> byProj;
  json::array days;
  for (int each = monday; each < monday + 7; ++each) {
    const auto spans = naiveSpans(db, naiveStart(each), naiveStart(each + 1));
    const auto cats = naiveSums(spans, naiveCat);
    for (const auto& [cat, seconds] : cats) naiveAdd(byCat, cat, seconds);
    for (const auto& [id, seconds] : naiveProjectSums(spans)) naiveAdd(byProj, id, seconds);
    days.push_back({{"date", naiveIso(each)},
                    {"active", naiveSeconds(naiveActive(spans))},
                    {"by_category", naiveByCategory(cats)},
                    {"first", naiveEdges(spans).first},
                    {"last", naiveEdges(spans).second}});
  }
  return {{"monday", naiveIso(monday)},
          {"days", std::move(days)},
          {"by_category", naiveByCategory(byCat)},
          {"by_project", naiveByProject(byProj, loadProjects(db))}};
}

inline json::object naiveSummary(Database& db, int monday) {
  const auto spans = naiveSpans(db, naiveStart(monday), naiveStart(monday + 7));
  const auto active = naiveActive(spans);
  const auto days = naiveLargest(
      naiveSums(active, [](const NaiveSpan& span) { return naiveIso(naiveDayOf(span.start)); }));
  double longest = 0;
  for (const auto& session : naiveRuns(spans, [](const NaiveSpans& run, const NaiveSpan& span) {
         return !run.back().idle && !span.idle;
       })) {
    if (!session.front().idle) {
      longest = std::max(longest, session.back().end - session.front().start);
    }
  }
  auto summary = naiveTotals(spans, loadProjects(db));
  summary["days_active"] = days.size();
  summary["avg_per_day"] = 0;
  summary["longest_session"] = longest;
  summary["best_day"] = nullptr;
  if (!days.empty()) {
    summary["avg_per_day"] = naiveSeconds(active) / static_cast<double>(days.size());
    summary["best_day"] = {{"date", days[0].first}, {"active", days[0].second}};
  }
  return summary;
}

inline json::object naiveRecapReport(Database& db, int day) {
  const int monday = naiveMonday(day);
  return {{"monday", naiveIso(monday)},
          {"current", naiveSummary(db, monday)},
          {"previous", naiveSummary(db, monday - 7)}};
}

}  // namespace orvanta::test
