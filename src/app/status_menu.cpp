#include "app/status_menu.h"

#include <utility>

#include "base/application_id.h"

namespace orvanta {
namespace {

constexpr auto kMenuPath = "/MenuBar";

tray::Appearance appearance(const MenuFacts& facts, std::string label, std::string toolTip) {
  if (facts.trouble) {
    return {"fr.quellvane.orvanta-alert-symbolic", "Orvanta : rien n’est enregistré",
            std::move(label), std::string(shortNameOf(*facts.trouble))};
  }
  if (facts.paused) {
    return {"fr.quellvane.orvanta-paused-symbolic", "Orvanta : suivi en pause", std::move(label),
            "Suivi en pause"};
  }
  return {"fr.quellvane.orvanta-symbolic", "Orvanta", std::move(label), std::move(toolTip)};
}

void showOrHide(tray::MenuItem& item, const std::optional<std::string>& label) {
  if (label) item.setLabel(*label);
  item.setVisible(label.has_value());
}

}  // namespace

StatusMenu::StatusMenu(const Glib::RefPtr<Gio::DBus::Connection>& session,
                       std::string iconThemePath, Actions actions)
    : actions_(std::move(actions)),
      server_(kMenuPath, menu_),
      item_(session,
            {.id = kApplicationId,
             .title = "Orvanta",
             .iconThemePath = std::move(iconThemePath),
             .menuPath = kMenuPath,
             .labelGuide = " 00 h 00"},
            appearance({}, "", ""),
            [this] { actions_.openDashboard(item_.takeActivationToken()); }) {
  build();
}

void StatusMenu::build() {
  menu_.onOpened(actions_.prepareDashboard);
  for (auto* line : {&statusLine_, &todayLine_, &catLine_, &projLine_}) {
    line->setEnabled(false);
    line->setLabel("");
  }
  automaticItem_.setLabel("Attribution automatique");
  automaticItem_.onActivated([this] { actions_.pickProject({}); });
  projectMenuItem_.append(automaticItem_);

  openItem_.setLabel("Ouvrir Orvanta");
  openItem_.setKey("o");
  openItem_.onActivated([this] { actions_.openDashboard(item_.takeActivationToken()); });
  toggleItem_.onActivated([this] { actions_.toggle(); });
  updateItem_.setVisible(false);
  updateItem_.onActivated([this] { actions_.openUpdate(); });
  quitItem_.setLabel("Quitter Orvanta");
  quitItem_.setKey("q");
  quitItem_.onActivated([this] { actions_.quit(); });

  for (auto* item :
       {&statusLine_, &todayLine_, &catLine_, &projLine_, &informationEnd_, &projectMenuItem_,
        &openItem_, &toggleItem_, &updateItem_, &actionsEnd_, &quitItem_}) {
    menu_.append(*item);
  }
}

void StatusMenu::show(const MenuFacts& facts) {
  auto content = menuContent(facts);
  statusLine_.setLabel(content.statusLine);
  todayLine_.setLabel(content.todayLine);
  catLine_.setLabel(content.catLine);
  showOrHide(projLine_, content.projLine);
  projectMenuItem_.setLabel(content.projectTitle);
  toggleItem_.setLabel(content.toggleTitle);
  showOrHide(updateItem_, content.updateTitle);

  showProjects(facts.projects);
  automaticItem_.setChosen(!facts.currentProject);
  for (std::size_t i = 0; i < projects_.size(); ++i) {
    projectItems_[i]->setChosen(projects_[i].id == facts.currentProject);
  }
  item_.show(appearance(facts, std::move(content.label), std::move(content.toolTip)));
}

void StatusMenu::showProjects(const std::vector<ProjectChoice>& projects) {
  if (projects == projects_) return;
  projects_ = projects;
  projectMenuItem_.clear();
  projectItems_.clear();
  projectMenuItem_.append(automaticItem_);
  if (projects_.empty()) return;
  projectMenuItem_.append(automaticEnd_);
  for (const auto& [id, name] : projects_) {
    auto& item = projectItems_.emplace_back(std::make_unique<tray::MenuItem>());
    item->setLabel(menuName(name));
    item->onActivated([this, project = id] { actions_.pickProject(project); });
    projectMenuItem_.append(*item);
  }
}

}  // namespace orvanta
