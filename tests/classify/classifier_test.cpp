#include "classify/classifier.h"

#include <gtest/gtest.h>

#include <random>

#include "base/text.h"
#include "classify/defaults.h"
#include "support/naive.h"
#include "support/temp_store.h"

namespace orvanta {
namespace {

class ClassifierTest : public testing::Test {
 protected:
  Ev classified(Ev ev) {
    Classifier(pool, rules, projects).classify(ev);
    return ev;
  }
  Ev span(const char* app) { return Ev{.id = 1, .app = pool.intern(app)}; }

  StringPool pool;
  std::vector<Rule> rules;
  Projects projects;
};

TEST_F(ClassifierTest, AnIdleSpanIsInactiveWhateverIsStored) {
  auto ev = span("Slack");
  ev.idle = true;
  ev.category = pool.intern("loisir");
  ev.projectId = 3;
  ev = classified(ev);
  EXPECT_EQ(ev.cat.view(), "inactif");
  EXPECT_FALSE(ev.pid || ev.manual);
}

TEST_F(ClassifierTest, BuiltInRulesPreferTheLongerPattern) {
  test::TempStore store;
  seedDefaults(store.db, [] { return 0.0; });
  rules = loadRules(store.db);
  const auto category = [&](const char* app, const char* domain, const char* url) {
    auto ev = span(app);
    if (domain) ev.domain = pool.intern(domain);
    if (url) ev.url = pool.intern(url);
    return std::string(classified(ev).cat.view());
  };
  EXPECT_EQ(category("Slack", nullptr, nullptr), "travail");
  EXPECT_EQ(category("YouTube Music", nullptr, nullptr), "loisir");
  EXPECT_EQ(category("Firefox", "www2.netflix.com", "https://www2.netflix.com/"), "loisir");
  EXPECT_EQ(category("Firefox", "impots.gouv.fr", "https://impots.gouv.fr/particulier"), "autre");
  EXPECT_EQ(category("Firefox", "impots.gouv.fr", "https://impots.gouv.fr/professionnel/tva"),
            "travail");
  EXPECT_EQ(category("Firefox", "qonto.com", "https://qonto.com/banking"), "autre");
  EXPECT_EQ(category("Firefox", "monsite.fr", "https://monsite.fr/wp-admin/edit"), "travail");
  EXPECT_EQ(category("Firefox", "inconnu.example", nullptr), "nonclasse");
}

TEST_F(ClassifierTest, ManualDecisionsWinAndRulesFillInTheRest) {
  rules = {{.id = 1, .field = "app", .pattern = "SPOTIFY", .category = "loisir"},
           {.id = 2, .field = "title", .pattern = "Été", .projectId = 7}};
  projects[3] = {.id = 3, .name = "P", .category = "travail"};
  projects[7] = {.id = 7, .name = "Q", .category = "autre", .archived = true};
  auto ev = span("Spotify");
  ev.projectId = 3;
  EXPECT_EQ(classified(ev).cat.view(), "loisir");  // a rule's before the project's
  EXPECT_TRUE(classified(ev).manual);

  ev = span("Autre");
  ev.projectId = 3;
  EXPECT_EQ(classified(ev).cat.view(), "travail");
  ev.projectId = 99;  // deleted
  EXPECT_EQ(classified(ev).cat.view(), "nonclasse");
  EXPECT_EQ(classified(ev).pid, 99);

  ev = span("Autre");
  ev.title = pool.intern("L'ÉTÉ");
  EXPECT_EQ(classified(ev).pid, 7);
  EXPECT_EQ(classified(ev).cat.view(), "autre");  // an archived project still counts where named
  EXPECT_FALSE(classified(ev).manual);
  ev.category = pool.intern("loisir");
  EXPECT_EQ(classified(ev).cat.view(), "loisir");
  EXPECT_EQ(classified(ev).pid, 7);
}

TEST_F(ClassifierTest, KeywordsAreSoughtInAllFieldsTogether) {
  projects[2] = {.id = 2, .category = "travail", .keywords = {"zzz", "refonte exemple.fr"}};
  projects[1] = {.id = 1, .category = "autre", .archived = true, .keywords = {"refonte"}};
  projects[5] = {.id = 5, .category = "loisir", .keywords = {"refonte"}};
  auto ev = span("Firefox");
  ev.title = pool.intern("REFONTE");
  EXPECT_EQ(classified(ev).pid, 5);
  ev.domain = pool.intern("exemple.fr");  // "refonte exemple.fr firefox"
  EXPECT_EQ(classified(ev).pid, 2);
  EXPECT_EQ(classified(ev).cat.view(), "travail");
}

// Against an implementation that follows the rules one by one for each span.
TEST(Classifier, AgreesWithTheNaiveOneOnRandomStores) {
  std::mt19937 random(11);  // NOLINT(cert-msc51-cpp): the same stores every time
  const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
  const std::vector<std::string> words{"a",    "AB",    "été",     "ÉTÉ plage", "ab été",
                                       "mail", "Mail",  "b ab",    "",          "slack.com",
                                       "com",  "x « y", "İstanbul"};
  const auto word = [&] { return words[static_cast<std::size_t>(upTo(12))]; };
  const std::vector<std::string> fields{"app", "domain", "title", "url", "bundle", ""};
  const std::vector<std::string> categories{"travail", "loisir", "autre", "étrange", ""};
  int checked = 0;
  for (int store = 0; store < 3000; ++store) {
    StringPool pool;
    std::vector<Rule> rules;
    for (int i = upTo(8); i > 0; --i) {
      Rule rule{.id = i, .field = fields[static_cast<std::size_t>(upTo(5))], .pattern = word()};
      if (upTo(2) > 0) rule.category = categories[static_cast<std::size_t>(upTo(4))];
      if (upTo(2) == 0) rule.projectId = upTo(4);
      rules.push_back(rule);
    }
    Projects projects;
    for (int i = upTo(3); i > 0; --i) {
      const int64_t id = upTo(4);
      projects[id] = {.id = id,
                      .category = categories[static_cast<std::size_t>(upTo(4))],
                      .archived = upTo(3) == 0,
                      .keywords = parseKeywords(word() + " " + word() + "," + word())};
    }
    Classifier classifier(pool, rules, projects);
    for (int span = 0; span < 20; ++span, ++checked) {
      const auto maybe = [&] { return upTo(2) > 0 ? pool.intern(word()) : Text(); };
      Ev ev{.id = span,
            .app = pool.intern(word()),
            .title = maybe(),
            .url = maybe(),
            .domain = maybe(),
            .idle = upTo(9) == 0};
      if (upTo(4) == 0) ev.category = pool.intern(categories[static_cast<std::size_t>(upTo(4))]);
      if (upTo(4) == 0) ev.projectId = upTo(5);
      const auto expected = test::naiveClassification(ev, rules, projects);
      classifier.classify(ev);
      ASSERT_EQ(ev.cat.view(), expected.cat) << "store " << store << " span " << span;
      ASSERT_EQ(ev.pid, expected.pid) << "store " << store << " span " << span;
      ASSERT_EQ(ev.manual, expected.manual);
    }
  }
  EXPECT_EQ(checked, 60000);
}

}  // namespace
}  // namespace orvanta
