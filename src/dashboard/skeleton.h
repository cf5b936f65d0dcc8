// What the window shows before its page is there.
#pragma once

#include <gtkmm/window.h>

namespace orvanta {

/// The page's outline in the window's background, light or dark as the desktop is: the web engine
/// takes a moment to start, and a blank window looks broken. It shows through the page until that
/// has drawn itself, and costs as long as it is on.
void showSkeleton(Gtk::Window& window, bool shown);

}  // namespace orvanta
