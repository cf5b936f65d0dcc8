#include "app/bar.h"

#include <gtest/gtest.h>

#include <boost/json/parse.hpp>
#include <limits>

#include "base/exact_json.h"

namespace orvanta {
namespace {

namespace json = boost::json;

MenuFacts hostileFacts() {
  MenuFacts facts;
  facts.active = 7559;
  facts.current.emplace();
  facts.current->sample.app = "<b>\"Mal\"&\n'";
  facts.current->sample.title = "</span>\xff\x1b[31m\u202e\n{}";
  facts.current->sample.domain = "a&b.fr";
  facts.current->elapsed = 12;
  facts.projects = {{3, "<i>"}};
  facts.currentProject = 3;
  GoalState goal{{.goal = {.name = "<app>", .seconds = 600}}, {}};
  goal.goal.subject = GoalSubject::App;
  goal.today = 1230;
  facts.goals = {goal};
  return facts;
}

TEST(Bar, HostileTextsAreShownAsTheyAre) {
  const auto state = barState(hostileFacts(), 1000);
  const auto waybar = json::parse(barLine(state, BarFormat::Waybar)).as_object();
  EXPECT_EQ(waybar.at("text"), "2 h 05");
  EXPECT_EQ(waybar.at("class"), "active");
  EXPECT_EQ(waybar.at("percentage"), 100);
  EXPECT_EQ(waybar.at("tooltip").as_string(),
            "● &lt;b&gt;&quot;Mal&quot;&amp; &apos; · a&amp;b.fr\n"
            "Je travaille sur\u00a0: &lt;i&gt;\n"
            "Aujourd&apos;hui : 2 h 05 actif\n"
            "Travail 0 s · Loisir 0 s · Autre 0 s · Non classé 0 s\n"
            "Objectifs\u00a0: &lt;app&gt; 20 min sur 10 min");
  for (const auto format : {BarFormat::Waybar, BarFormat::I3blocks, BarFormat::Watch}) {
    const auto line = barLine(state, format);
    EXPECT_TRUE(parseJson(line)) << line;
    EXPECT_EQ(line.find_first_of("\n\x1b\xff"), std::string::npos) << line;
  }
  EXPECT_EQ(barLine(state, BarFormat::Text), "2 h 05");
  const auto watched = json::parse(barLine(state, BarFormat::Watch));
  EXPECT_EQ(watched.at("current").at("since"), 988);
  EXPECT_EQ(watched.at("goals").at(0).at("done"), 1200) << "whole minutes";
  EXPECT_EQ(watched.at("project"), "<i>");
}

TEST(Bar, StaysTheSameWithinAMinuteAndSaysWhatIsWrong) {
  auto facts = hostileFacts();
  const auto before = barState(facts, 1000);
  facts.active += 0.7;
  facts.current->elapsed += 0.7;
  facts.goals[0].today += 5;
  EXPECT_EQ(barState(facts, 1000.7), before);
  facts.paused = true;
  EXPECT_EQ(barLine(barState(facts, 1000), BarFormat::Text), "2 h 05 · pause");
  facts.trouble = StoreTrouble::Full;
  facts.active = std::numeric_limits<double>::infinity();
  EXPECT_EQ(barLine(barState(facts, 1000), BarFormat::Text), "⚠ 0 s");
  EXPECT_EQ(barLine("", BarFormat::I3blocks), R"({"full_text":"","short_text":""})");
  EXPECT_EQ(json::parse(barLine("", BarFormat::Waybar)).at("class"), "off");
}

TEST(Bar, NumbersArePlainDecimals) {
  const std::pair<const char*, const char*> numbers[] = {
      {"6.36E2", "636"},    {"-1.5E0", "-1.5"},    {"1E3", "1000"},
      {"2.5E-3", "0.0025"}, {"0E0", "0"},          {"1.7636040001234E9", "1763604000.1234"},
      {"12", "12"},         {"1.2E300", "1.2E300"}};
  for (const auto& [number, plain] : numbers) EXPECT_EQ(plainNumbers(number), plain);
  EXPECT_EQ(plainNumbers(R"({"a\"1E2":[1E2,"1E2",-3.25E1]})"), R"({"a\"1E2":[100,"1E2",-32.5]})");
}

}  // namespace
}  // namespace orvanta
