// Goals and limits.
#include <algorithm>

#include "base/site.h"
#include "base/text.h"
#include "bridge/change_labels.h"
#include "bridge/goal_text.h"
#include "bridge/report_json.h"
#include "bridge/routes/routes.h"
#include "capture/sample.h"
#include "storage/free_id.h"

namespace orvanta {
namespace {

namespace json = boost::json;

std::vector<Goal> goalsOf(Core& core) {
  auto goals = loadGoals(core.db);
  if (!goals) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  return std::move(*goals);
}

json::object factsJson(const GoalFacts& facts) {
  const auto& goal = facts.goal;
  const bool project = goal.subject == GoalSubject::Project;
  return {{"id", goal.id},
          {"subject", textOf(goal.subject)},
          {"value", project ? json::value(nullptr) : json::value(goal.name)},
          {"project_id", jsonOrNull(goal.project)},
          {"name", nameOfGoal(facts)},
          {"color", textOrNull(facts.color)},
          {"period", textOf(goal.period)},
          {"bound", textOf(goal.bound)},
          {"seconds", goal.seconds},
          {"created", goal.created},
          {"missing", facts.missing},
          {"text", goalInWords(facts)}};
}

json::object datesJson(const DateRange& dates) {
  return {{"from", dates.from.iso()}, {"to", dates.to.iso()}};
}

json::value list(Core& core, const Body& /*body*/) {
  json::array list;
  for (const auto& state : core.analytics.goals(goalsOf(core), true)) {
    auto object = factsJson(state);
    object["dates"] = datesJson(state.dates);
    object["today"] = state.today;
    object["week"] = state.week;
    object["done"] = state.done();
    object["percent"] = state.percent();
    object["level"] = levelOf(state);
    list.push_back(std::move(object));
  }
  return list;
}

json::value history(Core& core, const Body& body) {
  json::array list;
  const auto range = datesIn(core, body);
  for (const auto& history : core.analytics.goalHistory(goalsOf(core), range)) {
    auto object = factsJson(history);
    json::array pieces;
    for (const auto& piece : history.pieces) {
      auto dates = datesJson(piece.dates);
      dates["done"] = piece.seconds;
      dates["outcome"] = textOf(piece.outcome);
      pieces.push_back(std::move(dates));
    }
    object["pieces"] = std::move(pieces);
    object["kept"] = history.kept;
    object["counted"] = history.counted;
    object["streak"] = history.streak;
    list.push_back(std::move(object));
  }
  return list;
}

template <class Enum>
Enum choiceIn(const Body& body, std::string_view key, const char* problem) {
  const auto choice = parsed<Enum>(body.s(key).value_or(""));
  if (!choice) throw AppError(problem);
  return *choice;
}

std::string siteIn(const std::string& text) {
  const bool address = text.find("://") != std::string::npos;
  const auto site = domainOf(address ? text : "https://" + text);
  if (!site) throw AppError("site invalide\u00a0: une adresse comme exemple.fr est attendue");
  return siteOf(*site);
}

std::string subjectIn(const Body& body, GoalSubject subject) {
  constexpr std::size_t kLongest = 500;
  const auto text = body.trimmed("value").value_or("");
  if (storedText(text).empty()) throw AppError("ce que l’objectif concerne manque");
  if (storedText(text) != text || text.size() > kLongest) throw AppError("nom invalide");
  if (subject == GoalSubject::Site) return siteIn(text);
  const auto category = parsed<Category>(text);
  if (subject == GoalSubject::Category && (!category || *category >= Category::Inactif)) {
    throw AppError("catégorie inconnue");
  }
  return text;
}

Goal goalIn(Core& core, const Body& body) {
  constexpr int64_t kLeast = 60;
  constexpr int64_t kDay = 86400;
  Goal goal{.id = body.i("id").value_or(0),
            .subject = choiceIn<GoalSubject>(body, "subject", "objet de l’objectif inconnu"),
            .period = choiceIn<GoalPeriod>(body, "period", "un objectif est par jour ou semaine"),
            .bound = choiceIn<GoalBound>(body, "bound", "un objectif est un minimum ou maximum"),
            .seconds = body.i("seconds").value_or(0),
            .created = core.clock()};
  if (goal.subject == GoalSubject::Project) {
    goal.project = body.i("project_id");
    if (!projectName(core, goal.project)) throw AppError("projet inconnu");
  } else {
    goal.name = subjectIn(body, goal.subject);
  }
  const auto most = goal.period == GoalPeriod::Day ? kDay : 7 * kDay;
  if (goal.seconds < kLeast || goal.seconds > most) {
    throw AppError("durée invalide\u00a0: d’une minute à la durée " +
                   std::string(goal.period == GoalPeriod::Day ? "d’un jour" : "d’une semaine"));
  }
  return goal;
}

// Who wants two of a kind for the same wants one of them changed.
void refuseTwins(const std::vector<Goal>& goals, const Goal& goal) {
  constexpr std::size_t kMost = 50;
  for (const auto& other : goals) {
    if (other.id != goal.id && other.subject == goal.subject && other.name == goal.name &&
        other.project == goal.project && other.period == goal.period && other.bound == goal.bound)
      throw AppError("cet objectif existe déjà");
  }
  if (goal.id == 0 && goals.size() >= kMost) throw AppError("cinquante objectifs au plus");
}

GoalFacts factsOf(Core& core, const Goal& goal) {
  const auto name = projectName(core, goal.project);
  const bool ofProject = goal.subject == GoalSubject::Project;
  return {.goal = goal, .missing = ofProject && !name, .project = name.value_or(""), .color = ""};
}

json::value save(Core& core, const Body& body) {
  auto goal = goalIn(core, body);
  const auto goals = goalsOf(core);
  if (goal.id != 0 && std::none_of(goals.begin(), goals.end(),
                                   [&](const Goal& other) { return other.id == goal.id; })) {
    throw AppError("objectif inconnu");
  }
  refuseTwins(goals, goal);
  const auto label = labels::goalSaved(goalInWords(factsOf(core, goal)));
  const auto written = core.history.record([&](Transaction& change) {
    if (goal.id == 0) goal.id = freeId(change, "goals");
    saveGoal(change, goal);
    return ChangeNote{.kind = "goal.save", .label = label};
  });
  if (!written) throw AppError(core.db.whyNot(written));
  core.shell.refreshMenu();
  return {{"ok", true}, {"id", goal.id}};
}

json::value remove(Core& core, const Body& body) {
  const auto id = body.i("id");
  if (!id) throw AppError("id manquant");
  const auto goals = goalsOf(core);
  const auto found =
      std::find_if(goals.begin(), goals.end(), [&](const Goal& goal) { return goal.id == *id; });
  if (found == goals.end()) throw AppError("objectif inconnu");
  const auto label = labels::goalDeleted(goalInWords(factsOf(core, *found)));
  const auto written = core.history.record([&](Transaction& change) {
    deleteGoal(change, *id);
    return ChangeNote{.kind = "goal.delete", .label = label};
  });
  core.shell.refreshMenu();
  return told(core, written);
}

constexpr Route kRoutes[]{
    {"goals.list", RouteKind::Read, list},
    {"goals.save", RouteKind::Write, save,
     "id, subject, value, project_id, period, bound, seconds"},
    {"goals.delete", RouteKind::Write, remove, "id"},
    {"goals.history", RouteKind::Read, history, "from, to"},
};

}  // namespace

RouteTable goalRoutes() {
  return kRoutes;
}

}  // namespace orvanta
