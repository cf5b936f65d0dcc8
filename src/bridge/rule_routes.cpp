// The router's routes that tell what rules do, and why.
#include <array>
#include <string>
#include <vector>

#include "base/text.h"
#include "bridge/app_error.h"
#include "bridge/router.h"
#include "reports/explain.h"
#include "reports/rule_preview.h"
#include "reports/spans.h"
#include "storage/json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

// Wider than any calendar's days, and yet finite: a damaged span gives no infinite sum.
constexpr TimeRange kAllHistory{-1e11, 1e11};
constexpr int kUsualDays = 30;

std::string_view nameOf(Decision::By by) {
  constexpr std::array<std::string_view, 6> kNames{"none", "idle",    "manual",
                                                   "rule", "keyword", "project"};
  return kNames.at(static_cast<std::size_t>(by));
}

json::object toJson(const SpanCount& count) {
  return {{"spans", count.spans}, {"seconds", count.seconds}};
}

json::array toJson(const std::vector<TextShare>& shares) {
  json::array list;
  for (const auto& [text, seconds] : shares) list.push_back({{"text", text}, {"seconds", seconds}});
  return list;
}

json::object toJson(const RulePreview::Change& change) {
  auto object = toJson(change.count);
  object["from_category"] = change.fromCategory;
  object["to_category"] = change.toCategory;
  object["from_project"] = jsonOrNull(change.fromProject);
  object["to_project"] = jsonOrNull(change.toProject);
  return object;
}

json::object toJson(const RulePreview::Example& example) {
  auto object = toJson(example.count);
  object["text"] = example.text;
  object["titles"] = toJson(example.titles);
  object["urls"] = toJson(example.urls);
  return object;
}

json::object toJson(const Rule& rule) {
  return {{"id", rule.id},
          {"field", rule.field},
          {"pattern", rule.pattern},
          {"category", jsonOrNull(rule.category)},
          {"project_id", jsonOrNull(rule.projectId)},
          {"priority", rule.priority}};
}

json::object toJson(const Explanation& explanation);

template <class List>
json::array listOf(const List& items) {
  json::array list;
  for (const auto& item : items) list.push_back(toJson(item));
  return list;
}

json::object toJson(const Explanation& explanation) {
  auto object = toJson(explanation.count);
  object["category"] = explanation.category;
  object["category_by"] = nameOf(explanation.categoryBy);
  object["category_rule"] = jsonOrNull(explanation.categoryRule);
  object["project_id"] = jsonOrNull(explanation.project);
  object["project"] = jsonOrNull(explanation.projectName);
  object["project_by"] = nameOf(explanation.projectBy);
  object["project_rule"] = jsonOrNull(explanation.projectRule);
  object["keyword"] = jsonOrNull(explanation.keyword);
  object["rules"] = listOf(explanation.rules);
  object["titles"] = toJson(explanation.titles);
  object["urls"] = toJson(explanation.urls);
  return object;
}

}  // namespace

// The texts as the store will hold them: up to a NUL.
Rule Router::ruleOf(const Body& body) {
  const auto stored = [](const std::string& text) { return std::string(text.c_str()); };
  Rule rule{.field = body.s("field").value_or(""),
            .pattern = std::string(trimBlanks(body.s("pattern").value_or(""))),
            .category = body.s("category"),
            .projectId = body.i("project_id")};
  if (rule.pattern.empty() || !parsed<RuleField>(rule.field)) {
    throw AppError("règle invalide");
  }
  rule.pattern = stored(rule.pattern);
  if (rule.category) rule.category = stored(*rule.category);
  return rule;
}

json::value Router::rulesPreview(const Body& body) {
  const auto rule = ruleOf(body);
  const bool all = body.b("all").value_or(false);
  const auto date = [&](std::string_view key) { return Date::parse(body.s(key).value_or("")); };
  const auto to = date("to").value_or(calendar_.dateOf(clock_()));
  const auto from = date("from").value_or(to.plusDays(1 - kUsualDays));
  const auto preview = previewRule(
      parts_.db, rule,
      all ? kAllHistory : TimeRange{calendar_.startOf(from), calendar_.startOf(to.plusDays(1))});
  auto answer = toJson(preview.caught);
  answer["from"] = all ? json::value(nullptr) : json::value(from.iso());
  answer["to"] = all ? json::value(nullptr) : json::value(to.iso());
  answer["changed"] = toJson(preview.changed);
  answer["kept"] = toJson(preview.kept);
  answer["changes"] = listOf(preview.changes);
  answer["examples"] = listOf(preview.examples);
  if (!preview.whole) answer["incomplete"] = kIncomplete;
  return answer;
}

json::value Router::eventsExplain(const Body& body) {
  const auto ids = body.ids("ids");
  if (ids.empty()) throw AppError("aucun bloc");
  const auto explanations = explainSpans(parts_.db, ids);
  if (!explanations.whole) throw AppError(kIncomplete);
  return listOf(explanations.list);
}

}  // namespace orvanta
