// Small files of the program's own.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace orvanta {

/// Writes a file that only the user may read, whatever the umask, and the folders that lead to it
/// where they are missing. The program's umask is left alone: what it starts for the user inherits
/// that. The file changes at once or not at all. Yields the reason, in the user's language, when it
/// does not. Any thread.
std::optional<std::string> writeOwnFile(const std::filesystem::path& file, const std::string& text);

}  // namespace orvanta
