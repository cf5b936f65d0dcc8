// Store files, made and looked at as files.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>

#include "storage/file_connection.h"
#include "storage/schema.h"
#include "support/temp_store.h"

namespace orvanta::test {

inline void execute(const FileConnection& store, const std::string& sql) {
  EXPECT_EQ(store.exec(sql.c_str()), SQLITE_OK) << sql << ": " << store.message();
}

/// An open store with nothing in it. It keeps its log while it is open.
inline FileConnection newStore(const fs::path& file) {
  fs::create_directories(file.parent_path());
  std::ofstream(file) << "";
  auto store = FileConnection::writing(file);
  execute(store, "PRAGMA synchronous=OFF");
  EXPECT_TRUE(createSchema(store.get()));
  execute(store, "PRAGMA journal_mode=WAL");
  return store;
}

/// `count` spans of ten seconds one after the other from `start` on, each with its number in its
/// title and address; some projects, rules and settings.
inline void fillStore(const FileConnection& store, int count, int start = 1'000'000) {
  execute(store, fmt::format(
                     "BEGIN; WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                     "WHERE i < {}) INSERT INTO events(start,end,app,bundle,title,url,domain,idle) "
                     "SELECT {} + i*10 + 0.25, {} + i*10 + 10.25, 'Éditeur', 'app.editor', "
                     "'Titre-' || i || '.', 'https://exemple.fr/' || i || '.', 'exemple.fr', "
                     "i % 20 = 0 FROM n; COMMIT",
                     count, start, start));
  execute(store,
          "INSERT OR IGNORE INTO projects(name, category) VALUES ('Été','travail'), ('B','loisir');"
          "INSERT INTO rules(field, pattern, category) VALUES ('app','edit','travail'), "
          "('domain','exemple.fr','loisir');"
          "INSERT OR REPLACE INTO settings VALUES ('privacy_mode','domain'), ('paused','0')");
}

/// Every row of a query as one text each; the error as the last one.
inline Texts rowsOf(const FileConnection& store, const std::string& sql) {
  Texts rows;
  const int code = store.each(sql, {}, [&](const Cursor& row) {
    std::string text;
    for (int i = 0; i < row.columns(); ++i) {
      const auto value = row.value(i);
      if (value.integer()) text += fmt::format("{}|", *value.integer());
      if (value.real()) text += fmt::format("{}|", *value.real());
      if (value.text()) text += *value.text() + "|";
      if (value.isNull()) text += "-|";
    }
    rows.push_back(text);
  });
  if (code != SQLITE_DONE) rows.push_back("error: " + store.message());
  return rows;
}

inline Texts rowsOf(const fs::path& file, const std::string& sql) {
  return rowsOf(FileConnection::reading(file), sql);
}

}  // namespace orvanta::test
