// Stores that earlier versions wrote, opened by this one; fixtures/README.md tells of them.
#include "storage/backups.h"
#include "storage/settings.h"
#include "storage/store_check.h"
#include "support/places.h"
#include "support/store_files.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

constexpr auto kOldest = "orvanta-0.1.0.db";

// Everything but the values: tables with their columns, indexes, triggers, the form's number.
Texts formOf(const fs::path& file) {
  auto form = rowsOf(file,
                     "SELECT type, name, (SELECT group_concat(concerning.name || ' ' || "
                     "concerning.type || concerning.\"notnull\" || concerning.pk || "
                     "ifnull(dflt_value, '')) FROM pragma_table_info(sqlite_master.name) AS "
                     "concerning) FROM sqlite_master ORDER BY 1, 2");
  form.push_back(rowsOf(file, "PRAGMA user_version").at(0));
  return form;
}

struct UpgradeTest : testing::Test {
  UpgradeTest() {
    fs::create_directories(where_.dir);
    fs::copy(fs::path(kSourceFolder) / "tests/fixtures" / kOldest, where_.file());
  }
  void open() {
    Database db(where_, log_.sink());
    EXPECT_TRUE(db.readable());
    EXPECT_FALSE(db.condition());
  }
  Texts rows(const std::string& table, const fs::path& file) {
    return rowsOf(file, "SELECT * FROM " + table + " ORDER BY 1");
  }

  LogLines log_;
  TempFolder folder_;
  DataLocation where_ = folder_.location();
};

TEST_F(UpgradeTest, KeepsEveryRowAndHasTheFormOfAFreshStore) {
  std::map<std::string, Texts> before;
  for (const auto* table : {"events", "projects", "rules"}) {
    before[table] = rows(table, where_.file());
  }
  EXPECT_EQ(before["events"].size(), 20U);
  EXPECT_EQ(before["projects"].size(), 2U);
  EXPECT_EQ(before["rules"].size(), 288U);
  const auto settings = rows("settings", where_.file());
  open();

  for (const auto& [table, old] : before) EXPECT_EQ(rows(table, where_.file()), old) << table;
  const auto now = rows("settings", where_.file());
  EXPECT_TRUE(std::includes(now.begin(), now.end(), settings.begin(), settings.end()));
  TempStore fresh;
  EXPECT_EQ(formOf(where_.file()), formOf(fresh.db.location().file()));
  EXPECT_TRUE(checkStore(where_.file(), {.full = true}).whole);

  const auto backups = Backups(Backups::folderOf(where_)).list();
  ASSERT_EQ(backups.size(), 1U);
  for (const auto& [table, old] : before) EXPECT_EQ(rows(table, backups.front().file), old);
  open();
  EXPECT_EQ(Backups(Backups::folderOf(where_)).list().size(), 1U) << "once";
  EXPECT_EQ(log_.lines(), Texts());
}

TEST_F(UpgradeTest, WaitsForAnotherProgramWithOneBackup) {
  OtherProgram other(where_.file());
  other.ask("BEGIN IMMEDIATE");
  double now = 17e8;
  Database db(where_, log_.sink(), [&] { return now += 3600; });
  const auto backups = [&] { return Backups(Backups::folderOf(where_)).list().size(); };
  db.look();
  EXPECT_EQ(backups(), 1U);
  db.look();
  EXPECT_EQ(backups(), 1U) << "also while it is tried again and again";
  EXPECT_NE(formOf(where_.file()).back(), formOf(TempStore().db.location().file()).back());
  other.ask("ROLLBACK");
  db.look();
  EXPECT_EQ(formOf(where_.file()), formOf(TempStore().db.location().file()));
  EXPECT_EQ(backups(), 1U);
}

}  // namespace
}  // namespace orvanta::test
