#include "capture/foreground.h"

#include <utility>

#include "base/cut.h"
#include "base/text.h"
#include "capture/excluded.h"

namespace orvanta {

const Settings& Foreground::settings() {
  auto texts = db_.settingsNow();
  if (texts && texts != settingTexts_) {
    settings_ = Settings::of(*texts);
    settingTexts_ = std::move(texts);
  }
  return settings_;
}

Sample Foreground::sample() const {
  auto app = collectors_.frontmostApp();
  if (!app) return {.app = "Inconnu"};
  if (isLoginWindow(app->bundle)) return Sample::idleSample();

  auto tab = collectors_.browserTab(*app);
  if (!tab) tab = BrowserTab{.url = {}, .title = std::move(app->title)};
  Sample sample{.app = app->name, .bundle = app->bundle};
  if (settings_.excludesApp(sample.app)) return sample;
  if (tab->url && excluded(settings_, *tab->url)) return sample;
  sample.domain = domainOf(tab->url);
  sample.url = std::move(tab->url);
  // What a window or a page calls itself is anybody's text.
  if (tab->title) sample.title = unlessBlank(firstBytes(*tab->title, kLongestTitle));
  if (settings_.privacy == Privacy::Domain) {
    sample.title.reset();
    sample.url.reset();
  }
  return sample;
}

}  // namespace orvanta
