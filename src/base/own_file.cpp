#include "base/own_file.h"

#include <glib.h>

#include <cerrno>
#include <memory>

namespace orvanta {

std::optional<std::string> writeOwnFile(const std::filesystem::path& file,
                                        const std::string& text) {
  constexpr int kFolder = 0700;
  constexpr int kFile = 0600;
  const auto folder = file.parent_path();
  if (g_mkdir_with_parents(folder.c_str(), kFolder) != 0) {
    return folder.string() + " : " + g_strerror(errno);
  }
  GError* raw = nullptr;
  if (g_file_set_contents_full(file.c_str(), text.data(), static_cast<gssize>(text.size()),
                               G_FILE_SET_CONTENTS_CONSISTENT, kFile, &raw) != FALSE) {
    return {};
  }
  const std::unique_ptr<GError, decltype(&g_error_free)> error(raw, g_error_free);
  return error->message;
}

}  // namespace orvanta
