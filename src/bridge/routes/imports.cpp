// Time that other programs have recorded.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <set>

#include "base/text.h"
#include "bridge/change_labels.h"
#include "bridge/routes/routes.h"
#include "imports/import_text.h"
#include "imports/read_import.h"
#include "imports/store_import.h"
#include "storage/free_id.h"

namespace orvanta {
namespace {

namespace json = boost::json;

constexpr std::size_t kMostProjects = 200;

struct Import {
  std::string name;  // of the file, as it is shown
  Imported read;
};

ImportText textIn(const Body& body) {
  if (const auto* text = body.find("text"); text && text->is_string()) {
    return importText(std::string_view(text->get_string()));
  }
  const auto file = body.s("file");
  if (!file) throw AppError("fichier manquant");
  if (!file->starts_with('/')) throw AppError("chemin du fichier incomplet\u00a0: " + *file);
  return importText(std::filesystem::path(*file));
}

std::optional<Mapping> mappingIn(const Body& body) {
  const auto* value = body.find("mapping");
  if (!value || !value->is_object()) return {};
  Mapping mapping;
  for (const auto& [name, index] : value->get_object()) {
    const auto column = parsed<Column>(name);
    if (!column) throw AppError("colonne inconnue\u00a0: " + std::string(name));
    if (index.is_int64() && index.get_int64() >= 0) {
      mapping[*column] = static_cast<std::size_t>(index.get_int64());
    }
  }
  return mapping;
}

// Only those that begin on the chosen days.
void choose(Core& core, const Body& body, std::vector<ImportedEvent>& events) {
  std::stable_sort(events.begin(), events.end(),
                   [](const auto& a, const auto& b) { return a.start < b.start; });
  if (!body.s("from") && !body.s("to")) return;
  const auto bounds = datesIn(core, body).bounds(core.calendar.pinned());
  std::erase_if(events, [&](const ImportedEvent& event) {
    return event.start < bounds.start || event.start >= bounds.end;
  });
}

Import importIn(Core& core, const Body& body) {
  constexpr std::size_t kLongest = 60;
  auto name = body.s("name").value_or(
      std::filesystem::path(body.s("file").value_or("")).filename().string());
  Import import{.name = firstCharacters(validUtf8(name), kLongest), .read = {}};
  const auto text = textIn(body);
  if (!text.problem.empty()) {
    throw AppError("«\u00a0" + import.name + "\u00a0» ne peut pas être lu\u00a0: " + text.problem);
  }
  import.read =
      readImport(text.text, core.calendar, {mappingIn(body), body.b("month_first"), core.clock()});
  choose(core, body, import.read.events);
  return import;
}

json::array columnsJson(const Imported& read) {
  json::array columns;
  for (const auto& [name, examples] : read.columns) {
    columns.push_back(
        {{"name", name}, {"examples", json::array(examples.begin(), examples.end())}});
  }
  return columns;
}

json::object mappingJson(const Mapping& mapping) {
  json::object object;
  for (const auto& [column, index] : mapping) object[textOf(column)] = index;
  return object;
}

json::array rejectedJson(const Imported& read) {
  json::array list;
  for (const auto& [reason, rejected] : read.rejected) {
    list.push_back({{"reason", reason}, {"count", rejected.count}, {"line", rejected.line}});
  }
  return list;
}

json::array monthsJson(const Calendar& calendar, const Imported& read, const ImportPlan& plan) {
  struct Month {
    std::size_t events = 0;
    double seconds = 0;
    std::size_t spans = 0;
    double fills = 0;
  };
  std::map<std::string, Month> months;
  const auto pinned = calendar.pinned();
  const auto monthOf = [&](double instant) -> Month& {
    constexpr std::size_t kMonth = 7;
    return months[pinned.dateOf(instant).iso().substr(0, kMonth)];
  };
  for (const auto& event : read.events) {
    auto& month = monthOf(event.start);
    ++month.events;
    month.seconds += event.end - event.start;
  }
  for (const auto& span : plan.spans) {
    auto& month = monthOf(span.start);
    ++month.spans;
    month.fills += span.end - span.start;
  }
  json::array list;
  for (const auto& [name, month] : months) {
    list.push_back({{"month", name},
                    {"events", month.events},
                    {"seconds", month.seconds},
                    {"spans", month.spans},
                    {"fills", month.fills}});
  }
  return list;
}

ProjectIds knownProjects(Database& db) {
  ProjectIds ids;
  db.each("SELECT name, id FROM projects", {}, [&](const Cursor& row) {
    ids.emplace(row.str(0).value_or(""), row.int_(1).value_or(0));
  });
  return ids;
}

// Names in the plan that no project has.
std::set<std::string> newProjects(const ImportPlan& plan, const ProjectIds& known) {
  std::set<std::string> names;
  for (const auto& span : plan.spans) {
    const auto& name = span.event->project;
    if (!name.empty() && !known.contains(name) && names.size() < kMostProjects) names.insert(name);
  }
  return names;
}

json::value preview(Core& core, const Body& body) {
  const auto import = importIn(core, body);
  const auto& read = import.read;
  const auto occupied = occupiedIn(core.db, reachOf(read.events));
  if (!occupied) throw AppError(troubleOr(core, "le fichier des données ne peut pas être lu"));
  const auto plan = planImport(read.events, *occupied, core.clock());
  double seconds = 0;
  for (const auto& event : read.events) seconds += event.end - event.start;
  const auto names = newProjects(plan, knownProjects(core.db));
  return {{"name", import.name},
          {"kind", textOf(read.kind)},
          {"problem", textOrNull(read.problem)},
          {"columns", columnsJson(read)},
          {"mapping", mappingJson(read.mapping)},
          {"month_first", read.monthFirst},
          {"events", read.events.size()},
          {"seconds", seconds},
          {"spans", plan.spans.size()},
          {"fills", plan.seconds},
          {"months", monthsJson(core.calendar, read, plan)},
          {"rejected", rejectedJson(read)},
          {"new_projects", json::array(names.begin(), names.end())}};
}

void addProjects(Core& core, Transaction& change, const std::set<std::string>& names,
                 ProjectIds& ids) {
  if (names.empty()) return;
  auto id = std::max(core.highestProject + 1, freeId(change, "projects"));
  for (const auto& name : names) {
    change.run("INSERT INTO projects(id, name, created) VALUES (?,?,?)", {id, name, core.clock()});
    ids[name] = id;
    core.highestProject = id++;
  }
}

// What becomes of the file in the store: all of it with its way back, or nothing.
struct Stored {
  ImportPlan plan;
  std::size_t projects = 0;
  bool tooLarge = false;
};

ChangeNote store(Core& core, Transaction& change, const Import& import, bool withProjects,
                 Stored& stored) {
  ChangeRecorder recorder(change);
  const double now = core.clock();
  const auto& events = import.read.events;
  stored.plan = planImport(events, occupiedIn(change, reachOf(events)), now);
  auto ids = knownProjects(core.db);
  const auto names = withProjects ? newProjects(stored.plan, ids) : std::set<std::string>();
  stored.projects = names.size();
  addProjects(core, change, names, ids);
  storeImport(change, stored.plan, ids, core.db.settings(), now);
  stored.tooLarge = change && !change_log::fits(change, recorder.changeset());
  if (stored.tooLarge) change.fail(SQLITE_TOOBIG);
  const auto spans = static_cast<int64_t>(stored.plan.spans.size());
  return {.kind = "import",
          .label = labels::imported(import.name, spans),
          .spans = spans,
          .seconds = stored.plan.seconds,
          .learnedRules = {}};
}

json::value run(Core& core, const Body& body) {
  const auto import = importIn(core, body);
  if (!import.read.problem.empty()) throw AppError(import.read.problem);
  if (import.read.events.empty()) throw AppError("aucune activité à importer");
  const bool withProjects = body.b("create_projects").value_or(true);
  Stored stored;
  const auto written =
      core.tracker.changeRecorded(reachOf(import.read.events), [&](const TimeRange& /*range*/) {
        return core.history.record(
            [&](Transaction& change) { return store(core, change, import, withProjects, stored); });
      });
  if (stored.tooLarge) {
    throw AppError(
        "trop d’activités pour être annulées d’un coup\u00a0: importez moins de mois à "
        "la fois");
  }
  if (!written) return told(core, written, {{"ok", true}, {"spans", 0}, {"seconds", 0}});
  core.shell.refreshMenu();
  return {{"ok", true},
          {"spans", stored.plan.spans.size()},
          {"seconds", stored.plan.seconds},
          {"projects", stored.projects},
          {"rejected", rejectedJson(import.read)}};
}

constexpr Route kRoutes[]{
    {"import.preview", RouteKind::Ask, preview, "file, text, name, mapping, month_first, from, to"},
    {"import.run", RouteKind::Ask, run,
     "file, text, name, mapping, month_first, from, to, create_projects"},
};

}  // namespace

RouteTable importRoutes() {
  return kRoutes;
}

}  // namespace orvanta
