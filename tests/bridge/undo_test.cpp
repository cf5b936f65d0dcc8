// Any sequence of changes can be taken back, and made again.
#include "support/program.h"
#include "support/random_store.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

constexpr double kStart = 1'699'900'000;

struct Undo : testing::Test, Program {
  std::string rows() { return rowsOf(store.db.location().file()); }
  std::vector<int64_t> changes() {
    std::vector<int64_t> ids;
    const auto list = ask("changes.list", {{"limit", 500}});
    for (const auto& change : list.as_array()) ids.push_back(change.at("id").as_int64());
    return ids;
  }

  // Leaves nothing behind.
  void tried(const char* route, const json::object& body) {
    OtherProgram other(store.db.location().file());
    const auto state = [&] {
      return rows() + rowsOf(store.db.location().file(), {"changes"}) +
             other.ask("PRAGMA data_version") + std::to_string(core.highestProject.load());
    };
    const auto before = state();
    const auto answer = ask("changes.preview", {{"path", route}, {"body", body}}).as_object();
    ASSERT_EQ(difference(before, state()), "");
    ++(answer.contains("learned") ? rehearsed : refused);
  }
  int rehearsed = 0;
  int refused = 0;

  json::array someSpans(Dice& dice) {
    json::array ids;
    for (int i = 1 + dice.upTo(8); i > 0; --i) ids.push_back(1 + dice.upTo(60));
    return ids;
  }
  json::object someTarget(Dice& dice, json::object body) {
    const char* categories[] = {"travail", "loisir", "x"};
    if (!dice.oneIn(3)) body["category"] = dice.oneOf(categories);
    if (dice.oneIn(2)) body["project_id"] = 1 + dice.upTo(7);
    return body;
  }
  std::pair<const char*, json::object> someChange(Dice& dice) {
    const char* names[] = {"Été", "Nouveau", "Autre", "b"};
    const char* patterns[] = {"a", "AB", "video.com", "neuf"};
    const double start = kStart + dice.upTo(90000) / 8.0;
    const json::object range{{"start", start}, {"end", start + dice.upTo(40000) / 3.0}};
    json::object project{{"name", dice.oneOf(names)}, {"archived", dice.upTo(1)}};
    if (dice.oneIn(2)) project["id"] = 1 + dice.upTo(6);
    if (dice.oneIn(2)) project["terms"] = json::object{{"rate", dice.upTo(3)}};
    if (dice.oneIn(2)) project["client"] = dice.oneOf(names);
    const std::pair<const char*, json::object> changes[] = {
        {"events.assign", someTarget(dice, {{"ids", someSpans(dice)}})},
        {"events.assign", someTarget(dice, {{"ids", someSpans(dice)}})},
        {"events.assign", {{"ids", someSpans(dice)}, {"clear", true}}},
        {"events.assignRange", someTarget(dice, range)},
        {"events.assignRange", someTarget(dice, range)},
        {"rules.save", someTarget(dice, {{"field", "domain"}, {"pattern", dice.oneOf(patterns)}})},
        {"rules.delete", {{"id", 1 + dice.upTo(6)}}},
        {"projects.save", project},
        {"projects.delete", {{"id", 1 + dice.upTo(6)}}},
        {"settings.set", {{"idle_threshold", 60 + dice.upTo(3)}, {"onboarded", dice.upTo(1)}}}};
    if (dice.oneIn(36)) return {"rules.defaults", {}};
    return dice.oneOf(changes);
  }
  void changeSomething(Dice& dice) {
    const auto [route, body] = someChange(dice);
    ask(route, body);
  }
};

