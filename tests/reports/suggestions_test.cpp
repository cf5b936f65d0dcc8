#include "reports/suggestions.h"

#include "base/text.h"
#include "reports/analytics.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

TEST(Tokens, AreWhatDistinguishesAText) {
  EXPECT_EQ(tokens("www.Crème-Brûlée2.com/le_SITE"), (std::set<std::string>{"creme", "brulee2"}));
  EXPECT_EQ(tokens("Refonte du projet Client"), std::set<std::string>());
  EXPECT_EQ(tokens("Москва 2024"), (std::set<std::string>{"москва", "2024"}));
  EXPECT_EQ(withoutAccents("e\u0301té ÇA"), "ete CA");
}

struct SuggestionsTest : testing::Test {
  void add(double minutes, const std::string& app, std::optional<std::string> domain = {},
           std::optional<int> project = {}, bool idle = false) {
    store.db.run("INSERT INTO events(start,end,app,domain,project_id,idle) VALUES (?,?,?,?,?,?)",
                 {clock.now - 86400, clock.now - 86400 + minutes * 60, app, domain, project, idle});
  }
  void addProject(const char* name, const char* keywords = "", bool archived = false) {
    store.db.run("INSERT INTO projects(name, keywords, archived) VALUES (?,?,?)",
                 {name, keywords, archived});
  }
  // "name > project", in order.
  Texts found() {
    Texts list;
    for (const auto& entry : Analytics(store.db, clock.read()).suggestions()) {
      list.push_back(entry.name + " > " + entry.project);
    }
    return list;
  }
  TempStore store;
  FakeClock clock;
};

TEST_F(SuggestionsTest, ProposeWhatTookTwentyMinutesAndResemblesAProject) {
  addProject("Crème fraîche");
  addProject("Atelier cycle");
  add(19, "F", "creme-un.fr");
  add(12, "F", "Creme-Deux.fr");
  add(8, "F", "creme-deux.fr");  // the same site
  add(30, "Motorcycle Editor");  // by a word inside
  add(40, "F", "rien.fr");
  add(60, "Atelier", "tiers.fr");  // its domain counts, not its application
  EXPECT_EQ(found(), (Texts{"Motorcycle Editor > Atelier cycle", "Creme-Deux.fr > Crème fraîche"}));
}

TEST_F(SuggestionsTest, LeaveOutWhatIsSettled) {
  addProject("Vieux velours", "", true);
  addProject("Velours rouge");
  addProject("Client Velours");
  add(30, "velours");
  EXPECT_EQ(found(), Texts{"velours > Velours rouge"});
  store.db.run("INSERT INTO rules(field, pattern, project_id) VALUES ('app', 'VELOURS', NULL)");
  EXPECT_EQ(found().size(), 1U);
  store.db.run("INSERT INTO rules(field, pattern, project_id) VALUES ('domain', 'velours', 2)");
  EXPECT_EQ(found().size(), 1U);
  store.db.exec("DELETE FROM events");
  add(30, "Velours idle", {}, {}, true);
  add(30, "Velours pris", {}, 2);
  add(30, "client projet");
  store.db.run("INSERT INTO rules(field, pattern, project_id) VALUES ('app', 'Velours tenu', 2)");
  add(30, "velours TENU");
  EXPECT_EQ(found(), Texts());
  store.db.exec("UPDATE events SET idle=0, project_id=NULL, start=start-1e7, end=end-1e7");
  EXPECT_EQ(found(), Texts());  // longer ago than two weeks
}

}  // namespace
}  // namespace orvanta::test
