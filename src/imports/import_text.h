// The text of a file that somebody hands us.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace orvanta {

struct ImportText {
  std::string text;     ///< UTF-8 without byte order mark and NULs
  std::string problem;  ///< French; "" when it could be read
};

/// Only regular files, up to kLargestImport.
ImportText importText(const std::filesystem::path& file);

/// The same of bytes: UTF-8, UTF-16 with a byte order mark, else Windows-1252.
ImportText importText(std::string_view bytes);

}  // namespace orvanta
