#include "classify/learning.h"

#include "classify/defaults.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

struct LearningTest : testing::Test {
  static constexpr double kDay = 86400;

  // A span on the given day, one second after the midnight of Paris.
  int64_t span(int day, const char* app, const Value& domain, const Value& category,
               const Value& project = {}) {
    const double start = calendar.startOf({2026, 3, 27 + day}) + 1;
    return store.db.run(
        "INSERT INTO events(start, end, app, domain, category, project_id) VALUES (?,?,?,?,?,?)",
        {start, start + 60, app, domain, category, project});
  }

  Texts learn(const std::vector<int64_t>& ids, const std::optional<std::string>& category,
              std::optional<int64_t> project = {}) {
    Texts found;
    Transaction change(store.db);
    for (const auto& rule :
         afterManualAssign(change, [] { return 42.0; }, calendar, ids, category, project)) {
      found.push_back(rule.field + "|" + rule.pattern + "|" + rule.category.value_or("-") + "|" +
                      rule.project.value_or("-"));
    }
    EXPECT_TRUE(change.commit());
    return found;
  }

  TempStore store;
  Calendar calendar{Glib::TimeZone::create("Europe/Paris")};
};

TEST_F(LearningTest, TheSecondDayMakesTheRule) {
  const auto first = span(0, "Éditeur", {}, "travail");
  const auto second = span(0, "Éditeur", {}, "travail");
  EXPECT_EQ(learn({first, second}, "travail"), Texts{});
  const auto later = span(1, "Éditeur", {}, "travail");
  const auto other = span(1, "Éditeur", "exemple.fr", "travail");  // counts for its domain only
  EXPECT_EQ(learn({later, other}, "travail"), Texts{"app|Éditeur|travail|-"});
  const auto rule = store.db.query("SELECT * FROM rules").front();
  EXPECT_EQ(rule.int_("priority"), 0);
  EXPECT_EQ(rule.dbl("created"), 42);
  EXPECT_EQ(learn({later}, "travail"), Texts{}) << "there is a rule already";
}

TEST_F(LearningTest, CountsExactlyThisAssignment) {
  store.db.run("INSERT INTO projects(id, name) VALUES (7, 'Thèse')");
  span(0, "A", "Exemple.FR", "travail");     // no project
  span(0, "A", "Exemple.FR", {}, 7);         // no category
  span(0, "A", "exemple.fr", "travail", 7);  // another domain
  const auto assigned = span(1, "A", "Exemple.FR", "travail", 7);
  EXPECT_EQ(learn({assigned}, "travail", 7), Texts{});
  span(0, "B", "Exemple.FR", "travail", 7);
  EXPECT_EQ(learn({assigned}, "travail", 7), Texts{"domain|Exemple.FR|travail|Thèse"});

  span(0, "B", "autre.fr", {}, 8);  // of a project that is gone
  EXPECT_EQ(learn({span(1, "B", "autre.fr", {}, 8)}, {}, 8), Texts{"domain|autre.fr|-|-"});
}

TEST_F(LearningTest, OnlyRulesOfTheUserStandInTheWay) {
  seedDefaults(store.db, wallClock);
  span(0, "A", "github.com", "loisir");
  const auto builtIn = span(1, "A", "github.com", "loisir");
  span(0, "Jeu", {}, "loisir");
  const auto users = span(1, "Jeu", {}, "loisir");
  store.db.run("INSERT INTO rules(field, pattern, priority) VALUES ('app', 'JEU', 0)");
  EXPECT_EQ(learn({users, builtIn}, "loisir"), Texts{"domain|github.com|loisir|-"});
}

TEST_F(LearningTest, LearnsNothingFromWhatHasNoMeaning) {
  span(0, "", {}, "travail");
  span(0, "A", "", "travail");
  EXPECT_EQ(learn({span(1, "", {}, "travail"), span(1, "A", "", "travail"), 12345}, "travail"),
            Texts{});
  const auto* const quoted = "l'autre' OR '1'='1";
  span(0, "B", {}, quoted);
  EXPECT_EQ(learn({span(1, "B", {}, quoted)}, quoted), Texts{});
  EXPECT_EQ(learn({1, 2, 3}, {}), Texts{});
  EXPECT_TRUE(store.db.query("SELECT 1 FROM rules").empty());
}

}  // namespace
}  // namespace orvanta::test
