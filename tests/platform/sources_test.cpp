#include "platform/sources.h"

#include <gtest/gtest.h>

#include "base/application_id.h"
#include "platform/published.h"
#include "platform/sway/tree.h"

namespace orvanta {
namespace {

struct TestForeground : PublishedForeground {
  explicit TestForeground(std::string name, UptimeClock clock = machineUptime)
      : PublishedForeground(std::move(clock)), name_(std::move(name)) {}
  Source source() override { return {name_, name_}; }
  using PublishedForeground::publish;
  using PublishedForeground::setReadable;
  const std::string name_;
};

struct TestIdle : PublishedIdle {
  Source source() const override { return {"test", "Test"}; }
  using PublishedIdle::idled;
  using PublishedIdle::resumed;
  using PublishedIdle::setAvailable;
};

struct TwoSources {
  TestForeground& first;
  TestForeground& second;
  FirstForeground probe;
};

TwoSources twoSources(const UptimeClock& clock) {
  auto first = std::make_unique<TestForeground>("first", clock);
  auto second = std::make_unique<TestForeground>("second", clock);
  auto& a = *first;
  auto& b = *second;
  std::vector<std::unique_ptr<ForegroundProbe>> both;
  both.push_back(std::move(first));
  both.push_back(std::move(second));
  return {a, b, FirstForeground(std::move(both))};
}

TEST(SourcesTest, TheFirstThatWorksAnswersAndAVanishedOneIsForgotten) {
  auto [a, b, probe] = twoSources(machineUptime);
  EXPECT_FALSE(probe.titlesReadable());
  EXPECT_EQ(probe.source(), kNoSource);
  EXPECT_EQ(probe.frontmostApp(), std::nullopt);

  b.setReadable(true);
  b.publish(WindowClaims{.fallbackName = "B", .title = "b", .pid = 2});
  EXPECT_EQ(probe.frontmostApp(),
            (FrontmostApp{.name = "B", .bundle = {}, .pid = 2, .names = {}, .title = "b"}));

  a.setReadable(true);
  EXPECT_EQ(probe.source().id, "first");
  EXPECT_EQ(probe.frontmostApp(), std::nullopt) << "it sees no window in front";
  a.publish(WindowClaims{});
  EXPECT_EQ(probe.frontmostApp()->name, "Inconnu");
  a.setReadable(false);
  EXPECT_EQ(probe.source().id, "second");
  a.setReadable(true);
  EXPECT_EQ(probe.frontmostApp(), std::nullopt) << "what it saw before it went is old";
}

TEST(SourcesTest, ASourceThatHasNeverSeenAWindowGivesWayToAnotherAndComesBack) {
  double now = 0;
  auto [a, b, probe] = twoSources([&now] { return Uptime{now, now}; });
  const WindowClaims window{.fallbackName = "W"};

  a.setReadable(true);
  now = PublishedForeground::kFirstWindow.count();
  EXPECT_EQ(probe.source().id, "first") << "there is no other";
  b.setReadable(true);
  b.publish(window);
  EXPECT_EQ(probe.source().id, "second");
  now -= 1;
  EXPECT_EQ(probe.source().id, "first") << "the desktop may have been empty so far";
  now = 1000;
  a.publish(window);
  EXPECT_EQ(probe.source().id, "first");
  a.publish({});
  now = 2000;
  EXPECT_EQ(probe.frontmostApp(), std::nullopt) << "it has seen windows, so there is none";

  a.setReadable(false);
  a.setReadable(true);
  EXPECT_EQ(probe.source().id, "first") << "it has its time again";
  now += PublishedForeground::kFirstWindow.count();
  EXPECT_EQ(probe.source().id, "second");
}

TEST(SourcesTest, OurOwnWindowHasItsNameWhetherInstalledOrNot) {
  TestForeground windows("test");
  windows.setReadable(true);
  windows.publish(WindowClaims::told("", kApplicationId, "Orvanta", 1));
  const auto app = windows.frontmostApp();
  EXPECT_EQ(app->name, "Orvanta");
  EXPECT_EQ(app->categories, std::vector<std::string>{"Utility"});
}

TEST(SourcesTest, IdleTimeIsCountedFromTheInputBeforeTheNotice) {
  auto source = std::make_unique<TestIdle>();
  auto& idle = *source;
  std::vector<std::unique_ptr<IdleSource>> one;
  one.push_back(std::move(source));
  FirstIdle probe(std::move(one));
  EXPECT_EQ(probe.source(), kNoSource);
  idle.setAvailable(true);
  EXPECT_EQ(probe.idleSeconds(), 0);
  idle.idled();
  EXPECT_NEAR(probe.idleSeconds(), 2, 0.5);
  idle.resumed();
  EXPECT_EQ(probe.idleSeconds(), 0);
  idle.idled();
  idle.setAvailable(false);
  EXPECT_EQ(probe.idleSeconds(), 0) << "nobody can tell";
}

TEST(SourcesTest, SwayMarksTheWindowThatKeepsTheDisplayAwake) {
  EXPECT_TRUE(sway::holdsDisplayAwake(
      R"({"nodes": [{"nodes": [], "floating_nodes": [{"inhibit_idle": true}]}]})"));
  EXPECT_FALSE(sway::holdsDisplayAwake(R"({"nodes": [{"inhibit_idle": false}]})"));
  std::string deep;
  for (int i = 0; i < 100'000; ++i) deep += R"({"nodes": [)";
  for (const auto& text : {std::string(), std::string("{"), std::string("[true]"),
                           std::string(R"({"nodes": 7, "inhibit_idle": "yes"})"), deep}) {
    EXPECT_FALSE(sway::holdsDisplayAwake(text));
  }
}

}  // namespace
}  // namespace orvanta
