#include "storage/salvage.h"

#include <algorithm>
#include <map>
#include <set>

#include "storage/coverage.h"
#include "storage/store_check.h"
#include "support/random_store.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

constexpr std::size_t kPage = 1024;

// A store as a kill leaves it: the file and its log.
struct StoreBytes {
  std::string file;
  std::string log;
};

void put(const fs::path& file, const StoreBytes& bytes) {
  std::ofstream(file, std::ios::binary) << bytes.file;
  fs::remove(walOf(file));
  if (!bytes.log.empty()) std::ofstream(walOf(file), std::ios::binary) << bytes.log;
}

SalvageOptions plainly(std::optional<fs::path> backup = {}) {
  return {.prepareSchema = createSchema,
          .newestBackup = std::move(backup),
          .calendar = Calendar(Glib::TimeZone::create("Europe/Paris"))};
}

const SalvageReport::Table& spansIn(const SalvageReport& report) {
  return *std::find_if(report.tables.begin(), report.tables.end(),
                       [](const auto& table) { return table.name == "events"; });
}

struct SalvageTest : testing::Test {
  // In the file `spans` spans, in the log `more`.
  StoreBytes make(int spans, int more) {
    const auto file = folder_.path() / "made.db";
    for (const auto& old : {file, walOf(file), shmOf(file)}) fs::remove(old);
    const auto store = newStore(file);
    fillStore(store, spans);
    // Some titles go on on other pages, some pages are free.
    execute(store, "UPDATE events SET title = title || hex(zeroblob(900)) WHERE id % 50 = 3");
    execute(store, "DELETE FROM events WHERE id BETWEEN 40 AND 60");
    execute(store, "INSERT INTO indexed_days VALUES (99, 7)");
    execute(
        store,
        "INSERT INTO project_terms VALUES (1,'EUR',8550,1,36000,'2026-01-01',15,'up','day'),"
        "(2,'CHF',NULL,0,NULL,NULL,NULL,NULL,NULL);"
        "INSERT INTO goals VALUES (1,'site','a.fr',NULL,'day','most',3600,1.5e9),"
        "(2,'project','',7,'week','least',36000,1600000000);"
        "INSERT INTO goal_told VALUES (1,1,'2026-10-01',80),(2,2,'2026-09-28',100);"
        "INSERT INTO sheets VALUES (3,1.5e9,'Octobre','Ada','2026-10-01','2026-10-31',2,NULL,"
        "'{\"rows\":[]}'),(4,1600000000,'','','2026-10-01','2026-10-31',1,7,hex(zeroblob(900)))");
    execute(store, "PRAGMA wal_checkpoint(TRUNCATE)");
    if (more > 0) fillStore(store, more, 1'000'000 + spans * 10);
    return {bytesIn(file), bytesIn(walOf(file))};
  }
  SalvageReport run(const StoreBytes& bytes, const SalvageOptions& options = plainly()) {
    put(damaged_, bytes);
    fs::remove(fresh_);
    return salvage(damaged_, fresh_, options);
  }
  Texts saved(const std::string& sql = "SELECT * FROM events") const { return rowsOf(fresh_, sql); }

  // As in the store that the bytes were put into.
  void expectSame() const {
    for (const auto* table : {"events", "projects", "rules", "settings", "project_terms", "sheets",
                              "goals", "goal_told"}) {
      const auto sql = std::string("SELECT * FROM ") + table;
      EXPECT_EQ(saved(sql), rowsOf(folder_.path() / "same.db", sql));
    }
  }

  TempFolder folder_;
  fs::path damaged_ = folder_.path() / "orvanta.db";
  fs::path fresh_ = folder_.path() / "fresh.db";
};

TEST_F(SalvageTest, AStoreThatIsWholeIsCopiedRowByRow) {
  const auto bytes = make(300, 200);
  put(folder_.path() / "same.db", bytes);
  const auto report = run(bytes);
  EXPECT_TRUE(report.made && report.whole());
  EXPECT_EQ(report.sentence,
            "Tout ce que contient le fichier a pu être lu : 479 activités, 2 projets et 4 règles.");
  EXPECT_TRUE(saved("SELECT * FROM indexed_days").empty()) << "the spans are others' copies";
  expectSame();
  EXPECT_EQ(namesIn(folder_.path()), (Texts{"fresh.db", "made.db", "orvanta.db", "orvanta.db-wal",
                                            "same.db", "same.db-wal"}));
}

