#include "storage/activities.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <tuple>

#include "storage/activity_index.h"
#include "storage/changeset.h"
#include "storage/history.h"
#include "storage/snapshot.h"
#include "storage/store_copy.h"
#include "storage/store_keeper.h"
#include "support/random_store.h"
#include "support/store_files.h"
#include "support/store_rows.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

constexpr double kDay = 86400;
constexpr double kNovember = 1'793'491'200;  // 2026, in UTC
constexpr double kStart = kNovember - 10 * kDay;

struct Activity {
  std::string app;
  std::optional<std::string> domain, title, url, category;
  std::optional<int64_t> project;
  friend auto operator<=>(const Activity&, const Activity&) = default;
};
struct Spent {
  double seconds = 0;
  int64_t spans = 0;
  double first = std::numeric_limits<double>::infinity();
  friend bool operator==(const Spent&, const Spent&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Spent& spent) {
    return out << fmt::format("{} s, {} spans from {}", spent.seconds, spent.spans, spent.first);
  }
};
using Months = std::map<std::pair<Activity, int>, Spent>;

bool isWanted(const Activity& activity) {
  return activity.app != "Firefox" && activity.project != 2;
}

void add(Months& months, const Activity& activity, int month, const Spent& spent) {
  auto& sum = months[{activity, month}];
  sum.seconds += spent.seconds;
  sum.spans += spent.spans;
  sum.first = std::min(sum.first, spent.first);
}

// One by one.
Months naiveMonths(Database& db, const Calendar& calendar) {
  Months months;
  for (const auto& row : db.query("SELECT * FROM events")) {
    if (row.int_("idle") == 1) continue;
    const Activity activity{row.str("app").value_or("Inconnu"),
                            row.str("domain"),
                            row.str("title"),
                            row.str("url"),
                            row.str("category"),
                            row.int_("project_id")};
    if (!isWanted(activity)) continue;
    const double start = row.dbl("start");
    const auto date = calendar.dateOf(start);
    add(months, activity, date.year * 12 + date.month - 1,
        {std::max(row.dbl("end") - start, 0.0), 1, start});
  }
  return months;
}

Months toldMonths(Database& db, const Calendar& calendar) {
  Months months;
  std::map<int64_t, double> examples;
  const auto known = [](const Ev& ev) {
    return Activity{ev.app.str(),      ev.domain.optional(),   ev.title.optional(),
                    ev.url.optional(), ev.category.optional(), ev.projectId};
  };
  StringPool texts;
  std::vector<Activity> wanted;
  const bool whole =
      Activities(db, texts, calendar)
          .each(
              [&](const Ev& ev) {
                if (!isWanted(known(ev))) return Activities::kUnwanted;
                wanted.push_back(known(ev));
                return static_cast<uint32_t>(wanted.size() - 1);
              },
              [&](uint32_t number, const ActivityTime& time) {
                add(months, wanted[number], time.month, {time.seconds, time.spans, time.first});
                examples[time.example] = time.first;
              });
  EXPECT_TRUE(whole);
  for (const auto& [id, first] : examples) {
    const auto row = db.query("SELECT start FROM events WHERE id=?", {id});
    EXPECT_TRUE(row.size() == 1 && row.front().dbl("start") == first) << id;
  }
  return months;
}

const Calendar& anyCalendar(Dice& dice) {
  static const std::vector<Calendar> calendars = [] {
    std::vector<Calendar> list;
    for (const auto* zone :
         {"Europe/Paris", "Pacific/Kiritimati", "Asia/Kathmandu", "Pacific/Honolulu"}) {
      list.emplace_back(Glib::TimeZone::create(zone));
    }
    return list;
  }();
  return dice.oneOf(calendars);
}

// A store to which everything happens that may.
struct Random : TempStore {
  explicit Random(unsigned seed) : dice(seed) { spans(); }

