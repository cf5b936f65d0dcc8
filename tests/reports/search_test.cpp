#include <fmt/format.h>
#include <glib.h>
#include <gtest/gtest.h>

#include <map>

#include "base/folded.h"
#include "reports/analytics.h"
#include "storage/activity_index.h"
#include "storage/erasure.h"
#include "storage/transaction.h"
#include "support/naive_spans.h"
#include "support/random_store.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

constexpr double kDay = 86400;
constexpr double kNow = 1'793'491'200;  // November 2026
const Calendar kParis(Glib::TimeZone::create("Europe/Paris"));

// By GLib, and by what it leaves as it is.
std::string naiveFolded(const std::string& text) {
  const std::unique_ptr<char, decltype(&g_free)> cased(g_utf8_casefold(text.c_str(), -1), g_free);
  const std::unique_ptr<char, decltype(&g_free)> apart(
      g_utf8_normalize(cased.get(), -1, G_NORMALIZE_ALL), g_free);
  std::string bare;
  for (const char* at = apart.get(); *at; at = g_utf8_next_char(at)) {
    const auto c = g_utf8_get_char(at);
    const auto kind = g_unichar_type(c);
    if (kind == G_UNICODE_NON_SPACING_MARK || kind == G_UNICODE_FORMAT) continue;
    bare += c == U'œ'   ? "oe"
            : c == U'’' ? "'"
                        : std::string(at, static_cast<const char*>(g_utf8_next_char(at)));
  }
  return bare;
}

TEST(Folded, LeavesNeitherCaseNorAccents) {
  const std::map<std::string, std::string> expected{
      {"École ŒUVRE œil", "ecole oeuvre oeil"},
      {"e\u0301te\u0301 ﬁn Straße Ærø", "ete fin strasse aero"},
      {"L’été\u00a0!\tÀ\u202f5\n", "l'ete ! a 5 "},
      {"№ Ⅳ Ñandú ŁÓDŹ", "no iv nandu lodz"},
      {"❤\ufe0f 👩\u200d💻", "❤ 👩💻"},
      {"a\xff\xc3", "a\ufffd\ufffd"},
      {"", ""}};
  for (const auto& [text, plain] : expected) EXPECT_EQ(folded(text), plain);
}

TEST(SearchWords, AreFoldedAndQuotedOnesStayTogether) {
  using List = std::vector<std::string>;
  EXPECT_EQ(searchWords("  École  de\u00a0Là École "), (List{"ecole", "de", "la"}));
  EXPECT_EQ(searchWords("un\"Deux  trois\" «\u00a0quatre cinq\u00a0» “six"),
            (List{"un", "deux  trois", "quatre cinq", "six"}));
  EXPECT_EQ(searchWords(" \" \" \u0301"), List());
}

struct SearchTest : testing::Test, TempStore {
  void index() {
    ActivityIndex index(db, [] { return kNow; });
    while (index.step()) {
    }
  }
  int64_t span(double start, double end, const std::string& title, const std::string& app = "Abc") {
    return db.run("INSERT INTO events(start,end,app,title) VALUES (?,?,?,?)",
                  {start, end, app, title});
  }
  // Some words, most of which occur somewhere.
  std::string anyText(Dice& dice) {
    static const std::vector<std::string> kTexts{
        "ÉCOLE", "ecole",      "École", "œuvre", "OEUVRE",    "co",     "ét",       "l'été",
        "L’ÉTÉ", "x\"",        "🚀",    "❤",     "\"de la\"", "straße", "STRASSE",  "projet 7",
        "7",     "z",          "%",     "_",     "\\",        "12",     "site1.fr", "zoé",
        "ETE",   "nulle part", "a",     "été",   "FIREFOX"};
    std::string text = dice.oneOf(kTexts);
    while (dice.oneIn(3)) text += " " + dice.oneOf(kTexts);
    return text;
  }
  // Ten hours a day of titles that repeat each other.
  void fill(Dice& dice, int days) {
    const std::vector<std::string> titles{
        "Œuvre complète 🚀",    "L’été de la École", "projet ",        "Straße_100%",
        "cœur ❤\ufe0f x\"y\" ", "l'ete \\ co",       "e\u0301cole 12 "};
    db.exec("BEGIN");
    addRandomProjects(db, dice);
    addRandomRules(db, dice);
    for (int i = 0; i < days * 20; ++i) {
      const double start = kNow - days * kDay + i * kDay / 20 + dice.upTo(2000);
      db.run(
          "INSERT INTO events(start,end,app,title,url,domain,idle,project_id) "
          "VALUES (?,?,?,?,?,?,?,?)",
          {start, start + dice.upTo(1900), dice.oneIn(2) ? Value("Firefox") : Value("Zoé"),
           dice.oneOf(titles) + std::to_string(dice.upTo(30)),
           dice.oneIn(2) ? Value("https://site1.fr/École") : kNull,
           dice.oneIn(2) ? Value("site" + std::to_string(dice.upTo(3)) + ".fr") : kNull,
           dice.oneIn(9) ? 1 : 0, dice.oneIn(4) ? Value(1 + dice.upTo(5)) : kNull});
    }
    db.exec("COMMIT");
  }

