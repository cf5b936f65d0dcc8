#include "dashboard/window_size.h"

#include <glib/gstdio.h>
#include <glibmm/fileutils.h>
#include <glibmm/keyfile.h>
#include <glibmm/miscutils.h>

#include <algorithm>
#include <cmath>

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
  constexpr int kLeast = 100;
  constexpr int kMost = 16384;
  const auto state = Glib::KeyFile::create();
  try {
    state->load_from_file(file().string());
    // Not in the files of the first versions.
    const double zoom = state->has_key(kGroup, "zoom") ? state->get_double(kGroup, "zoom") : 1;
    return {.width = std::clamp(state->get_integer(kGroup, "width"), kLeast, kMost),
            .height = std::clamp(state->get_integer(kGroup, "height"), kLeast, kMost),
            .maximized = state->get_boolean(kGroup, "maximized"),
            .zoom = std::isfinite(zoom) ? zoom : 1};
  } catch (const Glib::Error&) {
    return {};
  }
}

void saveWindowSize(const WindowSize& size) {
  const auto state = Glib::KeyFile::create();
  state->set_integer(kGroup, "width", size.width);
  state->set_integer(kGroup, "height", size.height);
  state->set_boolean(kGroup, "maximized", size.maximized);
  state->set_double(kGroup, "zoom", size.zoom);
  writeOwnFile(file(), state->to_data());
}

}  // namespace orvanta
