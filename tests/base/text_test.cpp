#include "base/text.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/display_text.h"
#include "base/number.h"

namespace orvanta {
namespace {

TEST(Text, LowerCasesAllOfUnicode) {
  EXPECT_EQ(lowerCase("ÉTÉ À LA PLAGE"), "été à la plage");
  EXPECT_EQ(lowerCase("ΟΔΟΣ ΟΔΟΣ"), "οδος οδος");
  EXPECT_EQ(lowerCase("İ"), "i̇");  // i and a combining dot, in every language
}

// Eight bytes are looked at at once: a letter must be seen wherever it stands among them.
TEST(Text, KnowsWhatLowersLikeAscii) {
  for (std::size_t before = 0; before < 20; ++before) {
    for (std::size_t after = 0; after < 20; ++after) {
      const auto within = [&](std::string_view letter) {
        return std::string(before, 'A') + std::string(letter) + std::string(after, 'z');
      };
      SCOPED_TRACE(within("|"));
      EXPECT_TRUE(isAscii(within("")));
      for (const auto* letter : {"é", "—", "°", "É", "\xE2", "\x80"}) {
        EXPECT_FALSE(isAscii(within(letter)));
      }
      for (const auto* letter : {"", "é", "—", "° à"}) EXPECT_TRUE(lowersLikeAscii(within(letter)));
      for (const auto* letter : {"É", "é É", "— Œ", "\u212A", "\xE2", "\xC3z"}) {
        EXPECT_FALSE(lowersLikeAscii(within(letter)));
      }
    }
  }
}

TEST(Text, MakesValidUtf8OfAnything) {
  EXPECT_EQ(validUtf8("a\xff\xc3 é"), "a\uFFFD\uFFFD é");
  EXPECT_EQ(validUtf8(""), "");
  EXPECT_EQ(validUtf8({}), "");
}

TEST(Text, CountsCharactersAsAReaderDoes) {
  EXPECT_EQ(userCharacters("été"), 3U);
  EXPECT_EQ(userCharacters("e\u0301te\u0301"), 3U);
  EXPECT_EQ(userCharacters("👩‍👩‍👧🇫🇷"), 2U);
  EXPECT_EQ(userCharacters("a\r\nb"), 3U);
  EXPECT_EQ(userCharacters(std::string_view("a\0\xC3\xA9", 4)), 3U);
  EXPECT_EQ(codePoints("\xC3\xA9t\xE2"), 3U);  // its last character is cut off
}

TEST(Text, TrimsBlanksButNotLineFeeds) {
  EXPECT_EQ(trimBlanks(" \t a b \t"), "a b");
  EXPECT_EQ(trimBlanks(" \n "), "\n");
  EXPECT_EQ(trimBlanks("\t "), "");
}

TEST(Text, ReadsNumbersWholeOrNotAtAll) {
  EXPECT_EQ(parseNumber("180"), 180.0);
  EXPECT_EQ(parseNumber("-2.5e1"), -25.0);
  for (const auto* text : {"", " 1", "1 ", "1,5", "12abc", "inf", "nan", "1e999"}) {
    EXPECT_FALSE(parseNumber(text)) << text;
  }
}

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
