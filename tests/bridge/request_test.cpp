#include "bridge/request.h"

#include <gtest/gtest.h>

#include <boost/json/serialize.hpp>
#include <limits>
#include <random>

#include "support/program.h"

namespace orvanta {
namespace {

namespace json = boost::json;

TEST(Request, OnlyWholeEnvelopesAreHeard) {
  for (const auto* ignored :
       {"", "7", "null", "[]", R"("{}")", "{", "{}", R"({"id": 1})", R"({"path": "day"})",
        R"({"id": "7", "path": "day"})", R"({"id": 1.5, "path": "day"})",
        R"({"id": 1e300, "path": "day"})", R"({"id": 9223372036854775808, "path": "day"})",
        R"({"id": 1, "path": 2})", R"({"id": null, "path": "day"})",
        "{\"id\": 1, \"path\": \"\xff\"}"}) {
    EXPECT_FALSE(parseRequest(ignored)) << ignored;
  }
  for (const auto* empty : {R"({"id": -7, "path": ""})", R"({"id": -7, "path": "", "body": null})",
                            R"({"id": -7, "path": "", "body": [1]})"}) {
    const auto request = parseRequest(empty);
    ASSERT_TRUE(request) << empty;
    EXPECT_EQ(request->id, -7);
    EXPECT_EQ(request->path, "");
    EXPECT_TRUE(request->body.empty());
  }
  EXPECT_EQ(parseRequest(R"({"id": 1, "path": "day", "body": {"a": 5, "b": 5.0}})")->body,
            (json::object{{"a", 5}, {"b", 5.0}}));
}

TEST(Request, BodiesAreReadAsTheKindThatIsMeant) {
  const auto object = json::parse(R"({"text": "é", "empty": "", "number": -3, "real": 2.75,
      "yes": true, "null": null, "list": [1, "a"], "digits": "-12", "plus": "+4", "words": "1a"})")
                          .as_object();
  const Body body(object);
  const std::vector<std::tuple<const char*, std::optional<std::string>, std::optional<int64_t>,
                               std::optional<double>>>
      cases{{"text", "é", {}, {}},          {"empty", {}, {}, {}},      {"number", "-3", -3, -3.0},
            {"real", "2.75", 2, 2.75},      {"yes", "1", {}, {}},       {"null", {}, {}, {}},
            {"list", R"([1,"a"])", {}, {}}, {"digits", "-12", -12, {}}, {"plus", "+4", 4, {}},
            {"words", "1a", {}, {}},        {"missing", {}, {}, {}}};
  for (const auto& [key, s, i, d] : cases) {
    EXPECT_EQ(body.s(key), s) << key;
    EXPECT_EQ(body.i(key), i) << key;
    EXPECT_EQ(body.d(key), d) << key;
  }
}

TEST(Request, WhatJsonCannotSayIsAnEmptyAnswer) {
  test::Program program;
  program.store.db.run("INSERT INTO projects(name, created) VALUES ('A', 1e999)");
  EXPECT_EQ(answer(program.core.router, "projects.list", {}).json, "{}");
  program.store.db.run("UPDATE projects SET created=NULL, name=CAST(x'41ff0a' AS TEXT)");
  const auto list = json::parse(answer(program.core.router, "projects.list", {}).json);
  EXPECT_EQ(list.at(0).at("name"), "A\xef\xbf\xbd\n");
}

// Envelopes made of whatever may come, through the whole router.
class Hostile {
 public:
  explicit Hostile(unsigned seed) : random_(seed) {}

  json::value value(int depth = 0) {
    switch (upTo(depth > 3 ? 7 : 9)) {
      case 0:
        return nullptr;
      case 1:
        return upTo(1) == 1;
      case 2:
        return int64_t{upTo(20)} - 5;
      case 3:
        return std::numeric_limits<int64_t>::min() + upTo(1);
      case 4:
        return std::numeric_limits<uint64_t>::max();
      case 5:
        return 1e300 * (upTo(2) - 1) + 0.5;
      case 6:
        return json::value(text());
      case 7:
        return json::value(pick(kWords));
      case 8: {
        json::array list;
        for (int i = upTo(4); i > 0; --i) list.push_back(value(depth + 1));
        return list;
      }
      default: {
        json::object object;
        for (int i = upTo(5); i > 0; --i) object[pick(kKeys)] = value(depth + 1);
        return object;
      }
    }
  }

