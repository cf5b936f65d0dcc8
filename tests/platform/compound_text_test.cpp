#include "platform/x11/compound_text.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(CompoundText, BecomesUtf8) {
  EXPECT_EQ(x11::fromCompoundText("caf\xe9"), "café");
  EXPECT_EQ(x11::fromCompoundText("\x1b-A\xe9t\xe9"), "été");                 // ISO 8859-1, named
  EXPECT_EQ(x11::fromCompoundText("1 \x1b-b\xa4"), "1 €");                    // ISO 8859-15
  EXPECT_EQ(x11::fromCompoundText("a \x1b%G\xe2\x82\xac\x1b%@ b"), "a € b");  // UTF-8 inside
  EXPECT_EQ(x11::fromCompoundText("\x1b-F\xc5\xeb, \x1b-A\xe9"), "Ελ, é");    // Greek, ASCII, Latin
  EXPECT_EQ(x11::fromCompoundText("\x1b$(BF|K\\8l\x1b(B (\xe9)"), "日本語 (é)");
}

TEST(CompoundText, CutShortIsNoMoreThanShort) {
  for (const auto* text : {"", "\x1b", "\x1b-", "\x1b$(", "\x1b%G", "\x1b%G\xe2\x82", "\x1b%"}) {
    EXPECT_LE(x11::fromCompoundText(text).size(), 6U) << text;
  }
  EXPECT_EQ(x11::fromCompoundText("a\x1b%G\xe2\x82"), "a\uFFFD\uFFFD");
}

}  // namespace
}  // namespace orvanta
