#include "bridge/change_labels.h"

#include <fmt/format.h>

#include <utility>

#include "base/display_text.h"

namespace orvanta::labels {
namespace {

constexpr std::size_t kLongest = 60;

std::string quoted(std::string_view text) {
  return "« " + oneLine(text, kLongest) + " »";
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
  const auto date = calendar.dateOf(instant).iso();
  return {date.substr(8, 2) + "/" + date.substr(5, 2) + "/" + date.substr(0, 4),
          calendar.wallTime(instant)};
}

std::string words(const TimeRange& range, const Calendar& calendar) {
  const auto from = wall(range.start, calendar);
  const auto to = wall(range.end, calendar);
  return fmt::format("{}, {} – {}", from.day, from.time,
                     from.day == to.day ? to.time : to.day + ", " + to.time);
}

std::string activities(int64_t spans) {
  return fmt::format("{} activité{}", spans, spans > 1 ? "s" : "");
}

std::string words(const std::vector<TimeRange>& ranges, const Calendar& calendar) {
  return ranges.size() == 1 ? words(ranges.front(), calendar)
                            : fmt::format("{} plages", ranges.size());
}

constexpr std::pair<std::string_view, std::string_view> kSettingNames[]{
    {"idle_threshold", "seuil d’inactivité"},    {"min_span_seconds", "activité la plus courte"},
    {"min_block_seconds", "bloc le plus court"}, {"privacy_mode", "ce qui est noté des fenêtres"},
    {"excluded_domains", "sites exclus"},        {"retention_days", "garder titres et adresses"},
    {"excluded_apps", "applications exclues"},
};

}  // namespace

std::string_view nameOf(Category category) {
  constexpr std::array<std::string_view, kTexts<Category>.size()> kNames{
      "Travail", "Loisir", "Autre", "Non classé", "Inactif"};
  return kNames.at(static_cast<std::size_t>(category));
}

std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, int64_t spans) {
  return target(category, project) + " : " + activities(spans);
}

std::string assigned(const std::optional<std::string>& category,
                     const std::optional<std::string>& project, const TimeRange& range,
                     const Calendar& calendar) {
  return target(category, project) + " : " + words(range, calendar);
}

std::string added(const std::optional<std::string>& category,
                  const std::optional<std::string>& project, const std::vector<TimeRange>& ranges,
                  const Calendar& calendar) {
  return "Ajout · " + target(category, project) + " : " + words(ranges, calendar);
}

std::string momentChanged(const TimeRange& range, const Calendar& calendar) {
  return "Moment modifié\u00a0: " + words(range, calendar);
}

std::string skipped(const std::vector<TimeRange>& ranges, const Calendar& calendar) {
  return "Absence ignorée : " + words(ranges, calendar);
}

std::string projectSaved(std::string_view name) {
  return "Projet enregistré : " + quoted(name);
}

std::string projectDeleted(std::string_view name) {
  return name.empty() ? "Projet supprimé" : "Projet supprimé : " + quoted(name);
}

std::string projectArchived(std::string_view name) {
  return "Projet archivé : " + quoted(name);
}

std::string goalSaved(std::string_view goal) {
  return "Objectif enregistré\u00a0: " + std::string(goal);
}

std::string goalDeleted(std::string_view goal) {
  return "Objectif supprimé\u00a0: " + std::string(goal);
}

std::string ruleSaved(std::string_view pattern) {
  return "Règle enregistrée : " + quoted(pattern);
}

std::string ruleDeleted(std::string_view pattern) {
  return "Règle supprimée : " + quoted(pattern);
}

std::string defaultsRestored(int rules) {
  return fmt::format("Règles intégrées rétablies : {}", rules);
}

std::string erased(int64_t spans) {
  return "Suppression : " + activities(spans);
}

std::string erased(const TimeRange& range, const Calendar& calendar) {
  return "Suppression : " + words(range, calendar);
}

std::string blanked(int64_t spans) {
  return "Titres et adresses effacés\u00a0: " + activities(spans);
}

std::string imported(std::string_view file, int64_t spans) {
  return "Import" + (file.empty() ? "" : " de " + quoted(file)) + "\u00a0: " + activities(spans);
}

std::string_view nameOfSetting(std::string_view key) {
  for (const auto& [known, name] : kSettingNames) {
    if (known == key) return name;
  }
  return {};
}

std::string settings(const std::vector<std::string_view>& keys) {
  std::string names;
  for (const auto key : keys) {
    names += names.empty() ? "Réglage : " : ", ";
    names += nameOfSetting(key);
  }
  return names;
}

std::string inSentence(std::string_view label) {
  std::string text(label);
  for (const std::string_view mark : {"« ", " »"}) {
    for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark)) {
      text.erase(at, mark.size());
    }
  }
  return text;
}

}  // namespace orvanta::labels
