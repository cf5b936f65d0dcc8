// Where the page lies and what of it may be read.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace orvanta {

/// A file of the page.
struct PageFile {
  std::filesystem::path path;
  std::string mimeType;
};

/// The folder with index.html: "Web" beside the program where it was built, else where it is
/// installed; `$ORVANTA_WEB` for those who work on the page.
std::filesystem::path pageFolder();

/// The file of the page with this path ("/index.html"). Absent when there is none: nothing outside
/// the folder is one, whatever dots and links the path goes through.
std::optional<PageFile> pageFile(const std::filesystem::path& folder, std::string_view path);

}  // namespace orvanta