TEST_F(Undo, AnySequenceIsTakenBackAndMadeAgainRowByRow) {
  int64_t made = 0;
  store.db.setSetting("rules_seeded", "1");
  for (unsigned seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    store.db.run("DELETE FROM changes");
    store.db.run("DELETE FROM project_terms");
    fillAtRandom(store.db, dice, kStart, 20000, {kStart + 7, kStart + 5000.5});
    ask("settings.set", {{"onboarded", 1}});
    Texts states{rows()};
    for (int i = 1 + dice.upTo(19); i > 0; --i) {
      const auto known = changes().size();
      const auto [route, body] = someChange(dice);
      if (dice.oneIn(8)) tried(route, body);
      ask(route, body);
      if (std::string_view(route) == "settings.set") ask("settings.set", {{"onboarded", 1}});
      const auto now = rows();
      EXPECT_EQ(changes().size() > known, now != states.back());
      if (now != states.back()) states.push_back(now);
    }
    const auto ids = changes();
    ASSERT_EQ(ids.size() + 1, states.size());
    made += static_cast<int64_t>(ids.size());
    {
      Program later(store.folder.path());  // after a restart
      for (std::size_t i = 0; i < ids.size(); ++i) {
        ASSERT_TRUE(later.undo(ids[i]));
        ASSERT_EQ(difference(states[states.size() - 2 - i], rows()), "");
      }
    }
    EXPECT_TRUE(ids.empty() || !undo(ids.back())) << "it is undone";
    for (auto id = ids.rbegin(); id != ids.rend(); ++id) ASSERT_TRUE(redo(*id));
    ASSERT_EQ(difference(states.back(), rows()), "");
    // Retention in between.
    store.db.run("UPDATE events SET title=NULL, url=NULL WHERE id % 2 = 1");
    for (const auto id : ids) ASSERT_TRUE(undo(id));
    store.db.run("UPDATE events SET title='gone', url=NULL");
    const auto erased = rows();
    fillAtRandom(store.db, dice = Dice(seed), kStart, 20000, {kStart + 7, kStart + 5000.5});
    store.db.run("UPDATE events SET title='gone', url=NULL");
    ask("settings.set", {{"onboarded", 1}});
    ASSERT_EQ(difference(rows(), erased), "") << "nothing but titles was lost";
  }
  EXPECT_GT(made, 500);
  EXPECT_GT(rehearsed, 100);
  EXPECT_GT(refused, 5);
}

TEST_F(Undo, WhatALaterChangeTouchedIsAConflictAndLeftAlone) {
  int conflicts = 0;
  for (unsigned seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    store.db.run("DELETE FROM changes");
    fillAtRandom(store.db, dice, kStart, 2000, {kStart + 7, kStart + 5000.5});
    for (int i = 0; i < 6; ++i) changeSomething(dice);
    auto ids = changes();
    dice.shuffle(ids);
    // In any order: each is taken back, or nothing is done and a sentence says so.
    for (const auto id : ids) {
      const auto before = rows();
      const auto answer = ask("changes.undo", {{"id", id}});
      if (answer.as_object().contains("ok")) continue;
      ++conflicts;
      EXPECT_TRUE(holds(answer.at("error").as_string(), " » a changé la même chose depuis"))
          << answer << call("changes.list");
      ASSERT_EQ(difference(before, rows()), "");
    }
  }
  EXPECT_GT(conflicts, 20);
}

TEST_F(Undo, WhatIsMadeAgainLeavesAloneWhatWasRecordedSince) {
  store.db.run("INSERT INTO events(start, end, app) VALUES (0, 1000, 'A')");
  ask("events.assignRange", {{"start", 300}, {"end", 600}, {"category", "loisir"}});
  ask("events.assign", {{"ids", json::array{2, 3}}, {"category", "autre"}});
  const auto ids = changes();
  ASSERT_EQ(ids.size(), 2U);
  for (const auto id : ids) ASSERT_TRUE(undo(id));
  for (int i = 2; i < 5; ++i) {
    store.db.run("INSERT INTO events(start, end, app) VALUES (?, ?, 'B')",
                 {i * 1000, i * 1000 + 9});
  }
  const auto before = rows();
  const auto answer = ask("changes.redo", {{"id", ids[0]}}).as_object();
  ASSERT_TRUE(answer.contains("error")) << answer;
  EXPECT_TRUE(holds(answer.at("error").as_string(), "Loisir"));
  EXPECT_EQ(difference(before, rows()), "");
}

