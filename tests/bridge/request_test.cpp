#include "bridge/request.h"

#include <iterator>
#include <limits>
#include <sstream>

#include "support/program.h"
#include "support/random_store.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

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

TEST(Request, AnyTextThatAPageCanSendIsRead) {
  const auto read = [](const std::string& escaped) {
    const auto request =
        parseRequest(R"({"id": 1, "path": "x", "body": {"text": ")" + escaped + "\"}}");
    return request ? std::string(request->body.at("text").as_string()) : "not read";
  };
  const std::string fox = "\\ud83e\\udd8a";
  const auto half = "\uFFFD";
  const std::pair<std::string, std::string> cases[] = {
      {"\\ud800", half},
      {"a\\uDFFFb", "a\uFFFDb"},
      {fox + "\\ud83e", std::string("🦊") + half},
      {"\\ud83e" + fox + "\\udd8a", half + std::string("🦊") + half},
      {"\\ud83e\\u0041", "\uFFFDA"},
      {"\\\\ud800 \\ud800", "\\ud800 \uFFFD"},
      {"\\ud800\\\\", "\uFFFD\\"},
      {"\\ud800\\u0000\\u2028\\uffff", std::string("\uFFFD\0\u2028\uFFFF", 10)}};
  for (const auto& [escaped, text] : cases) EXPECT_EQ(read(escaped), text) << escaped;
  EXPECT_TRUE(parseRequest(R"({"id": 1, "path": "\ud800", "body": {"\udc00": 1}})"));
  EXPECT_EQ(read("\\ud800\\uZZZZ"), "not read");
}

TEST(Request, WhatJsonCannotSayIsAnEmptyAnswer) {
  Program program;
  program.store.db.run("INSERT INTO projects(name, created) VALUES ('A', 1e999)");
  EXPECT_EQ(answer(program.core.router, "projects.list", {}).json, "{}");
  program.store.db.run("UPDATE projects SET created=NULL, name=CAST(x'41ff0a' AS TEXT)");
  const auto list = json::parse(answer(program.core.router, "projects.list", {}).json);
  EXPECT_EQ(list.at(0).at("name"), "A\xef\xbf\xbd\n");
}

constexpr const char* kWords[] = {"app", "domain", "travail", "12", "1e5", ""};
// What bodies and envelopes are made of.
const Texts kKeys = [] {
  std::istringstream words(
      "id path body name ids date start end category project_id field pattern keywords archived "
      "clear url bundle from to enabled retention_days excluded_domains paused");
  return Texts(std::istream_iterator<std::string>(words), {});
}();

// Envelopes made of whatever may come, through the whole router.
class Hostile {
 public:
  explicit Hostile(unsigned seed) : dice_(seed) {}

  json::value value(int depth = 0) {
    const int kind = dice_.upTo(depth > 3 ? 7 : 9);
    if (kind == 8) {
      json::array list;
      for (int i = dice_.upTo(4); i > 0; --i) list.push_back(value(depth + 1));
      return list;
    }
    if (kind == 9) {
      json::object object;
      for (int i = dice_.upTo(5); i > 0; --i) object[dice_.oneOf(kKeys)] = value(depth + 1);
      return object;
    }
    const json::value plain[] = {nullptr,
                                 dice_.oneIn(2),
                                 int64_t{dice_.upTo(20)} - 5,
                                 std::numeric_limits<int64_t>::min() + dice_.upTo(1),
                                 std::numeric_limits<uint64_t>::max(),
                                 1e300 * (dice_.upTo(2) - 1) + 0.5,
                                 json::value(text()),
                                 json::value(dice_.oneOf(kWords))};
    return plain[kind];
  }

  std::string text() {
    static constexpr const char* kPieces[] = {
        "\"",        "'",          "\\", "\n",     "%s",
        "</script>", "é",          "🦊", "\u202e", "DROP TABLE events;",
        "\u0001",    "2026-03-29", ","};
    std::string text;
    for (int i = dice_.upTo(6); i > 0; --i) text += dice_.oneOf(kPieces);
    return text;
  }

  std::string envelope() {
    const auto routes = Router::routes();
    const std::string_view route = dice_.oneIn(40) ? "nulle.part" : dice_.oneOf(routes)->name;
    json::object object{{"id", dice_.oneIn(10) ? value() : json::value(next_++)},
                        {"path", dice_.oneIn(10) ? value() : json::value(route)},
                        {"body", dice_.oneIn(10) ? value() : body()}};
    if (dice_.oneIn(20)) object.erase(dice_.oneOf(kKeys));
    auto text = json::serialize(object);
    // Torn on the way, or made longer.
    for (int i = dice_.oneIn(31) ? 3 : 0; i > 0 && !text.empty(); --i) {
      text[static_cast<std::size_t>(dice_.upTo(static_cast<int>(text.size()) - 1))] =
          static_cast<char>(dice_.upTo(255));
    }
    return text;
  }

 private:
  json::value body() {
    json::object object;
    for (int i = dice_.upTo(6); i > 0; --i) object[dice_.oneOf(kKeys)] = value();
    return object;
  }
  Dice dice_;
  int next_ = 1;
};

TEST(Request, AHundredThousandHostileEnvelopesAreEachAnsweredOrIgnored) {
  Program program;
  for (int i = 0; i < 20; ++i) {
    program.store.db.run(
        "INSERT INTO events(start,end,app,title,domain) VALUES (?,?,'A','t','d.fr')",
        {program.clock.now - 100 * i, program.clock.now - 100 * i + 90});
  }
  Hostile hostile(20260329);
  int answered = 0;
  for (int i = 0; i < times(100000); ++i) {
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
          "DELETE FROM rules; DELETE FROM rule_origins; DELETE FROM changes; DELETE FROM projects; "
          "DELETE FROM events WHERE id>20");
      program.shell.asked.clear();
    }
  }
  EXPECT_GT(answered, times(50000));

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
}  // namespace orvanta::test
