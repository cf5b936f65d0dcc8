// The dashboard's window.
#pragma once

#include <gtkmm/applicationwindow.h>
#include <gtkmm/filechoosernative.h>

#include <functional>
#include <optional>
#include <string>

#include "dashboard/page_view.h"
#include "dashboard/page_zoom.h"
#include "dashboard/skeleton.h"

namespace orvanta {

/// 1180×780 at first, then as the user left it, however it ends; never below 860×560 where the
/// monitors have room for that. Closing hides it and keeps the page as it is.
class Window : public Gtk::ApplicationWindow {
 public:
  struct Listener {
    std::function<void(const std::string& json)> posted;  ///< by the page
    /// By its address; "" for a place that has no path here, absent when the user cancelled.
    std::function<void(const std::optional<std::string>& uri)> fileChosen;
    std::function<void()> hidden;
    std::function<void()> failed;  ///< the page is lost
  };

  explicit Window(Listener listener);
  ~Window() override;
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  PageView& page() { return page_; }

  /// Opens or raises the window, by this token where it is not "".
  void comeToFront(const std::string& activationToken);

  /// Asks where to save a file, at first in `folder` or with the user's documents; what is chosen
  /// ends as the suggested name does. fileChosen tells the answer.
  void askWhereToSave(const std::string& suggestedName, Glib::RefPtr<Gio::File> folder = {});

  /// Asks for a store file that is there. fileChosen tells the answer.
  void askForStore();

 protected:
  bool on_close_request() override;

 private:
  void pageLoaded();
  void fitMonitors();
  void rememberSoon();
  void rememberSize();
  void ask(Glib::RefPtr<Gio::File> folder);
  void panelAnswered(int response);

  const Listener listener_;
  PageView page_;
  PageZoom zoom_;
  std::optional<Skeleton> skeleton_;  // until the page is drawn
  sigc::connection remembering_;
  gulong monitorsChanged_ = 0;
  Glib::RefPtr<Gtk::FileChooserNative> chooser_;  // while it is open
  std::string ending_;                            // of what it asks about
};

}  // namespace orvanta
