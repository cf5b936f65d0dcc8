#include "tray/menu.h"

#include <array>
#include <string_view>
#include <utility>

#include "base/text.h"

namespace orvanta::tray {
namespace {

// A single underscore would underline the letter after it.
std::string escaped(const std::string& text) {
  std::string label;
  for (const char c : validUtf8(text)) label.append(c == '_' ? 2 : 1, c);
  return label;
}

}  // namespace

MenuItem::MenuItem(Kind kind) : item_(dbusmenu_menuitem_new()) {
  if (kind == Kind::Separator) dbusmenu_menuitem_property_set(get(), "type", "separator");
  g_signal_connect(get(), DBUSMENU_MENUITEM_SIGNAL_ITEM_ACTIVATED, G_CALLBACK(&MenuItem::activated),
                   this);
}

MenuItem::~MenuItem() {
  g_signal_handlers_disconnect_by_data(get(), this);
}

void MenuItem::activated(DbusmenuMenuitem* item, guint /*timestamp*/, gpointer self) {
  const auto* menuItem = static_cast<MenuItem*>(self);
  if (menuItem->action_ &&
      dbusmenu_menuitem_property_get_bool(item, DBUSMENU_MENUITEM_PROP_ENABLED) &&
      dbusmenu_menuitem_property_get_bool(item, DBUSMENU_MENUITEM_PROP_VISIBLE)) {
    const auto action = menuItem->action_;  // may replace or destroy the item
    action();
  }
}

gboolean MenuItem::happened(DbusmenuMenuitem* /*item*/, const char* event, GVariant* /*data*/,
                            guint /*timestamp*/, gpointer self) {
  if (std::string_view(event) == DBUSMENU_MENUITEM_EVENT_OPENED) {
    static_cast<MenuItem*>(self)->opened_();
  }
  return FALSE;
}

void MenuItem::onOpened(std::function<void()> action) {
  opened_ = std::move(action);
  g_signal_connect(get(), DBUSMENU_MENUITEM_SIGNAL_EVENT, G_CALLBACK(&MenuItem::happened), this);
}

void MenuItem::setLabel(const std::string& text) {
  dbusmenu_menuitem_property_set(get(), DBUSMENU_MENUITEM_PROP_LABEL, escaped(text).c_str());
}

void MenuItem::setEnabled(bool enabled) {
  dbusmenu_menuitem_property_set_bool(get(), DBUSMENU_MENUITEM_PROP_ENABLED, enabled);
}

void MenuItem::setVisible(bool visible) {
  dbusmenu_menuitem_property_set_bool(get(), DBUSMENU_MENUITEM_PROP_VISIBLE, visible);
}

void MenuItem::setChosen(bool chosen) {
  dbusmenu_menuitem_property_set(get(), DBUSMENU_MENUITEM_PROP_TOGGLE_TYPE,
                                 DBUSMENU_MENUITEM_TOGGLE_RADIO);
  dbusmenu_menuitem_property_set_int(
      get(), DBUSMENU_MENUITEM_PROP_TOGGLE_STATE,
      chosen ? DBUSMENU_MENUITEM_TOGGLE_STATE_CHECKED : DBUSMENU_MENUITEM_TOGGLE_STATE_UNCHECKED);
}

void MenuItem::setKey(const char* key) {
  // A list of combinations, each a list of keys.
  const std::array combination{DBUSMENU_MENUITEM_SHORTCUT_CONTROL, key};
  auto* keys = g_variant_new_strv(combination.data(), combination.size());
  dbusmenu_menuitem_property_set_variant(get(), DBUSMENU_MENUITEM_PROP_SHORTCUT,
                                         g_variant_new_array(G_VARIANT_TYPE("as"), &keys, 1));
}

void MenuItem::append(MenuItem& child) {
  dbusmenu_menuitem_child_append(get(), child.get());
}

void MenuItem::clear() {
  auto* children = dbusmenu_menuitem_take_children(get());
  g_list_free_full(children, g_object_unref);
}

MenuServer::MenuServer(const char* path, const MenuItem& menu)
    : server_(dbusmenu_server_new(path)) {
  dbusmenu_server_set_root(server_.get(), menu.get());
}

}  // namespace orvanta::tray
