#include "browser/private_profiles.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

#include "base/processes.h"
#include "browser/browsers.h"

namespace orvanta {
namespace {

constexpr std::string_view kNoHistory = R"(user_pref("browser.privatebrowsing.autostart", true);)";

using OpenFiles = std::map<std::string, std::string>;

// The profile is where the history would be.
OpenFiles historiesOf(int32_t pid) {
  auto files = openFilesOf(pid);
  std::erase_if(files, [](const auto& file) { return !file.second.ends_with("/places.sqlite"); });
  return files;
}

// Firefox writes what the user chose here, a line each, and reads it only when it starts.
std::filesystem::path settingsBeside(const std::string& history) {
  return std::filesystem::path(history).replace_filename("prefs.js");
}

bool oneSays(const OpenFiles& histories, std::string_view line) {
  return std::any_of(histories.begin(), histories.end(), [line](const auto& history) {
    std::ifstream file(settingsBeside(history.second), std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    return text.find(line) != std::string::npos;
  });
}

bool wasStartedPrivate(int32_t pid) {
  const auto words = commandLineOf(pid);
  return std::any_of(words.begin(), words.end(), [](const std::string& word) {
    return word == "-private" || word == "--private";
  });
}

std::string targetOf(const std::string& link) {
  std::error_code gone;
  return std::filesystem::read_symlink(link, gone).string();
}

PrivateProfiles::Version versionOf(const std::filesystem::path& path) {
  struct stat facts{};
  if (stat(path.c_str(), &facts) != 0) return {};
  return {facts.st_ino, facts.st_size, facts.st_mtim.tv_sec, facts.st_mtim.tv_nsec};
}

}  // namespace

bool profileSays(int32_t pid, std::string_view line) {
  return oneSays(historiesOf(pid), line);
}

bool PrivateProfiles::haveNoOthers(int32_t pid) {
  if (wasStartedPrivate(pid)) return true;
  const std::lock_guard lock(mutex_);
  if (seen_ && seen_->pid == pid && targetOf(seen_->link) == seen_->history &&
      versionOf(settingsBeside(seen_->history)) == seen_->settings) {
    return seen_->isPrivate;
  }
  seen_.reset();
  const auto histories = historiesOf(pid);
  if (histories.empty()) return false;
  const auto& [link, history] = *histories.begin();
  // The version before what it says: a later one is looked at again.
  const auto settings = versionOf(settingsBeside(history));
  const bool isPrivate = oneSays(histories, kNoHistory);
  // While it reads another profile, which of them is its own is not known.
  const bool alone = std::all_of(histories.begin(), histories.end(),
                                 [&](const auto& each) { return each.second == history; });
  if (alone) seen_ = {pid, link, history, settings, isPrivate};
  return isPrivate;
}

}  // namespace orvanta
