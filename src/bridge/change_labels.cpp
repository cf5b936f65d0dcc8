#include "bridge/change_labels.h"

#include <fmt/format.h>

#include "base/display_text.h"

namespace orvanta::labels {
namespace {

constexpr std::size_t kLongest = 60;

std::string quoted(std::string_view text) {
  return "« " + oneLine(text, kLongest) + " »";
}

// Of ours that can be chosen; any other names itself.
std::string categoryName(std::string_view category) {
  const auto ours = parsed<Category>(category);
  return ours && *ours < Category::Nonclasse ? std::string(nameOf(*ours))
                                             : oneLine(category, kLongest);
}

std::string target(const std::optional<std::string>& category,
                   const std::optional<std::string>& project) {
  if (!category && !project) return "Automatique";
  if (!project) return categoryName(*category);
  const auto name = oneLine(*project, kLongest);
  return category ? categoryName(*category) + " · " + name : name;
}

struct Wall {
  std::string day;
  std::string time;
};

Wall wall(double instant, const Calendar& calendar) {
  constexpr int64_t kMinute = 60;
  constexpr int64_t kDay = 86400;
  const auto date = calendar.dateOf(instant).iso();
  const auto seconds = calendar.wallSeconds(instant);
  const auto minutes = (seconds - floorDivide(seconds, kDay) * kDay) / kMinute;
  return {date.substr(8, 2) + "/" + date.substr(5, 2) + "/" + date.substr(0, 4),
          fmt::format("{:02}:{:02}", minutes / kMinute, minutes % kMinute)};
}

}  // namespace

std::string_view nameOf(Category category) {
  constexpr std::array<std::string_view, kTexts<Category>.size()> kNames{
      "Travail", "Loisir", "Autre", "Non classé", "Inactif"};
  return kNames.at(static_cast<std::size_t>(category));
}

std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, int64_t spans) {
  return fmt::format("{} : {} activité{}", target(category, project), spans, spans > 1 ? "s" : "");
}

std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, const TimeRange& range,
                     const Calendar& calendar) {
  const auto from = wall(range.start, calendar);
  const auto to = wall(range.end, calendar);
  return fmt::format("{} : {}, {} – {}", target(category, project), from.day, from.time,
                     from.day == to.day ? to.time : to.day + ", " + to.time);
}

std::string projectSaved(std::string_view name) {
  return "Projet enregistré : " + quoted(name);
}

std::string projectDeleted(std::string_view name) {
  return "Projet supprimé : " + quoted(name);
}

std::string projectArchived(std::string_view name) {
  return "Projet archivé : " + quoted(name);
}

std::string ruleSaved(std::string_view pattern) {
  return "Règle enregistrée : " + quoted(pattern);
}

std::string ruleDeleted(std::string_view pattern) {
  return "Règle supprimée : " + quoted(pattern);
}

std::string defaultsRestored(int rules) {
  return fmt::format("Règles intégrées rétablies : {}", rules);
}

}  // namespace orvanta::labels
