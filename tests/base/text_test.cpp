#include "base/text.h"

#include <gtest/gtest.h>

#include "base/number.h"

namespace orvanta {
namespace {

TEST(Text, LowerCasesAllOfUnicode) {
  EXPECT_EQ(lowerCase("ÉTÉ À LA PLAGE"), "été à la plage");
  EXPECT_EQ(lowerCase("ΟΔΟΣ ΟΔΟΣ"), "οδος οδος");
  EXPECT_EQ(lowerCase("İ"), "i̇");  // i and a combining dot, in every language
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

}  // namespace
}  // namespace orvanta
