#include "store_maker/store_maker.h"

#include <array>
#include <utility>

#include "classify/defaults.h"
#include "storage/backups.h"
#include "store_maker/person.h"

namespace orvanta {
namespace {

constexpr double kDay = 86400;
constexpr double kMonth = 31 * kDay;

void addProjects(Transaction& change, bool odd, double now) {
  const auto& texts = unusualTexts();
  std::size_t number = 0;
  for (const auto& project : madeProjects()) {
    const std::string name = odd ? texts[number] + std::to_string(number) : project.name;
    const std::string color = odd && number % 2 == 0 ? "red;background:url(x)" : project.color;
    const std::string keywords =
        (odd ? texts[number + 2] + ", " : std::string()) + project.keywords;
    change.run(
        "INSERT INTO projects(name, color, category, archived, created, keywords) "
        "VALUES (?,?,?,?,?,?)",
        {name, color, project.category, project.archived, now - kMonth, keywords});
    ++number;
  }
}

// One that Camille wrote, and one that an assignment taught.
void addRules(Transaction& change, double now) {
  constexpr auto kInsert =
      "INSERT INTO rules(field, pattern, category, project_id, created) VALUES (?,?,?,?,?)";
  change.run(kInsert, {"domain", "intranet.atelier-cmd.fr", "travail", 3, now - kMonth});
  change.run(kInsert, {"app", "Zotero", "autre", 4, now - kMonth / 2});
}

void addDays(Transaction& change, const StorePlan& plan) {
  const Calendar calendar;
  SpanWriter spans(change, plan.now);
  Person person(spans, plan.kind == StoreKind::Odd);
  const auto today = calendar.dateOf(plan.now);
  for (int ago = plan.days - 1; ago >= 0; --ago) {
    if (ago == 0 && plan.blocks > 0) {
      liveRestlessly(spans, calendar.startOf(today), plan.now, plan.blocks);
    } else {
      person.live(today.plusDays(-ago), ago);
    }
  }
}

}  // namespace

std::optional<StoreKind> storeKind(std::string_view name) {
  constexpr std::array<std::pair<std::string_view, StoreKind>, 4> kKinds{
      {{"person", StoreKind::Person},
       {"odd", StoreKind::Odd},
       {"empty", StoreKind::Empty},
       {"new", StoreKind::New}}};
  for (const auto& [known, kind] : kKinds) {
    if (known == name) return kind;
  }
  return {};
}

bool makeStore(const DataLocation& where, const StorePlan& plan) {
  Database db(where);
  seedDefaults(db, [&] { return plan.now - kMonth; });
  Transaction change(db);
  if (plan.kind == StoreKind::Person || plan.kind == StoreKind::Odd) {
    addProjects(change, plan.kind == StoreKind::Odd, plan.now);
    addRules(change, plan.now);
    addDays(change, plan);
  }
  if (!change.commit()) return false;
  Database::Settings settings{{"excluded_domains", R"(["banque.example"])"}};
  if (plan.kind != StoreKind::New) settings["onboarded"] = "1";
  if (plan.blocks > 0) settings["min_block_seconds"] = "5";
  return db.setSettings(settings) && db.truncateLog();
}

}  // namespace orvanta
