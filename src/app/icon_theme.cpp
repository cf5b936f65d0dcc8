#include "app/icon_theme.h"

#include <filesystem>
#include <system_error>

#include "base/program_files.h"

namespace orvanta {

std::string iconThemePath() {
  namespace fs = std::filesystem;
  const fs::path icon = "hicolor/symbolic/apps/fr.quellvane.orvanta-symbolic.svg";
  auto folder = ownShared("icons" / icon);
  std::error_code ignored;
  if (!fs::exists(folder, ignored)) return {};
  for (auto part = icon.begin(); part != icon.end(); ++part) folder = folder.parent_path();
  return folder;
}

}  // namespace orvanta
