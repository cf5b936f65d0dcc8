// Files as a whole: copied, made durable, renamed without a loss.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>

namespace orvanta {

/// Makes what was written to a file, or the names in a folder, survive a loss of power. Not for an
/// open SQLite database: closing a descriptor frees every lock that this process holds on the file.
bool syncToDisk(const std::filesystem::path& fileOrFolder);

/// Copies the bytes of `from` to the new file `to`, which only the user may read. What the disk
/// cannot read is filled with zeros. False when `to` exists or could not be written whole; nothing
/// is left of it then. Not for a database that this process has open, see syncToDisk().
bool copyWhatIsReadable(const std::filesystem::path& from, const std::filesystem::path& to);

/// Makes an empty file that only the user may read, whatever the umask. False, with errno, when it
/// exists or cannot be made.
bool makeNewFile(const std::filesystem::path& file);

/// Renames, unless something has the name `to` already: false, with errno EEXIST.
bool renameToNew(const std::filesystem::path& from, const std::filesystem::path& to);

/// Tells the bytes that the user may still write to the disk of a folder; absent when unknown.
using FreeSpace = std::function<std::optional<uint64_t>(const std::filesystem::path& folder)>;

/// On the real system.
std::optional<uint64_t> freeSpace(const std::filesystem::path& folder);

/// The bytes of a file; 0 when there is none.
uint64_t bytesOf(const std::filesystem::path& file);

/// A folder of our own that only the user may read, gone with the object.
class ScratchFolder {
 public:
  /// Its name is `prefix` and six letters; absent when it cannot be made.
  static std::optional<ScratchFolder> make(const std::filesystem::path& prefix);

  ScratchFolder(ScratchFolder&& other) noexcept;
  ScratchFolder& operator=(ScratchFolder&&) = delete;
  ~ScratchFolder();

  const std::filesystem::path& path() const { return path_; }

 private:
  explicit ScratchFolder(std::filesystem::path path) : path_(std::move(path)) {}
  std::filesystem::path path_;
};

}  // namespace orvanta
