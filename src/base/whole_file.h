// A file that the user asks for: all of it or nothing.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include "base/owned_fd.h"

namespace orvanta {

/// Why something could not be written, in French: a few words that follow a colon.
std::string reasonOf(int error);

/// Writes a file that only the user may read, and that appears, or changes, when it is complete and
/// on the disk. Until then it has no name, so nothing is left of it however the process ends; on
/// file systems that know no such files it has a hidden one, which only a kill leaves behind.
///
/// A symbolic link is followed when it is the user's own or the system's, in a folder that nobody
/// else can write: any other may be planted to have a file of the user replaced. A pipe or a device
/// is written to, not replaced, under the same condition. Not thread-safe.
class WholeFile {
 public:
  /// `named` begins with a hidden name at once.
  explicit WholeFile(const std::filesystem::path& path, bool named = false);
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Does nothing once there is a problem.
  void write(std::string_view text);

  /// The last step. Yields why there is no such file, in French; "" when there is.
  std::string finish();

  /// As finish() yields it, so far.
  const std::string& problem() const { return problem_; }

 private:
  struct Close {
    void operator()(std::FILE* file) const {
      std::fclose(file);  // NOLINT(cppcoreguidelines-owning-memory)
    }
  };

  void find(std::filesystem::path path);
  void open(bool named);
  bool openNameless();
  void openNamed();
  void openThrough();
  bool putInPlace();
  bool failed(int error);

  OwnedFd folder_;        // that of the file, whatever happens to its path
  std::string name_;      // in the folder
  bool through_ = false;  // what is there is written to
  std::string hidden_;    // the name until it is complete; "" while it has none
  std::unique_ptr<std::FILE, Close> stream_;
  std::string problem_;
};

}  // namespace orvanta
