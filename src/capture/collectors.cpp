#include "capture/collectors.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "base/cut.h"
#include "base/text.h"

namespace orvanta {

Collectors::Collectors(ForegroundProbe& foreground, IdleProbe& idle, InhibitionProbe& inhibition,
                       TabReader tabs, AppSeen seen)
    : foreground_(foreground),
      idle_(idle),
      inhibition_(inhibition),
      tabs_(std::move(tabs)),
      seen_(std::move(seen)) {}

std::optional<FrontmostApp> Collectors::frontmostApp() const {
  auto app = foreground_.frontmostApp();
  if (app) app->name = firstBytes(app->name, kLongestTitle);
  // Whole: its end tells whether a browser's window is private.
  if (app && app->title) app->title = unlessBlank(*app->title);
  if (app && seen_) seen_(*app);
  return app;
}

std::optional<BrowserTab> Collectors::browserTab(const FrontmostApp& app) const {
  return tabs_ ? tabs_(app) : std::nullopt;
}

bool isLoginWindow(const std::optional<std::string>& bundle) {
  constexpr std::array<std::string_view, 9> kGreetersAndLockers{
      "gdm-greeter",       "lightdm-gtk-greeter", "slick-greeter",
      "sddm-greeter",      "light-locker",        "gnome-screensaver",
      "xfce4-screensaver", "xscreensaver",        "cinnamon-screensaver"};
  return bundle && std::find(kGreetersAndLockers.begin(), kGreetersAndLockers.end(), *bundle) !=
                       kGreetersAndLockers.end();
}

}  // namespace orvanta
