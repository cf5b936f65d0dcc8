// `orvanta --import FILE`.
#pragma once

#include <string>
#include <vector>

namespace orvanta {

/// Imports a file, after it has told month by month what that does, and how it is taken back.
/// Yields the exit status: 0, 1 when nothing was imported, 2 for wrong words; the reason is on
/// standard error, in French.
int importCommand(const std::vector<std::string>& words);

}  // namespace orvanta
