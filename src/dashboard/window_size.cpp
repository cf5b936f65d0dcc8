#include "dashboard/window_size.h"

#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/keyfile.h>
#include <glibmm/miscutils.h>

#include <algorithm>

#include "base/own_file.h"

namespace orvanta {
namespace {

constexpr auto kGroup = "OrvantaMain";

std::filesystem::path file() {
  return stateFolder() / "window.ini";
}

}  // namespace

std::filesystem::path stateFolder() {
  auto folder = std::filesystem::path(g_get_user_state_dir()) / "orvanta";
  constexpr int kOnlyUser = 0700;
  g_mkdir_with_parents(folder.c_str(), kOnlyUser);
  return folder;
}

WindowSize loadWindowSize() {
  constexpr int kMost = 16384;
  const auto state = Glib::KeyFile::create();
  try {
    state->load_from_file(file().string());
    return {.width = std::clamp(state->get_integer(kGroup, "width"), kLeastWidth, kMost),
            .height = std::clamp(state->get_integer(kGroup, "height"), kLeastHeight, kMost),
            .maximized = state->get_boolean(kGroup, "maximized")};
  } catch (const Glib::Error&) {
    return {};
  }
}

void saveWindowSize(const WindowSize& size) {
  const auto state = Glib::KeyFile::create();
  state->set_integer(kGroup, "width", size.width);
  state->set_integer(kGroup, "height", size.height);
  state->set_boolean(kGroup, "maximized", size.maximized);
  writeOwnFile(file(), state->to_data());
}

}  // namespace orvanta
