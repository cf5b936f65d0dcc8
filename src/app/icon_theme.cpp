#include "app/icon_theme.h"

#include <filesystem>
#include <system_error>

namespace orvanta {

std::string iconThemePath() {
  namespace fs = std::filesystem;
  std::error_code error;
  const auto program = fs::read_symlink("/proc/self/exe", error).parent_path();
  if (error) return {};
  for (const auto& share : {program.parent_path() / "share", program / "share"}) {
    if (fs::is_directory(share / "icons/hicolor/symbolic/apps", error) &&
        fs::exists(share / "icons/hicolor/symbolic/apps/fr.quellvane.orvanta-symbolic.svg",
                   error)) {
      return share / "icons";
    }
  }
  return {};
}

}  // namespace orvanta
