// A menu that a panel shows for us: the items here, served as com.canonical.dbusmenu.
#pragma once

#include <libdbusmenu-glib/menuitem.h>
#include <libdbusmenu-glib/server.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/gobject_ref.h"

namespace orvanta::tray {

/// One line of a menu, or a submenu, or the menu itself. Setting what is already so sends nothing;
/// what is set between two turns of the main loop goes out together. Main thread only.
class MenuItem {
 public:
  enum class Kind { Normal, Separator };

  explicit MenuItem(Kind kind = Kind::Normal);
  ~MenuItem();
  MenuItem(const MenuItem&) = delete;
  MenuItem& operator=(const MenuItem&) = delete;

  /// Plain text, UTF-8: an underscore in it is an underscore.
  void setLabel(const std::string& text);
  void setEnabled(bool enabled);
  void setVisible(bool visible);
  /// Shows the item as one of which one is chosen.
  void setChosen(bool chosen);
  /// Control and this key, where the panel shows keys.
  void setKey(const char* key);
  /// Called when the user picks the item; not while it is disabled or hidden, whatever a panel
  /// sends.
  void onActivated(std::function<void()> action) { action_ = std::move(action); }

  /// Called when a panel has shown what is below the item.
  void onOpened(std::function<void()> action);

  /// At the end of the submenu. The child outlives its place there.
  void append(MenuItem& child);
  /// Empties the submenu.
  void clear();

  DbusmenuMenuitem* get() const { return item_.get(); }

 private:
  static void activated(DbusmenuMenuitem* item, guint timestamp, gpointer self);
  static gboolean happened(DbusmenuMenuitem* item, const char* event, GVariant* data,
                           guint timestamp, gpointer self);

  Ref<DbusmenuMenuitem> item_;
  std::function<void()> action_;
  std::function<void()> opened_;
};

/// Serves a menu on the session bus as long as it lives.
class MenuServer {
 public:
  /// At the object path `path`. The menu outlives the server.
  MenuServer(const char* path, const MenuItem& menu);

 private:
  Ref<DbusmenuServer> server_;
};

}  // namespace orvanta::tray
