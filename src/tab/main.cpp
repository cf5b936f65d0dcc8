// orvanta-tab: the active tab of a browser. One program with two sides that meet at a socket: what
// the browser starts for our extension, and what Orvanta starts to ask.
#include <chrono>
#include <cstdio>
#include <string_view>
#include <vector>

#include "base/number.h"
#include "tab/native_host.h"
#include "tab/query.h"

namespace {

using namespace orvanta;

constexpr auto kUsage =
    "Usage : orvanta-tab --tab NAVIGATEUR [PROCESSUS]   affiche l’adresse et le titre de l’onglet\n"
    "        orvanta-tab --test NAVIGATEUR [SECONDES]   attend que le navigateur soit connecté\n"
    "Les navigateurs démarrent eux-mêmes ce programme pour l’extension.\n";

// Chromium names the extension's origin, Firefox the manifest and the extension.
bool startedByBrowser(const std::vector<std::string_view>& words) {
  return !words.empty() && (words[0].starts_with("chrome-extension://") ||
                            (words.size() > 1 && words[0].ends_with(".json")));
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string_view> words(argv + 1, argv + argc);
  if (startedByBrowser(words)) return runNativeHost();
  if (words.size() == 2 && words[0] == "--tab") return printTab(words[1], {});
  if (words.size() == 3 && words[0] == "--tab") {
    if (const auto pid = parseNumber<int>(words[2]); pid && *pid > 0)
      return printTab(words[1], pid);
  }
  if (words.size() == 2 && words[0] == "--test") return testTab(words[1]);
  if (words.size() == 3 && words[0] == "--test") {
    if (const auto seconds = parseNumber<int>(words[2]); seconds && *seconds >= 0)
      return testTab(words[1], std::chrono::seconds(*seconds));
  }
  std::fputs(kUsage, stderr);
  return 2;
}
