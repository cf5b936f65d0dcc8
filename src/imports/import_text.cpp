#include "imports/import_text.h"

#include <fcntl.h>
#include <glib.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "base/owned_fd.h"
#include "base/whole_file.h"
#include "imports/imported.h"

namespace orvanta {
namespace {

std::string converted(std::string_view bytes, const char* charset) {
  gsize size = 0;
  const std::unique_ptr<char, decltype(&g_free)> text(
      g_convert_with_fallback(bytes.data(), static_cast<gssize>(bytes.size()), "UTF-8", charset,
                              "?", nullptr, &size, nullptr),
      g_free);
  return text ? std::string(text.get(), size) : std::string();
}

ImportText refused(const char* problem) {
  return {{}, problem};
}

}  // namespace

ImportText importText(const std::filesystem::path& path) {
  // A pipe would keep us waiting.
  const OwnedFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat about{};
  if (!file || fstat(file.get(), &about) != 0) return {{}, reasonOf(errno)};
  if (!S_ISREG(about.st_mode)) return refused("ce n’est pas un fichier");
  std::string bytes;
  constexpr std::size_t kPiece = 65536;
  for (;;) {
    const auto at = bytes.size();
    bytes.resize(at + kPiece);
    const auto got = read(file.get(), bytes.data() + at, kPiece);
    if (got < 0) return {{}, reasonOf(errno)};
    bytes.resize(at + static_cast<std::size_t>(got));
    if (got == 0) break;
    if (bytes.size() > kLargestImport) return refused("trop gros\u00a0: 20 Mo au plus");
  }
  return importText(std::string_view(bytes));
}

ImportText importText(std::string_view bytes) {
  constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
  if (bytes.size() > kLargestImport) return refused("trop gros\u00a0: 20 Mo au plus");
  std::string text;
  if (bytes.starts_with("\xff\xfe") || bytes.starts_with("\xfe\xff")) {
    text = converted(bytes, "UTF-16");
    if (text.empty()) return refused("ce n’est pas du texte");
  } else if (g_utf8_validate(bytes.data(), static_cast<gssize>(bytes.size()), nullptr) != FALSE) {
    text = bytes;
  } else if (bytes.find('\0') == std::string_view::npos) {
    text = converted(bytes, "WINDOWS-1252");
  }
  if (text.starts_with(kUtf8Mark)) text.erase(0, kUtf8Mark.size());
  if (text.find('\0') != std::string::npos) return refused("ce n’est pas du texte");
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
    return refused(bytes.empty() ? "ce fichier est vide" : "ce n’est pas du texte");
  }
  return {std::move(text), {}};
}

}  // namespace orvanta
