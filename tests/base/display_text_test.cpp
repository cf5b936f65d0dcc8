#include "base/display_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace orvanta {
namespace {

TEST(DisplayText, ShortDurations) {
  const std::pair<double, const char*> cases[] = {
      {0, "0 s"},       {-0.4, "0 s"},        {-5, "-5 s"},       {0.5, "1 s"},
      {45, "45 s"},     {59.4, "59 s"},       {59.5, "1 min"},    {119, "1 min"},
      {600, "10 min"},  {3599, "59 min"},     {3599.5, "1 h 00"}, {3725, "1 h 02"},
      {7325, "2 h 02"}, {360000, "100 h 00"},
  };
  for (const auto& [seconds, text] : cases) EXPECT_EQ(fmtDur(seconds), text) << seconds;
  EXPECT_DEATH(fmtDur(std::numeric_limits<double>::infinity()), "");
  EXPECT_DEATH(fmtDur(std::numeric_limits<double>::quiet_NaN()), "");
}

TEST(DisplayText, OneLineOfAnything) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""},
      {"12345678", "12345678"},
      {"123456789", "1234567…"},
      {"a\nb\tc\u2028d", "a b c d"},
      {"\u202Egnp.exe", "gnp.exe"},
      {"\xff<b>", "\uFFFD<b>"},
      {"👩‍👩‍👧👩‍👩‍👧", "👩‍👩‍👧👩‍👩‍👧"},
      {"éééééééé", "éééééééé"},
      {"e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e",
       "e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301e\u0301…"},
  };
  for (const auto& [text, line] : cases) EXPECT_EQ(oneLine(text, 8), line);
  EXPECT_EQ(oneLine(std::string(1'000'000, 'a'), 3), "aa…");
}

}  // namespace
}  // namespace orvanta
