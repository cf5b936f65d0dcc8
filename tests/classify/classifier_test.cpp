#include "classify/classifier.h"

#include <ctime>

#include "base/text.h"
#include "classify/current_rules.h"
#include "classify/defaults.h"
#include "support/naive.h"
#include "support/random_store.h"

namespace orvanta::test {
namespace {

TEST(Classifier, BuiltInRulesPreferTheLongerPattern) {
  TempStore store;
  seedDefaults(store.db, [] { return 0.0; });
  const auto book = CurrentRules(store.db).book();
  StringPool pool;
  struct Case {
    const char *app, *domain, *url, *category;
  };
  for (const auto& [app, domain, url, category] :
       {Case{"Slack", "", "", "travail"}, Case{"YouTube Music", "", "", "loisir"},
        Case{"Firefox", "www2.netflix.com", "https://www2.netflix.com/", "loisir"},
        Case{"Firefox", "impots.gouv.fr", "https://impots.gouv.fr/particulier", "autre"},
        Case{"Firefox", "impots.gouv.fr", "https://impots.gouv.fr/professionnel/tva", "travail"},
        Case{"Firefox", "qonto.com", "https://qonto.com/banking", "autre"},
        Case{"Firefox", "monsite.fr", "https://monsite.fr/wp-admin/edit", "travail"},
        Case{"Firefox", "inconnu.example", "", "nonclasse"}}) {
    Ev ev{.app = pool.intern(app), .url = pool.intern(url), .domain = pool.intern(domain)};
    Classifier(pool, book).classify(ev);
    EXPECT_EQ(ev.cat.view(), category) << app << " " << url;
  }
}

// Against an implementation that follows the rules one by one for each span.
TEST(Classifier, AgreesWithTheNaiveOneOnRandomStores) {
  Dice dice(11);
  const char* words[] = {"a",    "AB", "été",       "ÉTÉ plage", "ab été", "mail",    "Mail",
                         "b ab", "",   "slack.com", "com",       "x « y",  "İstanbul"};
  const char* fields[] = {"app", "domain", "title", "url", "bundle", ""};
  const char* categories[] = {"travail", "loisir", "autre", "étrange", ""};
  // Every other store has patterns of three letters and more, which are sought in strides, and some
  // have longer ones than the tree of patterns is deep.
  int least = 0;
  std::string stem;
  const char* letters[] = {"a", "B", "b", "é"};
  const auto word = [&] {
    if (least == 0) return std::string(dice.oneOf(words));
    std::string made = stem;
    for (int left = least + dice.upTo(9); left > 0; --left) made += dice.oneOf(letters);
    return made;
  };
  int checked = 0;
  for (int store = 0; store < 3000; ++store) {
    least = store % 2 == 0 ? 0 : 3 + dice.upTo(4);
    stem = std::string(store % 10 == 1 ? 245 : 0, 'B');
    StringPool pool;
    std::vector<Rule> rules;
    for (int i = dice.upTo(8); i > 0; --i) {
      Rule rule{.id = i, .field = dice.oneOf(fields), .pattern = word()};
      if (!dice.oneIn(3)) rule.category = dice.oneOf(categories);
      if (dice.oneIn(3)) rule.projectId = dice.upTo(4);
      if (dice.oneIn(3)) rule.priority = kAppRulePriority;
      rules.push_back(rule);
    }
    Projects projects;
    for (int i = dice.upTo(3); i > 0; --i) {
      const int64_t id = dice.upTo(4);
      projects[id] = {.id = id,
                      .category = dice.oneOf(categories),
                      .archived = dice.oneIn(4),
                      .keywords = parseKeywords(word() + " " + word() + "," + word())};
    }
    Classifier classifier(pool, std::make_shared<const RuleBook>(rules, projects));
    for (int span = 0; span < 20; ++span, ++checked) {
      const auto maybe = [&] { return !dice.oneIn(3) ? pool.intern(word()) : Text(); };
      Ev ev{.id = span,
            .app = pool.intern(word()),
            .title = maybe(),
            .url = maybe(),
            .domain = maybe(),
            .idle = dice.oneIn(10)};
      if (dice.oneIn(5)) ev.category = pool.intern(dice.oneOf(categories));
      if (dice.oneIn(5)) ev.projectId = dice.upTo(5);
      const auto expected = naiveClassification(ev, rules, projects);
      classifier.classify(ev);
      ASSERT_EQ(ev.cat.view(), expected.cat) << "store " << store << " span " << span;
      ASSERT_EQ(ev.pid, expected.pid) << "store " << store << " span " << span;
      ASSERT_EQ(ev.manual, expected.manual);
    }
  }
  EXPECT_EQ(checked, 60000);
}

// Followed letter by letter from each place, these would take half a minute.
TEST(Classifier, IsQuickWhereTextAndPatternAreOneLetterOverAndOver) {
  const std::string run(20000, 'x');
  StringPool pool;
  Classifier classifier(
      pool, std::make_shared<const RuleBook>(
                std::vector<Rule>{
                    {.id = 1, .field = "title", .pattern = run + "y", .category = "loisir"}},
                Projects{}));
  const auto begin = std::clock();
  for (int i = 0; i < 30; ++i) {
    Ev ev{.app = pool.intern("Code"), .title = pool.intern(std::to_string(i) + run)};
    classifier.classify(ev);
    EXPECT_EQ(ev.cat.view(), "nonclasse");
  }
  EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 5);
}

TEST(CurrentRules, AreReadAgainOnceSomebodyHasWritten) {
  TempStore store;
  Database other{store.db.location()};
  const CurrentRules rules(store.db);
  const auto none = rules.book();  // opens the connection that reads
  const auto kept = rules.book();
  EXPECT_TRUE(kept->rules().empty());
  EXPECT_EQ(rules.book(), kept);

  const std::string insert =
      "INSERT INTO rules(field, pattern, category) VALUES ('app', ?, 'autre')";
  store.db.run(insert, {"a"});
  EXPECT_EQ(rules.book()->rules().size(), 1U);
  EXPECT_TRUE(other.run(insert, {"b"}));
  EXPECT_EQ(rules.book()->rules().size(), 2U);
  EXPECT_TRUE(other.run("INSERT INTO projects(name) VALUES ('p')"));
  EXPECT_EQ(rules.book()->projects().size(), 1U);
  store.db.releaseScanMemory();
  store.db.run(insert, {"c"});
  EXPECT_EQ(rules.book()->rules().size(), 3U);
}

}  // namespace
}  // namespace orvanta::test
