// What the window shows before its page is there.
#pragma once

#include <gtkmm/cssprovider.h>
#include <gtkmm/settings.h>
#include <gtkmm/window.h>
#include <sigc++/connection.h>

namespace orvanta {

/// The page's outline in the window's background, light or dark as the desktop is: the web engine
/// takes a moment to start, and a blank window looks broken. It shows through the page until that
/// has drawn itself, and costs as long as it lives. The window outlives it.
class Skeleton {
 public:
  explicit Skeleton(Gtk::Window& window);
  ~Skeleton();
  Skeleton(const Skeleton&) = delete;
  Skeleton& operator=(const Skeleton&) = delete;

 private:
  Gtk::Window& window_;
  const Glib::RefPtr<Gtk::Settings> settings_;
  const Glib::RefPtr<Gtk::CssProvider> css_ = Gtk::CssProvider::create();
  sigc::connection changed_;
};

}  // namespace orvanta
