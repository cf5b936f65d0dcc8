#include "dashboard/page_zoom.h"

#include <webkit/webkit.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace orvanta {
namespace {

constexpr std::array kSteps{0.5, 0.67, 0.75, 0.8, 0.9, 1.0, 1.1, 1.25, 1.5, 1.75, 2.0, 2.5, 3.0};

WebKitWebView* webView(Gtk::Widget& page) {
  return WEBKIT_WEB_VIEW(page.gobj());
}

// Steps are further apart than this.
constexpr double kSame = 0.01;

double larger(double level) {
  const auto* const next =
      std::ranges::find_if(kSteps, [&](double step) { return step > level + kSame; });
  return next == kSteps.end() ? kSteps.back() : *next;
}

double smaller(double level) {
  const auto* const reached =
      std::ranges::find_if(kSteps, [&](double step) { return step >= level - kSame; });
  return reached == kSteps.begin() ? kSteps.front() : *(reached - 1);
}

}  // namespace

PageZoom::PageZoom(Gtk::Widget& page, double level, std::function<void()> changed)
    : page_(page), changed_(std::move(changed)) {
  webkit_web_view_set_zoom_level(webView(page_), std::clamp(level, kSteps.front(), kSteps.back()));
}

double PageZoom::level() const {
  return webkit_web_view_get_zoom_level(webView(page_));
}

void PageZoom::set(double level) {
  webkit_web_view_set_zoom_level(webView(page_), level);
  changed_();
}

void PageZoom::addKeys(Gtk::ShortcutController& keys) {
  const auto add = [&](const char* key, auto next) {
    const auto action = Gtk::CallbackAction::create(
        [this, next](Gtk::Widget& /*widget*/, const Glib::VariantBase& /*arguments*/) {
          set(next(level()));
          return true;
        });
    keys.add_shortcut(Gtk::Shortcut::create(
        Gtk::ShortcutTrigger::parse_string(std::string("<Control>") + key), action));
  };
  for (const char* key : {"plus", "equal", "KP_Add"}) add(key, larger);
  for (const char* key : {"minus", "KP_Subtract"}) add(key, smaller);
  // French keyboards write à where the 0 is printed.
  for (const char* key : {"0", "agrave", "KP_0"}) add(key, [](double) { return 1.0; });
}

}  // namespace orvanta
