#include "dashboard/window.h"

#include <gdk/wayland/gdkwayland.h>
#include <glibmm/convert.h>
#include <glibmm/main.h>
#include <glibmm/miscutils.h>
#include <gtkmm/dialog.h>
#include <gtkmm/filefilter.h>
#include <gtkmm/shortcutcontroller.h>

#include <algorithm>
#include <utility>

#include "base/application_id.h"
#include "base/gobject_ref.h"
#include "base/text.h"
#include "dashboard/skeleton.h"
#include "dashboard/window_size.h"

namespace orvanta {

Window::Window(Listener listener)
    : listener_(std::move(listener)),
      page_({.posted = listener_.posted,
             .loaded = [this] { pageLoaded(); },
             .failed = listener_.failed}),
      zoom_(page_.widget(), loadWindowSize().zoom, [this] { rememberSoon(); }) {
  set_title("Orvanta");
  set_icon_name(kApplicationId);
  const auto size = loadWindowSize();
  set_default_size(size.width, size.height);
  if (size.maximized) maximize();
  set_child(page_.widget());
  skeleton_.emplace(*this);
  fitMonitors();
  monitorsChanged_ =
      g_signal_connect_swapped(gdk_display_get_monitors(get_display()->gobj()), "items-changed",
                               G_CALLBACK(+[](Window* self) { self->fitMonitors(); }), this);
  const auto remember = [this] { rememberSoon(); };
  property_default_width().signal_changed().connect(remember);
  property_default_height().signal_changed().connect(remember);
  property_maximized().signal_changed().connect(remember);

  const auto keys = Gtk::ShortcutController::create();
  keys->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);  // the web view takes all that comes
  keys->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string("<Control>w"),
                                           Gtk::NamedAction::create("window.close")));
  keys->add_shortcut(Gtk::Shortcut::create(Gtk::ShortcutTrigger::parse_string("<Control>q"),
                                           Gtk::NamedAction::create("window.close")));
  zoom_.addKeys(*keys.get());
  add_controller(keys);
}

Window::~Window() {
  g_signal_handler_disconnect(gdk_display_get_monitors(get_display()->gobj()), monitorsChanged_);
  if (remembering_.connected()) rememberSize();
}

// Which one the window opens on is the desktop's to say: the smallest must do.
void Window::fitMonitors() {
  constexpr int kLeastWidth = 860;
  constexpr int kLeastHeight = 560;
  constexpr int kAround = 96;  // the desktop's panel and the window's title
  int width = kLeastWidth;
  int height = kLeastHeight;
  auto* const monitors = gdk_display_get_monitors(get_display()->gobj());
  for (guint i = 0; i < g_list_model_get_n_items(monitors); ++i) {
    const Ref<GdkMonitor> monitor(GDK_MONITOR(g_list_model_get_item(monitors, i)));
    GdkRectangle area;  // in the pixels that the window is measured in
    gdk_monitor_get_geometry(monitor.get(), &area);
    width = std::min(width, area.width);
    height = std::min(height, area.height - kAround);
  }
  page_.widget().set_size_request(std::max(width, 1), std::max(height, 1));
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
  Glib::signal_timeout().connect_once([this] { skeleton_.reset(); }, kDrawnBy);
}

bool Window::on_close_request() {
  rememberSize();
  set_visible(false);
  listener_.hidden();
  return true;
}

// Not only when it is closed: the program may end with the window open.
void Window::rememberSoon() {
  constexpr unsigned kMilliseconds = 400;
  remembering_.disconnect();
  remembering_ = Glib::signal_timeout().connect(
      [this] {
        rememberSize();
        return false;
      },
      kMilliseconds);
}

void Window::rememberSize() {
  remembering_.disconnect();
  int width = 0;
  int height = 0;
  get_default_size(width, height);  // the toolkit keeps it at what the user made of it
  saveWindowSize(
      {.width = width, .height = height, .maximized = is_maximized(), .zoom = zoom_.level()});
}

namespace {

// "toto" becomes "toto.csv" where that is the ending.
std::optional<std::string> completed(const std::string& name, const std::string& ending) {
  if (lowerCase(name).ends_with(ending)) return {};
  return name + ending;
}

Glib::RefPtr<Gtk::FileFilter> filterOf(const std::string& ending) {
  const auto filter = Gtk::FileFilter::create();
  filter->set_name(ending == ".ics"  ? "Agenda ICS"
                   : ending == ".db" ? "Données d’Orvanta"
                   : ending.empty()  ? "Tous les fichiers"
                                     : "Tableau CSV");
  filter->add_pattern("*" + ending);
  return filter;
}

}  // namespace

void Window::askWhereToSave(const std::string& suggestedName, Glib::RefPtr<Gio::File> folder) {
  ending_ = suggestedName.substr(std::min(suggestedName.rfind('.'), suggestedName.size()));
  chooser_ = Gtk::FileChooserNative::create("Exporter", *this, Gtk::FileChooser::Action::SAVE,
                                            "Enregistrer", "Annuler");
  chooser_->set_current_name(suggestedName);
  chooser_->add_filter(filterOf(ending_));
  ask(std::move(folder));
}

void Window::askForStore() {
  ending_.clear();
  chooser_ = Gtk::FileChooserNative::create("Reprendre un fichier", *this,
                                            Gtk::FileChooser::Action::OPEN, "Ouvrir", "Annuler");
  chooser_->add_filter(filterOf(".db"));
  chooser_->add_filter(filterOf(""));
  ask({});
}

void Window::ask(Glib::RefPtr<Gio::File> folder) {
  chooser_->set_modal(true);
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
  const auto name = completed(file->get_basename(), ending_);
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
