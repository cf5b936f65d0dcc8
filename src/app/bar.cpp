#include "app/bar.h"

#include <algorithm>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>
#include <cmath>

#include "base/display_text.h"
#include "base/exact_json.h"
#include "bridge/goal_text.h"
#include "storage/store_health.h"

namespace orvanta {
namespace {

namespace json = boost::json;

json::value lineOrNull(const std::optional<std::string>& text) {
  constexpr std::size_t kLongest = 200;
  return text ? json::value(oneLine(*text, kLongest)) : json::value(nullptr);
}

int64_t minutesOf(double seconds) {
  constexpr double kMinute = 60;
  constexpr double kMost = 1e12;
  if (!std::isfinite(seconds)) return 0;
  return static_cast<int64_t>(std::clamp(seconds, 0.0, kMost) / kMinute) * 60;
}

const char* classOf(const MenuFacts& facts) {
  if (facts.trouble) return "trouble";
  if (facts.paused) return "paused";
  return facts.current && facts.current->sample.idle ? "idle" : "active";
}

std::string textOf(const MenuFacts& facts) {
  const auto active = fmtDur(static_cast<double>(minutesOf(facts.active)));
  if (facts.trouble) return "⚠ " + active;
  return facts.paused ? active + " · pause" : active;
}

json::value currentOf(const MenuFacts& facts, double now) {
  if (!facts.current) return nullptr;
  const auto& [sample, elapsed] = *facts.current;
  return {{"app", *lineOrNull(sample.app).if_string()},
          {"domain", lineOrNull(sample.domain)},
          {"title", lineOrNull(sample.title)},
          {"idle", sample.idle},
          {"since", std::llround(now - elapsed)}};
}

const std::string* currentProject(const MenuFacts& facts) {
  for (const auto& project : facts.projects) {
    if (project.id == facts.currentProject) return &project.name;
  }
  return nullptr;
}

// As the menu, but for what changes every second.
std::string toolTipOf(const MenuFacts& facts) {
  auto still = facts;
  std::string status;
  if (still.current && !still.trouble && !still.paused) {
    const auto& sample = still.current->sample;
    status = sample.idle ? "● Inactif"
                         : "● " + menuName(sample.app) +
                               (sample.domain ? " · " + menuName(*sample.domain) : std::string());
  }
  still.active = static_cast<double>(minutesOf(facts.active));
  for (auto& seconds : still.byCategory) seconds = static_cast<double>(minutesOf(seconds));
  const auto content = menuContent(still);
  std::string text = status.empty() ? content.statusLine : status;
  if (const auto* project = currentProject(facts)) {
    text += "\nJe travaille sur\u00a0: " + menuName(*project);
  }
  const auto categories = content.catLine.substr(content.catLine.find_first_not_of(' '));
  text += "\n" + content.todayLine + "\n" + categories;
  const auto goals = goalsLine(facts.goals);
  return goals.empty() ? text : text + "\n" + goals;
}

json::array goalsOf(const MenuFacts& facts) {
  json::array list;
  for (const auto& state : facts.goals) {
    if (state.missing) continue;
    list.push_back({{"id", state.goal.id},
                    {"name", nameOfGoal(state)},
                    {"period", textOf(state.goal.period)},
                    {"bound", textOf(state.goal.bound)},
                    {"done", minutesOf(state.done())},
                    {"seconds", state.goal.seconds},
                    {"percent", state.percent()}});
  }
  return list;
}

std::string textIn(const json::object& state, std::string_view key) {
  const auto* value = state.if_contains(key);
  return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

json::object waybarOf(const json::object& state) {
  json::object line{{"text", asMarkup(textIn(state, "text"))},
                    {"alt", textIn(state, "class")},
                    {"tooltip", asMarkup(textIn(state, "tooltip"))},
                    {"class", textIn(state, "class")}};
  const auto* percentage = state.if_contains("percentage");
  if (percentage && percentage->is_int64()) line["percentage"] = *percentage;
  return line;
}

json::object i3blocksOf(const json::object& state) {
  json::object line{{"full_text", textIn(state, "text")}, {"short_text", textIn(state, "text")}};
  const auto kind = textIn(state, "class");
  if (kind == "trouble") line["urgent"] = true;
  if (kind == "paused" || kind == "idle") line["color"] = "#8a8a8a";
  return line;
}

}  // namespace

std::string barState(const MenuFacts& facts, double now) {
  constexpr int kWhole = 100;
  const auto goals = goalsOf(facts);
  json::value percentage;
  if (!goals.empty()) {
    percentage = std::min<int64_t>(goals.front().at("percent").as_int64(), kWhole);
  }
  const auto* project = currentProject(facts);
  return json::serialize(json::object{
      {"class", classOf(facts)},
      {"text", textOf(facts)},
      {"tooltip", toolTipOf(facts)},
      {"percentage", percentage},
      {"paused", facts.paused},
      {"trouble", facts.trouble ? json::value(shortNameOf(*facts.trouble)) : json::value(nullptr)},
      {"active", minutesOf(facts.active)},
      {"project", project ? json::value(menuName(*project)) : json::value(nullptr)},
      {"current", currentOf(facts, now)},
      {"goals", goals}});
}

std::string barLine(std::string_view state, BarFormat format) {
  auto read = parseJson(state);
  json::object object{{"class", "off"}, {"text", ""}, {"tooltip", "Orvanta n’est pas en marche"}};
  if (read && read->is_object()) object = std::move(read->get_object());
  switch (format) {
    case BarFormat::Waybar:
      return json::serialize(waybarOf(object));
    case BarFormat::I3blocks:
      return json::serialize(i3blocksOf(object));
    case BarFormat::Text:
      return textIn(object, "text");
    case BarFormat::Watch:
      break;
  }
  return json::serialize(object);
}

}  // namespace orvanta