// Without the header, then without the page of the schema, SQLite reads nothing at all.
TEST_F(SalvageTest, WithoutHeaderOrSchemaEveryRowIsFoundOnItsPage) {
  auto bytes = make(300, 0);
  put(folder_.path() / "same.db", bytes);
  for (const std::size_t lost : {std::size_t{100}, kPage}) {
    bytes.file.replace(0, lost, std::string(lost, '\xa5'));
    SCOPED_TRACE(lost);
    const auto report = run(bytes);
    ASSERT_TRUE(report.made) << report.sentence;
    EXPECT_FALSE(report.whole());
    expectSame();
    EXPECT_EQ(report.sentence,
              "279 activités ont pu être relues dans le fichier abîmé ; il peut en manquer. Il "
              "peut manquer aussi des projets, des règles et des réglages.");
  }
}

TEST_F(SalvageTest, WhatTheLogHoldsIsReadAsFarAsItIsGood) {
  const auto bytes = make(100, 300);
  auto torn = bytes;
  // In the middle of the log: what was committed before it counts, what came after is told.
  torn.log[torn.log.size() / 2] ^= 0x40;
  const auto report = run(torn);
  EXPECT_TRUE(report.made && report.logCut && !report.whole());
  EXPECT_TRUE(holds(report.sentence, "Ce qui a été enregistré en dernier peut manquer."));
  EXPECT_GE(saved().size(), 79U);
  // Without the header of the file only the log says which pages are the newest.
  auto headless = bytes;
  headless.file.replace(0, 100, std::string(100, '\0'));
  EXPECT_TRUE(run(headless).made);
  EXPECT_EQ(saved().size(), 379U);
}

TEST_F(SalvageTest, TheBackupFillsWhatCouldNotBeRead) {
  auto bytes = make(300, 0);
  const auto backup = folder_.path() / "orvanta-2026-11-22-0930.db";
  put(backup, bytes);
  const auto whole = rowsOf(backup, "SELECT * FROM events");
  {
    const auto store = FileConnection::writing(backup);
    execute(store, "UPDATE settings SET value='full' WHERE key='privacy_mode'");
    // Deleted since, and recorded under an id that is another span's by now.
    execute(store, "INSERT INTO rules(field, pattern) VALUES ('app','x'), ('app','y')");
    execute(store, "UPDATE events SET id = 1000 WHERE id = 300");
    execute(store, "PRAGMA journal_mode=DELETE");
  }
  const auto leaf = bytes.file.find("Titre-200.") / kPage * kPage;
  bytes.file.replace(leaf, kPage, std::string(kPage, '\x11'));
  const auto report = run(bytes, plainly(backup));
  ASSERT_TRUE(report.made);
  EXPECT_EQ(saved(), whole);
  EXPECT_EQ(saved("SELECT value FROM settings WHERE key='privacy_mode'"), Texts{"domain|"});
  const auto& events = spansIn(report);
  EXPECT_GT(events.fromBackup, 0);
  EXPECT_EQ(events.read + events.fromBackup, 279);
  EXPECT_EQ(report.spansLost, 0);
  EXPECT_TRUE(holds(report.sentence,
                    fmt::format("{} reprises de la sauvegarde du 22/11/2026", events.fromBackup)));

  const auto without = run(bytes);
  EXPECT_EQ(without.spansLost, events.fromBackup);
  ASSERT_EQ(without.lostTime.size(), 1U);
  EXPECT_EQ(without.lostTime.front().end - without.lostTime.front().start,
            10.0 * static_cast<double>(events.fromBackup));
  EXPECT_TRUE(holds(without.sentence,
                    fmt::format("au moins {} sont perdues (du 12/01/1970)", events.fromBackup)));
}

