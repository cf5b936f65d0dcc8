// How large the page is shown.
#pragma once

#include <gtkmm/shortcutcontroller.h>
#include <gtkmm/widget.h>

#include <functional>

namespace orvanta {

/// Ctrl and +, − or 0 make the page larger, smaller and as it was, in the steps that browsers have
/// between 50 and 300 %.
class PageZoom {
 public:
  /// `page` is the web view, shown at `level` from now on; `changed` is called after a key.
  PageZoom(Gtk::Widget& page, double level, std::function<void()> changed);

  void addKeys(Gtk::ShortcutController& keys);

  /// 1 is the usual size.
  double level() const;

 private:
  void set(double level);

  Gtk::Widget& page_;
  const std::function<void()> changed_;
};

}  // namespace orvanta
