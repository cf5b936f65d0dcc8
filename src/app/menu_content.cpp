#include "app/menu_content.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "base/display_text.h"
#include "bridge/change_labels.h"
#include "bridge/goal_text.h"

namespace orvanta {
namespace {

double finite(double seconds) {
  return std::isfinite(seconds) ? seconds : 0;
}

std::string statusLine(const MenuFacts& facts) {
  if (facts.trouble) return "⚠ Rien n’est enregistré : " + std::string(shortNameOf(*facts.trouble));
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

void MenuFacts::take(const DayTotals& day) {
  const auto& totals = day.totals;
  active = finite(totals.active);
  byCategory = {};
  for (const auto& sum : totals.byCategory) {
    const auto ours = parsed<Category>(sum.category);
    if (ours) byCategory.at(static_cast<std::size_t>(*ours)) = finite(sum.seconds);
  }
  if (!totals.byProject.empty()) {
    const auto& first = totals.byProject.front();
    leader = {first.name, finite(first.seconds)};
  }
  for (const auto& project : day.projects) {
    if (!project.archived) projects.push_back({project.id, project.name});
  }
}

MenuContent menuContent(const MenuFacts& facts) {
  constexpr double kMinute = 60;
  MenuContent content;
  content.statusLine = statusLine(facts);
  content.toggleTitle = facts.paused ? "Reprendre le suivi" : "Mettre le suivi en pause";
  content.todayLine = "Aujourd'hui : " + fmtDur(facts.active) + " actif";
  content.catLine = "  ";
  for (const auto category :
       {Category::Travail, Category::Loisir, Category::Autre, Category::Nonclasse}) {
    content.catLine +=
        fmt::format("{} {} {}", category == Category::Travail ? "" : " ·", labels::nameOf(category),
                    fmtDur(facts.byCategory.at(static_cast<std::size_t>(category))));
  }
  if (facts.leader) {
    content.projLine = fmt::format("   Projet principal : {} · {}", menuName(facts.leader->name),
                                   fmtDur(facts.leader->seconds));
  }
  content.projectTitle = projectTitle(facts);
  if (facts.update) {
    content.updateTitle = "⬇︎ Mise à jour disponible : Orvanta " + menuName(facts.update->version);
  }
  content.toolTip = content.todayLine;
  if (const auto goals = goalsLine(facts.goals); !goals.empty()) {
    content.toolTip += "\n" + asMarkup(goals);
  }
  if (facts.active >= kMinute) content.label = " " + fmtDur(facts.active);
  return content;
}

}  // namespace orvanta
