#include "classify/defaults.h"

#include <map>
#include <set>

#include "base/text.h"
#include "classify/rule_set.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

TEST(Defaults, AreOfTheRightKindsWithoutDuplicates) {
  std::map<std::string, int> kinds;
  std::set<std::string> keys;
  for (const auto& rule : defaultRules()) {
    ++kinds[std::string(textOf(rule.category)) + " " + std::string(textOf(rule.field))];
    EXPECT_TRUE(keys.insert(std::string(textOf(rule.field)) + "|" + lowerCase(rule.pattern)).second)
        << rule.pattern;
  }
  EXPECT_EQ(kinds, (std::map<std::string, int>{{"travail domain", 98},
                                               {"travail url", 4},
                                               {"travail app", 45},
                                               {"loisir domain", 59},
                                               {"loisir app", 12},
                                               {"autre domain", 38},
                                               {"autre url", 1},
                                               {"autre app", 30}}));
}

TEST(Defaults, AreSeededOnceAndAgainWhenForced) {
  TempStore store;
  const Clock fixed = [] { return 42.0; };
  store.db.run("INSERT INTO rules(field, pattern, category) VALUES ('app', 'SPOTIFY', 'travail')");
  EXPECT_EQ(seedDefaults(store.db, fixed), 286);
  EXPECT_EQ(store.db.setting("rules_seeded"), "1");
  EXPECT_EQ(store.db
                .query("SELECT 1 FROM rules WHERE priority=-10 AND created=42.0 AND "
                       "project_id IS NULL")
                .size(),
            286U);
  store.db.run("DELETE FROM rules WHERE pattern IN ('Finder', 'Plans', 'github.com')");
  EXPECT_EQ(seedDefaults(store.db, fixed), 0);
  Transaction change(store.db);
  EXPECT_EQ(addDefaults(change, fixed), 3);
  EXPECT_TRUE(change.commit());
  EXPECT_EQ(loadRules(store.db).size(), 287U);
}

}  // namespace
}  // namespace orvanta::test
