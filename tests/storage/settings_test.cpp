#include "storage/settings.h"

#include <fmt/format.h>
#include <array>
#include <boost/json/serialize.hpp>
#include <cstdlib>

#include "support/files.h"
#include "support/places.h"

namespace orvanta::test {
namespace {

namespace json = boost::json;

TEST(Settings, AreReadAsTheyAreWithinReason) {
  const auto read = Settings::of({{"idle_threshold", "1.5"},
                                  {"min_span_seconds", "0"},
                                  {"min_block_seconds", "12.5"},
                                  {"retention_days", "100000"},
                                  {"privacy_mode", "domain"},
                                  {"excluded_domains", R"(["A.fr"])"},
                                  {"paused", "1"},
                                  {"install_id", "x"},
                                  {"unknown", "?"}});
  EXPECT_EQ(read.idleThreshold, 1.5);
  EXPECT_EQ(read.minSpan, 0);
  EXPECT_EQ(read.minBlock, 12.5);
  EXPECT_EQ(read.retentionDays, 100000);
  EXPECT_EQ(read.privacy, Privacy::Domain);
  EXPECT_TRUE(read.excludes("a.fr"));
  EXPECT_TRUE(read.excludes("sous.a.fr"));
  EXPECT_FALSE(read.excludes("aa.fr"));
  EXPECT_TRUE(read.paused);
  EXPECT_EQ(read.installId, "x");
  EXPECT_TRUE(readAs({{"idle_threshold", "1.5"}, {"privacy_mode", "domain"}}).empty());
}

TEST(Settings, WhatSaysNothingUsableIsReadAsSomethingElseAndSaysSo) {
  EXPECT_EQ(json::serialize(readAs(defaultSettings())), "{}");
  for (const auto& [key, text, read] : std::initializer_list<std::array<const char*, 3>>{
           {"idle_threshold", "0", "30"},
           {"idle_threshold", "-5", "30"},
           {"idle_threshold", "1e300", "7200"},
           {"idle_threshold", "beaucoup", "180"},
           {"idle_threshold", "", "180"},
           {"min_span_seconds", "-1", "2"},
           {"min_span_seconds", " 12", "10"},
           {"min_block_seconds", "inf", "60"},
           {"min_block_seconds", "-1", "0"},
           {"retention_days", "-3", "0"},
           {"retention_days", "30.5", "0"},
           {"retention_days", "99999999999999999999", "0"},
           {"privacy_mode", "site", "\"full\""},
           {"excluded_domains", R"(["a.fr",1])", "[]"},
           {"excluded_domains", R"({"a.fr":1})", "[]"},
           {"telemetry", "oui", "false"}}) {
    EXPECT_EQ(json::serialize(readAs({{key, text}})), fmt::format("{{\"{}\":{}}}", key, read))
        << text;
  }
  EXPECT_EQ(Settings::of({{"idle_threshold", "0"}}).idleThreshold, 30);
  EXPECT_EQ(Settings::of({}).idleThreshold, 180);
  EXPECT_EQ(Settings::unread().privacy, Privacy::Domain);
}

std::string bounds(const Bounds& limits, bool number) {
  return number ? fmt::format("{} to {}", limits.smallest, limits.largest) : "";
}

std::string reference() {
  std::string text =
      "# Settings\n\nText in the table `settings`. The page offers a number within the limits of "
      "\"offered\"; what was\nstored by other means is read as it is within those of \"read\", and "
      "as the nearest offered one beyond.\n\n"
      "| key | kind | default | offered | read | meaning |\n|---|---|---|---|---|---|\n";
  std::string own = "\nThe program keeps these for itself:\n\n| key | meaning |\n|---|---|\n";
  const auto described = describeSettings();
  for (std::size_t i = 0; i < described.size(); ++i) {
    const auto& row = settingTable()[i];
    if (row.writer == Writer::Program) {
      own += fmt::format("| `{}` | {} |\n", row.key, row.about);
      continue;
    }
    const std::string kind = described[i].at("kind").as_string().c_str();
    text += fmt::format("| `{}` | {} | `{}` | {} | {} | {} |\n", row.key, kind, row.fallback,
                        bounds(row.offered, kind == "number"), bounds(row.read, kind == "number"),
                        row.about);
  }
  return text + own;
}

// UPDATE_DOCS=1 in the environment writes it.
TEST(Settings, TheReferenceTellsTheTable) {
  const fs::path file = std::string(kSourceFolder) + "/docs/settings.md";
  if (std::getenv("UPDATE_DOCS")) std::ofstream(file) << reference();
  EXPECT_EQ(bytesIn(file), reference());
}

}  // namespace
}  // namespace orvanta::test
