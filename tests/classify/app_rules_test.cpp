// Rules that applications get from their desktop files.
#include "classify/app_rules.h"

#include <map>
#include <set>

#include "classify/classifier.h"
#include "classify/current_rules.h"
#include "classify/defaults.h"
#include "classify/rule_set.h"
#include "support/everyday_apps.h"
#include "support/program.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

struct ApplicationRules : testing::Test, Program {
  ApplicationRules() { seedDefaults(store.db, clock.read()); }

  /// As the capture looks, in a program that has just begun.
  void see(const std::string& app, const std::string& desktopCategories) {
    AppRules(store.db, clock.read()).seen(app, listed(desktopCategories));
  }
  /// The rules of applications, "pattern category" each.
  Texts made() {
    Texts rules;
    for (const auto& rule : loadRules(store.db)) {
      if (rule.ofApplication()) rules.push_back(rule.pattern + " " + *rule.category);
    }
    return rules;
  }
  std::string counts(const std::string& app, std::optional<int64_t> project = {}) {
    StringPool pool;
    Ev ev{.app = pool.intern(app), .projectId = project};
    Classifier(pool, CurrentRules(store.db).book()).classify(ev);
    return ev.cat.str();
  }
  int64_t idOf(const std::string& pattern) {
    return *store.db.query("SELECT id FROM rules WHERE pattern=?", {pattern}).at(0).int_("id");
  }
};

// What the main categories of a desktop file stand for, those that stand for one thing, and
// editing.
std::set<std::string> meanings(const Texts& listed) {
  static const std::map<std::string, std::string> kMeanings{
      {"Development", "travail"}, {"Office", "travail"},           {"Graphics", "travail"},
      {"Education", "travail"},   {"Science", "travail"},          {"Game", "loisir"},
      {"AudioVideo", "loisir"},   {"AudioVideoEditing", "travail"}};
  std::set<std::string> found;
  for (const auto& category : listed) {
    if (const auto known = kMeanings.find(category); known != kMeanings.end()) {
      found.insert(known->second);
    }
  }
  return found;
}

TEST_F(ApplicationRules, EverydayApplicationsAreSortedOutOfTheBox) {
  int sorted = 0;
  for (const auto& [app, categories, expected] : kEverydayApps) {
    const bool builtIn = counts(app) != "nonclasse";
    see(app, categories);
    const auto counted = counts(app);
    EXPECT_EQ(counted, expected) << app;
    if (counted != "nonclasse") ++sorted;
    const auto meant = meanings(listed(categories));
    EXPECT_TRUE(builtIn || meant.empty() || meant.contains(counted)) << app;
  }
  EXPECT_EQ(std::size(kEverydayApps), 101U);
  EXPECT_GE(sorted, 90);
}

TEST_F(ApplicationRules, AreMadeOnceAndGoForGood) {
  desktop.app =
      FrontmostApp{.name = "Kate", .bundle = "org.kde.kate", .categories = {"TextEditor"}};
  record();
  core.tracker.shutdown();
  see("KATE", "Game");
  ASSERT_EQ(made(), (Texts{"Kate travail"}));
  EXPECT_EQ(call("changes.list"), json::array()) << "the user has changed nothing";

  ask("rules.delete", {{"id", idOf("Kate")}});
  core.collectors.frontmostApp();
  see("Kate", "TextEditor");
  EXPECT_EQ(made(), Texts());
  EXPECT_EQ(call("rules.defaults").at("added"), 0);
  see("Kate", "TextEditor");
  EXPECT_EQ(made(), Texts());

  const auto deleted = lastChange();
  EXPECT_TRUE(undo(deleted));
  see("Kate", "TextEditor");
  EXPECT_EQ(made(), (Texts{"Kate travail"}));
  EXPECT_TRUE(redo(deleted));

  ASSERT_EQ(call("store.backup").at("ok"), true);
  const auto backup = call("store.status").at("backups").at(0).at("file");
  see("Chess", "Game");
  ASSERT_EQ(ask("store.restore", {{"file", backup}}).at("ok"), true);
  see("Kate", "TextEditor");
  EXPECT_EQ(made(), Texts()) << "the backup knows, too";
  see("Chess", "Game");
  EXPECT_EQ(made(), (Texts{"Chess loisir"})) << "that one was made later";
}

