#include "dashboard/skeleton.h"

#include <fmt/format.h>

#include <string>

namespace orvanta {
namespace {

// The page's own colours and lengths, as its tokens and its shell have them.
struct Colours {
  const char *page, *surface, *sunken, *line;
};
constexpr Colours kLight{"#f6f6f4", "#ffffff", "#eeeeeb", "#e3e3df"};
constexpr Colours kDark{"#16171a", "#1d1f23", "#121316", "#2e3136"};
constexpr int kSide = 176;
constexpr int kTop = 52;
constexpr int kMargin = 20;
constexpr int kEntries = 6;
constexpr int kEntryHeight = 36;

// The web engine takes the desktop for dark in the same way.
bool isDark(const Gtk::Settings& settings) {
  const auto theme = settings.property_gtk_theme_name().get_value().lowercase();
  constexpr auto kSuffix = "-dark";
  const auto at = theme.rfind(kSuffix);
  return settings.property_gtk_application_prefer_dark_theme() ||
         (at != Glib::ustring::npos && at + Glib::ustring(kSuffix).size() == theme.size());
}

// One of the background's rectangles; the first of them is the topmost.
std::string rectangle(const char* colour, int x, int y, const std::string& width,
                      const std::string& height) {
  return fmt::format("linear-gradient({0},{0}) {1}px {2}px / {3} {4} no-repeat, ", colour, x, y,
                     width, height);
}

std::string css(const Colours& colours) {
  const auto& [page, surface, sunken, line] = colours;
  std::string layers;
  for (int i = 0; i < kEntries; ++i) {
    constexpr int kFirst = 63;
    layers += rectangle(line, kMargin, kFirst + i * kEntryHeight, "84px", "12px");
  }
  layers += rectangle(line, kSide + kMargin, kTop / 2 - 6, "132px", "12px");
  layers += rectangle(line, kSide, kTop - 1, "100%", "1px");
  layers += rectangle(surface, kSide, 0, "100%", fmt::format("{}px", kTop));
  layers += rectangle(line, kSide - 1, 0, "1px", "100%");
  layers += rectangle(sunken, 0, 0, fmt::format("{}px", kSide), "100%");
  layers += rectangle(line, kSide + kMargin, kTop + 27, "210px", "16px");
  return fmt::format("window.skeleton {{ background: {} {}; }}",
                     layers.substr(0, layers.rfind(',')), page);
}

}  // namespace

Skeleton::Skeleton(Gtk::Window& window)
    : window_(window), settings_(Gtk::Settings::get_for_display(window.get_display())) {
  gtk_style_context_add_provider_for_display(window.get_display()->gobj(),
                                             GTK_STYLE_PROVIDER(css_->gobj()),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  const auto paint = [this] {
    const auto text = css(isDark(*settings_.get()) ? kDark : kLight);
    gtk_css_provider_load_from_data(css_->gobj(), text.c_str(), -1);
  };
  changed_ =
      settings_->property_gtk_application_prefer_dark_theme().signal_changed().connect(paint);
  paint();
  window_.add_css_class("skeleton");
}

Skeleton::~Skeleton() {
  changed_.disconnect();
  gtk_style_context_remove_provider_for_display(window_.get_display()->gobj(),
                                                GTK_STYLE_PROVIDER(css_->gobj()));
  window_.remove_css_class("skeleton");
}

}  // namespace orvanta