  void spans() {
    db.exec("BEGIN");
    addRandomSpans(db, dice, kStart + dice.upTo(5) * kDay, 200'000,
                   {kNovember, kNovember - 3600, kNovember - 14 * 3600, kNovember + 12 * 3600,
                    kNovember + kDay, kNovember - kDay, kStart, kStart, 1000.5, -5, 2.5e11});
    db.exec("COMMIT");
  }
  int64_t anyId() {
    const auto ids = db.query("SELECT id FROM events");
    return ids.empty() ? 1 : dice.oneOf(ids).int_("id").value_or(0);
  }
  TimeRange anyRange() {
    const double from = kStart + dice.upTo(25 * 86400);
    return {from, from + dice.upTo(200'000)};
  }
  void erase(const Erasure& erasure) {
    Transaction change(db);
    for (const auto& step : erasure.steps) change.run(step.sql, step.args);
    EXPECT_TRUE(change.commit());
  }

  void change() {
    const auto id = anyId();
    switch (dice.upTo(10)) {
      case 0:
        return spans();
      case 1:
        db.run("UPDATE events SET category='autre', project_id=5 WHERE id % 7 = ?", {id % 7});
        return;
      case 2:
        db.run("UPDATE events SET start=start+? WHERE id=?", {dice.upTo(500'000), id});
        return;
      case 3:
        db.run("DELETE FROM events WHERE id=?", {id});
        return;
      case 4:
        return erase(eraseRange(anyRange()));
      case 5:
        return erase(stripTitlesBefore(anyRange().start));
      case 6:
        history
            .record([&](Transaction& change) {
              change.run("UPDATE events SET project_id=4 WHERE id >= ?", {id});
              change.run("DELETE FROM events WHERE id = ?", {id});
              return ChangeNote{};
            })
            .forget();
        return;
      case 7:
        if (const auto list = history.list(1); list && !list->empty())
          history.undo(list->front().id);
        return;
      case 8:
        OtherProgram(db.location().file())
            .ask(fmt::format("REPLACE INTO events(id, start, end, app) VALUES ({}, {}, {}, 'Abc');"
                             "UPDATE OR REPLACE events SET id=id+1 WHERE id={}",
                             id, kNovember, kNovember + 10, id));
        return;
      case 9:
        backup = folder.path() / fmt::format("backup {}.db", ++backups);
        ASSERT_TRUE(copyStore(db.location().file(), backup).made);
        return;
      default:
        if (backup.empty()) return;
        db.exchange(Database::Meanwhile::Wait, [&] {
          return restoreStore(db.location(), backup, {.now = kNovember + backups++ * 60}).done;
        });
    }
  }

  // What happens to the index.
  void index() {
    const auto file = dice.oneIn(3)
                          ? activityList(db.location()).file()
                          : activityFile(db.location(), dayOf(kStart) / kChunkDays + dice.upTo(2));
    switch (dice.upTo(7)) {
      case 0:
        while (index_->step()) {
        }
        return;
      case 1:
        index_.emplace(db, [] { return kNovember + 3 * kDay; });
        return;
      case 2:
        index_->removeStale();
        return;
      case 3:  // killed before the file was there
        db.run("INSERT OR IGNORE INTO indexed_days VALUES (?, random())",
               {dayOf(kStart) + dice.upTo(30)});
        return;
      case 4:
        if (fs::exists(file)) overwrite(file, static_cast<std::size_t>(dice.upTo(900)), "garbage");
        return;
      case 5:
        if (fs::exists(file)) fs::resize_file(file, fs::file_size(file) / 2);
        return;
      case 6:
        if (dice.oneIn(3)) fs::remove_all(activityFolder(db.location()));
        return;
      default:
        index_->step();
    }
  }

  Dice dice;
  History history{db};
  std::optional<ActivityIndex> index_{std::in_place, db, [] { return kNovember + 60 * kDay; }};
  fs::path backup;
  int backups = 0;
};

TEST(Activities, AreThoseOfAllSpansWhateverHappens) {
  int indexed = 0;
  for (unsigned seed = 0; seed < times(30U); ++seed) {
    Random store(seed);
    for (int round = 0; round < 25; ++round) {
      for (int i = store.dice.upTo(2); i > 0; --i) store.index();
      if (store.dice.oneIn(2)) store.change();
      const auto& calendar = anyCalendar(store.dice);
      const auto expected = naiveMonths(store.db, calendar);
      ASSERT_EQ(toldMonths(store.db, calendar), expected) << "seed " << seed << " round " << round;
      const Snapshot moment(store.db);
      toldMonths(store.db, calendar);  // the moment begins
      if (store.dice.oneIn(4)) {
        store.db.run("UPDATE events SET app='Other' WHERE id % 3 = 0");
        while (store.index_->step()) {
        }
        ASSERT_EQ(toldMonths(store.db, calendar), expected) << "as when the moment began";
      }
    }
    indexed += fs::exists(activityFolder(store.db.location())) ? 1 : 0;
  }
  EXPECT_GT(indexed, times(15));
}

struct ActivityIndexTest : testing::Test, TempStore {
  void fill() {
    auto store = FileConnection::writing(db.location().file());
    fillStore(store, 20'000, static_cast<int>(kStart));
  }
  void makeIndex() {
    while (index.step()) {
    }
  }
  ActivityIndex index{db, [] { return kNovember + 60 * kDay; }};
};

TEST_F(ActivityIndexTest, IsOfTheOwnerOnlyAndIsRead) {
  fill();
  makeIndex();
  const auto folder = activityFolder(db.location());
  EXPECT_EQ(modeOf(folder), 0700U);
  for (const auto& name : namesIn(folder)) EXPECT_EQ(modeOf(folder / name), 0600U);
  EXPECT_FALSE(index.step()) << "up to date";
  // It is the index that tells: changed where no trigger sees it.
  OtherProgram(db.location().file()).ask("DROP TRIGGER day_changed; UPDATE events SET app='Other'");
  StringPool texts;
  int64_t others = 0;
  const auto count = [&] {
    others = 0;
    Activities(db, texts).each(
        [](const Ev& ev) { return ev.app.view() == "Other" ? 0 : Activities::kUnwanted; },
        [&](uint32_t, const ActivityTime& time) { others += time.spans; });
    return others;
  };
  EXPECT_EQ(count(), 0);
  Database again(db.location(), log.sink());
  EXPECT_EQ(count(), 19'000) << "a store that lacked a trigger is not believed";
}

TEST_F(ActivityIndexTest, HoldsNothingOfWhatWasErased) {
  fill();
  Backups backups(Backups::folderOf(db.location()), {.log = log.sink()});
  StoreKeeper keeper(db, backups);
  const auto erased = [&](const Erasure& erasure, const TimeRange& range, bool madeMeanwhile) {
    makeIndex();
    ASSERT_FALSE(filesHolding(activityFolder(db.location()), "Titre-1501.").empty());
    // Of a kill, and of a disk that was full.
    std::ofstream(activityFolder(db.location()) / "20745.XYZ") << "Titre-1501.";
    std::ofstream(activityList(db.location()).file(), std::ios::app) << "Titre-1501.";
    Transaction change(db);
    for (const auto& step : erasure.steps) change.run(step.sql, step.args);
    ASSERT_TRUE(change.commit());
    if (madeMeanwhile) makeIndex();
    EXPECT_TRUE(keeper.erase({range}));
    for (const auto& folder : {db.location().dir, activityFolder(db.location())}) {
      EXPECT_TRUE(filesHolding(folder, "Titre-1501.").empty());
    }
    makeIndex();
    EXPECT_TRUE(filesHolding(activityFolder(db.location()), "Titre-1501.").empty());
  };
  const TimeRange hour{kStart + 14'000, kStart + 17'600};
  for (const bool madeMeanwhile : {false, true}) {
    erased(eraseRange(hour), hour, madeMeanwhile);
    fill();
    erased(stripTitlesBefore(kNovember + 60 * kDay), {0, 1}, madeMeanwhile);
    fill();
  }
}

// What a tick writes: the end of the open span.
TEST_F(ActivityIndexTest, CostsATickNoPage) {
  fill();
  makeIndex();
  const double now = kNovember + 60 * kDay;
  const auto id = db.run("INSERT INTO events(start,end,app) VALUES (?,?,'Abc')", {now, now});
  const auto written = [&](double end) {
    db.truncateLog();
    db.run("UPDATE events SET end=? WHERE id=?", {end, id});
    return bytesOf(walOf(db.location().file()));
  };
  const auto with = written(now + 10);
  for (const auto* name : {"replaced", "overwritten", "added", "removed", "changed"}) {
    db.exec(fmt::format("DROP TRIGGER day_{}", name));
  }
  EXPECT_EQ(with, written(now + 20));
}

}  // namespace
}  // namespace orvanta::test
