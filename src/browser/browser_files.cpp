// Run by the build: writes what the package brings for browsers, so that one more in the table is
// enough. From the page's template and the folder with a manifest for each kind it makes the page
// that names the browsers, and the folder of manifests where each looks for everybody's.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "browser/browsers.h"

namespace {

using namespace orvanta;
namespace fs = std::filesystem;

std::string namesOf(BrowserKind kind) {
  std::string names;
  for (const auto& browser : browsers()) {
    if (browser.kind != kind || !browser.takesExtension()) continue;
    names += (names.empty() ? "" : ", ") + std::string(browser.name);
  }
  return names;
}

void makePage(const fs::path& source, const fs::path& page) {
  std::ifstream file(source);
  std::string text(std::istreambuf_iterator<char>(file), {});
  for (const auto& [mark, kind] : {std::pair("@chromium@", BrowserKind::kChromium),
                                   std::pair("@firefox@", BrowserKind::kFirefox)}) {
    const std::string_view old = mark;
    text.replace(text.find(old), old.size(), namesOf(kind));
  }
  std::ofstream made;
  made.exceptions(std::ios::badbit | std::ios::failbit);
  made.open(page);
  made << text;
}

void makeManifests(const fs::path& kinds, const fs::path& folder) {
  for (const auto& browser : browsers()) {
    if (browser.everybody.empty()) continue;
    const bool firefox = browser.kind == BrowserKind::kFirefox;
    const auto place = folder / browser.everybody / "native-messaging-hosts";
    fs::create_directories(place);
    fs::copy_file(kinds / (firefox ? "firefox.json" : "chromium.json"), place / kTabManifest,
                  fs::copy_options::overwrite_existing);
  }
}

}  // namespace

int main(int /*argc*/, char** argv) {
  makePage(argv[1], argv[2]);
  makeManifests(argv[3], argv[4]);
}
