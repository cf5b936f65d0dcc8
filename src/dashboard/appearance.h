// Light or dark, and high contrast, as the user has set the desktop.
#pragma once

#include <giomm/dbusproxy.h>
#include <gtkmm/widget.h>

#include <optional>

namespace orvanta {

/// Follows the desktop's "color-scheme" and "contrast" (the settings portal, which GNOME, KDE and
/// the wlroots desktops share) and the toolkit's theme. Light or dark is passed to the toolkit and
/// so to the page; high contrast, which the web engine does not know of, is marked in the page:
/// `data-contrast="more"` on its root. Without a portal the toolkit's theme decides.
class Appearance {
 public:
  /// `page` is the web view; it lives as long as this does.
  explicit Appearance(Gtk::Widget& page);
  ~Appearance();
  Appearance(const Appearance&) = delete;
  Appearance& operator=(const Appearance&) = delete;

 private:
  void follow();
  void readAtOnce(const char* key);
  void read(const char* key);
  void apply(const Glib::ustring& key, const Glib::VariantBase& wrapped);
  void applyScheme();
  bool moreContrast() const;
  void markContrast();

  Gtk::Widget& page_;
  const Glib::RefPtr<Gtk::Settings> settings_;
  const bool darkBefore_;  // before anything was told
  std::optional<bool> portalDark_;
  bool portalContrast_ = false;
  Glib::RefPtr<Gio::DBus::Proxy> portal_;
  sigc::connection themeChanged_;
  gulong contrastChanged_ = 0;
  gulong loaded_ = 0;
};

}  // namespace orvanta
