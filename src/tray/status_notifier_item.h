// The program's icon in the desktop's tray.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "base/main_thread.h"
#include "dbus/exported_object.h"
#include "dbus/service.h"

namespace orvanta::tray {

/// What the panel shows of the program.
struct Appearance {
  std::string iconName;         ///< in the icon theme
  std::string iconDescription;  ///< for those who do not see it
  std::string label;            ///< beside the icon, in panels that show labels; may be empty
  std::string toolTip;          ///< in panels that show tool tips

  friend bool operator==(const Appearance&, const Appearance&) = default;
};

/// A StatusNotifierItem as KDE defined it
/// (https://www.freedesktop.org/wiki/Specifications/StatusNotifierItem/), with the label that
/// Ayatana added and the activation tokens of Plasma's panel. Registers with the desktop's
/// org.kde.StatusNotifierWatcher when that appears, and again with the next when a panel restarts.
/// Main thread only.
class StatusNotifierItem {
 public:
  struct Identity {
    std::string id;             ///< the same in every session, for panels that remember places
    std::string title;          ///< the program's name
    std::string iconThemePath;  ///< folder that holds "hicolor"; empty for the system's alone
    std::string menuPath;       ///< where a MenuServer answers
    std::string labelGuide;     ///< the widest label, so that the panel need not move about
  };

  /// On the session bus. `activated` is called for a click that is not for the menu.
  StatusNotifierItem(const dbus::Bus& session, Identity identity, Appearance appearance,
                     std::function<void()> activated);

  /// Tells the panel what has changed; nothing when nothing has.
  void show(const Appearance& appearance);

  /// What lets a window of ours come to the front on Wayland: the token that the panel gave with
  /// the click which is being answered; "" where it gave none. Each only once.
  std::string takeActivationToken() { return std::exchange(activationToken_, {}); }

  /// Whether a panel shows the item now.
  bool shown() const { return registered_ && hosted_; }
  /// Is called when shown() has changed.
  void onShownChanged(std::function<void()> changed) { shownChanged_ = std::move(changed); }

 private:
  void called(const std::string& method, const dbus::Reply& arguments);
  Glib::VariantBase property(const std::string& name) const;
  void emit(const char* signal, const dbus::Reply& arguments = {});
  void registerItem();
  void askForHost();
  void setShown(bool registered, bool hosted);

  const Identity identity_;
  Appearance appearance_;
  std::string activationToken_;
  std::function<void()> activated_;
  std::function<void()> shownChanged_;
  dbus::ExportedObject object_;
  dbus::Service watcher_;
  bool registered_ = false;
  bool hosted_ = false;
  MainThread mainThread_;
};

}  // namespace orvanta::tray
