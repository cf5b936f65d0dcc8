// How browsers end their window titles; see showsPublicWindow.
#include <algorithm>
#include <array>

#include "browser/browsers.h"

namespace orvanta {
namespace {

constexpr std::array<std::string_view, 6> kFirefoxNames{
    "Mozilla Firefox",           "Firefox",   "Firefox Nightly",
    "Firefox Developer Edition", "LibreWolf", "Mozilla Firefox ESR"};

// As Chromium's kin write themselves in a title.
constexpr std::array<std::string_view, 7> kChromiumNames{
    "Chromium", "Google Chrome",       "Brave", "Microsoft Edge", "Vivaldi",
    "Opera",    "Microsoft\u200b Edge"};

bool endsPlainly(std::string_view title) {
  constexpr std::string_view kDash = " — ";
  const auto dash = title.rfind(kDash);
  const auto end = dash == std::string_view::npos ? title : title.substr(dash + kDash.size());
  return std::find(kFirefoxNames.begin(), kFirefoxNames.end(), end) != kFirefoxNames.end();
}

// "Page - Chromium", "Page - Google Chrome - Profile"; private and guest windows put their mark in
// parentheses right behind the name: "Page - Chromium (Incognito)".
bool namesNoMode(std::string_view title) {
  return std::any_of(kChromiumNames.begin(), kChromiumNames.end(), [&](std::string_view name) {
    const auto at = title.rfind(name);
    if (at == std::string_view::npos) return false;
    constexpr std::string_view kDash = " - ";
    if (at > 0 && !title.substr(0, at).ends_with(kDash)) return false;
    const auto rest = title.substr(at + name.size());
    return rest.empty() || (rest.starts_with(kDash) && rest.find('(') == std::string_view::npos);
  });
}

}  // namespace

bool showsPublicWindow(const Browser& browser, std::string_view windowTitle) {
  return browser.kind == BrowserKind::kFirefox && endsPlainly(windowTitle);
}

bool showsPublicFrame(const Browser& browser, std::string_view frameName) {
  switch (browser.kind) {
    case BrowserKind::kFirefox:
      return endsPlainly(frameName);
    case BrowserKind::kChromium:
      return namesNoMode(frameName);
    case BrowserKind::kWebKit:
      return true;  // private windows are processes of their own, told by their command line
  }
  return false;
}

}  // namespace orvanta
