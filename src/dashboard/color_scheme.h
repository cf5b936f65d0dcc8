// Light or dark, as the user has set the desktop.
#pragma once

#include <giomm/dbusproxy.h>

namespace orvanta {

/// Follows the desktop's "color-scheme" (the settings portal, which GNOME, KDE and the wlroots
/// desktops share) and passes it to the toolkit and so to the page. Without a portal the toolkit's
/// own theme decides.
class ColorScheme {
 public:
  ColorScheme();

 private:
  void read();
  static void apply(const Glib::VariantBase& value);

  Glib::RefPtr<Gio::DBus::Proxy> portal_;
};

}  // namespace orvanta
