#include "bridge/period_json.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>

#include "reports/french_text.h"
#include "reports/spans.h"

namespace orvanta {

namespace json = boost::json;

namespace {

template <class Sums, class KeyOf>
auto secondsBy(const Sums& sums, const KeyOf& keyOf) {
  std::map<std::decay_t<decltype(keyOf(sums.front()))>, double> seconds;
  for (const auto& sum : sums) seconds[keyOf(sum)] = sum.seconds;
  return seconds;
}

json::object categories(const PeriodSums& sums) {
  json::object object;
  for (const auto& [category, seconds] : sums.byCategory) object[category] = seconds;
  return object;
}

// What both ranges have of something, the larger of now first; what only the range before had
// comes last. Without a comparison only what is now.
template <class Sums, class KeyOf, class Told>
json::array compared(const Sums& now, const Sums* then, const KeyOf& keyOf, const Told& told) {
  json::array list;
  const auto add = [&](const auto& sum, double seconds, double before) {
    json::object row = told(sum);
    row["duration"] = seconds;
    row["before"] = then ? json::value(before) : json::value(nullptr);
    row["change"] = then ? json::value(seconds - before) : json::value(nullptr);
    list.push_back(std::move(row));
  };
  auto before = secondsBy(then ? *then : Sums(), keyOf);
  for (const auto& sum : now) {
    const auto found = before.find(keyOf(sum));
    add(sum, sum.seconds, found == before.end() ? 0 : found->second);
    if (found != before.end()) before.erase(found);
  }
  for (const auto& sum : then ? *then : Sums()) {
    if (before.contains(keyOf(sum))) add(sum, 0, sum.seconds);
  }
  return list;
}

json::object project(const ProjectSum& sum) {
  return {{"id", sum.id}, {"name", sum.name}, {"color", sum.color}};
}

json::object client(const ClientSum& sum) {
  return {{"client", sum.client}};
}

json::array clients(const std::vector<ClientSum>& sums) {
  json::array list;
  for (const auto& sum : sums) {
    auto row = client(sum);
    row["duration"] = sum.seconds;
    list.push_back(std::move(row));
  }
  return list;
}

json::object dates(const DateRange& range) {
  return {{"from", range.from.iso()}, {"to", range.to.iso()}};
}

json::object rest(const PeriodReport::Rest& rest) {
  return {{"count", rest.count}, {"duration", rest.seconds}};
}

json::array buckets(const PeriodReport& report) {
  json::array list;
  for (const auto& bucket : report.buckets) {
    auto object = dates(bucket.dates);
    object["start"] = bucket.bounds.start;
    object["end"] = bucket.bounds.end;
    object["active"] = bucket.active;
    object["pauses"] = bucket.pauses;
    object["first"] = jsonOrNull(bucket.extent.first);
    object["last"] = jsonOrNull(bucket.extent.last);
    object["by_category"] = categories(bucket);
    object["by_project"] = json::value_from(bucket.byProject);
    object["by_client"] = clients(bucket.byClient);
    object["parts"] = json::value_from(bucket.parts);
    list.push_back(std::move(object));
  }
  return list;
}

json::array groups(const PeriodReport& report) {
  json::array list;
  for (const auto& group : report.groups) {
    list.push_back(
        {{"key", group.key},
         {"name", group.name},
         {"color", group.color.empty() ? json::value(nullptr) : json::value(group.color)},
         {"duration", group.seconds},
         {"count", 1}});
  }
  if (report.groupsInLast > 0) list.back().as_object()["count"] = report.groupsInLast;
  return list;
}

json::value before(const PeriodReport& report) {
  if (!report.before) return nullptr;
  const auto& before = *report.before;
  auto object = dates(before.dates);
  const double change = report.active - before.active;
  object["name"] = nameOf(before.dates);
  object["until"] = before.until;
  object["active"] = before.active;
  object["change"] = change;
  object["change_percent"] = before.active > 0
                                 ? json::value(std::llround(change / before.active * 100))
                                 : json::value(nullptr);
  object["by_category"] = categories(before);
  object["apps"] = json::value_from(before.apps);
  return object;
}

void addComparisons(json::object& object, const PeriodReport& report) {
  const auto idOf = [](const ProjectSum& sum) { return sum.id; };
  const auto clientOf = [](const ClientSum& sum) { return sum.client; };
  const auto categoryOf = [](const CategorySum& sum) { return sum.category; };
  const auto category = [](const CategorySum& sum) {
    return json::object{{"category", sum.category}};
  };
  const auto* then = report.before ? &*report.before : nullptr;
  object["by_category"] = categories(report);
  object["categories"] =
      compared(report.byCategory, then ? &then->byCategory : nullptr, categoryOf, category);
  object["by_project"] =
      compared(report.byProject, then ? &then->byProject : nullptr, idOf, project);
  object["by_client"] =
      compared(report.byClient, then ? &then->byClient : nullptr, clientOf, client);
  object["without_project"] = report.withoutProject;
}

void addHeat(json::object& object, const PeriodReport& report) {
  double most = 0;
  json::array heat;
  for (const auto& hours : report.heat) {
    heat.push_back(json::array(hours.begin(), hours.end()));
    most = std::max(most, *std::max_element(hours.begin(), hours.end()));
  }
  object["heat"] = std::move(heat);
  object["heat_max"] = most;
}

}  // namespace

void tag_invoke(ToJson, json::value& json, const DateRange& range) {
  json = dates(range);
}

void tag_invoke(ToJson, json::value& json, const PeriodReport& report) {
  auto object = dates(report.dates);
  object["kind"] = textOf(kindOf(report.dates));
  object["name"] = nameOf(report.dates);
  object["by"] = textOf(report.by);
  object["group"] = textOf(report.group);
  object["start"] = report.bounds.start;
  object["end"] = report.bounds.end;
  object["running"] = report.running;
  object["active"] = report.active;
  object["pauses"] = report.pauses;
  object["first"] = jsonOrNull(report.extent.first);
  object["last"] = jsonOrNull(report.extent.last);
  object["days_active"] = report.daysActive;
  object["avg_per_day"] =
      report.daysActive > 0 ? report.active / static_cast<double>(report.daysActive) : 0.0;
  object["best_day"] =
      report.bestDay
          ? json::value({{"date", report.bestDay->date.iso()}, {"active", report.bestDay->active}})
          : json::value(nullptr);
  addComparisons(object, report);
  object["apps"] = json::value_from(report.apps);
  object["apps_rest"] = rest(report.otherApps);
  object["domains"] = json::value_from(report.domains);
  object["domains_rest"] = rest(report.otherDomains);
  object["groups"] = groups(report);
  object["buckets"] = buckets(report);
  addHeat(object, report);
  object["before"] = before(report);
  if (!report.whole) object["incomplete"] = kIncomplete;
  json = std::move(object);
}

void tag_invoke(ToJson, json::value& json, const PeriodDays& days) {
  auto object = dates(days.dates);
  json::array list;
  for (const auto& day : days.days) {
    list.push_back({{"date", day.date.iso()}, {"duration", day.seconds}, {"level", day.level}});
  }
  object["days"] = std::move(list);
  object["duration"] = days.seconds;
  if (!days.whole) object["incomplete"] = kIncomplete;
  json = std::move(object);
}

}  // namespace orvanta