TEST_F(ApplicationRules, AreNotMadeWhereSomethingElseDecides) {
  store.db.run("INSERT INTO projects(name, category, keywords) VALUES ('Film', 'loisir', 'kdenl')");
  call("rules.save", R"({"field": "app", "pattern": "kile", "category": "autre"})");
  see("Discord", "Network;InstantMessaging");       // built in
  see("Minecraft Launcher", "Game");                // caught by another built-in one
  see("Kile", "Office");                            // the user's
  see("Kdenlive", "AudioVideo;AudioVideoEditing");  // a project's
  see("Falkon", "Network;WebBrowser");              // the site tells
  see("Aide", "Core;Documentation;X-Other");        // says nothing
  store.db.run("DELETE FROM rules WHERE pattern IN ('Steam', 'Craft')");
  see("Steam", "Game");  // of this very application the user wants no rule
  EXPECT_EQ(made(), Texts());
  see("Minecraft Launcher", "Game");
  EXPECT_EQ(made(), (Texts{"Minecraft Launcher loisir"}));
}

TEST_F(ApplicationRules, MeanOneNameAndDecideLast) {
  const std::string many(10000, 'k');
  for (const std::string app :
       {"R", "%", "_", ".*", "*", "[a-z]", "l'Été\n\"", "", "  ", "Inconnu"}) {
    see(app, "Development");
  }
  see(many, "Development");
  see("Office " + std::string(190, 'e'), many + ";;Office");
  EXPECT_EQ(made().size(), 8U);
  for (const auto* app : {"R", "r", "%", "_", ".*", "*", "L'ÉTÉ\n\""}) {
    EXPECT_EQ(counts(app), "travail") << app;
  }
  for (const auto* app : {"Rr", "Firefox", "a", "", "Inconnu", " R", "été"}) {
    EXPECT_EQ(counts(app), "nonclasse") << app;
  }
  store.db.run("INSERT INTO projects(id, name, category) VALUES (3, 'Roman', 'loisir')");
  EXPECT_EQ(counts("R", 3), "loisir") << "the project that the user gave it";
  EXPECT_EQ(counts("R", 4), "travail") << "there is no such project";
  store.db.run("UPDATE rules SET category=NULL WHERE pattern='R'");
  EXPECT_EQ(counts("R"), "nonclasse");
}

TEST_F(ApplicationRules, AreInTheWayOfNothingThatCanBeTakenBack) {
  call("rules.save", R"({"field": "title", "pattern": "devis", "category": "travail"})");
  const auto saved = lastChange();
  ASSERT_EQ(ask("changes.undo", {{"id", saved}}), json::parse(R"({"ok": true})"));
  see("Kate", "TextEditor");
  EXPECT_EQ(ask("changes.redo", {{"id", saved}}), json::parse(R"({"ok": true})"));
  ask("rules.delete", {{"id", idOf("Kate")}});
  const auto deleted = lastChange();
  see("Krita", "Graphics");
  EXPECT_TRUE(undo(deleted));
  EXPECT_EQ(made(), (Texts{"Krita travail", "Kate travail"}));

  store.db.run("DELETE FROM rules WHERE id > 0");
  const auto id = call("rules.save", R"({"field": "app", "pattern": "b", "category": "autre"})");
  call("rules.delete");
  EXPECT_EQ(store.db.query("SELECT 1 FROM rules WHERE id=?", {id.at("id").as_int64()}).size(), 1U);
}

TEST_F(ApplicationRules, WaitForAStoreThatIsBusyAndBeginAnewInANewOne) {
  AppRules rules(store.db, clock.read());
  const auto file = store.db.location().file();
  {
    OtherProgram other(file);
    other.ask("BEGIN IMMEDIATE");
    rules.seen("Kate", {"TextEditor"});
    EXPECT_EQ(made(), Texts());
  }
  rules.seen("Kate", {"TextEditor"});
  EXPECT_EQ(made(), (Texts{"Kate travail"}));
  for (const auto* suffix : {"", "-wal", "-shm"}) fs::remove(file.string() + suffix);
  store.db.look();
  rules.seen("Kate", {"TextEditor"});
  EXPECT_EQ(made(), (Texts{"Kate travail"})) << "the old file's marks are not the new one's";
}

}  // namespace
}  // namespace orvanta::test
