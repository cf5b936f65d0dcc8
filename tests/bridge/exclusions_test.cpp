// What is not to be known of a site, an application or anything that is found, also of what was
// recorded of it.
#include "support/files.h"
#include "support/program.h"

namespace orvanta::test {
namespace {

struct ExclusionsTest : testing::Test, Program {
  void SetUp() override {
    const char* addresses[] = {
        "https://école.fr/zq7",        "https://notes.xn--cole-9oa.fr:8443/zq7",
        "view-source:http://école.fr", "about:reader?url=https%3A%2F%2Fxn--cole-9oa.fr%2Fzq7",
        "https://ecole.fr/visible",    "https://autre.fr/?url=https://école.fr/"};
    const char* sites[] = {"école.fr", "notes.xn--cole-9oa.fr", nullptr, nullptr, "ecole.fr",
                           "autre.fr"};
    for (int i = 0; i < 6; ++i) {
      span(1000.0 + 100 * i, "Firefox", i < 4 ? "Titre zq7" : "Visible", addresses[i], sites[i]);
    }
    span(1600, "Journal", "Cher zq8", nullptr, nullptr);
  }
  void span(double start, const char* app, const char* title, const char* url, const char* site) {
    const auto text = [](const char* value) { return value ? Value(value) : Value(); };
    store.db.run("INSERT INTO events(start,end,app,title,url,domain,idle) VALUES (?,?,?,?,?,?,0)",
                 {start, start + 50, app, title, text(url), text(site)});
  }
  // How many files of the data folder hold the text.
  std::size_t holding(const std::string& text) {
    return filesHolding(store.db.location().dir, text).size();
  }
  std::string shown() {
    return spans("app || coalesce(' ' || title, '') || coalesce(' ' || domain, '')");
  }
};

TEST_F(ExclusionsTest, ASiteIsErasedWithItsTimeFromEveryFile) {
  // The way back from these holds it, and so do a backup and the index.
  call("events.assign", R"({"ids": [1, 2], "category": "loisir"})");
  call("events.assignRange", R"({"start": 1010, "end": 1020, "category": "travail"})");
  call("store.backup");
  const auto backup = call("store.status").at("backups").at(0).at("file");
  const auto before = call("exclusions.preview", R"({"site": "https://www.ÉCOLE.fr/a"})");
  EXPECT_EQ(json::serialize(before),
            R"({"name":"école.fr","excluded":false,"spans":6,"seconds":2E2,"shown":6,)"
            R"("first":1E3,"last":1.35E3})");
  EXPECT_GT(holding("zq7"), 1U);

  const auto answer = call("exclusions.add", R"({"site": "école.fr", "past": "erase"})");
  EXPECT_EQ(json::serialize(answer), R"({"ok":true,"spans":6,"seconds":2E2})");
  EXPECT_EQ(holding("zq7"), 0U);
  EXPECT_EQ(holding("xn--cole-9oa"), 0U);
  const auto left =
      "1400-1450 Firefox Visible ecole.fr\n1500-1550 Firefox Visible autre.fr\n"
      "1600-1650 Journal Cher zq8\n";
  EXPECT_EQ(shown(), left);
  EXPECT_TRUE(core.db.settings().excludes("notes.école.fr"));
  const auto changes = call("changes.list");
  EXPECT_EQ(changes.at(0).at("label"), "Suppression : 6 activités");
  EXPECT_EQ(changes.at(0).at("undoable"), false);
  EXPECT_EQ(ask("store.restore", {{"file", backup}}).at("ok"), true);
  EXPECT_EQ(shown(), left) << "the backup has lost it, too";
}

TEST_F(ExclusionsTest, OnlyWhatItShowedMayBeErased) {
  call("store.backup");
  call("exclusions.add", R"({"site": "école.fr", "past": "blank"})");
  EXPECT_EQ(holding("zq7"), 0U);
  EXPECT_EQ(spans("app").size(), std::string("1000-1050 Firefox\n").size() * 7);
  EXPECT_EQ(newestChange().at("label"), "Titres et adresses effacés\u00a0: 4 activités");

  EXPECT_EQ(call("exclusions.preview", R"({"app": "Journal"})").at("shown"), 1);
  call("exclusions.add", R"({"app": "Journal", "past": "blank"})");
  EXPECT_EQ(holding("zq8"), 0U);
  EXPECT_TRUE(core.db.settings().excludesApp("journal"));
  const auto after = call("exclusions.preview", R"({"app": "Journal"})");
  EXPECT_EQ(after.at("excluded"), true);
  EXPECT_EQ(after.at("spans"), 1);
  EXPECT_EQ(after.at("shown"), 0);
}

TEST_F(ExclusionsTest, WithoutThePastItIsAChoiceThatCanBeTakenBack) {
  const auto before = shown();
  call("exclusions.add", R"({"site": "école.fr"})");
  call("exclusions.add", R"({"app": "Journal"})");
  EXPECT_TRUE(core.db.settings().excludesApp("Journal"));
  const auto last = newestChange();
  EXPECT_EQ(last.at("label"), "Réglage\u00a0: applications exclues");
  EXPECT_TRUE(undo(last.at("id")));
  EXPECT_FALSE(core.db.settings().excludesApp("Journal"));
  EXPECT_EQ(call("exclusions.remove", R"({"site": "École.fr."})").at("ok"), true);
  EXPECT_FALSE(core.db.settings().excludes("école.fr"));
  EXPECT_EQ(call("exclusions.remove", R"({"app": "Journal"})").at("error"),
            "cette exclusion n’existe pas");
  for (const auto* wrong : {"{}", R"({"site": " "})", R"({"app": "A", "past": "tout"})"}) {
    EXPECT_TRUE(call("exclusions.add", wrong).as_object().contains("error")) << wrong;
  }
  EXPECT_EQ(shown(), before);
}

TEST_F(ExclusionsTest, WhatIsFoundIsErasedFromEveryFileAndNothingElse) {
  const auto project = call("projects.save", R"({"name": "Étude zq5"})").at("id");
  ask("events.assign", {{"ids", json::array{5}}, {"project_id", project}});
  span(1020, "Musique", "Autre", nullptr, nullptr);  // at the same time as the first
  span(1120, "Musique", "Autre", nullptr, nullptr);
  store.db.run("INSERT INTO events(start,end,app,title,idle) VALUES (1700,1700,'A','Vu zq7',0)",
               {});
  call("store.backup");
  const auto backup = call("store.status").at("backups").at(0).at("file");
  ASSERT_GT(holding("zq7"), 1U);

  const auto found = call("search.find", R"({"text": "ZQ7", "wait": true})");
  const auto preview = call("search.erase", R"({"text": "ZQ7", "preview": true})");
  EXPECT_EQ(json::serialize(preview),
            R"({"ok":true,"spans":5,"seconds":2E2,"first":1E3,"last":1.7E3})");
  EXPECT_EQ(preview.at("seconds"), found.at("duration"));
  EXPECT_EQ(call("search.spans", R"({"text": "ZQ7"})").at("ids").as_array().size(), 5U);
  EXPECT_EQ(call("search.erase", R"({"text": "ZQ7"})"), preview);
  EXPECT_EQ(holding("zq7"), 0U);
  // By its project's name, which the store keeps.
  EXPECT_EQ(call("search.erase", R"({"text": "etude zq5"})").at("spans"), 1);
  const std::string rest = "1500-1550 Firefox Visible autre.fr\n1600-1650 Journal Cher zq8\n";
  EXPECT_EQ(shown(), "1020-1070 Musique Autre\n1120-1170 Musique Autre\n" + rest);
  const auto changes = call("changes.list");
  EXPECT_EQ(changes.at(1).at("label"), "Suppression : 5 activités");
  EXPECT_EQ(changes.at(1).at("undoable"), false);

  const auto entries = changes.as_array().size();
  for (const auto* nothing : {R"({"text": "zq7"})", R"({"text": " « » "})", "{}"}) {
    EXPECT_EQ(call("search.erase", nothing).at("spans"), 0) << nothing;
  }
  EXPECT_EQ(call("changes.list").as_array().size(), entries);
  EXPECT_EQ(ask("store.restore", {{"file", backup}}).at("ok"), true);
  EXPECT_EQ(shown(), "1050-1070 Musique Autre\n1150-1170 Musique Autre\n" + rest)
      << "a copy has lost the whole time";
}

TEST_F(ExclusionsTest, WhatACopyWasNotRidOfIsErasedAtTheNextStart) {
  call("store.backup");
  const Past past{.site = "école.fr", .time = true};
  {
    Transaction change(store.db);
    core.history.erase(change, {{1000, 1350}}, {.kind = change_log::kErase},
                       erasePast(past, {{1000, 1350}}));
    core.keeper.remember(change, past);
    ASSERT_TRUE(change.commit());
  }
  EXPECT_GT(holding("zq7"), 0U);
  core.keeper.start();
  core.keeper.check();  // in turn
  EXPECT_EQ(holding("zq7"), 0U);
  EXPECT_EQ(store.db.setting("store_erasing"), "");
}

TEST_F(ExclusionsTest, OfAnExcludedApplicationNothingButItsTimeIsRecorded) {
  call("exclusions.add", R"({"app": "Journal"})");
  desktop.show("Journal", "Cher journal zq9");
  record();
  core.tracker.shutdown();
  const auto row = store.db.query("SELECT app, title FROM events ORDER BY id DESC LIMIT 1").at(0);
  EXPECT_EQ(row.str("app"), "Journal");
  EXPECT_EQ(row.str("title"), std::nullopt);
}

}  // namespace
}  // namespace orvanta::test
