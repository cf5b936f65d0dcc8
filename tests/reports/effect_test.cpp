// What is told of a change, before and after it is made, against classifying everything twice.
#include <set>

#include "storage/activity_index.h"
#include "support/naive_reports.h"
#include "support/program.h"
#include "support/random_store.h"
#include "support/store_rows.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

constexpr int kDay = 19800;  // since 1970
constexpr double kAlways = 1e11;

struct Step {
  std::string path;
  json::object body;
};
using Steps = std::vector<Step>;

std::string monthOf(double instant) {
  return naiveIso(naiveDayOf(instant)).substr(0, 7);
}

std::string exampleOf(const NaiveSpan& span, const char* part) {
  const bool domain = !span.domain.value_or("").empty();
  if (part == std::string("field")) return domain ? "domain" : "app";
  return domain ? *span.domain : span.app;
}

// Nets of which nothing is left are not told; the largest first, then by key.
template <class Key>
std::vector<std::pair<Key, double>> nets(const std::map<Key, double>& sums) {
  std::vector<std::pair<Key, double>> list;
  for (const auto& sum : sums) {
    if (sum.second != 0) list.push_back(sum);
  }
  std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
    return std::abs(a.second) > std::abs(b.second);
  });
  return list;
}

struct Naive {
  NaiveSpans before, after;
  Projects projectsBefore, projectsAfter;

  json::object totals() const {
    std::map<std::string, double> categories;
    std::map<int64_t, double> projects;
    for (const auto& [spans, sign] : {std::pair(&before, -1), {&after, 1}}) {
      for (const auto& span : naiveActive(*spans)) {
        categories[span.cat] += sign * span.duration();
        if (span.pid) projects[*span.pid] += sign * span.duration();
      }
    }
    json::array byCategory;
    for (const auto& [category, seconds] : nets(categories)) {
      byCategory.push_back({{"category", category}, {"seconds", seconds}});
    }
    json::array byProject;
    for (const auto& [id, seconds] : nets(projects)) {
      const auto& known = projectsAfter.contains(id) ? projectsAfter : projectsBefore;
      if (!known.contains(id)) continue;
      const auto& project = known.at(id);
      byProject.push_back(
          {{"id", id}, {"name", project.name}, {"color", project.color}, {"seconds", seconds}});
    }
    return {{"categories", byCategory}, {"projects", byProject}};
  }

  // Spans as they are now, and what they counted as. What is cut off from a span stays what it was.
  std::vector<std::pair<NaiveSpan, NaiveSpan>> changed() const {
    std::map<int64_t, const NaiveSpan*> known;
    for (const auto& span : before) known[span.id] = &span;
    std::vector<std::pair<NaiveSpan, NaiveSpan>> list;
    for (const auto& span : naiveActive(after)) {
      if (!known.contains(span.id)) continue;
      const auto& was = *known[span.id];
      if (was.cat != span.cat || was.pid != span.pid) list.emplace_back(span, was);
    }
    return list;
  }

  json::object effect() const {
    struct Sum {
      int64_t spans = 0;
      double seconds = 0;
      std::map<std::string, double> titles;
      void add(const NaiveSpan& span) {
        ++spans;
        seconds += span.duration();
        if (span.title) titles[*span.title] += span.duration();
      }
    };
    Sum all;
    std::optional<double> since;
    using MoveKey =
        std::tuple<std::string, std::string, std::optional<int64_t>, std::optional<int64_t>>;
    std::map<MoveKey, Sum> moves;
    std::map<std::string, Sum> months;
    std::map<std::pair<std::string, std::string>, Sum> examples;
    for (const auto& [span, was] : changed()) {
      all.add(span);
      since = std::min(since.value_or(span.start), span.start);
      moves[{was.cat, span.cat, was.pid, span.pid}].add(span);
      months[monthOf(span.start)].add(span);
      examples[{exampleOf(span, "text"), exampleOf(span, "field")}].add(span);
    }
    const auto largest = [](const auto& sums, std::size_t most) {
      std::vector<std::pair<typename std::decay_t<decltype(sums)>::key_type, Sum>> list(
          sums.begin(), sums.end());
      std::stable_sort(list.begin(), list.end(), [](const auto& a, const auto& b) {
        return a.second.seconds > b.second.seconds;
      });
      if (list.size() > most) list.resize(most);
      return list;
    };
    auto told = totals();
    told["spans"] = all.spans;
    told["seconds"] = all.seconds;
    told["since"] = naiveOrNull(since);
    json::array list;
    for (const auto& [key, sum] : largest(moves, 8)) {
      const auto& [from, to, fromProject, toProject] = key;
      list.push_back({{"from_category", from},
                      {"to_category", to},
                      {"from_project", naiveOrNull(fromProject)},
                      {"to_project", naiveOrNull(toProject)},
                      {"spans", sum.spans},
                      {"seconds", sum.seconds}});
    }
    told["moves"] = std::move(list);
    list = {};
    for (const auto& [month, sum] : months) {
      list.push_back({{"month", month}, {"seconds", sum.seconds}});
    }
    told["months"] = std::move(list);
    list = {};
    for (const auto& [key, sum] : largest(examples, 5)) {
      json::array titles;  // one of the largest is told
      for (const auto& [title, seconds] : sum.titles) {
        const auto most =
            std::max_element(sum.titles.begin(), sum.titles.end(),
                             [](const auto& a, const auto& b) { return a.second < b.second; });
        if (seconds == most->second) titles.push_back(json::value(title));
      }
      if (titles.empty()) titles.push_back(nullptr);
      list.push_back({{"text", key.first},
                      {"field", key.second},
                      {"title", std::move(titles)},
                      {"spans", sum.spans},
                      {"seconds", sum.seconds}});
    }
    told["examples"] = std::move(list);
    return told;
  }
};

