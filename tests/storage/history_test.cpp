// What the history keeps in the store, and what it leaves there when a change is only tried.
#include "storage/history.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "support/store_rows.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

constexpr double kDay = 86400;

struct HistoryTest : testing::Test {
  std::string file() const { return store.db.location().file().string(); }
  std::string rows() const { return rowsOf(file(), {"events", "rules", "projects", "changes"}); }
  int64_t number(std::string_view sql) {
    int64_t found = -1;
    store.db.each(sql, {}, [&](const Cursor& row) { found = row.int_(0).value_or(-1); });
    return found;
  }
  std::string textOf(std::string_view sql) {
    std::string found;
    store.db.each(sql, {}, [&](const Cursor& row) { found = row.str(0).value_or(""); });
    return found;
  }

  void addSpans(int count) {
    store.db.run(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i < ?) "
        "INSERT INTO events(start,end,app,title) SELECT i*10, i*10+10, 'A', hex(zeroblob(50)) FROM "
        "n",
        {count});
  }
  Written assign(const std::string& category, int64_t from = 0, int64_t to = 1'000'000) {
    return history.record([&](Transaction& change) {
      change.run("UPDATE events SET category=? WHERE id BETWEEN ? AND ?", {category, from, to});
      return ChangeNote{.kind = "assign", .label = category};
    });
  }
  Written addRule(const std::string& pattern) {
    return history.record([&](Transaction& change) {
      const auto id =
          change.run("INSERT INTO rules(field, pattern) VALUES ('domain', ?)", {pattern});
      return ChangeNote{.kind = "assign", .label = pattern, .learnedRules = {id}};
    });
  }

  TempStore store;
  double now = 1'700'000'000;
  Measure measure;
  History history{store.db, [this] { return now; },
                  [this](Transaction& change, const std::string& changeset) {
                    return measure ? measure(change, changeset) : std::function<std::string()>();
                  }};
};

TEST_F(HistoryTest, WhatIsTriedIsMeasuredAndLeavesNothing) {
  addSpans(8000);  // more than is held in memory at other times
  const auto before = rows();
  store.db.truncateLog();
  OtherProgram other(file());
  const auto version = other.ask("PRAGMA data_version");
  const auto log = bytesIn(file() + "-wal").size();
  std::string measured;
  measure = [&](Transaction& change, const std::string&) {
    const auto add = [&](const Cursor& row) { measured += *row.str(0); };
    change.each("SELECT group_concat(DISTINCT category) || count(*) FROM events", {}, add);
    store.db.scan("SELECT ' was ' || count(category) FROM events", {}, add);
    return [&] {
      store.db.each("SELECT ' is ' || count(category) FROM events", {},
                    [&](const Cursor& row) { measured += *row.str(0); });
      return measured;
    };
  };
  Texts made;
  bool after = false;
  const auto note = [&](const ChangeNote& note) { made.push_back(note.label); };
  const auto tried = history.rehearse({[&] {
                                         EXPECT_TRUE(history.rehearsing());
                                         assign("x").forget();
                                         after = true;
                                       },
                                       [&] { assign("y", 1, 9).forget(); }},
                                      note);
  EXPECT_TRUE(tried.possible);
  EXPECT_EQ(tried.effect, "y,x8000 was 0 is 0");
  EXPECT_EQ(made, (Texts{"x", "y"}));
  EXPECT_FALSE(after || history.rehearsing());
  // One that cannot be done ends it.
  measure = {};
  EXPECT_THROW(history.rehearse(
                   {[&] { assign("x").forget(); }, [] { throw std::runtime_error("no"); }}, note),
               std::runtime_error);
  EXPECT_EQ(bytesIn(file() + "-wal").size(), log);
  EXPECT_EQ(other.ask("PRAGMA data_version"), version);
  EXPECT_EQ(difference(before, rows()), "");
  EXPECT_TRUE(assign("z"));
  EXPECT_EQ(number("SELECT count(*) FROM events WHERE category='z'"), 8000);
  EXPECT_EQ(history.list(9)->size(), 1U);
}

TEST_F(HistoryTest, AnEffectIsKeptWithoutTitlesAndNamesNothingThatIsErased) {
  addSpans(3);
  measure = [&](Transaction&, const std::string&) {
    return [] {
      return std::string(
          R"({"spans":3,"examples":[{"text":"d.fr","field":"domain","title":"secret"}]})");
    };
  };
  EXPECT_TRUE(assign("x"));
  EXPECT_EQ(history.list(1)->at(0).effect,
            R"({"spans":3,"examples":[{"text":"d.fr","field":"domain","title":null}]})");
  measure = [&](Transaction&, const std::string&) -> std::function<std::string()> {
    return []() -> std::string { throw std::runtime_error("no"); };
  };
  EXPECT_TRUE(assign("y"));
  EXPECT_EQ(history.list(1)->at(0).effect, "");
  Transaction change(store.db);
  history.erase(change, {{20, 25}}, {.kind = change_log::kErase, .label = "Suppression"});
  EXPECT_TRUE(change.commit());
  const auto list = *history.list(9);
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[2].effect, R"({"spans":3,"examples":[]})");
  EXPECT_FALSE(list[0].undoable);
  EXPECT_TRUE(list[1].undoable) << "it holds no text of a span";
}

