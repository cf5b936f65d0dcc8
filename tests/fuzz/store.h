// A store that each input finds as the one before it did, and the answers of the program over it.
#pragma once

#include <fmt/format.h>
#include <giomm/init.h>

#include <boost/json/serialize.hpp>
#include <initializer_list>

#include "classify/defaults.h"
#include "fuzz/fuzz.h"
#include "support/program.h"

namespace orvanta::fuzz {

namespace json = boost::json;

inline constexpr double kStart = 1'699'900'000;  // 13 November 2023, 19:26:40 in Paris

/// A literal of SQL: any bytes, as a text or not.
inline std::string literal(std::string_view bytes, bool text) {
  std::string hex;
  for (const unsigned char c : bytes) hex += fmt::format("{:02x}", c);
  return text ? "CAST(x'" + hex + "' AS TEXT)" : "x'" + hex + "'";
}

/// It, which stays until the process ends.
inline test::Program& program() {
  static auto* const made = [] {
    Gio::init();
    auto* const program = new test::Program;
    program->store.db.exec("PRAGMA synchronous=OFF");
    seedDefaults(program->store.db, program->clock.read());
    return program;
  }();
  return *made;
}

/// Leaves only these rows in it.
inline void reset(const std::string& rows) {
  auto& db = program().store.db;
  std::string sql = "BEGIN;";
  for (const auto* table : {"events", "projects", "project_terms", "rules", "rule_origins", "goals",
                            "goal_told", "sheets", "changes", "settings", "indexed_days"}) {
    sql += fmt::format("DELETE FROM {};", table);
  }
  hold(db.exec(sql + rows + "COMMIT"), "the rows are written", rows);
}

/// The answer, which is one line of JSON whatever was asked.
inline json::value answered(std::string_view route, const json::object& body) {
  const auto [text, failed] = answer(program().core.router, route, body);
  hold(text.find('\n') == std::string::npos, "an answer is one line", text);
  boost::system::error_code broken;
  json::parse_options options;
  options.max_depth = 1000;
  auto value = json::parse(text, broken, {}, options);
  hold(!broken, "an answer is JSON", text);
  const auto* object = value.if_object();
  const auto* error = object ? object->if_contains("error") : nullptr;
  hold(failed || !error || !error->is_string(), "an error is told as one", text);
  return value;
}

}  // namespace orvanta::fuzz
