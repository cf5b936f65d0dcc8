#include "store_maker/store_maker.h"

#include <algorithm>
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

// One that Camille wrote, one that an assignment taught, and one that an application was given.
void addRules(Transaction& change, double now) {
  constexpr auto kInsert =
      "INSERT INTO rules(field, pattern, category, project_id, priority, created) "
      "VALUES (?,?,?,?,?,?)";
  change.run(kInsert, {"domain", "intranet.atelier-cmd.fr", "travail", 3, 0, now - kMonth});
  change.run(kInsert, {"app", "Zotero", "autre", 4, 0, now - kMonth / 2});
  change.run(kInsert, {"app", "Inkscape", "travail", nullptr, kAppRulePriority, now - kMonth / 2});
}

bool addPossessions(Database& db, const StorePlan& plan) {
  Transaction change(db);
  addProjects(change, plan.kind == StoreKind::Odd, plan.now);
  addRules(change, plan.now);
  return bool{change.commit()};
}

// The days, with the backup that was made yesterday in the morning.
bool addDays(Database& db, const StorePlan& plan) {
  constexpr double kMorning = 9.2 * 3600;
  const Calendar calendar;
  const auto today = calendar.dateOf(plan.now);
  Person person(plan.kind == StoreKind::Odd);
  const auto live = [&](int from, int to) {
    Transaction change(db);
    SpanWriter spans(change, plan.now);
    for (int ago = from; ago >= to; --ago) {
      if (ago == 0 && plan.blocks > 0) {
        liveRestlessly(spans, calendar.startOf(today), plan.now, plan.blocks);
      } else {
        person.live(spans, today.plusDays(-ago), ago);
      }
    }
    return bool{change.commit()};
  };
  if (!live(plan.days - 1, 2)) return false;
  const auto yesterday = calendar.startOf(today.plusDays(-1)) + kMorning;
  return Backups(Backups::folderOf(db.location())).make(db.location().file(), yesterday).made &&
         live(std::min(plan.days - 1, 1), 0);
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
  SettingTexts settings{{"excluded_domains", R"(["banque.example"])"}};
  if (plan.kind != StoreKind::New) settings["onboarded"] = "1";
  if (plan.blocks > 0) settings["min_block_seconds"] = "5";
  if (!db.setSettings(settings)) return false;
  const bool person = plan.kind == StoreKind::Person || plan.kind == StoreKind::Odd;
  return (!person || (addPossessions(db, plan) && addDays(db, plan))) && db.truncateLog();
}

}  // namespace orvanta
