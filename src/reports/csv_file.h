// The export as a file.
#pragma once

#include <filesystem>
#include <string>

#include "reports/analytics.h"

namespace orvanta {

inline constexpr auto kUnreadable = "une partie du fichier des données est illisible";

/// Whether an export is where it was wanted, and all of it.
struct CsvWritten {
  std::string problem;  ///< why it is not, as WholeFile tells, or kUnreadable; "" when it is

  explicit operator bool() const { return problem.empty(); }
};

/// Writes the spans of the days `from` to `to` to `file`, which only the user may read. The file
/// appears, or changes, when it is complete; when that fails, a file that was there stays as it
/// was. For links, pipes and devices see WholeFile.
CsvWritten writeCsv(const Analytics& analytics, const Date& from, const Date& to,
                    const std::filesystem::path& file);
/// The same of the spans that have all the words of a search.
CsvWritten writeFoundCsv(const Analytics& analytics, const std::string& text,
                         const std::filesystem::path& file);

}  // namespace orvanta
