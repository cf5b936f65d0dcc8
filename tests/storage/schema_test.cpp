#include "storage/schema.h"

#include <gtest/gtest.h>

#include "capture/retention.h"
#include "storage/backups.h"
#include "storage/data_lock.h"
#include "storage/store_keeper.h"
#include "storage/store_swap.h"
#include "support/documents.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

// What a store has, as the reference has it: under a table "`column` | declaration" of each of its
// columns, and the names of all else.
std::map<std::string, Texts> madeIn(TempStore& store) {
  constexpr auto kOthers = "Indexes and triggers";
  std::map<std::string, Texts> made;
  store.db.each("SELECT name, type='table' FROM sqlite_master WHERE name NOT LIKE 'sqlite_%'", {},
                [&](const Cursor& row) {
                  const auto name = '`' + std::string(*row.str(0)) + '`';
                  const bool table = row.int_(1) == 1;
                  auto& names = made[table ? name : kOthers];
                  if (!table) names.push_back(name);
                });
  for (auto& [table, columns] : made) {
    if (table == kOthers) continue;
    store.db.each(
        "SELECT '`' || name || '` | ' || type || iif(pk, ' PRIMARY KEY', '') || "
        "iif(\"notnull\", ' NOT NULL', '') || ifnull(' DEFAULT ' || dflt_value, '') "
        "FROM pragma_table_info(?)",
        {table.substr(1, table.size() - 2)},
        [&](const Cursor& row) { columns.emplace_back(*row.str(0)); });
  }
  std::sort(made[kOthers].begin(), made[kOthers].end());
  return made;
}

TEST(Schema, TheReferenceTellsEveryTableColumnIndexAndTrigger) {
  TempStore store;
  store.db.setSetting("retention_days", "1");
  Retention(store.db, [] { return 0.0; }).apply();  // makes an index of its own
  auto documented = tablesOf("schema.md");
  for (auto& [heading, rows] : documented) {
    const bool table = heading.starts_with('`');
    for (auto& row : rows) {
      const auto name = row.find(" |", 2);
      row = row.substr(2, (table ? row.find(" |", name + 1) : name) - 2);
    }
    if (!table) std::sort(rows.begin(), rows.end());
  }
  EXPECT_EQ(documented, madeIn(store));
}

TEST(Privacy, EveryColumnAndSettingIsTold) {
  TempStore store;
  std::multiset<std::string> kept;
  for (const auto& [table, columns] : madeIn(store)) {
    if (!table.starts_with('`') || table == "`settings`") continue;
    for (const auto& name : namesOf(columns)) {
      kept.insert(table.substr(1, table.size() - 2) + '.' + name);
    }
  }
  for (const auto& row : settingTable()) kept.insert(std::string("settings.") + row.key);
  EXPECT_EQ(namesOf(tablesOf("confidentialite.md").at("Dans le fichier des données")), kept);
}

TEST(Privacy, EveryFileIsTold) {
  const auto documented = namesOf(tablesOf("confidentialite.md").at("Dans le dossier des données"));
  std::multiset<std::string> met;
  const auto look = [&](const fs::path& folder) {
    for (const auto& name : namesIn(folder)) {
      const auto told = std::find_if(documented.begin(), documented.end(), [&](const auto& known) {
        const auto open = known.find("…");
        return open == known.npos ? name == known : name.starts_with(known.substr(0, open));
      });
      ASSERT_NE(told, documented.end()) << name;
      if (!met.contains(*told)) met.insert(*told);
    }
  };
  TempStore store;
  const auto& where = store.db.location();
  const auto lock = DataLock::take(where);
  store.db.run("INSERT INTO events(start, end, app) VALUES (17e8, 17e8 + 60, 'Vi')");
  {
    Backups backups(Backups::folderOf(where), {.log = store.log.sink()});
    StoreKeeper keeper(store.db, backups);
    ASSERT_TRUE(keeper.backUp().backup);
    ASSERT_TRUE(keeper.restore(keeper.backups().front().file).error.empty());
  }
  ActivityIndex index(store.db, [] { return 17.002e8; });
  while (index.step()) {
  }
  look(where.dir);
  store.db.exchange(Database::Meanwhile::Wait, [&] {
    return keepAside(where.file(), {.why = "endommagé",
                                    .now = 0,
                                    .calendar = {},
                                    .afterStep = [&] { look(where.dir); }})
        .done;
  });
  look(where.dir);
  EXPECT_EQ(met, documented);
}

}  // namespace
}  // namespace orvanta::test
