// The spans of a range of days as a file: `orvanta --export FROM TO [FILE]`.
#pragma once

#include <string>
#include <vector>

#include "reports/analytics.h"

namespace orvanta {

/// Writes the CSV of the days `words[0]` to `words[1]` ("yyyy-MM-dd", both included) to the file
/// `words[2]`, made readable by its owner only, or to standard output. Yields the exit status: 0, 1
/// when it could not be written, 2 when the words are wrong; both with a French message on standard
/// error.
int exportCsvFile(const Analytics& analytics, const std::vector<std::string>& words);

}  // namespace orvanta