  std::string text() {
    static const std::vector<std::string> kPieces{
        "\"",        "'",          "\\",   "\n",     "%s",
        "</script>", "é",          "🦊", "\u202e", "DROP TABLE events;",
        "\u0001",    "2026-03-29", ","};
    std::string text;
    for (int i = upTo(6); i > 0; --i) text += pick(kPieces);
    return text;
  }

  std::string envelope() {
    const auto routes = Router::routes();
    const auto at = static_cast<std::size_t>(upTo(static_cast<int>(routes.size())));
    const std::string_view route = at < routes.size() ? routes[at]->name : "nulle.part";
    json::object object{{"id", upTo(9) == 0 ? value() : json::value(next_++)},
                        {"path", upTo(9) == 0 ? value() : json::value(route)},
                        {"body", upTo(9) == 0 ? value() : body()}};
    if (upTo(19) == 0) object.erase(pick(kKeys));
    auto text = json::serialize(object);
    // Torn on the way, or made longer.
    for (int i = upTo(30) == 0 ? 3 : 0; i > 0 && !text.empty(); --i) {
      text[static_cast<std::size_t>(upTo(static_cast<int>(text.size()) - 1))] =
          static_cast<char>(upTo(255));
    }
    return text;
  }

 private:
  json::value body() {
    json::object object;
    for (int i = upTo(6); i > 0; --i) object[pick(kKeys)] = value();
    return object;
  }
  int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }
  const std::string& pick(const std::vector<std::string>& list) {
    return list[static_cast<std::size_t>(upTo(static_cast<int>(list.size()) - 1))];
  }

  inline static const std::vector<std::string> kKeys{"id",
                                                     "path",
                                                     "body",
                                                     "name",
                                                     "ids",
                                                     "date",
                                                     "start",
                                                     "end",
                                                     "category",
                                                     "project_id",
                                                     "field",
                                                     "pattern",
                                                     "keywords",
                                                     "archived",
                                                     "clear",
                                                     "url",
                                                     "bundle",
                                                     "from",
                                                     "to",
                                                     "enabled",
                                                     "retention_days",
                                                     "excluded_domains",
                                                     "paused"};
  inline static const std::vector<std::string> kWords{"app", "domain", "travail", "12", "1e5", ""};

  std::mt19937 random_;
  int next_ = 1;
};

TEST(Request, AHundredThousandHostileEnvelopesAreEachAnsweredOrIgnored) {
  test::Program program;
  for (int i = 0; i < 20; ++i) {
    program.store.db.run(
        "INSERT INTO events(start,end,app,title,domain) VALUES (?,?,'A','t','d.fr')",
        {program.clock.now - 100 * i, program.clock.now - 100 * i + 90});
  }
  Hostile hostile(20260329);
  int answered = 0;
  for (int i = 0; i < 100000; ++i) {
    const auto text = hostile.envelope();
    auto request = parseRequest(text);
    if (!request) continue;
    ++answered;
    const auto reply = answer(program.core.router, request->path, request->body).json;
    boost::system::error_code broken;
    json::parse(reply, broken, {}, {.max_depth = 600});
    ASSERT_FALSE(broken) << text << "\n" << reply;
    ASSERT_EQ(reply.find('\n'), std::string::npos);
    // What was saved on the way would only make it slow.
    if (i % 500 == 0) {
      program.store.db.exec(
          "DELETE FROM rules; DELETE FROM projects; DELETE FROM events WHERE id>20");
      program.shell.asked.clear();
    }
  }
  EXPECT_GT(answered, 50000);

  const auto nested = [](int depth) {
    return R"({"id": 1, "path": "day", "body": {"date": )" + std::string(depth, '[') +
           std::string(depth, ']') + "}}";
  };
  EXPECT_TRUE(parseRequest(nested(400)));
  EXPECT_FALSE(parseRequest(nested(100000)));
  const auto huge = json::serialize(json::object{
      {"id", 1},
      {"path", "rules.save"},
      {"body", json::object{{"field", "app"}, {"pattern", std::string(10000000, 'x')}}}});
  const auto request = parseRequest(huge);
  ASSERT_TRUE(request);
  EXPECT_EQ(json::parse(answer(program.core.router, request->path, request->body).json).at("ok"),
            true);
}

}  // namespace
}  // namespace orvanta
