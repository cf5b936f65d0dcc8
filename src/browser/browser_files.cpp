// Run by the build: writes what the package brings for browsers, so that one more in the table is
// enough. From the page's template and the folder with a manifest for each kind it makes the page
// that names the browsers, and the folder of manifests where each looks for everybody's; from the
// files of the extension, its archive.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <span>
#include <string>

#include "browser/browsers.h"
#include "browser/extension_archive.h"

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

std::string contents(const fs::path& path) {
  std::ifstream file;
  file.exceptions(std::ios::badbit | std::ios::failbit);
  file.open(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void write(const fs::path& path, const std::string& text) {
  std::ofstream made;
  made.exceptions(std::ios::badbit | std::ios::failbit);
  made.open(path, std::ios::binary);
  made << text;
}

void makePage(const fs::path& source, const fs::path& page) {
  auto text = contents(source);
  for (const auto& [mark, kind] : {std::pair("@chromium@", BrowserKind::kChromium),
                                   std::pair("@firefox@", BrowserKind::kFirefox)}) {
    const std::string_view old = mark;
    text.replace(text.find(old), old.size(), namesOf(kind));
  }
  write(page, text);
}

void makeArchive(const fs::path& archive, std::span<char*> paths) {
  std::map<std::string, std::string> files;
  for (const fs::path path : paths) files[path.filename().string()] = contents(path);
  write(archive, archiveOf(files));
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

int main(int count, char** words) {
  const std::span arguments(words, static_cast<std::size_t>(count));
  if (std::string_view(arguments[1]) == "--archive") {
    makeArchive(arguments[2], arguments.subspan(3));
    return 0;
  }
  makePage(arguments[1], arguments[2]);
  makeManifests(arguments[3], arguments[4]);
}
