// What the profile of a Firefox says, and one without a history: permanent private browsing.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/processes.h"
#include "browser/browsers.h"

namespace orvanta {
namespace {

bool holds(const std::filesystem::path& path, std::string_view line) {
  std::ifstream file(path, std::ios::binary);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  return text.find(line) != std::string::npos;
}

}  // namespace

// The profile is where the history would be; Firefox writes what the user chose beside it, a line
// each, and reads it only when it starts.
bool profileSays(int32_t pid, std::string_view line) {
  const auto files = openFilesOf(pid);
  return std::any_of(files.begin(), files.end(), [&](const std::string& file) {
    return file.ends_with("/places.sqlite") &&
           holds(std::filesystem::path(file).replace_filename("prefs.js"), line);
  });
}

bool isAlwaysPrivate(int32_t pid) {
  const auto words = commandLineOf(pid);
  return std::any_of(
             words.begin(), words.end(),
             [](const std::string& word) { return word == "-private" || word == "--private"; }) ||
         profileSays(pid, R"(user_pref("browser.privatebrowsing.autostart", true);)");
}

}  // namespace orvanta
