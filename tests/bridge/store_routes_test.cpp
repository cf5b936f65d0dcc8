// What the routes say of the store, take back, bring back and erase.
#include "support/program.h"

namespace orvanta::test {
namespace {

struct StoreRoutesTest : testing::Test, Program {
  void span(double start, double end, const std::string& title) {
    store.db.run("INSERT INTO events(start,end,app,title,url,domain) VALUES (?,?,'A',?,?,'d.fr')",
                 {start, end, title, "https://d.fr/" + title});
  }
  std::string spans() { return Program::spans("title"); }
  std::size_t count(const std::string& rows) {
    return store.db.query("SELECT 1 FROM " + rows).size();
  }
  Texts filesWith(const std::string& text) { return filesHolding(store.db.location().dir, text); }
  json::value whyNotUndone(const json::value& id) {
    return ask("changes.undo", {{"id", id}}).at("error");
  }
};

TEST_F(StoreRoutesTest, DeletedTimeIsInNoFileAnyMore) {
  // Enough that rows have moved between pages.
  for (int i = 0; i < 400; ++i) {
    span(1000 + i * 10, 1010 + i * 10,
         i == 200 ? "TRES-SECRET " + std::string(700, 'x') : std::string(300, 'y'));
  }
  span(1e6, 2e6, "la nuit");
  for (int i = 0; i < 400; i += 3) {
    store.db.run("UPDATE events SET title=? WHERE id=?", {std::string(500, 'z'), i + 1});
  }
  // The way back from these holds it: a span is cut, and a rule is learned and forgotten.
  store.db.run("UPDATE events SET domain='tres-secret.fr' WHERE id IN (200, 201)");
  store.db.run("UPDATE events SET start=start+90000, end=end+90000 WHERE id=200");
  call("events.assign", R"({"ids": [1], "category": "loisir"})");
  call("events.assignRange", R"({"start": 3002, "end": 3004, "category": "travail"})");
  call("events.assign", R"({"ids": [200, 201], "category": "autre"})");
  call("rules.delete", R"({"id": 1})");
  EXPECT_EQ(newestChange().at("label"), "Règle supprimée : « tres-secret.fr »");
  EXPECT_EQ(call("store.backup").at("ok"), true);
  const auto backup = call("store.status").at("backups").at(0).at("file");
  EXPECT_FALSE(filesWith("TRES-SECRET").empty());

  EXPECT_EQ(call("events.delete", R"({"ids": []})").at("error"), "aucun bloc");
  EXPECT_EQ(call("events.delete").at("error"), "plage invalide");
  const auto half = R"({"start": 2995, "end": 3015, "preview": true})";
  EXPECT_EQ(call("events.delete", half),
            json::value({{"ok", true}, {"deleted", 4}, {"seconds", 15.0}}));
  EXPECT_FALSE(filesWith("TRES-SECRET").empty()) << "a preview";
  call("events.delete", R"({"ids": [200]})");
  EXPECT_EQ(call("events.delete", R"({"start": 2995, "end": 3015})").at("deleted"), 4);
  EXPECT_TRUE(filesWith("TRES-SECRET").empty());
  EXPECT_TRUE(filesHolding(store.folder.path() / "Orvanta", "tres-secret").empty());
  const auto left = call("changes.list").as_array();
  ASSERT_EQ(left.size(), 3U);
  EXPECT_EQ(left[0].at("label"), "Suppression : 01/01/1970, 01:49 – 01:50");
  EXPECT_EQ(left[0].at("undoable"), false);
  EXPECT_TRUE(undo(left[2].at("id"))) << "it holds no text";
  EXPECT_EQ(count("events WHERE end=2995 OR start=3015"), 1U);
  EXPECT_EQ(count("events WHERE end > 2995 AND start < 3015"), 0U);

  EXPECT_EQ(call("events.delete", R"({"start": 1200000, "end": 1300000})").at("seconds"), 100000.0);
  EXPECT_EQ(count("events WHERE title='la nuit'"), 2U);
  const auto rest = spans();
  EXPECT_EQ(ask("store.restore", {{"file", backup}}).at("ok"), true);
  EXPECT_EQ(spans(), rest) << "the backup has lost it, too";
}

TEST_F(StoreRoutesTest, TheRetentionTakesTitlesOutOfTheWayBack) {
  span(1000, 1100, "TRES-SECRET");
  call("events.assignRange", R"({"start": 1000, "end": 1050, "category": "travail"})");
  call("events.assign", R"({"ids": [1], "category": "loisir"})");
  span(clock.now - 100, clock.now, "encore");
  ask("events.assignRange", {{"start", clock.now - 50}, {"end", clock.now.load()}});
  call("settings.set", R"({"retention_days": 30})");
  core.tracker.applyRetention();
  EXPECT_EQ(count("events WHERE title IS NOT NULL"), 2U);
  EXPECT_TRUE(filesWith("TRES-SECRET").empty());
  std::string kinds;
  const auto list = call("changes.list");
  for (const auto& change : list.as_array()) {
    kinds += std::string(change.at("kind").as_string()) + " ";
  }
  EXPECT_EQ(kinds, "settings assignRange assign ");
}

TEST_F(StoreRoutesTest, WhatIsBeingRecordedIsDeletedUpToNow) {
  desktop.show("Éditeur", "lettre secrète");
  record();
  const auto first = *core.tracker.openSpanId();
  clock.now = clock.now + 5;
  // Trying something on it neither waits for the capture nor cuts what it records.
  const auto tried = call("changes.preview", R"({"path": "events.assignRange",
                          "body": {"start": 0, "end": 2e9, "category": "loisir"}})");
  EXPECT_TRUE(tried.as_object().contains("learned"));
  EXPECT_EQ(core.tracker.openSpanId(), first);
  EXPECT_EQ(call("events.delete", fmt::format(R"({{"ids": [{}]}})", first)).at("ok"), true);
  const auto rows = store.db.query("SELECT start FROM events");
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows.front().dbl("start"), clock.now);
  core.tracker.shutdown();
}

