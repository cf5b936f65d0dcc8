// Leaves nothing of what was deleted from a store file.
#pragma once

#include <filesystem>

namespace orvanta {

/// Fills every byte of the file that holds no data with zeros. SQLite's own secure deletion does
/// not reach the copies that stay behind when rows move from one page to another. Killed at any
/// moment the file is as good as before, since no byte in use is written. For a file without
/// write-ahead log that nobody else has open. False when it could not be read or written.
bool scrubUnusedBytes(const std::filesystem::path& file);

}  // namespace orvanta
