// The size that the user gave the window, and the page in it.
#pragma once

#include <filesystem>

namespace orvanta {

/// In pixels of the desktop.
struct WindowSize {
  int width = 1180;
  int height = 780;
  bool maximized = false;
  double zoom = 1;  ///< of the page
};

/// Remembered in a small file under `$XDG_STATE_HOME`; what cannot be read is the standard size,
/// what cannot be written is forgotten.
WindowSize loadWindowSize();
void saveWindowSize(const WindowSize& size);

/// `$XDG_STATE_HOME/orvanta`, also home to what the page keeps for itself. Made if need be, for
/// nobody but the user.
std::filesystem::path stateFolder();

}  // namespace orvanta
