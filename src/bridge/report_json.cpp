#include "bridge/report_json.h"

#include <fmt/ranges.h>

#include <array>
#include <string_view>
#include <utility>

#include "reports/spans.h"

namespace orvanta {

namespace json = boost::json;

namespace {

json::object categories(const std::vector<CategorySum>& sums) {
  json::object object;
  for (const auto& [category, seconds] : sums) object[category] = seconds;
  return object;
}

json::value whole(json::object report, bool whole) {
  if (!whole) {
    report["incomplete"] = kIncomplete;
  }
  return report;
}

json::object object(const SpanCount& count) {
  return {{"spans", count.spans}, {"seconds", count.seconds}};
}

std::string_view nameOf(Decision::By by) {
  constexpr std::array<std::string_view, 6> kNames{"none", "idle",    "manual",
                                                   "rule", "keyword", "project"};
  return kNames.at(static_cast<std::size_t>(by));
}

json::object object(const Totals& totals) {
  return {{"active", totals.active},
          {"by_category", categories(totals.byCategory)},
          {"by_project", json::value_from(totals.byProject)},
          {"apps", json::value_from(totals.apps)},
          {"domains", json::value_from(totals.domains)}};
}

json::object object(const WeekSummary& week) {
  auto summary = object(static_cast<const Totals&>(week));
  summary["days_active"] = week.daysActive;
  summary["avg_per_day"] =
      week.daysActive > 0 ? json::value(week.active / static_cast<double>(week.daysActive)) : 0;
  summary["longest_session"] = week.longestSession;
  summary["best_day"] =
      week.bestDay ? json::value({{"date", week.bestDay->date}, {"active", week.bestDay->active}})
                   : json::value(nullptr);
  return summary;
}

}  // namespace

void tag_invoke(ToJson, json::value& json, const CategorySum& sum) {
  json = json::array{sum.category, sum.seconds};
}

void tag_invoke(ToJson, json::value& json, const ProjectSum& sum) {
  json = {{"id", sum.id}, {"name", sum.name}, {"color", sum.color}, {"duration", sum.seconds}};
}

void tag_invoke(ToJson, json::value& json, const AppSum& sum) {
  json = {{"name", sum.name}, {"duration", sum.seconds}, {"cats", json::value_from(sum.cats)}};
}

void tag_invoke(ToJson, json::value& json, const DomainSum& sum) {
  json = {{"name", sum.name},
          {"app", sum.app},
          {"duration", sum.seconds},
          {"cats", json::value_from(sum.cats)}};
}

void tag_invoke(ToJson, json::value& json, const Segment& segment) {
  json = {{"start", segment.start},
          {"end", segment.end},
          {"cat", segment.cat},
          {"pid", jsonOrNull(segment.pid)},
          {"top", json::value_from(segment.top)}};
}

void tag_invoke(ToJson, json::value& json, const Block& block) {
  json = {{"start", block.start},
          {"end", block.end},
          {"duration", block.end - block.start},
          {"app", block.app},
          {"domain", jsonOrNull(block.domain)},
          {"cat", block.cat},
          {"pid", jsonOrNull(block.pid)},
          {"idle", block.idle},
          {"ids", json::value_from(block.ids)},
          {"manual", block.manual},
          {"title", jsonOrNull(block.title)}};
}

void tag_invoke(ToJson, json::value& json, const WeekReport::Day& day) {
  json = {{"date", day.date.iso()},
          {"active", day.active},
          {"by_category", categories(day.byCategory)},
          {"first", jsonOrNull(day.extent.first)},
          {"last", jsonOrNull(day.extent.last)}};
}

void tag_invoke(ToJson, json::value& json, const Totals& totals) {
  json = object(totals);
}

void tag_invoke(ToJson, json::value& json, const Project& project) {
  json = {{"id", project.id},
          {"name", project.name},
          {"color", project.color},
          {"category", project.category},
          {"archived", project.archived},
          {"keywords", fmt::format("{}", fmt::join(project.keywords, ", "))}};
}

void tag_invoke(ToJson, json::value& json, const DayReport& report) {
  json = whole({{"date", report.date.iso()},
                {"start", report.bounds.start},
                {"end", report.bounds.end},
                {"first", jsonOrNull(report.extent.first)},
                {"last", jsonOrNull(report.extent.last)},
                {"segments", json::value_from(report.segments)},
                {"blocks", json::value_from(report.blocks)},
                {"brief", {{"count", report.brief.count}, {"seconds", report.brief.seconds}}},
                {"totals", object(report.totals)},
                {"projects", json::value_from(report.projects)}},
               report.whole);
}

void tag_invoke(ToJson, json::value& json, const WeekReport& report) {
  json = whole({{"monday", report.monday.iso()},
                {"days", json::value_from(report.days)},
                {"by_category", categories(report.byCategory)},
                {"by_project", json::value_from(report.byProject)}},
               report.whole);
}

void tag_invoke(ToJson, json::value& json, const Recap& recap) {
  json = whole({{"monday", recap.monday.iso()},
                {"current", object(recap.current)},
                {"previous", object(recap.previous)}},
               recap.whole);
}

void tag_invoke(ToJson, json::value& json, const Suggestion& suggestion) {
  json = {{"name", suggestion.name},        {"field", suggestion.field},
          {"duration", suggestion.seconds}, {"project_id", suggestion.projectId},
          {"project", suggestion.project},  {"color", suggestion.color}};
}

void tag_invoke(ToJson, json::value& json, const LearnedRule& rule) {
  json = {{"field", rule.field},
          {"pattern", rule.pattern},
          {"category", jsonOrNull(rule.category)},
          {"project", jsonOrNull(rule.project)}};
}

void tag_invoke(ToJson, json::value& json, const Rule& rule) {
  json = {{"id", rule.id},
          {"field", rule.field},
          {"pattern", rule.pattern},
          {"category", jsonOrNull(rule.category)},
          {"project_id", jsonOrNull(rule.projectId)},
          {"priority", rule.priority}};
}

void tag_invoke(ToJson, json::value& json, const TextShare& share) {
  json = {{"text", share.text}, {"seconds", share.seconds}};
}

void tag_invoke(ToJson, json::value& json, const RulePreview::Change& change) {
  json = {{"spans", change.count.spans},
          {"seconds", change.count.seconds},
          {"from_category", change.fromCategory},
          {"to_category", change.toCategory},
          {"from_project", jsonOrNull(change.fromProject)},
          {"to_project", jsonOrNull(change.toProject)}};
}

void tag_invoke(ToJson, json::value& json, const RulePreview::Example& example) {
  json = {{"spans", example.count.spans},
          {"seconds", example.count.seconds},
          {"text", example.text},
          {"titles", json::value_from(example.titles)},
          {"urls", json::value_from(example.urls)}};
}

void tag_invoke(ToJson, json::value& json, const RulePreview& preview) {
  json = whole({{"spans", preview.caught.spans},
                {"seconds", preview.caught.seconds},
                {"changed", object(preview.changed)},
                {"kept", object(preview.kept)},
                {"changes", json::value_from(preview.changes)},
                {"examples", json::value_from(preview.examples)}},
               preview.whole);
}

void tag_invoke(ToJson, json::value& json, const Explanation& explanation) {
  json = {{"spans", explanation.count.spans},
          {"seconds", explanation.count.seconds},
          {"category", explanation.category},
          {"category_by", nameOf(explanation.categoryBy)},
          {"category_rule", jsonOrNull(explanation.categoryRule)},
          {"project_id", jsonOrNull(explanation.project)},
          {"project", jsonOrNull(explanation.projectName)},
          {"project_by", nameOf(explanation.projectBy)},
          {"project_rule", jsonOrNull(explanation.projectRule)},
          {"keyword", jsonOrNull(explanation.keyword)},
          {"rules", json::value_from(explanation.rules)},
          {"titles", json::value_from(explanation.titles)},
          {"urls", json::value_from(explanation.urls)}};
}

void tag_invoke(ToJson, json::value& json, const Backup& backup) {
  json = {{"file", backup.file.string()}, {"time", backup.time}, {"size", backup.bytes}};
}

}  // namespace orvanta
