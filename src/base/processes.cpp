#include "base/processes.h"

#include <sys/stat.h>

#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "base/number.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;

fs::path folderOf(int32_t pid) {
  return fs::path("/proc") / std::to_string(pid);
}

std::string contents(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The fields of /proc/PID/stat from the third on: the second may contain anything.
std::optional<std::vector<std::string>> statusFields(int32_t pid) {
  const auto text = contents(folderOf(pid) / "stat");
  const auto name = text.rfind(')');
  if (name == std::string::npos) return {};
  std::istringstream rest(text.substr(name + 1));
  return std::vector<std::string>(std::istream_iterator<std::string>(rest), {});
}

}  // namespace

std::string programOf(int32_t pid) {
  std::error_code gone;
  auto path = fs::read_symlink(folderOf(pid) / "exe", gone).string();
  constexpr std::string_view kReplaced = " (deleted)";  // by an update, while it runs
  if (path.ends_with(kReplaced)) path.resize(path.size() - kReplaced.size());
  return path;
}

std::string commandNameOf(int32_t pid) {
  auto name = contents(folderOf(pid) / "comm");
  if (name.ends_with('\n')) name.pop_back();
  return name;
}

std::vector<std::string> commandLineOf(int32_t pid) {
  std::vector<std::string> words;
  std::istringstream text(contents(folderOf(pid) / "cmdline"));
  for (std::string word; std::getline(text, word, '\0');) words.push_back(word);
  return words;
}

std::map<std::string, std::string> openFilesOf(int32_t pid) {
  std::map<std::string, std::string> paths;
  std::error_code gone;
  for (fs::directory_iterator file(folderOf(pid) / "fd", gone), end; !gone && file != end;
       file.increment(gone)) {
    std::error_code closed;
    paths[file->path()] = fs::read_symlink(file->path(), closed).string();
  }
  return paths;
}

std::optional<int32_t> parentOf(int32_t pid) {
  constexpr std::size_t kParent = 1;
  const auto fields = statusFields(pid);
  return fields && fields->size() > kParent ? parseNumber<int32_t>((*fields)[kParent])
                                            : std::nullopt;
}

std::optional<double> ageOf(int32_t pid) {
  constexpr std::size_t kStart = 19;  // in clock ticks since the machine started
  const auto fields = statusFields(pid);
  const auto start =
      fields && fields->size() > kStart ? parseNumber<uint64_t>((*fields)[kStart]) : std::nullopt;
  if (!start) return {};
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  constexpr double kNanoseconds = 1e9;
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / kNanoseconds -
         static_cast<double>(*start) / static_cast<double>(sysconf(_SC_CLK_TCK));
}

std::vector<int32_t> ownProcesses() {
  std::vector<int32_t> found;
  std::error_code failed;
  for (fs::directory_iterator entry("/proc", failed), end; !failed && entry != end;
       entry.increment(failed)) {
    const auto pid = parseNumber<int32_t>(entry->path().filename().string());
    struct stat facts{};
    if (pid && stat(entry->path().c_str(), &facts) == 0 && facts.st_uid == getuid()) {
      found.push_back(*pid);
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

}  // namespace orvanta