TEST_F(SalvageTest, WhatCannotBeDoneLeavesNothing) {
  const auto bytes = make(300, 0);
  std::stop_source stop;
  stop.request_stop();
  auto options = plainly();
  options.stop = stop.get_token();
  EXPECT_FALSE(run(bytes, options).made);
  EXPECT_FALSE(salvage(folder_.path() / "none.db", fresh_, plainly()).made);
  auto refused = plainly();
  refused.prepareSchema = [](sqlite3*) { return false; };
  EXPECT_FALSE(run(bytes, refused).made);
  EXPECT_FALSE(fs::exists(fresh_));
  std::ofstream(fresh_) << "mine";
  const auto report = salvage(damaged_, fresh_, plainly());
  EXPECT_FALSE(report.made);
  EXPECT_FALSE(report.sentence.empty());
  EXPECT_EQ(bytesIn(fresh_), "mine");
  // A file without anything in it is a store without anything in it.
  EXPECT_TRUE(run({}).made);
  EXPECT_TRUE(saved().empty());
}

// Rows by id; several where a damaged file shows an id twice.
using Rows = std::map<int64_t, std::set<std::string>>;

void readInto(Rows& rows, const FileConnection& store, const std::string& sql) {
  store.each(sql, {}, [&](const Cursor& row) {
    std::string text;
    const bool times = row.int_(1) && row.int_(2);  // numbers that are finite
    const bool sound = times && row.dbl(1) <= row.dbl(2);
    // Every column is read; text that damage has put in one of numbers may become a number.
    constexpr int kIdle = 8;
    const int last = row.columns() - 1;  // the row id, whatever damage makes of the first column
    for (int i = 1; i < std::min(kIdle, last); ++i) {
      const auto value = row.value(i);
      if (value.integer()) text += fmt::format("{}|", static_cast<double>(*value.integer()));
      if (value.real()) text += fmt::format("{}|", *value.real());
      if (value.text()) text += std::string(value.text()->c_str()) + "|";
      if (value.isNull()) text += "-|";
    }
    if (sound && std::abs(row.dbl(1)) < 2e11 && std::abs(row.dbl(2)) < 2e11) {
      rows[row.int_(last).value_or(0)].insert(text);
    }
  });
}

