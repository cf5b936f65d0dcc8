#include <fmt/format.h>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "bridge/report_json.h"
#include "reports/spans.h"

namespace orvanta {

namespace json = boost::json;

namespace {

constexpr int kMonthsPerYear = 12;

json::object object(const Effect::Move& move) {
  return {{"from_category", jsonOrNull(move.fromCategory)},
          {"to_category", jsonOrNull(move.toCategory)},
          {"from_project", jsonOrNull(move.fromProject)},
          {"to_project", jsonOrNull(move.toProject)},
          {"spans", move.count.spans},
          {"seconds", move.count.seconds}};
}

json::object object(const Effect::Example& example) {
  return {{"text", example.text},
          {"field", example.field},
          {"title", jsonOrNull(example.title)},
          {"spans", example.count.spans},
          {"seconds", example.count.seconds}};
}

json::object object(const Effect::MonthMoved& moved) {
  const auto month =
      fmt::format("{:04}-{:02}", moved.month / kMonthsPerYear, moved.month % kMonthsPerYear + 1);
  return {{"month", month}, {"seconds", moved.seconds}};
}

json::object object(const Effect::CategoryNet& net) {
  return {{"category", net.category}, {"seconds", net.seconds}};
}

json::object object(const Effect::ProjectNet& net) {
  return {{"id", net.id}, {"name", net.name}, {"color", net.color}, {"seconds", net.seconds}};
}

template <class List>
json::array array(const List& list) {
  json::array objects;
  for (const auto& one : list) objects.push_back(object(one));
  return objects;
}

json::value because(PendingRule::Doubt doubt) {
  switch (doubt) {
    case PendingRule::Doubt::Projects:
      return "projects";
    case PendingRule::Doubt::More:
      return "more";
    case PendingRule::Doubt::None:
      break;
  }
  return nullptr;
}

}  // namespace

void tag_invoke(ToJson, json::value& json, const Effect& effect) {
  json::object object{
      {"spans", effect.changed.spans},      {"seconds", effect.changed.seconds},
      {"since", jsonOrNull(effect.since)},  {"categories", array(effect.categories)},
      {"projects", array(effect.projects)}, {"moves", array(effect.moves)},
      {"months", array(effect.months)},     {"examples", array(effect.examples)}};
  if (!effect.whole) object["incomplete"] = kIncomplete;
  json = std::move(object);
}

void tag_invoke(ToJson, json::value& json, const PendingRule& pending) {
  const auto& rule = pending.rule;
  json = {{"id", rule.id},
          {"field", rule.field},
          {"pattern", rule.pattern},
          {"category", jsonOrNull(rule.category)},
          {"project", jsonOrNull(pending.project)},
          {"project_id", jsonOrNull(rule.projectId)},
          {"at", pending.at},
          {"taught", pending.taught},
          {"advice", pending.doubt == PendingRule::Doubt::None ? "keep" : "forget"},
          {"because", because(pending.doubt)},
          {"effect", json::value_from(pending.effect)}};
}

void tag_invoke(ToJson, json::value& json, const RuleSource& source) {
  json = {{"id", source.rule},
          {"origin", textOf(source.origin)},
          {"at", jsonOrNull(source.at)},
          {"change", jsonOrNull(source.change)},
          {"pending", source.pending}};
}

}  // namespace orvanta
