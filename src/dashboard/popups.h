// Menus and tips over the window.
#pragma once

#include <gdkmm/display.h>
#include <gtkmm/cssprovider.h>
#include <sigc++/connection.h>

namespace orvanta {

/// Draws them without round corners and shadows while nothing composes the screen, as under a bare
/// window manager on X11: what is to be seen through would be black. Main thread.
class Popups {
 public:
  Popups();
  ~Popups();
  Popups(const Popups&) = delete;
  Popups& operator=(const Popups&) = delete;

 private:
  void adapt();

  const Glib::RefPtr<Gdk::Display> display_ = Gdk::Display::get_default();
  const Glib::RefPtr<Gtk::CssProvider> square_ = Gtk::CssProvider::create();
  sigc::connection composed_;
};

}  // namespace orvanta