// The history keeps no titles.
void expectEffect(json::object told, const json::object& expected, bool kept) {
  told.erase("learned");
  for (const auto& example : expected.at("examples").as_array()) {
    const auto at = static_cast<std::size_t>(&example - expected.at("examples").as_array().data());
    ASSERT_LT(at, told["examples"].as_array().size());
    auto& title = told["examples"].as_array()[at].as_object()["title"];
    const auto& titles = example.at("title").as_array();
    const bool known =
        kept ? title.is_null() : std::find(titles.begin(), titles.end(), title) != titles.end();
    if (known) title = titles;
  }
  for (const auto& [key, value] : expected) EXPECT_EQ(told.at(key), value) << key;
  EXPECT_EQ(told.size(), expected.size());
}

struct Effects : testing::Test, Program {
  void fill(unsigned seed, const std::function<void(Dice&)>& check) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    store.db.run("DELETE FROM changes");
    store.db.run("DELETE FROM rule_origins");
    fillAtRandom(store.db, dice, naiveStart(kDay - 40) + dice.upTo(3'000'000), 90000,
                 {naiveStart(kDay - 29), naiveStart(kDay + 1)});
    store.db.run("UPDATE events SET end=start WHERE end > 1e10");
    clock.now = naiveStart(kDay) + dice.upTo(80000);
    ActivityIndex index(store.db, clock.read());
    while (dice.oneIn(2) && index.step()) continue;
    check(dice);
  }
  NaiveSpans spans() { return naiveSpans(store.db, -kAlways, kAlways); }
  std::string rows() {
    return rowsOf(store.db.location().file(), {"events", "rules", "projects", "rule_origins"});
  }
  void make(const Steps& steps) {
    for (const auto& [path, body] : steps) ask(path, body);
  }

  json::object someTarget(Dice& dice, json::object body) {
    const char* categories[] = {"travail", "loisir", "étrange"};
    if (!dice.oneIn(3)) body["category"] = dice.oneOf(categories);
    if (dice.oneIn(2)) body["project_id"] = 1 + dice.upTo(6);
    return body;
  }
  json::object someRule(Dice& dice) {
    const char* fields[] = {"app", "domain", "title", "url"};
    const char* patterns[] = {"a", "AB", "ÉTÉ", "video", "video.com", "mail", "inconnu"};
    return someTarget(dice, {{"field", dice.oneOf(fields)}, {"pattern", dice.oneOf(patterns)}});
  }
  json::object someProject(Dice& dice) {
    const auto known = ask("projects.list", {}).as_array();
    if (known.empty() || dice.oneIn(4)) return {{"name", "Neuf"}, {"keywords", "été, abc"}};
    const char* keywords[] = {"", "été", "abc, mail", "plage https", "com", "jeu, video.com"};
    const char* categories[] = {"travail", "loisir", "étrange"};
    const auto& one = dice.oneOf(known).as_object();
    json::object project{{"id", one.at("id")},
                         {"name", one.at("name")},
                         {"category", one.at("category")},
                         {"keywords", one.at("keywords")},
                         {"archived", one.at("archived")}};
    if (dice.oneIn(2)) project["archived"] = dice.upTo(1);
    if (dice.oneIn(2)) project["keywords"] = dice.oneOf(keywords);
    if (dice.oneIn(2)) project["category"] = dice.oneOf(categories);
    return project;
  }
  Steps someChange(Dice& dice) {
    json::array ids;
    for (int i = 1 + dice.upTo(40); i > 0; --i) ids.push_back(1 + dice.upTo(60));
    const double start = naiveStart(kDay - 40) + dice.upTo(3'000'000 * 8) / 8.0;
    switch (dice.upTo(9)) {
      case 0: {  // edited
        const auto known = ask("rules.list", {}).as_array();
        if (known.empty()) return {{"rules.save", someRule(dice)}};
        return {{"rules.save", someRule(dice)},
                {"rules.delete", {{"id", dice.oneOf(known).at("id")}}}};
      }
      case 1: {  // as suggestions are accepted
        Steps steps;
        for (int i = 1 + dice.upTo(3); i > 0; --i) steps.push_back({"rules.save", someRule(dice)});
        return steps;
      }
      case 2:
        return {{"rules.delete", {{"id", 1 + dice.upTo(6)}}}};
      case 3:
        return {{"projects.delete", {{"id", 1 + dice.upTo(6)}}}};
      case 4: {
        const auto known = ask("projects.list", {}).as_array();
        if (known.empty()) return {{"rules.save", someRule(dice)}};
        return {
            {"projects.archive", {{"id", dice.oneOf(known).at("id")}, {"keep", dice.oneIn(2)}}}};
      }
      case 5:
      case 6:
        return {{"projects.save", someProject(dice)}};
      case 7:
        return {{"events.assign", someTarget(dice, {{"ids", ids}})}};
      case 8:
        return {{"events.assignRange",
                 someTarget(dice, {{"start", start}, {"end", start + dice.upTo(800000) / 8.0}})}};
      default:
        if (dice.oneIn(20)) return {{"rules.defaults", {}}};
        return {{"rules.save", someRule(dice)}};
    }
  }

  LocalZone local{"Europe/Paris"};
};