// What SQLite reads of a damaged store from either end and by each id.
Rows readable(const fs::path& file, bool& whole) {
  Rows rows;
  const auto store = FileConnection::writing(file);
  whole = store && rowsOf(store, "PRAGMA quick_check") == Texts{"ok|"};
  if (!store) return rows;
  sqlite3_db_config(store.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  const std::string select = "SELECT *, rowid FROM events ";
  readInto(rows, store, select + "NOT INDEXED ORDER BY rowid LIMIT 5000");
  readInto(rows, store, select + "NOT INDEXED ORDER BY rowid DESC LIMIT 5000");
  for (int id = 1; id <= 420; ++id)
    readInto(rows, store, select + fmt::format("WHERE rowid={}", id));
  return rows;
}

std::string randomBytes(Dice& dice, std::size_t count) {
  std::string bytes(count, '\0');
  for (auto& byte : bytes) byte = static_cast<char>(dice.upTo(255));
  return bytes;
}

// Somewhere in a file, in one of the ways in which files get damaged.
void damage(std::string& bytes, Dice& dice) {
  if (bytes.empty()) return;
  const auto size = static_cast<int>(bytes.size());
  const auto somewhere = [&] { return static_cast<std::size_t>(dice.upTo(size - 1)); };
  const auto page = [&] { return somewhere() / kPage * kPage; };
  const auto at = somewhere();
  switch (dice.upTo(6)) {
    case 0:
      for (int i = dice.upTo(60); i >= 0; --i)
        bytes[somewhere()] = static_cast<char>(dice.upTo(255));
      break;
    case 1:
      bytes.resize(at);
      break;
    case 2: {
      const auto length = std::min(bytes.size() - at, static_cast<std::size_t>(dice.upTo(5000)));
      bytes.replace(at, length,
                    dice.oneIn(2) ? randomBytes(dice, length) : std::string(length, '\0'));
      break;
    }
    case 3:  // a page in the place of another: trees that bite their tails
      for (int i = dice.upTo(3); i >= 0; --i) {
        const auto copied = bytes.substr(page(), kPage);
        bytes.replace(page(), copied.size(), copied);
      }
      break;
    case 4:
      bytes.replace(0, std::min<std::size_t>(bytes.size(), 100), randomBytes(dice, 100));
      break;
    case 5:  // the heads of pages, where a single byte does most
      for (int i = dice.upTo(5); i >= 0; --i) {
        const auto head = page() + static_cast<std::size_t>(dice.upTo(11));
        if (head < bytes.size()) bytes[head] = static_cast<char>(dice.upTo(255));
      }
      break;
    default:
      bytes[at] ^= static_cast<char>(1U << static_cast<unsigned>(dice.upTo(7)));
  }
}

void expectTrueSentence(const SalvageReport& report, bool whole, std::size_t rows) {
  const auto& events = spansIn(report);
  EXPECT_EQ(static_cast<std::size_t>(events.read + events.fromBackup), rows);
  const auto says = [&](const std::string& text) {
    return report.sentence.find(text) != std::string::npos;
  };
  const bool saysAll = says("Tout ce que") || says("Toutes les activités");
  EXPECT_TRUE(whole || !saysAll) << report.sentence;
  EXPECT_EQ(says("Ce qui a été enregistré en dernier peut manquer"),
            report.logCut && !report.whole());
  EXPECT_EQ(says("reprise"), events.fromBackup > 0) << report.sentence;
  EXPECT_TRUE(says(events.read == 0 && !saysAll ? "Aucune activité" : std::to_string(events.read)))
      << report.sentence;
}

struct DamagedStores : SalvageTest, testing::WithParamInterface<int> {};

TEST_P(DamagedStores, GiveUpEveryRowThatSqliteCanReadAndStayAsTheyAre) {
  constexpr unsigned kStores = 50;
  const auto bytes = make(300, 60);
  const auto backup = folder_.path() / "backup.db";
  const auto copy = folder_.path() / "copy.db";
  put(backup, bytes);
  const auto inBackup = rowsOf(backup, "SELECT start, end FROM events").size();
  ASSERT_GT(inBackup, 300U);
  for (unsigned i = 0; i < kStores; ++i) {
    const auto seed = static_cast<unsigned>(GetParam()) * kStores + i;
    SCOPED_TRACE(fmt::format("seed {}", seed));
    Dice dice(seed);
    auto damaged = bytes;
    for (int more = dice.upTo(2); more >= 0; --more) {
      damage(dice.oneIn(3) ? damaged.log : damaged.file, dice);
    }
    put(copy, damaged);
    fs::remove(shmOf(copy));
    bool whole = false;
    const auto rows = readable(copy, whole);

    const bool withBackup = dice.oneIn(3);
    const auto report = run(damaged, plainly(withBackup ? std::optional(backup) : std::nullopt));
    ASSERT_TRUE(report.made) << report.sentence;
    EXPECT_TRUE(bytesIn(damaged_) == damaged.file && bytesIn(walOf(damaged_)) == damaged.log);
    EXPECT_TRUE(checkStore(fresh_, {.full = true}).whole);
    const auto fresh = FileConnection::reading(fresh_);
    Rows found;
    readInto(found, fresh, "SELECT *, rowid FROM events");
    for (const auto& [id, texts] : rows) {
      ASSERT_TRUE(found.contains(id)) << id << " " << *texts.begin() << report.sentence;
      EXPECT_TRUE(texts.contains(*found[id].begin())) << id;
    }
    expectTrueSentence(report, whole, found.size());
    if (!withBackup || spansIn(report).whole) continue;
    const auto coverage = coverageOf(fresh);
    FileConnection::reading(backup).each(
        "SELECT start, end FROM events", {},
        [&](const Cursor& row) { EXPECT_GT(coverage.covered(row.dbl(0), row.dbl(1)), 0); });
  }
}

INSTANTIATE_TEST_SUITE_P(Salvage, DamagedStores, testing::Range(0, 10));

}  // namespace
}  // namespace orvanta::test
