#include "dashboard/window.h"

#include <gdk/wayland/gdkwayland.h>
#include <glibmm/convert.h>
#include <glibmm/miscutils.h>
#include <gtkmm/dialog.h>
#include <gtkmm/filefilter.h>
#include <gtkmm/shortcutcontroller.h>

#include <utility>

#include "base/application_id.h"
#include "base/text.h"
#include "dashboard/window_size.h"

namespace orvanta {

Window::Window(Listener listener)
    : listener_(std::move(listener)), page_(listener_.posted, listener_.failed) {
  set_title("Orvanta");
  set_icon_name(kApplicationId);
  const auto size = loadWindowSize();
  set_default_size(size.width, size.height);
  if (size.maximized) maximize();
  page_.widget().set_size_request(kLeastWidth, kLeastHeight);
  set_child(page_.widget());

  const auto keys = Gtk::ShortcutController::create();
  keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);  // the web view takes all that comes
  keys->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string("<Control>w"),
                                           Gtk::NamedAction::create("window.close")));
  keys->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string("<Control>q"),
                                           Gtk::NamedAction::create("window.close")));
  add_controller(keys);
}

void Window::comeToFront(const std::string& activationToken) {
  auto* const display = get_display()->gobj();
  if (activationToken.empty()) {
    // The toolkit asks for a token of its own, which few compositors take.
  } else if (GDK_IS_WAYLAND_DISPLAY(display)) {
    // What set_startup_id() is given does not get there.
    gdk_wayland_display_set_startup_notification_id(display, activationToken.c_str());
  } else {
    set_startup_id(activationToken);
  }
  present();
}

bool Window::on_close_request() {
  rememberSize();
  set_visible(false);
  listener_.hidden();
  return true;
}

void Window::rememberSize() {
  int width = 0;
  int height = 0;
  get_default_size(width, height);  // the toolkit keeps it at what the user made of it
  saveWindowSize({.width = width, .height = height, .maximized = is_maximized()});
}

namespace {

// "toto" becomes "toto.csv".
std::optional<std::string> completed(const std::string& name) {
  constexpr std::string_view kExtension = ".csv";
  if (lowerCase(name).ends_with(kExtension)) return {};
  return name + std::string(kExtension);
}

}  // namespace

void Window::askWhereToSave(const std::string& suggestedName, Glib::RefPtr<Gio::File> folder) {
  chooser_ = Gtk::FileChooserNative::create(
      "Exporter les activités", *this, Gtk::FileChooser::Action::SAVE, "Enregistrer", "Annuler");
  chooser_->set_modal(true);
  chooser_->set_current_name(suggestedName);
  const auto filter = Gtk::FileFilter::create();
  filter->set_name("Tableau CSV");
  filter->add_pattern("*.csv");
  chooser_->add_filter(filter);
  const auto documents = Glib::get_user_special_dir(Glib::UserDirectory::DOCUMENTS);
  if (!folder && !documents.empty()) folder = Gio::File::create_for_path(documents);
  try {
    if (folder) chooser_->set_current_folder(folder);
  } catch (const Glib::Error&) {  // it has been removed
  }
  chooser_->signal_response().connect([this](int response) { panelAnswered(response); });
  chooser_->show();
}

void Window::panelAnswered(int response) {
  auto file = chooser_->get_file();
  const auto chooser = std::exchange(chooser_, {});
  if (response != Gtk::ResponseType::ACCEPT || !file) {
    listener_.fileChosen({});
    return;
  }
  const auto folder = file->get_parent();
  const auto name = completed(file->get_basename());
  if (name && folder) file = folder->get_child(*name);
  // The panel has asked about the name that was typed only.
  if (name && file->query_exists()) {
    askWhereToSave(*name, folder);
    return;
  }
  const auto path = file->get_path();
  listener_.fileChosen(path.empty() ? "" : std::string(Glib::filename_to_uri(path)));
}

}  // namespace orvanta