TEST_F(HistoryTest, WhatIsErasedWhileAnEffectIsMeasuredIsNotNamedInIt) {
  addSpans(3);
  measure = [&](Transaction&, const std::string&) {
    return [&] {
      Transaction change(store.db);
      history.erase(change, {{20, 25}}, {.kind = change_log::kErase, .label = "Suppression"});
      change.commit().forget();
      return std::string(R"({"spans":3,"examples":[{"text":"d.fr","field":"domain"}]})");
    };
  };
  EXPECT_TRUE(assign("x"));
  EXPECT_EQ(history.list(2)->at(1).effect, R"({"spans":3,"examples":[]})");
}

TEST_F(HistoryTest, OnlyEntriesThatNameWhatNoSpanShowsLeaveWithIt) {
  store.db.run(
      "INSERT INTO events(start,end,app,title,domain) VALUES (0,10,'Firefox','a','secret.fr'),"
      "(10,20,'Firefox','a','reste.fr'),(20,30,'Éditeur','b',NULL)");
  for (const auto* pattern : {"SECRET.fr", "reste.fr", "firefox", "autre.fr"}) {
    EXPECT_TRUE(addRule(pattern));
  }
  EXPECT_TRUE(assign("x"));
  Transaction change(store.db);
  history.erase(change, {{0, 10}}, {.kind = change_log::kErase, .label = "Suppression"});
  EXPECT_TRUE(change.commit());
  EXPECT_EQ(textOf("SELECT group_concat(label) FROM changes"),
            "reste.fr,firefox,autre.fr,x,Suppression");
  EXPECT_EQ(history.undo(5).text, "Suppression") << "a span is gone";
}

TEST_F(HistoryTest, TakesATwentiethOfTheStoreAndTheOldestGoFirst) {
  addSpans(150);
  const auto taken = [&] {
    return std::stoll(OtherProgram(file()).ask(
        "SELECT sum(pgsize) FROM dbstat WHERE name IN ('changes', 'idx_changes_at')"));
  };
  const auto churn = [&](int changes) {
    for (int i = 1; i <= changes; ++i) {
      now += 60;
      history
          .record([&](Transaction& change) {
            change.run("UPDATE events SET category=hex(randomblob(60)) WHERE id % ? = 0",
                       {i % 3 + 1});
            return ChangeNote{.kind = "assign", .label = std::to_string(i)};
          })
          .forget();
    }
  };
  churn(160);
  EXPECT_LT(taken(), 1 << 20);
  EXPECT_GT(taken(), 900'000);
  EXPECT_EQ(history.list(1)->at(0).note.label, "160");
  const auto kept = number("SELECT count(*) FROM changes");
  EXPECT_LT(kept, 160);
  EXPECT_EQ(number("SELECT max(id) - min(id) + 1 FROM changes"), kept);
  // In a larger store more of them.
  store.db.exec("CREATE TABLE ballast AS SELECT zeroblob(25000000) AS b");
  churn(60);
  EXPECT_GT(taken(), 1'100'000);
  EXPECT_LT(taken(), 1'350'000);
  now += 90 * kDay - 60;
  EXPECT_EQ(history.list(1000)->size(), 2U);
  churn(1);
  EXPECT_EQ(number("SELECT count(*) FROM changes"), 2);
}

TEST_F(HistoryTest, OneThatIsLargerThanItsRoomIsListedAndStays) {
  addSpans(6000);
  EXPECT_TRUE(history.record([&](Transaction& change) {
    change.run("UPDATE events SET category=hex(randomblob(100))");
    return ChangeNote{.kind = "assign", .label = "all"};
  }));
  EXPECT_FALSE(history.list(1)->at(0).undoable);
  EXPECT_EQ(history.undo(1).kind, History::Outcome::Kind::Unknown);
}

TEST_F(HistoryTest, AStoreWhoseTableIsDamagedIsChangedAllTheSame) {
  addSpans(3);
  EXPECT_TRUE(assign("x"));
  store.db.truncateLog();
  const auto page = number("SELECT rootpage FROM sqlite_master WHERE name='changes'");
  overwrite(file(), static_cast<std::size_t>((page - 1) * 1024), std::string(1024, '\xff'));
  TempStore again(store.folder.path());
  History damaged(again.db, [this] { return now; });  // which has that row to tell
  EXPECT_TRUE(damaged.record([](Transaction& change) {
    change.run("UPDATE events SET category='y'");
    return ChangeNote{.kind = "assign"};
  }));
  EXPECT_EQ(number("SELECT count(*) FROM events WHERE category='y'"), 3);
  EXPECT_FALSE(damaged.list(1));
  EXPECT_EQ(again.db.condition()->trouble, StoreTrouble::Damaged) << "and is mended then";
}

TEST_F(HistoryTest, AStoreWithoutItsTableIsChangedAllTheSame) {
  addSpans(3);
  EXPECT_TRUE(assign("x"));
  store.db.exec("DROP TABLE changes");
  EXPECT_TRUE(assign("y"));
  EXPECT_EQ(number("SELECT count(*) FROM events WHERE category='y'"), 3);
  EXPECT_FALSE(history.list(1));
  EXPECT_EQ(history.undo(1).kind, History::Outcome::Kind::NotStored);
  Transaction change(store.db);
  history.erase(change, {{0, 15}}, {.kind = change_log::kErase, .label = "Suppression"});
  EXPECT_TRUE(change.commit());
  EXPECT_EQ(number("SELECT count(*) FROM events"), 3);
  EXPECT_EQ(number("SELECT min(start) FROM events"), 15);
  // The next start makes it anew.
  TempStore again(store.folder.path());
  EXPECT_TRUE(History(again.db).list(1));
}

}  // namespace
}  // namespace orvanta::test
