// Requests of any route with any arguments, one after the other, over a small store: every answer
// is one line of JSON, and what was changed is taken back row by row.
#include <algorithm>
#include <vector>

#include "base/text.h"
#include "fuzz/store.h"
#include "support/store_rows.h"

namespace orvanta::fuzz {
namespace {

const auto kRows = fmt::format(
    "INSERT INTO projects(id,name,category,keywords,client) VALUES "
    "(1,'Thèse','travail','thèse','A'),"
    "(2,'b',NULL,NULL,NULL);"
    "INSERT INTO rules(id,field,pattern,category,project_id) VALUES (1,'app','code','travail',1),"
    "(2,'domain','video.com','loisir',NULL);"
    "INSERT INTO goals(id,subject,name,project_id,period,bound,seconds,created) VALUES "
    "(1,'category','travail',NULL,'day','least',3600,1);"
    "INSERT INTO events(id,start,end,app,title,url,domain,idle,category,project_id) VALUES "
    "(1,{0},{0}+600,'Code','Thèse',NULL,NULL,0,NULL,NULL),"
    "(2,{0}+600,{0}+900.5,'Inactif',NULL,NULL,NULL,1,NULL,NULL),"
    "(3,{0}+900.5,{0}+5000,'Firefox','<b>','https://video.com/a','video.com',0,NULL,NULL),"
    "(4,{0}+9000,{0}+9100,'Mail',NULL,NULL,NULL,0,'travail',2);",
    kStart);

// Those that wait for other programs, or for threads of ours, or keep what cannot be taken away.
bool leftOut(std::string_view name) {
  return name.starts_with("store.") || name.starts_with("permissions.") || name == "launchAtLogin";
}

const std::vector<const Route*>& routes() {
  static const auto kAll = [] {
    std::vector<const Route*> all;
    for (const auto* route : Router::routes()) {
      if (!leftOut(route->name)) all.push_back(route);
    }
    return all;
  }();
  return kAll;
}

json::value someValue(FuzzedDataProvider& choose, int depth) {
  static constexpr std::array kTexts{
      "2023-11-13", "2023-11-14", "2023-W46",       "travail",    "loisir",     "app",
      "domain",     "day",        "week",           "project",    "least",      "up",
      "total",      "1h30",       "video.com",      "Code",       "Thèse code", "csv",
      "ics",        "nearest",    "https://a.fr/x", "rules.save", "erase",      "title"};
  switch (choose.ConsumeIntegralInRange<int>(0, depth > 0 ? 10 : 7)) {
    case 0:
      return nullptr;
    case 1:
      return choose.ConsumeBool();
    case 2:
      return choose.ConsumeIntegral<int64_t>();
    case 3:
      return choose.ConsumeFloatingPoint<double>();
    case 4:
      return kStart + choose.ConsumeIntegralInRange<int>(-2000, 20000) / 2.0;
    case 5:
      return choose.PickValueInArray(kTexts);
    case 6: {
      const auto text = choose.ConsumeRandomLengthString(40);
      return json::string(validUtf8(text));
    }
    case 7:
      return choose.ConsumeIntegralInRange<int>(0, 5);
    case 8: {
      json::array list;
      while (list.size() < 5 && choose.ConsumeBool()) list.push_back(someValue(choose, depth - 1));
      return list;
    }
    case 9: {
      const auto from = someValue(choose, 0);
      return json::array{json::object{{"from", from}, {"to", someValue(choose, 0)}}};
    }
    default: {
      static constexpr std::array kKeys{"from", "to",   "rate",    "currency", "rounding",
                                        "id",   "name", "pattern", "field",    "category"};
      json::object object;
      while (object.size() < 4 && choose.ConsumeBool()) {
        object[choose.PickValueInArray(kKeys)] = someValue(choose, depth - 1);
      }
      return object;
    }
  }
}

json::object someArguments(FuzzedDataProvider& choose, std::string_view names) {
  json::object body;
  if (names.starts_with("path")) {  // of a change to be tried
    const auto* change =
        routes()[choose.ConsumeIntegralInRange(std::size_t{0}, routes().size() - 1)];
    body["path"] = change->name;
    body["body"] =
        someArguments(choose, change->arguments.starts_with("path") ? "" : change->arguments);
  }
  while (!names.empty()) {
    const auto end = std::min(names.find(", "), names.size());
    if (!body.contains(names.substr(0, end)) && choose.ConsumeBool()) {
      body[names.substr(0, end)] = someValue(choose, 2);
    }
    names.remove_prefix(std::min(end + 2, names.size()));
  }
  return body;
}

// The file as another program has it open.
test::OtherProgram& other() {
  static test::OtherProgram program(fuzz::program().store.db.location().file());
  return program;
}

std::string kept() {
  static const auto kSelects = [] {
    test::Texts selects;
    for (const auto* table : {"events", "rules", "projects", "project_terms", "goals"}) {
      selects.push_back(test::selectAll(other(), table));
    }
    return selects;
  }();
  std::string rows;
  for (const auto& select : kSelects) rows += other().ask(select) + "\n";
  return rows;
}

// All that can be, the newest first.
void takeBack(const std::string& before) {
  const auto changes = answered("changes.list", {{"limit", 100}});
  for (const auto& change : changes.as_array()) {
    if (change.at("undone").as_bool()) continue;
    const auto undone = answered("changes.undo", {{"id", change.at("id")}});
    hold(undone.as_object().contains("ok"), "the last change is taken back",
         json::serialize(change) + json::serialize(undone));
  }
  const auto after = kept();
  hold(before == after, "row by row", test::difference(before, after));
}

}  // namespace

void target(std::string_view input) {
  auto choose = chooser(input);
  reset(kRows);
  program().clock.now = kStart + 20000;
  static const auto kBefore = kept();
  bool lasting = false;
  bool changed = false;
  while (choose.remaining_bytes() > 0) {
    const auto* route =
        routes()[choose.ConsumeIntegralInRange(std::size_t{0}, routes().size() - 1)];
    // Some hundreds of rules, which cost as much as all else.
    if (route->name == "rules.defaults" && choose.ConsumeIntegralInRange(0, 7) > 0) continue;
    // What is erased for good stays so; and the others are the way back themselves.
    lasting = lasting || route->kind == RouteKind::Ask || route->name.starts_with("changes.");
    changed = changed || route->kind != RouteKind::Read;
    answered(route->name, someArguments(choose, route->arguments));
  }
  program().shell.asked.clear();
  if (!changed) return;
  if (!lasting) takeBack(kBefore);
  hold(other().ask("PRAGMA integrity_check") == "ok|\n", "the file is whole");
}

}  // namespace orvanta::fuzz
