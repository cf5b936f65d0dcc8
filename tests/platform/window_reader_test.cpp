#include "platform/x11/window_reader.h"

#include <gtest/gtest.h>

namespace orvanta {
namespace {

TEST(CompoundText, BecomesUtf8) {
  EXPECT_EQ(x11::fromCompoundText("caf\xe9"), "café");
  EXPECT_EQ(x11::fromCompoundText("\x1b-A\xe9t\xe9"), "été");                 // ISO 8859-1, named
  EXPECT_EQ(x11::fromCompoundText("1 \x1b-b\xa4"), "1 €");                    // ISO 8859-15
  EXPECT_EQ(x11::fromCompoundText("a \x1b%G\xe2\x82\xac\x1b%@ b"), "a € b");  // UTF-8 inside
}

}  // namespace
}  // namespace orvanta
