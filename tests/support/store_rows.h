// A store's file as another program sees it.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include "support/texts.h"

namespace orvanta::test {

/// A connection of its own, past the faults of FaultVfs.
class OtherProgram {
 public:
  explicit OtherProgram(const std::filesystem::path& file) {
    sqlite3_open_v2(file.c_str(), &db_, SQLITE_OPEN_READWRITE, "unix");
    sqlite3_busy_timeout(db_, 1000);
  }
  ~OtherProgram() { sqlite3_close(db_); }
  OtherProgram(const OtherProgram&) = delete;
  OtherProgram& operator=(const OtherProgram&) = delete;

  /// The values of all rows, one row a line.
  std::string ask(const std::string& sql) {
    std::string text;
    const auto line = [](void* to, int columns, char** values, char**) {
      for (int i = 0; i < columns; ++i) {
        *static_cast<std::string*>(to) += std::string(values[i] ? values[i] : "NULL") + "|";
      }
      *static_cast<std::string*>(to) += "\n";
      return 0;
    };
    char* error = nullptr;
    sqlite3_exec(db_, sql.c_str(), line, &text, &error);
    if (error) text += error;
    sqlite3_free(error);
    return text;
  }

 private:
  sqlite3* db_ = nullptr;
};

/// Some of what an early version of the program left behind.
inline constexpr auto kLegacyTables =
    "CREATE TABLE projects (id INTEGER PRIMARY KEY, name TEXT UNIQUE NOT NULL);"
    "INSERT INTO projects(name) VALUES ('Ancien');"
    "CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT);"
    "INSERT INTO settings VALUES ('idle_threshold','240'),('port','8080');"
    "CREATE TABLE calendar_links (id INTEGER);";

/// Reads all rows of a table, exactly; random identifiers by their length. Without the figures of a
/// change, which are stored after it, and the numbers that were given, which no undo takes back.
inline std::string selectAll(OtherProgram& other, const std::string& table) {
  const auto columns =
      table == "settings"
          ? "key, CASE key WHEN 'install_id' THEN length(value) ELSE quote(value) END"
          : other.ask("SELECT group_concat('quote(' || name || ')') FROM pragma_table_info('" +
                      table + "') WHERE name NOT IN ('effect', 'examples', 'bytes')");
  const auto which = table == "settings" ? " WHERE key <> 'highest_ids'" : "";
  return "SELECT " + columns.substr(0, columns.find('|')) + " FROM " + table + which +
         " ORDER BY 1";
}

/// So of these tables.
inline std::string rowsOf(const std::filesystem::path& file,
                          const Texts& tables = {"events", "rules", "projects", "project_terms",
                                                 "settings"}) {
  OtherProgram other(file);
  std::string text;
  for (const auto& table : tables) text += table + ":\n" + other.ask(selectAll(other, table));
  return text;
}

/// The lines that only one of the two has; empty for the same.
inline std::string difference(const std::string& before, const std::string& after) {
  std::map<std::string, int> lines;
  for (const auto& [text, sign] : {std::pair(&before, -1), std::pair(&after, 1)}) {
    std::istringstream all(*text);
    for (std::string line; std::getline(all, line);) lines[line] += sign;
  }
  std::string found;
  for (const auto& [line, count] : lines) {
    if (count != 0) found += (count < 0 ? "-" : "+") + line + "\n";
  }
  return found;
}

inline std::string integrityOf(const std::filesystem::path& file) {
  return OtherProgram(file).ask("PRAGMA integrity_check");
}

}  // namespace orvanta::test
