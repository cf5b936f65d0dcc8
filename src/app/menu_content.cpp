#include "app/menu_content.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <cmath>

#include "base/display_text.h"

namespace orvanta {
namespace {

namespace json = boost::json;

const json::object* objectAt(const json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  return value ? value->if_object() : nullptr;
}

const json::array* listAt(const json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  return value ? value->if_array() : nullptr;
}

double secondsAt(const json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  if (!value || !value->is_number()) return 0;
  const auto seconds = value->to_number<double>();
  return std::isfinite(seconds) ? seconds : 0;
}

std::string textAt(const json::object& parent, std::string_view key) {
  const auto* value = parent.if_contains(key);
  return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

std::string statusLine(const MenuFacts& facts) {
  if (facts.trouble) return "⚠ Rien n'est enregistré : " + std::string(shortNameOf(*facts.trouble));
  if (facts.paused) return "○ Suivi en pause";
  if (!facts.current) return "● Suivi actif";
  const auto& [sample, elapsed] = *facts.current;
  const auto duration = fmtDur(elapsed);
  if (sample.idle) return "● Inactif depuis " + duration;
  const auto domain = sample.domain ? " · " + menuName(*sample.domain) : std::string();
  return "● " + menuName(sample.app) + domain + " · " + duration;
}

std::string projectTitle(const MenuFacts& facts) {
  const auto current = std::find_if(
      facts.projects.begin(), facts.projects.end(),
      [&](const ProjectChoice& project) { return project.id == facts.currentProject; });
  if (current == facts.projects.end()) return "Je travaille sur…";
  return fmt::format("Je travaille sur : {} (depuis {})", menuName(current->name),
                     fmtDur(facts.onProject));
}

}  // namespace

std::string menuName(std::string_view name) {
  constexpr std::size_t kLongest = 60;
  return oneLine(name, kLongest);
}

void MenuFacts::readDay(const json::object& day) {
  if (const auto* totals = objectAt(day, "totals")) {
    active = secondsAt(*totals, "active");
    if (const auto* byCategory = objectAt(*totals, "by_category")) {
      travail = secondsAt(*byCategory, "travail");
      loisir = secondsAt(*byCategory, "loisir");
      autre = secondsAt(*byCategory, "autre");
      nonclasse = secondsAt(*byCategory, "nonclasse");
    }
    if (const auto* byProject = listAt(*totals, "by_project"); byProject && !byProject->empty()) {
      const auto* first = byProject->front().if_object();
      leader = first ? Leader{textAt(*first, "name"), secondsAt(*first, "duration")} : Leader();
    }
  }
  if (const auto* list = listAt(day, "projects")) {
    for (const auto& entry : *list) {
      const auto* project = entry.if_object();
      const auto* id = project ? project->if_contains("id") : nullptr;
      const auto* archived = project ? project->if_contains("archived") : nullptr;
      if (!id || !id->is_int64() || (archived && archived->is_bool() && archived->get_bool())) {
        continue;
      }
      projects.push_back({id->get_int64(), textAt(*project, "name")});
    }
  }
}

MenuContent menuContent(const MenuFacts& facts) {
  constexpr double kMinute = 60;
  MenuContent content;
  content.statusLine = statusLine(facts);
  content.toggleTitle = facts.paused ? "Reprendre le suivi" : "Mettre le suivi en pause";
  content.todayLine = "Aujourd'hui : " + fmtDur(facts.active) + " actif";
  content.catLine =
      fmt::format("   Travail {} · Loisir {} · Autre {} · Non classé {}", fmtDur(facts.travail),
                  fmtDur(facts.loisir), fmtDur(facts.autre), fmtDur(facts.nonclasse));
  if (facts.leader) {
    content.projLine = fmt::format("   Projet principal : {} · {}", menuName(facts.leader->name),
                                   fmtDur(facts.leader->seconds));
  }
  content.projectTitle = projectTitle(facts);
  if (facts.update) {
    content.updateTitle =
        "⬇︎ Mise à jour disponible : Orvanta " + menuName(facts.update->version);
  }
  if (facts.active >= kMinute) content.label = " " + fmtDur(facts.active);
  return content;
}

}  // namespace orvanta
