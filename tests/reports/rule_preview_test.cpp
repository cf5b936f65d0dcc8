// What is told of rules before and after, against saving them and classifying everything again.
#include <set>

#include "support/naive_reports.h"
#include "support/program.h"
#include "support/random_store.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

constexpr int kDay = 19800;  // since 1970

json::object count(const NaiveSpans& spans) {
  return {{"spans", spans.size()}, {"seconds", naiveSeconds(spans)}};
}

json::array shares(const NaiveSpans& spans, std::optional<std::string> NaiveSpan::* text,
                   std::size_t most) {
  NaiveSums<std::string> sums;
  for (const auto& span : spans) {
    if (span.*text) naiveAdd(sums, *(span.*text), span.duration());
  }
  json::array list;
  for (const auto& [name, seconds] : naiveLargest(sums, most)) {
    list.push_back({{"text", name}, {"seconds", seconds}});
  }
  return list;
}

std::optional<std::string> fieldOf(const NaiveSpan& span, std::string_view field) {
  if (field == "app") return span.app;
  if (field == "domain") return span.domain;
  return field == "title" ? span.title : span.url;
}

// Which of the spans come under which key, by falling seconds.
template <class KeyOf>
auto grouped(const NaiveSpans& spans, const KeyOf& keyOf) {
  std::vector<std::pair<decltype(keyOf(spans.front())), NaiveSpans>> groups;
  for (const auto& [key, seconds] : naiveLargest(naiveSums(spans, keyOf))) {
    groups.emplace_back(key, NaiveSpans());
  }
  for (const auto& span : spans) {
    const auto is = [&](const auto& group) { return group.first == keyOf(span); };
    std::find_if(groups.begin(), groups.end(), is)->second.push_back(span);
  }
  return groups;
}

struct RuleTelling : testing::Test, Program {
  void fill(unsigned seed, const std::function<void(Dice&)>& check) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Dice dice(seed);
    fillAtRandom(store.db, dice, naiveStart(kDay - 40) + dice.upTo(3'000'000), 90000,
                 {naiveStart(kDay - 29), naiveStart(kDay + 1)});
    clock.now = naiveStart(kDay) + dice.upTo(80000);
    check(dice);
  }

  LocalZone local{"Europe/Paris"};
};

json::object randomRule(Dice& dice) {
  const char* fields[] = {"app", "domain", "title", "url"};
  const char* patterns[] = {"a",         "Ab",   "ÉTÉ",     "été", "VIDEO",
                            "video.com", "mail", "inconnu", " A "};
  const json::value categories[] = {nullptr, "travail", "loisir", "étrange"};
  json::object rule{{"field", dice.oneOf(fields)},
                    {"pattern", dice.oneOf(patterns)},
                    {"category", dice.oneOf(categories)}};
  if (dice.oneIn(3)) rule["project_id"] = 1 + dice.upTo(6);
  return rule;
}

json::object expectedPreview(const NaiveSpans& before, const NaiveSpans& after,
                             const json::object& rule) {
  const auto* field = rule.at("field").as_string().c_str();
  const std::string pattern(trimBlanks(rule.at("pattern").as_string().c_str()));
  const bool edits = rule.contains("replaces");
  const auto catches = [&](const NaiveSpan& span) {
    return !span.idle && naiveMatch(fieldOf(span, field).value_or(""), pattern);
  };
  NaiveSpans caught;
  NaiveSpans changed;
  NaiveSpans kept;
  json::array changes;
  for (std::size_t i = 0; i < before.size(); ++i) {
    const bool same = before[i].cat == after[i].cat && before[i].pid == after[i].pid;
    EXPECT_TRUE(same || edits || catches(before[i])) << "only what is caught changes";
    if (!same) changed.push_back(before[i]);
    if (!catches(before[i])) continue;
    caught.push_back(before[i]);
    if (same && before[i].manual) kept.push_back(before[i]);
  }
  const auto move = [&](const NaiveSpan& span) {
    const auto to = std::find_if(after.begin(), after.end(),
                                 [&](const NaiveSpan& other) { return other.id == span.id; });
    return std::tuple(span.cat, to->cat, span.pid, to->pid);
  };
  for (const auto& [key, spans] : grouped(changed, move)) {
    if (changes.size() == 8) break;
    auto change = count(spans);
    const auto& [fromCat, toCat, fromPid, toPid] = key;
    change["from_category"] = fromCat;
    change["to_category"] = toCat;
    change["from_project"] = naiveOrNull(fromPid);
    change["to_project"] = naiveOrNull(toPid);
    changes.push_back(std::move(change));
  }
  json::array examples;
  const auto value = [&](const NaiveSpan& span) { return *fieldOf(span, field); };
  for (const auto& [text, spans] : grouped(caught, value)) {
    if (examples.size() == 5) break;
    auto example = count(spans);
    example["text"] = text;
    example["titles"] = shares(spans, &NaiveSpan::title, 10);
    example["urls"] = shares(spans, &NaiveSpan::url, 10);
    examples.push_back(std::move(example));
  }
  auto preview = count(caught);
  preview["changed"] = count(changed);
  preview["kept"] = count(kept);
  preview["changes"] = std::move(changes);
  preview["examples"] = std::move(examples);
  return preview;
}

