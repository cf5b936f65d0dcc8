#include "app/menu_content.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvanta {
namespace {

Tracker::Current current(const std::string& app, std::optional<std::string> domain,
                         double elapsed) {
  Tracker::Current current;
  current.sample.app = app;
  current.sample.domain = std::move(domain);
  current.elapsed = elapsed;
  return current;
}

TEST(MenuContent, StatusLineAndToggle) {
  MenuFacts facts;
  EXPECT_EQ(menuContent(facts).statusLine, "● Suivi actif");
  EXPECT_EQ(menuContent(facts).toggleTitle, "Mettre le suivi en pause");
  facts.current = current("Terminal", {}, 59.6);
  EXPECT_EQ(menuContent(facts).statusLine, "● Terminal · 1 min");
  facts.current = current("Firefox", "example.org", 7325);
  EXPECT_EQ(menuContent(facts).statusLine, "● Firefox · example.org · 2 h 02");
  facts.current = Tracker::Current{Sample::idleSample(), 200};
  EXPECT_EQ(menuContent(facts).statusLine, "● Inactif depuis 3 min");
  facts.paused = true;
  EXPECT_EQ(menuContent(facts).statusLine, "○ Suivi en pause");
  EXPECT_EQ(menuContent(facts).toggleTitle, "Reprendre le suivi");
}

TEST(MenuContent, DayAndProjectOfAReport) {
  MenuFacts facts;
  facts.take({{.active = 3725.4,
               .byCategory = {{"travail", 3600}, {"loisir", 125.4}, {"inactif", 60}},
               .byProject = {{2, "Zèbre", "", 600}, {3, "A", "", 1}}},
              {{.id = 1, .name = "Ancien", .archived = true}, {.id = 2, .name = "Zèbre"}}});
  facts.currentProject = 2;
  facts.onProject = 61;
  facts.update = Update{"1.4.2", "https://example.org/"};
  auto content = menuContent(facts);
  EXPECT_EQ(content.todayLine, "Aujourd'hui : 1 h 02 actif");
  EXPECT_EQ(content.catLine, "   Travail 1 h 00 · Loisir 2 min · Autre 0 s · Non classé 0 s");
  EXPECT_EQ(content.projLine, "   Projet principal : Zèbre · 10 min");
  EXPECT_EQ(content.projectTitle, "Je travaille sur : Zèbre (depuis 1 min)");
  EXPECT_EQ(content.updateTitle, "⬇︎ Mise à jour disponible : Orvanta 1.4.2");
  EXPECT_EQ(content.label, " 1 h 02");
  facts.currentProject = 1;  // archived since
  EXPECT_EQ(menuContent(facts).projectTitle, "Je travaille sur…");
  facts.active = 59.9;
  EXPECT_EQ(menuContent(facts).label, "");
}

TEST(MenuContent, ADayOfNothingAndOneOfNonsense) {
  MenuFacts facts;
  const auto nonsense = std::numeric_limits<double>::infinity();
  for (const auto& day :
       {DayTotals(), DayTotals{{.active = nonsense, .byCategory = {{"travail", nonsense}}}}}) {
    facts.take(day);
    const auto content = menuContent(facts);
    EXPECT_EQ(content.todayLine, "Aujourd'hui : 0 s actif");
    EXPECT_EQ(content.catLine, "   Travail 0 s · Loisir 0 s · Autre 0 s · Non classé 0 s");
    EXPECT_FALSE(content.projLine);
    EXPECT_FALSE(content.updateTitle);
    EXPECT_TRUE(facts.projects.empty());
  }
}

}  // namespace
}  // namespace orvanta