  NaiveSpans naive(const std::string& text) {
    if (known_.empty()) known_ = naiveActive(naiveSpans(db, -1e12, 1e12));
    const auto projects = loadProjects(db);
    return naiveFilter(known_, [&](const NaiveSpan& span) {
      auto& texts = folded_[span.id];
      if (texts.empty()) {
        const auto project = span.pid ? projects.find(*span.pid) : projects.end();
        for (const auto& field :
             {span.app, span.title.value_or(""), span.domain.value_or(""), span.url.value_or(""),
              project == projects.end() ? "" : project->second.name}) {
          texts.push_back(naiveFolded(field));
        }
      }
      const auto words = searchWords(text);
      return std::all_of(words.begin(), words.end(), [&](const std::string& word) {
        return std::any_of(texts.begin(), texts.end(), [&](const std::string& field) {
          return field.find(word) != field.npos;
        });
      });
    });
  }
  void forget() {
    known_.clear();
    folded_.clear();
  }

  void expectRight(const std::string& text) {
    const auto expected = naive(text);
    const auto found = analytics.search().find({.text = text, .days = 1000});
    double seconds = 0;
    double last = 0;
    std::map<std::string, double> days;
    for (const auto& span : expected) {
      seconds += span.duration();
      last = std::max(last, span.end);
      days[kParis.dateOf(span.start).iso()] += span.duration();
    }
    ASSERT_EQ(found.first.has_value(), !expected.empty()) << text;
    ASSERT_EQ(found.days.size(), days.size()) << text;
    EXPECT_NEAR(found.seconds, seconds, 0.5) << text;
    double inMonths = 0;
    for (const auto& month : found.months) inMonths += month.seconds;
    EXPECT_NEAR(inMonths, seconds, 0.5) << text;
    for (const auto& day : found.days) {
      ASSERT_NEAR(day.seconds, days[day.date.iso()], 0.01) << text << day.date.iso();
    }
    if (expected.empty()) return;
    EXPECT_NEAR(*found.first, expected.front().start, 1) << text;
    EXPECT_EQ(found.last, last) << text;
  }

  Analytics analytics{db, [] { return kNow; }, kParis};

 private:
  NaiveSpans known_;
  std::map<int64_t, std::vector<std::string>> folded_;
};

TEST_F(SearchTest, FindsWhatAScanOfAllFinds) {
  for (unsigned seed = 0; seed < (kInstrumented ? 1U : 5U); ++seed) {
    Dice dice(seed);
    db.exec("DELETE FROM events; DELETE FROM rules; DELETE FROM projects");
    fill(dice, 90);
    forget();
    for (int i = 0; i < 200; ++i) {
      if (i == 50) index();
      if (i == 100) {
        db.run("UPDATE events SET project_id=3 WHERE id % 50 = 0");
        db.run("UPDATE events SET title='École neuve' WHERE id % 70 = 0");
        forget();
      }
      if (i == 150) {
        index();
        db.run("UPDATE projects SET name='Été 12' WHERE id=2");
        db.run("DELETE FROM rules");
        forget();
      }
      ASSERT_NO_FATAL_FAILURE(expectRight(anyText(dice))) << "seed " << seed;
    }
  }
}

