// How browsers end their window titles; see showsPublicWindow.
#include <algorithm>

#include "browser/browsers.h"

namespace orvanta {
namespace {

// Whether it is so of any name that browsers of this kind write into their titles.
template <class Fits>
bool anyTitle(BrowserKind kind, const Fits& fits) {
  const auto all = browsers();
  return std::any_of(all.begin(), all.end(), [&](const Browser& browser) {
    return browser.kind == kind && std::any_of(browser.titles.begin(), browser.titles.end(), fits);
  });
}

// Firefox cuts a title, at 2048 bytes or 4095, and so do others on its way here: behind what is
// left there may have been a mark.
bool mayBeCut(std::string_view title) {
  constexpr std::size_t kSurelyWhole = 2000;
  return title.size() > kSurelyWhole;
}

bool endsPlainly(std::string_view title) {
  if (mayBeCut(title)) return false;
  constexpr std::string_view kDash = " — ";
  const auto dash = title.rfind(kDash);
  const auto end = dash == std::string_view::npos ? title : title.substr(dash + kDash.size());
  return anyTitle(BrowserKind::kFirefox, [&](std::string_view name) { return name == end; });
}

// "Page - Chromium", "Page - Google Chrome - Profile"; private and guest windows put their mark in
// parentheses right behind the name: "Page - Chromium (Incognito)".
bool namesNoMode(std::string_view title) {
  if (mayBeCut(title)) return false;
  return anyTitle(BrowserKind::kChromium, [&](std::string_view name) {
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
    case BrowserKind::kUntold:
      return false;
  }
  return false;
}

}  // namespace orvanta
