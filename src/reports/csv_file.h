// The export as a file.
#pragma once

#include <filesystem>
#include <string>

#include "reports/analytics.h"

namespace orvanta {

/// Writes the spans of the days `from` to `to` to `file`, which only the user may read. The file
/// appears, or changes, when it is complete; false, and a file that was there stays as it was, when
/// that fails.
bool writeCsv(const Analytics& analytics, const std::string& from, const std::string& to,
              const std::filesystem::path& file);

}  // namespace orvanta
