// A desktop file, which any program may install.
#include <giomm/init.h>

#include <filesystem>
#include <fstream>

#include "base/cut.h"
#include "classify/desktop_categories.h"
#include "fuzz/fuzz.h"
#include "platform/desktop_entries.h"
#include "support/files.h"

// GLib forgets a little of some files that it refuses.
extern "C" const char* __lsan_default_suppressions();  // NOLINT: the sanitizer's name
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libglib-2.0";
}

namespace orvanta::fuzz {
namespace {

constexpr auto kId = "org.example.Fuzz";

// The folder is scanned once, the file read each time.
const std::filesystem::path& file() {
  static const test::TempFolder folder;
  static const auto path = [] {
    Gio::init();
    const auto applications = folder.path() / "applications";
    std::filesystem::create_directories(applications);
    g_setenv("XDG_DATA_HOME", folder.path().c_str(), TRUE);
    g_setenv("XDG_DATA_DIRS", "/nonexistent", TRUE);
    auto made = applications / (std::string(kId) + ".desktop");
    std::ofstream(made) << "[Desktop Entry]\nType=Application\nName=Code\nExec=true\n";
    hold(DesktopEntries().find(kId).has_value(), "a plain file is found");
    return made;
  }();
  return path;
}

void check(const DesktopEntry& entry) {
  hold(entry.id == kId, "the file says nothing of its own id", entry.id);
  holdUtf8(entry.name, "a name is UTF-8");
  hold(entry.name.size() <= kLongestTitle, "a name is cut");
  for (const auto& category : entry.categories) {
    hold(!category.empty() && category.find(';') == std::string::npos, "a list is cut", category);
  }
  auto reversed = entry.categories;
  std::reverse(reversed.begin(), reversed.end());
  hold(categoryOf(entry.categories) == categoryOf(reversed), "any order says the same");
}

}  // namespace

void target(std::string_view input) {
  std::ofstream(file(), std::ios::binary | std::ios::trunc) << input;
  const auto entry = DesktopEntries().find(kId);
  if (entry) check(*entry);
  // By the window class that it claims, and by the end of its name.
  for (const auto* name : {"FuzzClass", "fuzz"}) {
    const auto claimed = DesktopEntries().find(name);
    if (claimed) hold(entry && claimed->name == entry->name, "it is the same application");
  }
}

}  // namespace orvanta::fuzz
