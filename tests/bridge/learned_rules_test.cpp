// Rules that were learnt: where they came from, and whether they are to be kept.
#include "support/program.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

constexpr double kDay = 86400;

struct LearnedRules : testing::Test, Program {
  LearnedRules() { clock.now = 1000 * kDay; }

  int64_t span(int day, double hours, const char* domain, const char* title = "t") {
    const double start = day * kDay + 40000;
    return store.db.run("INSERT INTO events(start, end, app, domain, title) VALUES (?,?,?,?,?)",
                        {start, start + hours * 3600, "Firefox", domain, title});
  }
  json::value assign(const std::vector<int64_t>& ids, json::object target) {
    target["ids"] = json::array(ids.begin(), ids.end());
    return ask("events.assign", target).at("learned");
  }
  std::string origins() {
    std::string text;
    const auto rules = call("rules.origins").as_array();
    for (const auto& rule : rules) {
      text += fmt::format("{} {}{}{}\n", rule.at("id").as_int64(),
                          rule.at("origin").as_string().c_str(),
                          rule.at("pending").as_bool() ? " pending" : "",
                          rule.at("change").is_null() ? "" : " taught");
    }
    return text;
  }
  std::string rows() { return rowsOf(store.db.location().file(), {"rules", "rule_origins"}); }
};

TEST_F(LearnedRules, SayWhereTheyCameFromAlsoAfterUndoAndRedo) {
  store.db.run(
      "INSERT INTO rules(id,field,pattern,category,priority) VALUES "
      "(1,'app','a','travail',-10), (2,'app','b','travail',-20), (3,'app','c','loisir',0)");
  const auto first = span(1, 1, "site.fr");
  const auto second = span(2, 1, "site.fr");
  assign({first, second}, {{"category", "loisir"}});
  const std::string given = "1 builtin\n2 app\n3 user\n";
  EXPECT_EQ(origins(), given + "4 learned pending taught\n");
  const auto learned = rows();
  const auto assigned = lastChange();
  EXPECT_TRUE(undo(assigned));
  EXPECT_EQ(origins(), given);
  EXPECT_TRUE(redo(assigned));
  EXPECT_EQ(difference(learned, rows()), "");

  EXPECT_EQ(call("rules.confirm", R"({"ids":[3,4,99]})"), done());
  EXPECT_EQ(origins(), given + "4 learned taught\n");
  EXPECT_EQ(call("rules.pending"), json::array());
  EXPECT_TRUE(call("rules.confirm").as_object().contains("error"));

  // A rule saved in its place is the user's, and another.
  const auto confirmed = rows();
  call("rules.save", R"({"field":"domain","pattern":"SITE.fr","category":"travail"})");
  EXPECT_EQ(origins(), given + "5 user\n");
  EXPECT_TRUE(undo(lastChange()));
  EXPECT_EQ(difference(confirmed, rows()), "");
  // That it was confirmed is in nobody's way.
  EXPECT_TRUE(undo(assigned));
  EXPECT_EQ(origins(), given);
}

TEST_F(LearnedRules, OfWhichTheUserIsWarnedMoveMoreOrLieInSeveralProjects) {
  store.db.run(
      "INSERT INTO projects(id,name,keywords) VALUES (1,'Atelier','atelier'),(2,'Boutique','')");
  std::vector<int64_t> taught;
  for (const auto* site : {"deux.fr", "tout.fr", "passe.fr"}) {
    taught.push_back(span(1, 1, site));
    taught.push_back(span(2, 1, site));
  }
  span(-40, 8, "deux.fr", "Atelier : commande");
  span(-40, 8, "passe.fr");
  assign(taught, {{"project_id", 2}});
  const auto pending = call("rules.pending").as_array();
  ASSERT_EQ(pending.size(), 3U);
  std::map<std::string, std::string> told;
  for (const auto& rule : pending) {
    EXPECT_EQ(rule.at("project"), "Boutique");
    EXPECT_EQ(rule.at("taught"), 7200.0);
    told[rule.at("pattern").as_string().c_str()] =
        json::serialize(rule.at("advice")) + json::serialize(rule.at("because")) +
        json::serialize(rule.at("effect").at("projects"));
  }
  EXPECT_EQ(told["tout.fr"], R"("keep"null[])");
  EXPECT_EQ(told["passe.fr"],
            R"("forget""more"[{"id":2,"name":"Boutique","color":"#3b82f6","seconds":2.88E4}])");
  EXPECT_TRUE(told["deux.fr"].starts_with(R"("forget""projects")")) << told["deux.fr"];
  // What is forgotten moves nothing any more.
  for (const auto& rule : pending) ask("rules.delete", {{"id", rule.at("id")}});
  EXPECT_EQ(call("rules.pending"), json::array());
}

}  // namespace
}  // namespace orvanta::test
