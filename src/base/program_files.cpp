#include "base/program_files.h"

#include <unistd.h>

#include "base/processes.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;

fs::path firstThatExists(const fs::path& first, const fs::path& second) {
  std::error_code ignored;
  return fs::exists(first, ignored) || !fs::exists(second, ignored) ? first : second;
}

}  // namespace

fs::path ownProgram() {
  return programOf(getpid());
}

fs::path ownProgram(std::string_view name) {
  const auto folder = ownProgram().parent_path();
  return firstThatExists(folder / name, folder.parent_path() / "libexec" / name);
}

fs::path ownShared(const fs::path& inside) {
  const auto folder = ownProgram().parent_path();
  return firstThatExists(folder.parent_path() / "share" / inside, folder / "share" / inside);
}

fs::path ownData(std::string_view name) {
  return ownShared(fs::path("orvanta") / name);
}

}  // namespace orvanta