TEST_F(Effects, AreTheDifferenceOfTwoClassificationsBeforeAndAfter) {
  std::map<std::string, int> effective;
  std::size_t learned = 0;
  for (unsigned seed = 0; seed < times(2000U) && !HasFailure(); ++seed) {
    fill(seed, [&](Dice& dice) {
      const auto steps = someChange(dice);
      SCOPED_TRACE(steps.front().path + json::serialize(steps.front().body));
      json::array list;
      for (const auto& [path, body] : steps) list.push_back({{"path", path}, {"body", body}});
      const auto before = rows();
      const auto preview = ask("changes.preview", {{"steps", list}}).as_object();
      ASSERT_EQ(difference(before, rows()), "");
      ASSERT_FALSE(preview.contains("error")) << preview;
      Naive naive{.before = spans(), .projectsBefore = loadProjects(store.db)};
      make(steps);
      naive.after = spans();
      naive.projectsAfter = loadProjects(store.db);
      const auto expected = naive.effect();
      {
        SCOPED_TRACE("previewed");
        expectEffect(preview, expected, false);
      }
      learned += preview.at("learned").as_array().size();
      const auto changes = ask("changes.list", {}).as_array();
      if (steps.size() == 1 && !changes.empty()) {
        expectEffect(changes.front().at("effect").as_object(), expected, true);
      }
      if (expected.at("spans") != 0) ++effective[steps.front().path];
    });
  }
  if (!kInstrumented) {  // fewer stores meet fewer kinds
    EXPECT_EQ(effective.size(), 8U);
  }
  EXPECT_GT(learned, times(20U));
}

TEST_F(Effects, OfArchivingAreNoneWhereTheTimeIsKept) {
  int64_t kept = 0;
  for (unsigned seed = 0; seed < times(500U) && !HasFailure(); ++seed) {
    fill(seed, [&](Dice& dice) {
      // Saved once more, it would be another one.
      store.db.run("UPDATE projects SET category='autre' WHERE category=''");
      const auto known = ask("projects.list", {}).as_array();
      if (known.empty()) return;
      auto project = dice.oneOf(known).as_object();
      if (project.at("archived") == 1) return;
      const auto counted = [&] {
        std::map<int64_t, std::pair<std::string, std::optional<int64_t>>> list;
        for (const auto& span : spans()) list[span.id] = {span.cat, span.pid};
        return list;
      };
      const auto before = counted();
      const auto stored = rows();
      const auto answer = ask("projects.archive", {{"id", project.at("id")}, {"keep", true}});
      kept += answer.at("spans").as_int64();
      EXPECT_EQ(counted(), before) << "archived";
      project["archived"] = 0;
      ask("projects.save", project);
      EXPECT_EQ(counted(), before) << "and active again";
      const auto made = ask("changes.list", {}).as_array();
      for (const auto& change : made) EXPECT_TRUE(undo(change.at("id")));
      EXPECT_EQ(difference(stored, rows()), "");
    });
  }
  EXPECT_GT(kept, times(300));
  EXPECT_EQ(call("projects.archive", R"({"id":77})").at("error"), "projet inconnu");
  EXPECT_EQ(call("projects.archive").at("error"), "id manquant");
}

}  // namespace
}  // namespace orvanta::test
