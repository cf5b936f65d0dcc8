// What another program has recorded, as a file tells it.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/enum_text.h"

namespace orvanta {

enum class ImportKind { Csv, Ics, Json };
template <>
inline constexpr std::array<std::string_view, 3> kTexts<ImportKind>{"csv", "ics", "json"};

/// Which column of a table is what.
enum class Column {
  Start,
  StartDate,  ///< where Start is a time of day
  End,
  EndDate,
  Duration,
  App,
  Title,
  Url,
  Domain,
  Category,
  Project
};
template <>
inline constexpr std::array<std::string_view, 11> kTexts<Column>{
    "start", "start_date", "end",    "end_date", "duration", "app",
    "title", "url",        "domain", "category", "project"};
using Mapping = std::map<Column, std::size_t>;

/// Texts are UTF-8 without NULs, "" where there is none.
struct ImportedEvent {
  double start = 0;  ///< Unix seconds
  double end = 0;    ///< after it
  std::string app;
  std::string title;
  std::string url;
  std::string domain;
  std::string category;
  std::string project;
};

/// What of a file is of no use, by the French reason.
struct Rejected {
  std::size_t count = 0;
  std::size_t line = 0;  ///< of the first, counted from 1; 0 where lines say nothing
};

struct Imported {
  struct Header {
    std::string name;
    std::vector<std::string> examples;
  };

  ImportKind kind = ImportKind::Csv;
  std::string problem;          ///< French: why there is nothing; "" when there is something
  std::vector<Header> columns;  ///< of a table
  Mapping mapping;
  bool monthFirst = false;  ///< 10/25/2026
  std::vector<ImportedEvent> events;
  std::map<std::string, Rejected> rejected;

  void reject(const std::string& reason, std::size_t line);
  /// Takes it over, or rejects it for what no span can be.
  void take(ImportedEvent event, std::size_t line);
};

/// More is refused: it would hold up everybody else for long.
inline constexpr std::size_t kMostImported = 200'000;
inline constexpr std::size_t kLargestImport = std::size_t{20} << 20U;  // bytes

}  // namespace orvanta
