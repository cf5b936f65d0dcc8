// Files as they lie on the disk, and a folder to put them in.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "storage/data_location.h"
#include "support/texts.h"

namespace orvanta::test {

namespace fs = std::filesystem;

class TempFolder {
 public:
  /// One that is there and stays.
  explicit TempFolder(fs::path kept) : path_(std::move(kept)), kept_(true) {}
  TempFolder() {
    auto pattern = (fs::temp_directory_path() / "orvanta-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
  }
  ~TempFolder() {
    std::error_code ignored;
    if (!kept_) fs::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const fs::path& path() const { return path_; }
  DataLocation location() const { return DataLocation::under(path_); }

 private:
  fs::path path_;
  bool kept_ = false;
};

/// Empty where there is no file.
inline std::string bytesIn(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The permissions; 0 where there is nothing.
inline unsigned modeOf(const fs::path& path) {
  struct stat info{};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

/// Damages a file from this byte on.
inline void overwrite(const fs::path& file, std::size_t at, const std::string& bytes) {
  std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
  stream.seekp(static_cast<std::streamoff>(at));
  stream << bytes;
}

/// The names in a folder, in order.
inline Texts namesIn(const fs::path& folder) {
  Texts names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

/// Files in and below a folder that hold a text anywhere in their bytes.
inline Texts filesHolding(const fs::path& folder, const std::string& text) {
  Texts found;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file() && bytesIn(entry.path()).find(text) != std::string::npos) {
      found.push_back(entry.path().filename());
    }
  }
  return found;
}

}  // namespace orvanta::test
