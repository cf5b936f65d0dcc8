#include "dashboard/page_files.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <system_error>

#include "base/program_files.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;

std::string mimeTypeOf(const fs::path& file) {
  struct Type {
    std::string_view extension, mime;
  };
  constexpr std::array<Type, 6> kTypes{{{".html", "text/html; charset=utf-8"},
                                        {".js", "text/javascript; charset=utf-8"},
                                        {".css", "text/css; charset=utf-8"},
                                        {".json", "application/json; charset=utf-8"},
                                        {".svg", "image/svg+xml; charset=utf-8"},
                                        {".png", "image/png"}}};
  const auto extension = file.extension().string();
  const auto* const found = std::find_if(
      kTypes.begin(), kTypes.end(), [&](const Type& type) { return type.extension == extension; });
  return std::string(found != kTypes.end() ? found->mime : "application/octet-stream");
}

}  // namespace

fs::path pageFolder() {
  if (const char* chosen = std::getenv("ORVANTA_WEB"); chosen && *chosen) return chosen;
  std::error_code ignored;
  const auto built = ownProgram().parent_path() / "Web";
  return fs::exists(built / "index.html", ignored) ? built : ownData("Web");
}

std::optional<PageFile> pageFile(const fs::path& folder, std::string_view path) {
  std::error_code missing;
  const auto root = fs::canonical(folder, missing);
  if (missing) return {};
  const auto file = fs::canonical(root / fs::path(path).relative_path(), missing);
  if (missing || !fs::is_regular_file(file, missing)) return {};
  const auto [rootEnd, inside] = std::mismatch(root.begin(), root.end(), file.begin(), file.end());
  if (rootEnd != root.end() || inside == file.end()) return {};
  return PageFile{file, mimeTypeOf(file)};
}

}  // namespace orvanta
