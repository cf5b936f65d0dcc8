// One project of the user.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "storage/category.h"
#include "storage/statement.h"

namespace orvanta {

/// A row of `projects`.
struct Project {
  int64_t id = 0;
  std::string name;
  std::string color = "#3b82f6";                    ///< CSS colour
  std::string category{textOf(Category::Travail)};  ///< what time on this project counts as
  bool archived = false;
  std::vector<std::string> keywords;  ///< see parseKeywords
  std::string client;                 ///< "" for none

  /// Of a row with any columns.
  static Project read(const Cursor& row);
};

/// By id, archived ones included.
using Projects = std::map<int64_t, Project>;

/// Gives the clients whose names differ in case, accents or blanks around them alone the spelling
/// of the project that was made first, without them. Nothing is stored.
void spellClientsAlike(Projects& projects);

/// The keywords of a comma-separated list: trimmed of spaces and tabs, lower-cased, in order. Those
/// of fewer than 3 characters would catch everything and are left out.
std::vector<std::string> parseKeywords(std::string_view list);

}  // namespace orvanta