// As the page does where a rule is edited.
void save(Program& program, json::object rule) {
  const auto saved = program.ask("rules.save", rule);
  ASSERT_EQ(saved.at("ok"), true);
  const auto* edited = rule.if_contains("replaces");
  if (edited && *edited != saved.at("id")) program.ask("rules.delete", {{"id", *edited}});
}

TEST_F(RuleTelling, ThePreviewIsWhatSavingTheRuleDoes) {
  std::set<std::pair<bool, bool>> changes;
  for (unsigned seed = 0; seed < times(2000U) && !HasFailure(); ++seed) {
    fill(seed, [&](Dice& dice) {
      auto rule = randomRule(dice);
      const auto known = ask("rules.list", {}).as_array();
      const bool edits = dice.oneIn(2) && !known.empty();
      if (edits) rule["replaces"] = dice.oneIn(20) ? 4711 : dice.oneOf(known).at("id");
      auto body = rule;
      double from = naiveStart(kDay - 29);
      double to = naiveStart(kDay + 1);
      json::object dates{{"from", naiveIso(kDay - 29)}, {"to", naiveIso(kDay)}};
      if (dice.oneIn(3)) {
        body["all"] = true;
        from = -1e11;
        to = 1e11;
        dates = {{"from", nullptr}, {"to", nullptr}};
      } else if (dice.oneIn(3)) {
        dates["from"] = body["from"] = naiveIso(kDay - 10);
        dates["to"] = body["to"] = naiveIso(kDay - 3);
        from = naiveStart(kDay - 10);
        to = naiveStart(kDay - 2);
      }
      const auto actual = ask("rules.preview", body).as_object();
      const auto before = naiveSpans(store.db, from, to);
      save(*this, rule);
      auto expected = expectedPreview(before, naiveSpans(store.db, from, to), rule);
      for (const auto& [key, date] : dates) expected[key] = date;
      for (const auto& [key, value] : expected) EXPECT_EQ(actual.at(key), value) << key;
      EXPECT_EQ(actual.size(), expected.size());
      changes.emplace(edits, expected.at("changes").as_array().empty());
    });
  }
  EXPECT_EQ(changes.size(), 4U);
}

TEST_F(RuleTelling, AnExplanationNamesWhoDecided) {
  const auto reason = [](const NaiveSpan& span) {
    return std::tuple(span.cat, span.catBy, span.catRule, span.pid, span.pidBy, span.pidRule,
                      span.keyword);
  };
  for (unsigned seed = 0; seed < times(500U) && !HasFailure(); ++seed) {
    fill(seed, [&](Dice& dice) {
      auto spans = naiveSpans(store.db, -1e11, 1e11);
      std::erase_if(spans, [](const NaiveSpan& span) { return span.end > 1e10; });
      spans.resize(static_cast<std::size_t>(dice.upTo(static_cast<int>(spans.size()))));
      json::array ids{99999};
      for (const auto& span : spans) ids.push_back(span.id);
      const auto projects = loadProjects(store.db);
      const auto listed = ask("rules.list", {});
      json::array expected;
      for (const auto& [key, own] : grouped(spans, reason)) {
        const auto& [cat, catBy, catRule, pid, pidBy, pidRule, keyword] = key;
        auto object = count(own);
        object["category"] = cat;
        object["category_by"] = catBy;
        object["category_rule"] = naiveOrNull(catRule);
        object["project_id"] = naiveOrNull(pid);
        const bool known = pid && projects.contains(*pid);
        object["project"] = known ? json::value(projects.at(*pid).name) : json::value(nullptr);
        object["project_by"] = pidBy;
        object["project_rule"] = naiveOrNull(pidRule);
        object["keyword"] = naiveOrNull(keyword);
        object["titles"] = shares(own, &NaiveSpan::title, 3);
        object["urls"] = shares(own, &NaiveSpan::url, 3);
        json::array rules;
        for (const auto& row : listed.as_array()) {
          auto rule = row.as_object();
          rule.erase("created");
          if (!rule["priority"].is_int64()) rule["priority"] = 0;
          if (row.at("id") == object["category_rule"])
            rules.insert(rules.begin(), rule);
          else if (row.at("id") == object["project_rule"])
            rules.push_back(rule);
        }
        object["rules"] = std::move(rules);
        expected.push_back(std::move(object));
      }
      EXPECT_EQ(ask("events.explain", {{"ids", ids}}), json::value(expected));
    });
  }
  EXPECT_EQ(ask("events.explain", {{"ids", json::array()}}),
            json::value({{"error", "aucun bloc"}}));
  EXPECT_EQ(ask("rules.preview", {{"field", "bundle"}, {"pattern", "x"}}),
            json::value({{"error", "règle invalide"}}));
}

}  // namespace
}  // namespace orvanta::test
