// What the documents say in tables, to be held against the program.
#pragma once

#include <map>
#include <set>
#include <sstream>
#include <string>

#include "support/files.h"
#include "support/places.h"

namespace orvanta::test {

/// Of a document in docs, under each heading "## …" the rows that begin with a name in backticks.
inline std::map<std::string, Texts> tablesOf(const std::string& document) {
  std::map<std::string, Texts> tables;
  std::string heading;
  std::istringstream text(bytesIn(std::string(kSourceFolder) + "/docs/" + document));
  for (std::string line; std::getline(text, line);) {
    if (line.starts_with("## ")) heading = line.substr(3);
    if (line.starts_with("| `")) tables[heading].push_back(line);
  }
  return tables;
}

/// The names in backticks in the first cells of these rows.
inline std::multiset<std::string> namesOf(const Texts& rows) {
  std::multiset<std::string> names;
  for (const auto& row : rows) {
    const auto cell = row.substr(0, row.find(" |", 2));
    for (auto at = cell.find('`'); at != std::string::npos;) {
      const auto end = cell.find('`', at + 1);
      names.insert(cell.substr(at + 1, end - at - 1));
      at = cell.find('`', end + 1);
    }
  }
  return names;
}

}  // namespace orvanta::test
