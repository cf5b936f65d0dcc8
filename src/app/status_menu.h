// The status menu and the icon that it opens from.
#pragma once

#include <giomm/dbusconnection.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/menu_content.h"
#include "tray/menu.h"
#include "tray/status_notifier_item.h"

namespace orvanta {

/// Builds its items once; afterwards changes only what the facts have changed, and rebuilds the
/// list of projects only when there are other projects. Main thread only.
class StatusMenu {
 public:
  /// What the user can do here.
  struct Actions {
    std::function<void(std::optional<int64_t>)> pickProject;  ///< absent: "Attribution automatique"
    std::function<void(const std::string& activationToken)> openDashboard;
    std::function<void()> prepareDashboard;  ///< the menu opens, and what is in it may be next
    std::function<void()> toggle;
    std::function<void()> openUpdate;
    std::function<void()> quit;
  };

  /// On the session bus. `iconThemePath` as StatusNotifierItem has it.
  StatusMenu(const Glib::RefPtr<Gio::DBus::Connection>& session, std::string iconThemePath,
             Actions actions);

  void show(const MenuFacts& facts);

  tray::StatusNotifierItem& item() { return item_; }

 private:
  void build();
  void showProjects(const std::vector<ProjectChoice>& projects);

  const Actions actions_;

  tray::MenuItem menu_;
  tray::MenuItem statusLine_;
  tray::MenuItem todayLine_;
  tray::MenuItem catLine_;
  tray::MenuItem projLine_;
  tray::MenuItem informationEnd_{tray::MenuItem::Kind::Separator};
  tray::MenuItem projectMenuItem_;
  tray::MenuItem openItem_;
  tray::MenuItem toggleItem_;
  tray::MenuItem updateItem_;
  tray::MenuItem actionsEnd_{tray::MenuItem::Kind::Separator};
  tray::MenuItem quitItem_;

  tray::MenuItem automaticItem_;
  tray::MenuItem automaticEnd_{tray::MenuItem::Kind::Separator};
  std::vector<ProjectChoice> projects_;
  std::vector<std::unique_ptr<tray::MenuItem>> projectItems_;  // of projects_, in their order

  tray::MenuServer server_;
  tray::StatusNotifierItem item_;
};

}  // namespace orvanta
