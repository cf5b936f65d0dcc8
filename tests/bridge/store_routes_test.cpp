// What the routes say of the store, take back, bring back and erase.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/program.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
namespace json = boost::json;

class StoreRoutesTest : public testing::Test, protected test::Program {
 protected:
  void span(double start, double end, const std::string& title) {
    store.db.run("INSERT INTO events(start,end,app,title,url,domain) VALUES (?,?,'A',?,?,'d.fr')",
                 {start, end, title, "https://d.fr/" + title});
  }
  std::string spans() {
    std::string text;
    store.db.each(
        "SELECT start, end, title FROM events ORDER BY start, id", {}, [&](const Cursor& row) {
          text += fmt::format("{:g}-{:g} {}\n", row.dbl(0), row.dbl(1), row.str(2).value_or("-"));
        });
    return text;
  }
  // The files of the data folder that hold the text somewhere.
  std::string filesWith(const std::string& text) {
    std::string found;
    for (const auto& entry : fs::recursive_directory_iterator(store.db.location().dir)) {
      if (!entry.is_regular_file()) continue;
      std::ostringstream content;
      content << std::ifstream(entry.path(), std::ios::binary).rdbuf();
      if (content.str().find(text) != std::string::npos)
        found += entry.path().filename().string() + " ";
    }
    return found;
  }
  std::string undo(const json::value& id) {
    return json::serialize(call("changes.undo", json::serialize(json::object{{"id", id}})));
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
  EXPECT_EQ(call("store.backup").at("ok"), true);
  const auto backup = call("store.status").at("backups").at(0).at("file");
  EXPECT_NE(filesWith("TRES-SECRET"), "");

  EXPECT_EQ(call("events.delete", R"({"ids": []})").at("error"), "aucun bloc");
  EXPECT_EQ(call("events.delete").at("error"), "plage invalide");
  const auto half = R"({"start": 2995, "end": 3015, "preview": true})";
  EXPECT_EQ(call("events.delete", half),
            json::value({{"ok", true}, {"deleted", 3}, {"seconds", 20.0}}));
  EXPECT_NE(filesWith("TRES-SECRET"), "") << "a preview";
  EXPECT_EQ(call("events.delete", R"({"start": 2995, "end": 3015})").at("deleted"), 3);
  EXPECT_EQ(filesWith("TRES-SECRET"), "");
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE end=2995 OR start=3015").size(), 2U);
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE end > 2995 AND start < 3015").size(), 0U);

  EXPECT_EQ(call("events.delete", R"({"start": 1200000, "end": 1300000})").at("seconds"), 100000.0);
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE title='la nuit'").size(), 2U);
  const auto rest = spans();
  EXPECT_EQ(call("store.restore", json::serialize(json::object{{"file", backup}})).at("ok"), true);
  EXPECT_EQ(spans(), rest) << "the backup has lost it, too";
}

TEST_F(StoreRoutesTest, WhatIsBeingRecordedIsDeletedUpToNow) {
  desktop.show("Éditeur", "lettre secrète");
  core.tracker.start();
  const auto id = [&] { return core.tracker.openSpanId(); };
  while (!id()) std::this_thread::yield();
  const auto first = *id();
  clock.now = clock.now + 5;
  EXPECT_EQ(call("events.delete", fmt::format(R"({{"ids": [{}]}})", first)).at("ok"), true);
  const auto rows = store.db.query("SELECT start FROM events");
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(rows.front().dbl("start"), clock.now);
  core.tracker.shutdown();
}

TEST_F(StoreRoutesTest, ChangesAreListedTakenBackAndMadeAgain) {
  call("projects.save", R"({"name": "Thèse"})");
  for (int day = 0; day < 2; ++day) span(day * 86400.0, day * 86400.0 + 600, "t");
  const auto project = store.db.query("SELECT * FROM projects").size();
  EXPECT_EQ(call("events.assign", R"({"ids": [1, 2], "category": "travail", "project_id": 1})")
                .at("learned")
                .as_array()
                .size(),
            1U);
  call("events.assignRange", R"({"start": 100, "end": 200, "category": "loisir"})");
  const auto list = call("changes.list", R"({"limit": 2})").as_array();
  ASSERT_EQ(list.size(), 2U);
  EXPECT_EQ(list[0].at("kind"), "assignRange");
  EXPECT_EQ(list[0].at("label"), "Loisir : 01/01/1970, 01:01 – 01:03");
  EXPECT_EQ(list[0].at("spans"), 1);
  EXPECT_EQ(list[0].at("seconds"), 100.0);
  EXPECT_EQ(list[1].at("label"), "Travail · Thèse : 2 activités");
  EXPECT_EQ(list[1].at("learned").at(0).at("pattern"), "d.fr");
  EXPECT_EQ(spans(), "0-100 t\n100-200 t\n200-600 t\n86400-87000 t\n");

  // The assignment lies under the range.
  EXPECT_EQ(
      undo(list[1].at("id")),
      R"({"error":"ce changement ne peut pas être annulé : ce qu'il a touché a changé depuis"})");
  EXPECT_EQ(undo(list[0].at("id")), R"({"ok":true})");
  EXPECT_EQ(undo(list[0].at("id")), R"({"error":"ce changement ne peut plus être annulé"})");
  EXPECT_EQ(undo(list[1].at("id")), R"({"ok":true})");
  EXPECT_EQ(spans(), "0-600 t\n86400-87000 t\n");
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE category IS NOT NULL").size(), 0U);
  EXPECT_EQ(store.db.query("SELECT 1 FROM rules").size(), 0U);
  const auto redo = json::serialize(json::object{{"id", list[1].at("id")}});
  EXPECT_EQ(call("changes.redo", redo), done());
  EXPECT_EQ(store.db.query("SELECT 1 FROM rules").size(), 1U);

  // A project that comes back is the same one, whatever was made in between.
  call("projects.delete", R"({"id": 1})");
  const auto gone = call("changes.list", R"({"limit": 1})").at(0);
  EXPECT_EQ(gone.at("label"), "Projet supprimé : « Thèse »");
  EXPECT_EQ(gone.at("spans"), 2);
  EXPECT_EQ(call("projects.save", R"({"name": "Autre"})").at("id"), 2);
  EXPECT_EQ(undo(gone.at("id")), R"({"ok":true})");
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE project_id=1").size(), 2U);
  EXPECT_EQ(store.db.query("SELECT * FROM projects").size(), project + 1);
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
  const auto file = json::serialize(json::object{{"file", made.at("file")}});
  const auto preview = call("store.restorePreview", file);
  EXPECT_EQ(preview.at("spans"), 1);
  EXPECT_EQ(preview.at("current").at("spans"), 2);
  EXPECT_EQ(preview.at("lost_spans"), 1);
  EXPECT_EQ(preview.at("lost_seconds"), 600.0);
  EXPECT_EQ(call("store.restore", R"({"file": "/etc/passwd"})").at("error"),
            "Cette sauvegarde n'existe plus.");
  const auto restored = call("store.restore", file);
  EXPECT_EQ(spans(), "1000-1600 avant\n");
  EXPECT_TRUE(fs::exists(restored.at("kept").as_string().c_str()));
  EXPECT_NE(call("store.status").at("notice").as_string().find("restaurée"), std::string::npos);
  EXPECT_EQ(call("store.check").at("ok"), true);
}

TEST_F(StoreRoutesTest, ADamagedStoreIsMendedWhileTheProgramRuns) {
  std::vector<std::string> told;
  core.keeper.listen(
      {.renewed = [] {}, .tell = [&](const auto& sentence) { told.push_back(sentence); }});
  for (int i = 0; i < 3000; ++i) span(i * 100, i * 100 + 90, "titre " + std::to_string(i));
  store.db.truncateLog();
  {
    std::fstream file(store.db.location().file(), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(200 * 1024);
    file << std::string(20 * 1024, '\xff');
  }
  EXPECT_TRUE(call("week", R"({"date": "1970-01-02"})").as_object().contains("incomplete"));
  EXPECT_EQ(call("status").at("store").at("state"), "damaged");
  core.keeper.look();
  EXPECT_EQ(call("store.check").at("ok"), true);
  EXPECT_EQ(call("store.status").at("state"), "ok");
  ASSERT_EQ(told.size(), 1U);
  const auto left = store.db.query("SELECT 1 FROM events").size();
  EXPECT_GT(left, 2500U);
  EXPECT_LT(left, 3000U) << told.front();
  EXPECT_NE(filesWith("titre 2999").find("orvanta.db.endommagé-"), std::string::npos);
  EXPECT_FALSE(call("week", R"({"date": "1970-01-02"})").as_object().contains("incomplete"));
  span(400000, 400010, "de nouveau");
  EXPECT_NE(spans().find("de nouveau"), std::string::npos);
}

}  // namespace
}  // namespace orvanta
