#include "bridge/report_json.h"
#include "classify/rule_set.h"
#include "storage/ev.h"
#include "storage/project.h"
#include "storage/rule.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

namespace json = boost::json;

Ev firstEv(TempStore& store, StringPool& pool, const std::string& sql) {
  EvReader reader(pool);
  Ev ev;
  store.db.each(sql, {}, [&](const Cursor& row) { ev = reader.kept(reader.read(row)); });
  return ev;
}

TEST(Ev, ReadsRowsWithNeutralValuesForWhatIsMissing) {
  TempStore store;
  StringPool pool;
  // Another column order than the table's, integers where doubles are usual.
  const auto ev = firstEv(store, pool,
                          "SELECT 'm.fr' AS domain, 20 AS end, 10 AS start, NULL AS app, "
                          "1.0 AS idle, 3 AS id, NULL AS title, '' AS url");
  EXPECT_EQ(ev.id, 3);
  EXPECT_EQ(ev.duration(), 10);
  EXPECT_EQ(ev.app.view(), "Inconnu");
  EXPECT_TRUE(ev.idle);
  EXPECT_EQ(ev.domain.view(), "m.fr");
  EXPECT_FALSE(ev.title);
  EXPECT_TRUE(ev.url);  // empty, but there
  EXPECT_EQ(ev.cat.view(), "nonclasse");
  EXPECT_FALSE(ev.pid || ev.manual || ev.category || ev.projectId);

  for (const auto* idle : {"2", "NULL", "'1'"}) {
    EXPECT_FALSE(firstEv(store, pool, std::string("SELECT ") + idle + " AS idle").idle) << idle;
  }
  EXPECT_EQ(firstEv(store, pool, "SELECT 20 AS start, 10 AS end").duration(), 0);
}

TEST(Project, FillsInDefaultsAndParsesKeywords) {
  TempStore store;
  store.db.run("INSERT INTO projects(name, color, category, archived, keywords) VALUES (?,?,?,?,?)",
               {"Été", nullptr, nullptr, 1, "  Alpha ,, ab,\tDeux MOTS , Éo1 , \n"});
  const auto project = loadProjects(store.db).begin()->second;
  EXPECT_EQ(project.keywords, (Texts{"alpha", "deux mots", "éo1"}));
  EXPECT_EQ(json::value_from(project), json::value({{"id", 1},
                                                    {"name", "Été"},
                                                    {"color", "#3b82f6"},
                                                    {"category", "travail"},
                                                    {"archived", true},
                                                    {"keywords", "alpha, deux mots, éo1"}}));
  EXPECT_EQ(json::value_from(Project()).at("keywords"), "");
}

TEST(Rule, ReadsRowsWithNeutralValuesForWhatIsMissing) {
  TempStore store;
  store.db.run("DELETE FROM rules");
  store.db.run(
      "INSERT INTO rules(id, field, pattern, project_id, priority) VALUES "
      "(7,'app',x'61',2.5,NULL)");
  const auto rules = loadRules(store.db);
  ASSERT_EQ(rules.size(), 1U);
  const auto& rule = rules.front();
  EXPECT_EQ(rule.id, 7);
  EXPECT_EQ(rule.field, "app");
  EXPECT_EQ(rule.pattern, "");
  EXPECT_FALSE(rule.category);
  EXPECT_EQ(rule.projectId, 2);
  EXPECT_EQ(rule.priority, 0);
}

TEST(Rule, APriorityThatIsNoIntegerIsWhereSqliteHasIt) {
  TempStore store;
  store.db.exec(
      "DELETE FROM rules; INSERT INTO rules(id, field, pattern, priority) VALUES "
      "(1,'app','null',NULL), (2,'app','minus',-20), (3,'app','half',0.5), (4,'app','zero',0), "
      "(5,'app','text','haut'), (6,'app','blob',x'00'), (7,'app','longer',0), (8,'app','b','bas')");
  std::string order;
  for (const auto& rule : loadRules(store.db)) order += std::to_string(rule.id);
  EXPECT_EQ(order, "65837421");
  EXPECT_EQ(placeOf(store.db, {.pattern = "abcde"}), 5U) << "after the longer one";
  EXPECT_EQ(placeOf(store.db, {.pattern = "abcd"}), 6U) << "the newest of its length";
}

}  // namespace
}  // namespace orvanta::test
