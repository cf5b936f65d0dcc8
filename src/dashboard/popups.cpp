#include "dashboard/popups.h"

#include <gtkmm/stylecontext.h>

namespace orvanta {

Popups::Popups() {
  square_->load_from_data(
      "popover > contents, tooltip { border-radius: 0; box-shadow: none; margin: 0; }");
  composed_ = display_->property_composited().signal_changed().connect([this] { adapt(); });
  adapt();
}

Popups::~Popups() {
  composed_.disconnect();
}

void Popups::adapt() {
  Gtk::StyleContext::remove_provider_for_display(display_, square_);
  if (display_->is_composited()) return;
  Gtk::StyleContext::add_provider_for_display(display_, square_,
                                              GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

}  // namespace orvanta