TEST_F(StoreRoutesTest, ChangesAreListedTakenBackAndMadeAgain) {
  call("projects.save", R"({"name": "Thèse"})");
  for (int day = 0; day < 2; ++day) span(day * 86400.0, day * 86400.0 + 600, "t");
  call("events.assign", R"({"ids": [1, 2], "category": "travail", "project_id": 1})");
  EXPECT_EQ(count("rules"), 1U) << "learned";
  call("events.assignRange", R"({"start": 100, "end": 200, "category": "loisir"})");
  const auto list = call("changes.list", R"({"limit": 2})").as_array();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].at("kind"), "assignRange");
  EXPECT_EQ(list[0].at("label"), "Loisir : 01/01/1970, 01:01 – 01:03");
  EXPECT_EQ(list[0].at("spans"), 1);
  EXPECT_EQ(list[0].at("seconds"), 100.0);
  EXPECT_EQ(list[1].at("label"), "Travail · Thèse : 2 activités");
  EXPECT_EQ(list[1].at("learned").at(0).at("pattern"), "d.fr");
  EXPECT_EQ(spans(), "0-100 t\n100-200 t\n200-600 t\n86400-87000 t\n");

  // The assignment lies under the range.
  EXPECT_EQ(whyNotUndone(list[1].at("id")),
            "ce changement ne peut pas être annulé : « Loisir : 01/01/1970, 01:01 – "
            "01:03 » a changé la même chose depuis");
  EXPECT_TRUE(undo(list[0].at("id")));
  EXPECT_EQ(whyNotUndone(list[0].at("id")), "ce changement ne peut plus être annulé");
  EXPECT_TRUE(undo(list[1].at("id")));
  EXPECT_EQ(spans(), "0-600 t\n86400-87000 t\n");
  EXPECT_EQ(count("events WHERE category IS NOT NULL"), 0U);
  EXPECT_EQ(count("rules"), 0U);
  EXPECT_TRUE(redo(list[1].at("id")));
  EXPECT_EQ(count("rules"), 1U);
  call("projects.delete", R"({"id": 1})");
  EXPECT_EQ(newestChange().at("label"), "Projet supprimé : « Thèse »");
  EXPECT_EQ(newestChange().at("spans"), 2);
}

TEST_F(StoreRoutesTest, BackupsAreMadeListedAndRestored) {
  const auto empty = call("store.status");
  EXPECT_EQ(empty.at("state"), "ok");
  EXPECT_TRUE(empty.at("last_backup").is_null() && empty.at("first").is_null());
  span(1000, 1600, "avant");
  const auto made = call("store.backup");
  EXPECT_EQ(made.at("ok"), true);
  span(2000, 2600, "après");
  const auto status = call("store.status");
  EXPECT_EQ(status.at("first"), 1000.0);
  EXPECT_EQ(status.at("last"), 2600.0);
  EXPECT_EQ(status.at("last_backup"), made.at("time"));
  const json::object file{{"file", made.at("file")}};
  const auto preview = ask("store.restorePreview", file);
  EXPECT_EQ(preview.at("spans"), 1);
  EXPECT_EQ(preview.at("current").at("spans"), 2);
  EXPECT_EQ(preview.at("lost_spans"), 1);
  EXPECT_EQ(preview.at("lost_seconds"), 600.0);
  EXPECT_EQ(call("store.restore", R"({"file": "/etc/passwd"})").at("error"),
            "Cette sauvegarde n’existe plus.");
  const auto restored = ask("store.restore", file);
  EXPECT_EQ(spans(), "1000-1600 avant\n");
  EXPECT_TRUE(fs::exists(restored.at("kept").as_string().c_str()));
  EXPECT_TRUE(holds(call("store.status").at("notice").as_string(), "restaurée"));
  EXPECT_EQ(call("store.check").at("ok"), true);
}

TEST_F(StoreRoutesTest, ADamagedStoreIsMendedWhileTheProgramRuns) {
  Texts told;
  core.keeper.listen(
      {.renewed = [] {}, .tell = [&](const auto& sentence) { told.push_back(sentence); }});
  for (int i = 0; i < 3000; ++i) span(i * 100, i * 100 + 90, "titre " + std::to_string(i));
  store.db.truncateLog();
  overwrite(store.db.location().file(), 200 * 1024, std::string(20 * 1024, '\xff'));
  EXPECT_TRUE(call("week", R"({"date": "1970-01-02"})").as_object().contains("incomplete"));
  EXPECT_EQ(call("status").at("store").at("state"), "damaged");
  core.keeper.look();
  EXPECT_EQ(call("store.check").at("ok"), true);
  EXPECT_EQ(call("store.status").at("state"), "ok");
  ASSERT_EQ(told.size(), 1U);
  const auto left = count("events");
  EXPECT_GT(left, 2500U);
  EXPECT_LT(left, 3000U) << told.front();
  const auto kept = filesWith("titre 2999");
  EXPECT_TRUE(std::any_of(kept.begin(), kept.end(), [](const auto& name) {
    return name.starts_with("orvanta.db.endommagé-");
  }));
  EXPECT_FALSE(call("week", R"({"date": "1970-01-02"})").as_object().contains("incomplete"));
  span(400000, 400010, "de nouveau");
  EXPECT_TRUE(holds(spans(), "de nouveau"));
}

}  // namespace
}  // namespace orvanta::test