TEST_F(Undo, ASpanThatHasTheNumberOfAnErasedOneIsLeftAlone) {
  store.db.run("INSERT INTO events(start, end, app) VALUES (0, 10, 'A')");
  ask("events.assign", {{"ids", json::array{1}}, {"category", "loisir"}});
  const auto assigned = lastChange();
  EXPECT_TRUE(undo(assigned));
  ask("events.delete", {{"ids", json::array{1}}});
  store.db.run("INSERT INTO events(id, start, end, app) VALUES (1, ?, ?, 'B')",
               {clock.now + 1, clock.now + 9});
  const auto answer = ask("changes.redo", {{"id", assigned}}).as_object();
  ASSERT_TRUE(answer.contains("error")) << answer;
  EXPECT_TRUE(holds(answer.at("error").as_string(), "Suppression"));
}

// Else what is made again would be about another project, or another rule.
TEST_F(Undo, WhatMayComeBackKeepsItsNumber) {
  const auto idOf = [](const json::value& answer) { return answer.at("id").as_int64(); };
  store.db.run("INSERT INTO events(start, end, app) VALUES (0, 10, 'A')");
  const auto project = idOf(ask("projects.save", {{"name", "Ancien"}}));
  const auto rule = idOf(ask("rules.save", {{"field", "app"}, {"pattern", "a"}}));
  ask("events.assign", {{"ids", json::array{1}}, {"project_id", project}});
  const auto assigned = lastChange();
  EXPECT_TRUE(undo(assigned));
  ask("projects.delete", {{"id", project}});
  ask("rules.delete", {{"id", rule}});
  const auto deleted = lastChange();

  // After a restart, also where it was not noted how far the history reaches.
  const auto restarted = [&](const char* name, const char* pattern, const char* note) {
    if (*note) store.db.run(note);
    Program later(store.folder.path());
    const auto newProject = idOf(later.ask("projects.save", {{"name", name}}));
    const auto newRule = idOf(later.ask("rules.save", {{"field", "app"}, {"pattern", pattern}}));
    EXPECT_GT(newProject, project) << note;
    EXPECT_GT(newRule, rule) << note;
    store.db.run("DELETE FROM projects WHERE id=?", {newProject});
    store.db.run("DELETE FROM rules WHERE id=?", {newRule});
  };
  restarted("Nouveau", "b", "");
  restarted("Autre", "c", "DELETE FROM settings WHERE key='highest_ids'");
  restarted("Encore", "d", "UPDATE settings SET value='{' WHERE key='highest_ids'");
  restarted("Enfin", "e", R"(UPDATE settings SET value='{"rules":"x"}' WHERE key='highest_ids')");
  EXPECT_TRUE(undo(deleted));
  const auto last = idOf(ask("rules.save", {{"field", "app"}, {"pattern", "f"}}));
  ask("rules.delete", {{"id", last}});
  ask("rules.defaults", {});
  OtherProgram other(store.db.location().file());
  EXPECT_EQ(other.ask(fmt::format("SELECT count(*) FROM rules WHERE id={}", last)), "0|\n");
}

TEST_F(Undo, NoNumberIsSoLargeThatNoneIsLeft) {
  store.db.run("INSERT INTO projects(id, name) VALUES (9223372036854775807, 'Étranger')");
  store.db.run("INSERT INTO rules(id, field, pattern) VALUES (9223372036854775807, 'app', 'a')");
  ask("projects.delete", {{"id", INT64_MAX - 1}});  // nobody's
  EXPECT_EQ(ask("projects.save", {{"name", "Nouveau"}}).at("id"), 1);
  EXPECT_EQ(ask("rules.save", {{"field", "app"}, {"pattern", "b"}}).at("id"), 1);
  for (const auto* route : {"projects.delete", "rules.delete"}) ask(route, {{"id", INT64_MAX}});
  EXPECT_EQ(ask("projects.save", {{"name", "Encore"}}).at("id"), 2);
}

}  // namespace
}  // namespace orvanta::test
