// Any sequence of changes can be taken back, and made again.
#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>

#include "support/program.h"
#include "support/random_store.h"
#include "support/store_rows.h"

namespace orvanta {
namespace {

namespace json = boost::json;
using test::Dice;

constexpr double kStart = 1'699'900'000;

class Undo : public testing::Test, protected test::Program {
 protected:
  std::string rows() {
    return test::rowsOf(store.db.location().file(), {"events", "rules", "projects"});
  }
  json::value call(const char* name, const json::object& body) {
    return Program::call(name, json::serialize(body));
  }
  std::vector<int64_t> changes() {
    std::vector<int64_t> ids;
    const auto list = call("changes.list", {{"limit", 500}});
    for (const auto& change : list.as_array()) ids.push_back(change.at("id").as_int64());
    return ids;
  }
  bool turn(const char* way, int64_t id) {
    const auto answer = call(way, {{"id", id}});
    return answer.as_object().contains("ok");
  }

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
  void changeSomething(Dice& dice) {
    const char* names[] = {"Été", "Nouveau", "Autre", "b"};
    const char* patterns[] = {"a", "AB", "video.com", "neuf"};
    switch (dice.upTo(8)) {
      case 0:
      case 1:
        call("events.assign", someTarget(dice, {{"ids", someSpans(dice)}}));
        break;
      case 2:
        call("events.assign", {{"ids", someSpans(dice)}, {"clear", true}});
        break;
      case 3:
      case 4: {
        const double start = kStart + dice.upTo(90000) / 8.0;
        const double end = start + dice.upTo(40000) / 3.0;
        call("events.assignRange", someTarget(dice, {{"start", start}, {"end", end}}));
        break;
      }
      case 5:
        call("rules.save",
             someTarget(dice, {{"field", "domain"}, {"pattern", dice.oneOf(patterns)}}));
        break;
      case 6:
        if (dice.oneIn(4)) {
          call("rules.defaults", {});
        } else {
          call("rules.delete", {{"id", 1 + dice.upTo(6)}});
        }
        break;
      case 7: {
        json::object body{{"name", dice.oneOf(names)}, {"archived", dice.upTo(1)}};
        if (dice.oneIn(2)) body["id"] = 1 + dice.upTo(6);
        call("projects.save", body);
        break;
      }
      default:
        call("projects.delete", {{"id", 1 + dice.upTo(6)}});
    }
  }
};

TEST_F(Undo, AnySequenceIsTakenBackAndMadeAgainRowByRow) {
  int64_t made = 0;
  for (unsigned seed = 0; seed < 120; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    core.history.forgetAll();
    test::fillAtRandom(store.db, dice, kStart, 20000, {kStart + 7, kStart + 5000.5});
    std::vector<std::string> states{rows()};
    for (int i = 1 + dice.upTo(19); i > 0; --i) {
      const auto known = changes().size();
      changeSomething(dice);
      const auto now = rows();
      EXPECT_EQ(changes().size() > known, now != states.back());
      if (now != states.back()) states.push_back(now);
    }
    const auto ids = changes();
    ASSERT_EQ(ids.size() + 1, states.size());
    made += static_cast<int64_t>(ids.size());
    for (std::size_t i = 0; i < ids.size(); ++i) {
      ASSERT_TRUE(turn("changes.undo", ids[i]));
      ASSERT_EQ(test::difference(states[states.size() - 2 - i], rows()), "");
    }
    EXPECT_TRUE(ids.empty() || !turn("changes.undo", ids.back())) << "it is undone";
    for (auto id = ids.rbegin(); id != ids.rend(); ++id) ASSERT_TRUE(turn("changes.redo", *id));
    ASSERT_EQ(test::difference(states.back(), rows()), "");
    // Retention in between.
    store.db.run("UPDATE events SET title=NULL, url=NULL WHERE id % 2 = 1");
    for (const auto id : ids) ASSERT_TRUE(turn("changes.undo", id));
    store.db.run("UPDATE events SET title='gone', url=NULL");
    const auto erased = rows();
    test::fillAtRandom(store.db, dice = Dice(seed), kStart, 20000, {kStart + 7, kStart + 5000.5});
    store.db.run("UPDATE events SET title='gone', url=NULL");
    ASSERT_EQ(test::difference(rows(), erased), "") << "nothing but titles was lost";
  }
  EXPECT_GT(made, 600);
}

TEST_F(Undo, WhatALaterChangeTouchedIsAConflictAndLeftAlone) {
  int conflicts = 0;
  for (unsigned seed = 0; seed < 100; ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    core.history.forgetAll();
    test::fillAtRandom(store.db, dice, kStart, 2000, {kStart + 7, kStart + 5000.5});
    for (int i = 0; i < 6; ++i) changeSomething(dice);
    auto ids = changes();
    dice.shuffle(ids);
    // In any order: each is taken back, or nothing is done and a sentence says so.
    for (const auto id : ids) {
      const auto before = rows();
      const auto answer = call("changes.undo", {{"id", id}});
      if (answer.as_object().contains("ok")) continue;
      ++conflicts;
      EXPECT_EQ(answer.at("error"),
                "ce changement ne peut pas être annulé : ce qu'il a touché a changé depuis");
      ASSERT_EQ(test::difference(before, rows()), "");
    }
  }
  EXPECT_GT(conflicts, 20);
}

}  // namespace
}  // namespace orvanta
