#include "tab/native_messages.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace orvanta {
namespace {

TEST(NativeMessages, AreCutOutOfAnyStream) {
  const auto stream = nativeMessage("{}") + nativeMessage("") + nativeMessage(R"({"url":"é"})");
  for (std::size_t step = 1; step <= stream.size(); ++step) {
    NativeMessages messages;
    std::vector<std::string> seen;
    for (std::size_t at = 0; at < stream.size(); at += step) {
      messages.add(std::string_view(stream).substr(at, step));
      while (const auto message = messages.next()) seen.push_back(*message);
    }
    EXPECT_EQ(seen, (std::vector<std::string>{"{}", "", R"({"url":"é"})"})) << step;
    EXPECT_FALSE(messages.broken());
  }
  NativeMessages messages;
  messages.add("GET / HTTP/1.1\r\n");
  EXPECT_TRUE(messages.broken());
  EXPECT_FALSE(messages.next());
}

TEST(NativeMessages, AReportIsWholeOrNothing) {
  const auto good = parseReport(R"({"window":3,"url":"https://é.fr/","title":"a\nb"})");
  EXPECT_EQ(good.tab, (ActiveTab{"https://é.fr/", "a\nb"}));
  EXPECT_EQ(good.window, 3);
  for (const auto* text :
       {"", "{}", "[]", "null", R"({"window":3,"url":"u"})",
        R"({"window":"3","url":"u","title":"t"})", R"({"window":3,"url":5,"title":"t"})",
        R"({"window":3,"url":"a\nb","title":"t"})", R"({"window":3,"url":"u","title":"\uzzzz"})",
        R"({"window":3,"url":"u","title":"t")"}) {
    EXPECT_FALSE(parseReport(text).tab) << text;
  }
  std::string title;
  for (int i = 0; i < 3000; ++i) title += "é";
  const auto cut = parseReport(R"({"window":1,"url":"u","title":"x)" + title + "\"}").tab->title;
  EXPECT_GT(cut.size(), 2000U);
  EXPECT_LE(cut.size(), 2048U);
  EXPECT_EQ(validUtf8(cut), cut);
}

}  // namespace
}  // namespace orvanta
