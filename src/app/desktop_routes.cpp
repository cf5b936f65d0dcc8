#include "app/desktop_routes.h"

#include <string>
#include <utility>

namespace orvanta {

PlatformActions desktopActions(const Desktop& desktop, BrowserConnection& browsers) {
  PlatformActions actions;
  actions.accessibilityGranted = [&desktop] { return desktop.foreground->titlesReadable(); };
  actions.whyTitlesAreMissing = [&desktop] { return desktop.whyTitlesAreMissing(); };
  const auto probes = [&desktop](std::string Source::*what) -> boost::json::object {
    const auto sources = desktop.sources();
    return {{"foreground", sources.foreground.*what},
            {"idle", sources.idle.*what},
            {"inhibition", sources.inhibition.*what},
            {"session", sources.session.*what}};
  };
  actions.probes = [probes] { return probes(&Source::id); };
  actions.probeNames = [probes] { return probes(&Source::name); };
  actions.runningBrowsers = [] {
    std::vector<BrowserName> names;
    for (const auto& running : runningBrowsers()) {
      names.push_back({std::string(running.browser->bundle), std::string(running.browser->name)});
    }
    return names;
  };
  actions.isBrowser = [](const std::string& bundle) {
    return BrowserConnection::browserScript(bundle).has_value();
  };
  actions.testBrowser = [&browsers](const std::string& bundle) -> std::optional<BrowserTest> {
    browsers.resetBrowserCooldowns();
    auto result = browsers.test(bundle);
    browsers.resetBrowserCooldowns();  // the capture is not held back by the test
    if (result.givenUp) return {};
    return BrowserTest{.ok = result.output.has_value(), .error = std::move(result.error)};
  };
  return actions;
}

}  // namespace orvanta
