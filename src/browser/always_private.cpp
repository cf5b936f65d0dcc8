// Firefox without a history: permanent private browsing.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "base/processes.h"
#include "browser/browsers.h"

namespace orvanta {
namespace {

// The profile is where the history would be; Firefox writes what the user chose beside it, a line
// each, and reads it only when it starts.
bool keepsNoHistory(const std::filesystem::path& profile) {
  std::ifstream file(profile / "prefs.js", std::ios::binary);
  const std::string settings(std::istreambuf_iterator<char>(file), {});
  return settings.find(R"(user_pref("browser.privatebrowsing.autostart", true);)") !=
         std::string::npos;
}

}  // namespace

bool isAlwaysPrivate(int32_t pid) {
  const auto words = commandLineOf(pid);
  const auto files = openFilesOf(pid);
  return std::any_of(
             words.begin(), words.end(),
             [](const std::string& word) { return word == "-private" || word == "--private"; }) ||
         std::any_of(files.begin(), files.end(), [](const std::string& file) {
           return file.ends_with("/places.sqlite") &&
                  keepsNoHistory(std::filesystem::path(file).parent_path());
         });
}

}  // namespace orvanta
