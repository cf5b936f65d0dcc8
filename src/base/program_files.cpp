#include "base/program_files.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;

fs::path ownFolder() {
  std::error_code unknown;
  return fs::read_symlink("/proc/self/exe", unknown).parent_path();
}

fs::path firstThatExists(const fs::path& first, const fs::path& second) {
  std::error_code ignored;
  return fs::exists(first, ignored) || !fs::exists(second, ignored) ? first : second;
}

}  // namespace

fs::path ownProgram(std::string_view name) {
  const auto folder = ownFolder();
  return firstThatExists(folder / name, folder.parent_path() / "libexec" / name);
}

fs::path ownData(std::string_view name) {
  const auto folder = ownFolder();
  const auto inside = fs::path("share") / "orvanta" / name;
  return firstThatExists(folder.parent_path() / inside, folder / inside);
}

}  // namespace orvanta
