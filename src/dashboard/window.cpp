#include "dashboard/window.h"

#include <gdk/wayland/gdkwayland.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>
#include <gtkmm/dialog.h>
#include <gtkmm/filefilter.h>
#include <gtkmm/shortcutcontroller.h>

#include <utility>

#include "base/application_id.h"
#include "dashboard/skeleton.h"
#include "dashboard/window_size.h"

namespace orvanta {

Window::Window(Listener listener)
    : listener_(std::move(listener)),
      page_({.posted = listener_.posted,
             .loaded = [this] { pageLoaded(); },
             .failed = listener_.failed}) {
  set_title("Orvanta");
  set_icon_name(kApplicationId);
  const auto size = loadWindowSize();
  set_default_size(size.width, size.height);
  if (size.maximized) maximize();
  page_.widget().set_size_request(kLeastWidth, kLeastHeight);
  set_child(page_.widget());
  showSkeleton(*this, true);

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

void Window::pageLoaded() {
  constexpr unsigned kDrawnBy = 1000;  // ms
  Glib::signal_timeout().connect_once([this] { showSkeleton(*this, false); }, kDrawnBy);
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

void Window::askWhereToSave(const std::string& suggestedName) {
  chooser_ = Gtk::FileChooserNative::create(
      "Exporter les activités", *this, Gtk::FileChooser::Action::SAVE, "Enregistrer", "Annuler");
  chooser_->set_modal(true);
  chooser_->set_current_name(suggestedName);
  const auto filter = Gtk::FileFilter::create();
  filter->set_name("Tableau CSV");
  filter->add_pattern("*.csv");
  chooser_->add_filter(filter);
  const auto documents = Glib::get_user_special_dir(Glib::UserDirectory::DOCUMENTS);
  if (!documents.empty()) {
    try {
      chooser_->set_current_folder(Gio::File::create_for_path(documents));
    } catch (const Glib::Error&) {  // it has been removed
    }
  }
  chooser_->signal_response().connect([this](int response) {
    const auto file = chooser_->get_file();
    const auto chooser = std::exchange(chooser_, {});
    const bool chosen = response == Gtk::ResponseType::ACCEPT && file;
    listener_.fileChosen(chosen ? std::optional(file->get_path()) : std::nullopt);
  });
  chooser_->show();
}

}  // namespace orvanta