TEST_F(SearchTest, ListsTheNewestDaysSomeAtATimeAndWhatTheyHold) {
  const double evening = kNow - 30 * kDay + 21.5 * 3600;  // 22:30 in Paris
  for (int day = 0; day < 5; ++day) {
    span(evening + day * kDay, evening + day * kDay + 600, "Devis école");
    span(evening + day * kDay + 1200, evening + day * kDay + 1500, "Devis école");
    span(evening + day * kDay + 7200, evening + day * kDay + 7260, "devis lu", "École 2000");
  }
  index();
  const auto found = analytics.search().find({.text = "ecole", .days = 2});
  EXPECT_EQ(found.days.size(), 2U);
  EXPECT_TRUE(found.more);
  ASSERT_EQ(found.subjects.size(), 1U);
  EXPECT_EQ(found.subjects.front().name, "École 2000");
  EXPECT_NEAR(found.subjects.front().seconds, 300, 0.1);
  const auto& after = found.days.at(1);
  ASSERT_EQ(after.rows.size(), 2U) << "after midnight it is another day";
  EXPECT_EQ(after.rows.at(0).app, "École 2000");
  EXPECT_EQ(after.rows.at(1).ids.size(), 2U);
  EXPECT_EQ(after.rows.at(1).seconds, 900);
  EXPECT_EQ(after.rows.at(1).end - after.rows.at(1).start, 1500);

  std::vector<Date> dates;
  for (SearchQuestion question{.text = "ecole", .days = 2};;) {
    const auto page = analytics.search().find(question);
    EXPECT_EQ(page.seconds, found.seconds);
    for (const auto& day : page.days) dates.push_back(day.date);
    if (!page.more) break;
    question.before = dates.back();
  }
  EXPECT_EQ(dates.size(), 6U);
  EXPECT_TRUE(std::is_sorted(dates.rbegin(), dates.rend()));
}

TEST_F(SearchTest, SaysWhenWhatIsNotIndexedIsTooMuch) {
  db.exec("BEGIN");
  for (int i = 0; i < 25'000; ++i) span(kNow - i * 60, kNow - i * 60 + 30, "Titre");
  db.exec("COMMIT");
  const SearchQuestion atOnce{.text = "titre", .wait = false};
  const auto some = analytics.search().find(atOnce);
  EXPECT_TRUE(some.building);
  EXPECT_NEAR(some.seconds, 20'000 * 30, 1);
  EXPECT_NEAR(analytics.search().find({.text = "titre"}).seconds, 25'000 * 30, 1);
  index();
  const auto all = analytics.search().find(atOnce);
  EXPECT_FALSE(all.building);
  EXPECT_NEAR(all.seconds, 25'000 * 30, 1);
}

TEST_F(SearchTest, FindsNothingOfWhatIsErasedAtOnce) {
  const double start = kNow - 40 * kDay;
  for (int i = 0; i < 100; ++i) span(start + i * 600, start + i * 600 + 500, "Secret médical");
  index();
  EXPECT_NEAR(analytics.search().find({.text = "medical"}).seconds, 50'000, 1);
  const auto erase = [&](const Erasure& erasure) {
    Transaction change(db);
    for (const auto& step : erasure.steps) change.run(step.sql, step.args);
    ASSERT_TRUE(change.commit());
  };
  erase(eraseRange({start, start + 30'000}));
  EXPECT_NEAR(analytics.search().find({.text = "medical"}).seconds, 25'000, 1);
  erase(stripTitlesBefore(kNow));
  EXPECT_FALSE(analytics.search().find({.text = "medical"}).first);
  EXPECT_NEAR(analytics.search().find({.text = "abc"}).seconds, 25'000, 1);
}

}  // namespace
}  // namespace orvanta::test
